#!/bin/bash
# Prints the folder of libdeflate's source with what scripts/deflate.patch adds to it: parts of a stream
# that are joined, and streams that are expanded block by block. Fetches it where that has not been done.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$scripts/cache.sh"
recipe=$(cat "${BASH_SOURCE[0]}" "$scripts"/{deflate.patch,cache.sh,source_package.sh} |
    sha256sum | cut -c 1-16)
begin_folder "$cache/sources/libdeflate-patched-$recipe"
source=$("$scripts/source_package.sh" libdeflate)
work=$(mktemp -d -p "${target%/*}")
trap 'rm -rf "$work"' EXIT
cp -r "$source" "$work/source"
patch -s -d "$work/source" -p1 <"$scripts/deflate.patch"
end_folder "$work/source"
