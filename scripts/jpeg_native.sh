#!/bin/bash
# Prints the folder of the JPEG library for native tests and fuzz targets: include, and lib/libjpeg.a with
# the patch and the memory manager that the plug-in's has, compiled with clang and the sanitizers. Builds
# it where that has not been done.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"
. "$scripts/picture_libraries/jpeg.sh"

begin_library jpeg-native "${BASH_SOURCE[0]}" "$scripts"/picture_libraries/* "$scripts/jpeg.patch" \
    <<<"libjpeg-turbo $(clang --version)"
echo "Building the JPEG library for native tests (once)" >&2
source=$(fetch_sources libjpeg-turbo)
make_jpeg_source "$source"
# The checks of undefined behaviour make one function of the encoder of Huffman codes so long that it takes
# the compiler 45 s, more than all the rest.
echo 'set_source_files_properties(jchuff.c PROPERTIES COMPILE_OPTIONS -fno-sanitize=undefined)' \
    >>"$work/source/CMakeLists.txt"
flags='-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer'
flags+=' -fsanitize-coverage=inline-8bit-counters,pc-table'
logged jpeg cmake -S "$work/source" -B "$work/jpeg" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_COMPILER=clang -DCMAKE_C_FLAGS_RELEASE="-O1 -gline-tables-only $flags" \
    "${jpeg_options[@]}"
install_jpeg
end_library
