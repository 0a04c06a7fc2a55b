#!/bin/bash
# Prints the folder of Poppler for Windows: include, lib (libpoppler.a and libfreetype.a) and
# poppler-data.zip, the encoding data that GlobalParams takes a folder of; the folder that it is unpacked
# into is named after its sum (vell_encoding_data_key.h). Builds it where that has not been done, which
# takes a few minutes.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"
patch=$scripts/poppler.patch
headers=$scripts/poppler.cmake
data=/usr/share/poppler # of the package poppler-data

[ -d "$data/cMap" ] || {
    echo "The folder $data is missing; the package poppler-data installs it." >&2
    exit 1
}
begin_library poppler "${BASH_SOURCE[0]}" "$patch" "$headers" "$scripts/picture_libraries.sh" \
    "$scripts"/picture_libraries/* <<<"$(dpkg-query -W poppler-data)"
echo "Building Poppler for Windows (a few minutes, once)" >&2

# The JPEG decoder is that of all pictures.
"$scripts/picture_libraries.sh" >"$work/pictures" &
pictures=$!
fetched=$(fetch_sources freetype poppler)
{
    read -r freetype_source
    read -r poppler_source
} <<<"$fetched"

# With the zlib that the plug-in has: a second one inside FreeType would meet it when linking. Few
# letters of each document are drawn, so it need not be fast.
make_freetype() {
    configure FreeType "$freetype_source" -DFT_REQUIRE_ZLIB=ON -DFT_DISABLE_BZIP2=ON \
        -DFT_DISABLE_PNG=ON -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_BROTLI=ON \
        -DCMAKE_C_FLAGS_RELEASE="-O1 -DNDEBUG"
    install_library FreeType
}
freetype_headers=$work/installed/include/freetype2
mkdir -p "$freetype_headers"
make_freetype &
freetype=$!

# Text and drawn pages are wanted, so everything that signatures and other interfaces need is left out,
# and so are the sources that nothing of what is left refers to: those that print or write pictures.
# Pictures of JPEG 2000 are not drawn: Poppler's own decoder for them is no longer looked after. The
# folder of the encoding data is always told; that of this build would stand in the library.
cp -r "$poppler_source" "$work/source"
patch -s -d "$work/source" -p1 <"$patch"
unneeded='goo/(NetPBMWriter|PNGWriter|TiffWriter|gbase64|gbasename)'
unneeded+='|poppler/(BBox|PS|PreScan)OutputDev|poppler/(FILECacheLoader|FontInfo|PageTransition)'
unneeded+='|poppler/(FD|Local)?PDFDoc(Builder|Factory)'
sed -Ei "\\#^ *($unneeded)\.cc\$#d" "$work/source/CMakeLists.txt"
wait $pictures || exit 1
read -r pictures <"$work/pictures"
configure Poppler "$work/source" -DFREETYPE_LIBRARY="$work/installed/lib/libfreetype.a" \
    -DFREETYPE_INCLUDE_DIR_ft2build="$freetype_headers" \
    -DFREETYPE_INCLUDE_DIR_freetype2="$freetype_headers" -DENABLE_UNSTABLE_API_ABI_HEADERS=ON \
    -DPOPPLER_DATADIR=share/poppler -DFONT_CONFIGURATION=win32 \
    -DENABLE_BOOST=OFF -DCMAKE_DISABLE_FIND_PACKAGE_Boost=ON \
    -DENABLE_DCTDECODER=libjpeg -DJPEG_LIBRARY="$pictures/lib/libjpeg.a" \
    -DJPEG_INCLUDE_DIR="$pictures/include" -DENABLE_LIBOPENJPEG=none -DENABLE_LIBCURL=OFF \
    -DENABLE_NSS3=OFF -DENABLE_GPGME=OFF -DENABLE_CMS=none -DENABLE_ZLIB=OFF \
    -DENABLE_GLIB=OFF -DENABLE_GOBJECT_INTROSPECTION=OFF -DENABLE_QT5=OFF -DENABLE_QT6=OFF \
    -DENABLE_CPP=OFF -DENABLE_UTILS=OFF -DENABLE_RELOCATABLE=OFF \
    -DBUILD_GTK_TESTS=OFF -DBUILD_QT5_TESTS=OFF -DBUILD_QT6_TESTS=OFF -DBUILD_CPP_TESTS=OFF -DBUILD_MANUAL_TESTS=OFF \
    -DRUN_GPERF_IF_PRESENT=OFF -DWITH_NSS3=OFF -DPKG_CONFIG_EXECUTABLE=/bin/false \
    -DWITH_PNG=OFF -DWITH_TIFF=OFF -DWITH_Cairo=OFF \
    -DCMAKE_PROJECT_poppler_INCLUDE="$headers"
wait $freetype || exit 1
install_library Poppler
# With one time for all files, so that the same data gives the same archive. The notice in one of them
# does not let it be handed on; no document refers to it by its name.
(cd "$data" &&
    find cMap cidToUnicode nameToUnicode unicodeMap -type f ! -name Identity-UTF16-H |
        LC_ALL=C sort >"$work/names" &&
    cmake -E tar cf "$work/installed/poppler-data.zip" --format=zip --mtime=2000-01-01 \
        --files-from="$work/names")
key=$(sha256sum "$work/installed/poppler-data.zip" | cut -c 1-8)
echo "#define VELL_ENCODING_DATA_KEY \"$key\"" >"$work/installed/include/vell_encoding_data_key.h"
end_library
