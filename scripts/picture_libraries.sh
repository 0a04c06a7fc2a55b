#!/bin/bash
# Prints the folder of the picture libraries for Windows: include and lib with those of JPEG, PNG and
# colour profiles (libjpeg.a, libpng.a, liblcms2.a). Builds them where that has not been done.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"
. "$scripts/picture_libraries/jpeg.sh"
own=$scripts/picture_libraries

begin_library pictures "${BASH_SOURCE[0]}" "$own"/* "$scripts/jpeg.patch" </dev/null
echo "Building the libraries for pictures (once)" >&2
fetched=$(fetch_sources libjpeg-turbo libpng1.6 lcms2)
mapfile -t sources <<<"$fetched"

make_others() {
    configure others "$own" -DPNG="${sources[1]}" -DLCMS="${sources[2]}" \
        -DCMAKE_C_FLAGS_RELEASE="-O2 -DNDEBUG"
    install_library others
}
make_others &
others=$!

make_jpeg_source "${sources[0]}"
configure jpeg "$work/source" "${jpeg_options[@]}" -DCMAKE_C_FLAGS=-DNO_GETENV
install_jpeg
wait $others || exit 1
end_library
