#!/bin/bash
# Prints the folder of libdeflate's source with what scripts/deflate.patch adds to it: parts of a stream
# that are joined, and streams that are expanded block by block. Fetches it where that has not been done.
set -eu
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source=$("$scripts/source_package.sh" libdeflate)
recipe=$({ cat "${BASH_SOURCE[0]}" "$scripts/deflate.patch" && echo "$source"; } | sha256sum | cut -c 1-16)
target=${source%/*}/libdeflate-patched-$recipe
exec 9>"$target.lock"
flock 9 # somebody else may be making it
if [ ! -d "$target" ]; then
    work=$(mktemp -d -p "${target%/*}")
    trap 'rm -rf "$work"' EXIT
    cp -r "$source" "$work/source"
    patch -s -d "$work/source" -p1 <"$scripts/deflate.patch"
    mv "$work/source" "$target"
fi
echo "$target"
