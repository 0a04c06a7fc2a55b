#!/bin/bash
# own_files.sh COMMAND…: runs a test with a copy of the real files (VELL_CORPUS) of its own. The
# plug-in opens what it writes about for itself alone, which another test that reads it would see.
[ -d "${VELL_CORPUS:-}" ] || exec "$@"
folder=$(mktemp -d) || exit 2
trap 'rm -rf "$folder"' EXIT
cp -r "$VELL_CORPUS/." "$folder" || exit 2
VELL_CORPUS=$folder "$@"
