#!/bin/bash
# Prints the folder of Poppler for the fuzzer (include, lib/libpoppler.a): the source and the patch of
# scripts/poppler.sh, built for this system with clang and the sanitizers. Builds it where that has not
# been done, which takes some minutes of a processor's time.
#
# What is undefined behaviour in Poppler itself is told and does not end the program: much of it is
# harmless, and none of it is ours. Faults of memory end it.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"
patch=$scripts/poppler.patch

begin_library poppler-fuzz "${BASH_SOURCE[0]}" "$patch" <<<"poppler $(clang --version)"
echo "Building Poppler for the fuzzer (some minutes, once)" >&2

poppler_source=$(fetch_sources poppler)
cp -r "$poppler_source" "$work/source"
patch -s -d "$work/source" -p1 <"$patch"
# As in scripts/poppler.sh: what nothing refers to.
unneeded='goo/(NetPBMWriter|PNGWriter|TiffWriter|gbase64|gbasename)'
unneeded+='|poppler/(BBox|PS|PreScan)OutputDev|poppler/(FILECacheLoader|FontInfo|PageTransition)'
unneeded+='|poppler/(FD|Local)?PDFDoc(Builder|Factory)'
sed -Ei "\\#^ *($unneeded)\.cc\$#d" "$work/source/CMakeLists.txt"
sanitizers='-fsanitize=address,undefined,fuzzer-no-link -fsanitize-recover=undefined -fno-omit-frame-pointer'
logged Poppler cmake -S "$work/source" -B "$work/Poppler" -G Ninja -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_FLAGS_RELEASE="-O1 -gline-tables-only $sanitizers" \
    -DCMAKE_CXX_FLAGS_RELEASE="-O1 -gline-tables-only -w $sanitizers" \
    -DCMAKE_INSTALL_PREFIX="$work/installed" -DCMAKE_INSTALL_LIBDIR=lib \
    -DENABLE_UNSTABLE_API_ABI_HEADERS=ON -DFONT_CONFIGURATION=generic \
    -DENABLE_BOOST=OFF -DCMAKE_DISABLE_FIND_PACKAGE_Boost=ON -DENABLE_DCTDECODER=libjpeg \
    -DENABLE_LIBOPENJPEG=none -DENABLE_LIBCURL=OFF -DENABLE_NSS3=OFF -DENABLE_GPGME=OFF \
    -DENABLE_CMS=none -DENABLE_ZLIB=OFF -DENABLE_GLIB=OFF -DENABLE_GOBJECT_INTROSPECTION=OFF \
    -DENABLE_QT5=OFF -DENABLE_QT6=OFF -DENABLE_CPP=OFF -DENABLE_UTILS=OFF -DENABLE_RELOCATABLE=OFF \
    -DBUILD_GTK_TESTS=OFF -DBUILD_QT5_TESTS=OFF -DBUILD_QT6_TESTS=OFF -DBUILD_CPP_TESTS=OFF \
    -DBUILD_MANUAL_TESTS=OFF -DRUN_GPERF_IF_PRESENT=OFF -DWITH_NSS3=OFF -DWITH_PNG=OFF -DWITH_TIFF=OFF \
    -DWITH_Cairo=OFF
install_library Poppler
end_library
