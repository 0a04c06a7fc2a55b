#!/bin/bash
# own_files.sh COMMAND…: runs a test with its own copy of the real files (VELL_CORPUS). Functions on
# metadata open a file for themselves alone, and so two tests on one file would get in each other's way.
[ -d "${VELL_CORPUS:-}" ] || exec "$@"
folder=$(mktemp -d) || exit 2
trap 'rm -rf "$folder"' EXIT
cp -r "$VELL_CORPUS/." "$folder" || exit 2
VELL_CORPUS=$folder "$@"
