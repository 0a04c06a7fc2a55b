#!/bin/bash
# Lets clang-tidy and cppcheck look at the sources.
#   scripts/tidy.sh            what has changed since the newest commit of the default branch that was
#                              fetched; without one, what the last commit changed (./test does this)
#   scripts/tidy.sh all        everything that the native build compiles
#   scripts/tidy.sh FILE…      these
#   scripts/tidy.sh cppcheck   cppcheck on everything, with what it remembers in build/cppcheck
# Exit code 1 when they find something. clang-tidy is given VELL_TIDY_SECONDS (90, without a limit for
# `all` and FILE); which files it did not get to is said.
set -u
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
cd "$root" || exit 2

seconds=${VELL_TIDY_SECONDS:-90}
database=build/tidy # without precompiled headers, in which clang-tidy would look at everything

# Files in the working tree, the new ones as well.
changed_files() {
    local base
    base=$(git merge-base HEAD origin/HEAD 2>/dev/null || git merge-base HEAD origin/main 2>/dev/null ||
        git rev-parse -q --verify HEAD~1) || return
    git diff --name-only --diff-filter=d "$base" --
    git ls-files --others --exclude-standard
}

# A header is looked at with the source of its name.
sources_of() {
    local file
    while read -r file; do
        case $file in
        *.h) file=${file%.h}.cpp ;;
        esac
        [[ $file == *.cpp ]] && grep -qF "/$file\"" "$database/compile_commands.json" && echo "$file"
    done | sort -u
}

configure_database() {
    [ -f "$database/build.ninja" ] && [ "$database/build.ninja" -nt CMakePresets.json ] && return
    scripts/deflate64_source.sh >/dev/null || exit 2
    mkdir -p build
    cmake --preset sanitizers -B "$database" -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        >build/tidy.log 2>&1 || die "Configuring failed; the whole output is in build/tidy.log"
}

tidy() {
    local limit=$1 file done_list
    shift
    done_list=$(mktemp)
    printf '%s\0' "$@" | timeout "$limit" xargs -0 -n 1 -P "$(nproc)" bash -c '
        found=$(clang-tidy -p "$0" --quiet --warnings-as-errors="*" "$2" 2>/dev/null) ||
            printf "%s\n" "$found"
        [ -n "$found" ] && printf "found\n" >>"$1"
        printf "%s\n" "$2" >>"$1"' "$database" "$done_list"
    for file; do
        grep -qxF "$file" "$done_list" || say "  not looked at, since the time was over: $file"
    done
    ! grep -qx found "$done_list"
    local status=$?
    rm -f "$done_list"
    return $status
}

run_cppcheck() {
    mkdir -p build/cppcheck
    cppcheck -q -j "$(nproc)" --std=c++20 --language=c++ -I. --error-exitcode=1 --inline-suppr \
        --enable=warning,performance,portability --suppressions-list=scripts/cppcheck.txt \
        --cppcheck-build-dir=build/cppcheck src console fuzz
}

need_packages "${test_packages[@]}"
[ "${1:-}" != cppcheck ] || {
    run_cppcheck
    exit
}
configure_database
case ${1:-} in
"") mapfile -t files < <(changed_files | sources_of) ;;
all)
    seconds=0
    mapfile -t files < <(git ls-files '*.cpp' | sources_of)
    ;;
*)
    seconds=0
    files=("$@")
    ;;
esac
[ ${#files[@]} -gt 0 ] || exit 0
tidy "$seconds" "${files[@]}"
