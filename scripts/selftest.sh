#!/bin/bash
# Builds build/selftest, the folder that checks the plug-in on Windows (docs/selftest.md), and packs
# it as build/selftest.zip where there is a zip program.
set -u
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"

need_packages "${build_packages[@]}" python3
build windows selftest
command -v zip >/dev/null || exit 0
rm -f "$root/build/selftest.zip"
(cd "$root/build" && zip -qr selftest.zip selftest)
