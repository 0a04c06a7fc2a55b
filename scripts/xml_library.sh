#!/bin/bash
# Prints the folder of the XML parser for Windows: include/expat.h and lib/libexpat.a. Builds it where
# that has not been done. What declares entities is left out of it: our documents may declare none.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/library_build.sh"

begin_library xml "${BASH_SOURCE[0]}" <<<expat
echo "Building the library for XML (once)" >&2
source=$(fetch_sources expat)
configure xml "$source/expat" -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF \
    -DEXPAT_BUILD_EXAMPLES=OFF -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF \
    -DEXPAT_BUILD_PKGCONFIG=OFF -DEXPAT_DTD=OFF -DCMAKE_C_FLAGS_RELEASE="-O2 -DNDEBUG"
install_library xml
end_library
