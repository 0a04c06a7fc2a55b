#!/bin/bash
# Prints the folder of the picture libraries for Windows: include and lib with those of JPEG, PNG and
# colour profiles (libjpeg.a, libpng.a, liblcms2.a). Builds them where that has not been done.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"
own=$scripts/picture_libraries

fetched=$(fetch_sources libjpeg-turbo libpng1.6 lcms2)
mapfile -t sources <<<"$fetched"
begin_library pictures "${BASH_SOURCE[0]}" "$own"/* "$scripts/jpeg.patch" <<<"${sources[*]}"
echo "Building the libraries for pictures (once)" >&2

make_others() {
    configure others "$own" -DPNG="${sources[1]}" -DLCMS="${sources[2]}" \
        -DCMAKE_C_FLAGS_RELEASE="-O2 -DNDEBUG"
    install_library others
}
make_others &
others=$!

# scripts/jpeg.patch: coefficients that a small picture has no use for are passed over.
cp -r "${sources[0]}" "$work/source"
patch -s -d "$work/source" -p1 <"$scripts/jpeg.patch"
# With a memory manager of our own, which can put aside what does not fit into memory. A `long` of
# Windows does not count the bytes of a large picture. What the user's environment says of the
# library's memory is not read.
cp "$own/jpeg_memory.c" "$work/source/jmemnobs.c"
cp "$own/vell_backing_store.h" "$work/source"
sed -Ei 's/\blong\b/long long/g' "$work/source/jmemsys.h" "$work/source/jmemmgr.c"
configure jpeg "$work/source" -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DREQUIRE_SIMD=ON \
    -DCMAKE_C_FLAGS=-DNO_GETENV
logged jpeg cmake --build "$work/jpeg" --target jpeg-static
mkdir -p "$work/installed"/{include,lib}
cp "$work/jpeg/libjpeg.a" "$work/installed/lib"
cp "$work/jpeg/jconfig.h" "$work/source"/{jpeglib,jmorecfg,jerror,vell_backing_store}.h \
    "$work/installed/include"
wait $others || exit 1
end_library
