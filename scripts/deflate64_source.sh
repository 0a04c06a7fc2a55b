#!/bin/bash
# Prints the folder of zlib's contrib/infback9 (the decoder for Deflate64), with the zlib headers it
# compiles against two levels above. Fetches it where that has not been done.
set -eu
source=$("$(dirname "${BASH_SOURCE[0]}")/source_package.sh" "$@" binutils \
    'binutils-*/zlib/contrib/infback9' \
    'binutils-*/zlib/zconf.h' 'binutils-*/zlib/zlib.h' 'binutils-*/zlib/zutil.h')
echo "$source/zlib/contrib/infback9"
