#!/bin/bash
# Prints the folder of Poppler for Windows: include, lib (libpoppler.a and libfreetype.a) and
# poppler-data.zip, the encoding data that GlobalParams takes a folder of. Builds it where that has
# not been done, which takes a few minutes.
#
# What is in the cache is not built again as long as this script, the patch, the toolchain, the
# compiler and the versions of the Debian packages stay the same.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
toolchain=$scripts/../cmake/mingw64.cmake
patch=$scripts/poppler.patch
data=/usr/share/poppler # of the package poppler-data

cache=${XDG_CACHE_HOME:-$HOME/.cache}/vell-file
mkdir -p "$cache"
exec 9>"$cache/poppler.lock"
flock 9 # somebody else may be building it
freetype_source=$("$scripts/source_package.sh" freetype)
poppler_source=$("$scripts/source_package.sh" poppler)
[ -d "$data/cMap" ] || {
    echo "The folder $data is missing; the package poppler-data installs it." >&2
    exit 1
}
recipe=$({
    cat "${BASH_SOURCE[0]}" "$toolchain" "$patch"
    echo "$freetype_source $poppler_source"
    dpkg-query -W poppler-data
    x86_64-w64-mingw32-g++-posix --version
} | sha256sum | cut -c 1-16)
target=$cache/poppler-$recipe
[ -d "$target" ] && {
    echo "$target"
    exit
}

echo "Building Poppler for Windows (a few minutes, once)" >&2
work=$(mktemp -d -p "$cache")
trap 'rm -rf "$work"' EXIT

# NAME SOURCE OPTION…: configures, builds, and installs into the folder that becomes the target.
install_library() {
    local name=$1 source=$2
    shift 2
    {
        cmake -S "$source" -B "$work/$name" -G Ninja --toolchain "$toolchain" \
            -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
            -DCMAKE_INSTALL_PREFIX="$work/installed" -DCMAKE_INSTALL_LIBDIR=lib "$@" &&
            cmake --build "$work/$name" &&
            cmake --install "$work/$name"
    } </dev/null >"$work/log" 2>&1 || {
        tail -30 "$work/log" >&2
        echo "$name could not be built." >&2
        exit 1
    }
}

# With the zlib that the plug-in has: a second one inside FreeType would meet it when linking.
install_library FreeType "$freetype_source" -DFT_REQUIRE_ZLIB=ON -DFT_DISABLE_BZIP2=ON \
    -DFT_DISABLE_PNG=ON -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_BROTLI=ON
cp -r "$poppler_source" "$work/source"
patch -s -d "$work/source" -p1 <"$patch"
# Only text is wanted, so everything that pictures, signatures and other interfaces need is left out.
freetype_headers=$work/installed/include/freetype2
install_library Poppler "$work/source" -DFREETYPE_LIBRARY="$work/installed/lib/libfreetype.a" \
    -DFREETYPE_INCLUDE_DIR_ft2build="$freetype_headers" \
    -DFREETYPE_INCLUDE_DIR_freetype2="$freetype_headers" -DENABLE_UNSTABLE_API_ABI_HEADERS=ON \
    -DFONT_CONFIGURATION=win32 -DENABLE_BOOST=OFF -DCMAKE_DISABLE_FIND_PACKAGE_Boost=ON \
    -DENABLE_DCTDECODER=unmaintained -DENABLE_LIBOPENJPEG=none -DENABLE_LIBCURL=OFF \
    -DENABLE_NSS3=OFF -DENABLE_GPGME=OFF -DENABLE_CMS=none -DENABLE_ZLIB=OFF \
    -DENABLE_GLIB=OFF -DENABLE_GOBJECT_INTROSPECTION=OFF -DENABLE_QT5=OFF -DENABLE_QT6=OFF \
    -DENABLE_CPP=OFF -DENABLE_UTILS=OFF -DENABLE_RELOCATABLE=OFF \
    -DBUILD_GTK_TESTS=OFF -DBUILD_QT5_TESTS=OFF -DBUILD_QT6_TESTS=OFF -DBUILD_CPP_TESTS=OFF -DBUILD_MANUAL_TESTS=OFF \
    -DRUN_GPERF_IF_PRESENT=OFF -DWITH_NSS3=OFF -DPKG_CONFIG_EXECUTABLE=/bin/false \
    -DWITH_JPEG=OFF -DWITH_PNG=OFF -DWITH_TIFF=OFF -DWITH_Cairo=OFF
# With one time for all files, so that the same data gives the same archive.
(cd "$data" &&
    find cMap cidToUnicode nameToUnicode unicodeMap -type f | LC_ALL=C sort >"$work/names" &&
    cmake -E tar cf "$work/installed/poppler-data.zip" --format=zip --mtime=2000-01-01 \
        --files-from="$work/names")

chmod 755 "$work/installed"
mv "$work/installed" "$target"
echo "$target"
