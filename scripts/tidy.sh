#!/bin/bash
# Lets clang-tidy and cppcheck look at the sources.
#   scripts/tidy.sh            what differs from the newest commit of the default branch that was
#                              fetched; where nothing does, what the last commit changed
#   scripts/tidy.sh all        everything that the native build compiles
#   scripts/tidy.sh FILE…      these
#   scripts/tidy.sh cppcheck   cppcheck on everything, with what it remembers in build/cppcheck
# Exit code 1 when they find something. ./test runs the first and the last. clang-tidy is given
# VELL_TIDY_SECONDS (90) for what has changed, and as long as it takes otherwise. A source in which it
# found nothing is passed over until the source, a header of it or the checks are others.
set -u
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
. "$root/scripts/common.sh"
cd "$root" || exit 2

# Of its own, each source for itself and without precompiled headers: all of one is looked at with each
# source.
database=build/tidy
checked=$database/checked

default_branch() {
    local name
    for name in origin/HEAD origin/main origin/master; do
        git rev-parse -q --verify "$name" && return
    done
}

# Files in the working tree, the new ones as well.
changed_since() {
    git diff --name-only --diff-filter=d "$1" --
    git ls-files --others --exclude-standard
}

changed_files() {
    local base files=
    base=$(git merge-base HEAD "$(default_branch)" 2>/dev/null) && files=$(changed_since "$base")
    [ -n "$files" ] || files=$(changed_since HEAD~1)
    printf '%s\n' "$files"
}

# A header is looked at with the source of its name; what needs Poppler has no native build here.
sources_of() {
    local file
    while read -r file; do
        [[ $file == *.h ]] && file=${file%.h}.cpp
        case $file in
        src/windows/* | fuzz/pdf_text_fuzz.cpp) ;;
        *.cpp) grep -qF "\"file\": \"$root/$file\"" $database/compile_commands.json && echo "$file" ;;
        esac
    done | sort -u
}

configure_database() {
    mkdir -p build
    [ $database/build.ninja -nt CMakePresets.json ] &&
        cmake --build $database --target build.ninja >build/tidy.log 2>&1 && return
    cmake --preset sanitizers -B $database -DCMAKE_UNITY_BUILD=OFF \
        -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >build/tidy.log 2>&1 &&
        cmake --build $database --target vell_libraries >>build/tidy.log 2>&1 ||
        die "Configuring failed; the whole output is in build/tidy.log"
}

# What clang-tidy's answer about a source depends on, as one number.
key_of() {
    local command
    command=$(jq -r --arg file "$root/$1" 'map(select(.file == $file))[0].command' \
        $database/compile_commands.json)
    { cat .clang-tidy tests/.clang-tidy && clang-tidy --version && cd $database &&
        eval "${command/ -o * -c / -E -o - }"; } 2>/dev/null | sha256sum | cut -c 1-32
}

tidy_one() {
    local key found
    key=$(key_of "$1")
    [ -e "$checked/$key" ] && return
    found=$(clang-tidy -p $database --quiet --warnings-as-errors='*' "$1" 2>/dev/null) || {
        printf '%s\n' "$found"
        return 1
    }
    touch "$checked/$key"
}

# SECONDS FILE…: as many of the files at a time as there are processors. 0 for no limit.
tidy() {
    local limit=$1
    shift
    mkdir -p $checked
    export -f tidy_one key_of
    export root database checked
    printf '%s\0' "$@" | timeout "$limit" xargs -0 -n 1 -P "$(nproc)" bash -c 'tidy_one "$0"'
    case $? in
    0) ;;
    124) say "  clang-tidy did not get to all of ${#} sources within $limit s; scripts/tidy.sh goes on" ;;
    *) return 1 ;;
    esac
}

run_cppcheck() {
    mkdir -p build/cppcheck
    cppcheck -q -j "$(nproc)" --std=c++20 --language=c++ --library=googletest -I. --error-exitcode=1 \
        --enable=warning,performance,portability --suppressions-list=scripts/cppcheck.txt \
        --cppcheck-build-dir=build/cppcheck src console fuzz bench tests
}

need_packages "${test_packages[@]}"
seconds=0
case ${1:-} in
cppcheck)
    run_cppcheck
    exit
    ;;
"")
    configure_database
    seconds=${VELL_TIDY_SECONDS:-90}
    mapfile -t files < <(changed_files | sources_of)
    ;;
all)
    configure_database
    mapfile -t files < <(git ls-files '*.cpp' | sources_of)
    ;;
*)
    configure_database
    files=("$@")
    ;;
esac
[ ${#files[@]} -eq 0 ] || tidy "$seconds" "${files[@]}"
