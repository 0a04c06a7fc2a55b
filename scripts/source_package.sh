#!/bin/bash
# Puts the source of a Debian package into the cache folder and prints where it is.
#   scripts/source_package.sh [--folder] NAME [MEMBER…]
# Without members the whole source is unpacked, with Debian's patches. Members are names or patterns
# inside the upstream archive, such as 'binutils-*/zlib/zlib.h'; only they are kept, their first
# folder cut off, unpatched. With --folder nothing is fetched.
#
# The package comes from the machine's own Debian sources and is verified by apt. The apt
# configuration is read, never changed: the lists of packages go to the cache folder, where they serve
# all packages for an hour, and downloads to a temporary one. What is in the cache is not fetched again
# as long as this script and its arguments stay the same.
set -eu
. "${BASH_SOURCE[0]%/*}/cache.sh"
[ $# -gt 0 ] || {
    echo "usage: $0 [--folder] NAME [MEMBER…]" >&2
    exit 2
}
name=$1
shift
recipe=$({ cat "${BASH_SOURCE[0]}" && printf '%s\0' "$name" "$@"; } | sha256sum | cut -c 1-16)
cache+=/sources
begin_folder "$cache/$name-$recipe"
unpacked=$(mktemp -d -p "$cache")
private=$(mktemp -d) # apt's own user must be able to enter it
trap 'rm -rf "$private" "$unpacked"' EXIT
chmod 755 "$private" "$unpacked"
mkdir -p "$private"/{sources,cache/archives/partial,download} "$cache/lists/partial"

# The machine's entries for this release, as entries of sources.
release=$(. /etc/os-release && echo "${VERSION_CODENAME:?}")
one_line='$1 == "deb" {
    suite = $2 ~ /^\[/ ? 0 : 3
    if (!suite) for (i = 2; i <= NF; ++i) if ($i ~ /\]$/) { suite = i + 2; break }
    if (index($suite, release) == 1) { $1 = "deb-src"; print }
}'
paragraphs='BEGIN { RS = ""; FS = "\n" } {
    wanted = enabled = 1
    for (i = 1; i <= NF; ++i) {
        if ($i ~ /^Suites:/) wanted = $i ~ "[: \t]" release
        if ($i ~ /^Enabled:[ \t]*no/) enabled = 0
        if ($i ~ /^Types:/) $i = "Types: deb-src"
    }
    if (wanted && enabled) { for (i = 1; i <= NF; ++i) if ($i !~ /^#/) print $i; print "" }
}'
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] && awk -v release="$release" "$one_line" "$file"
done >"$private/sources/machine.list"
for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] && awk -v release="$release" "$paragraphs" "$file" && echo
done >"$private/sources/machine.sources"

options=(-q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$private/sources"
    -o Dir::State::Lists="$cache/lists" -o Dir::Cache="$private/cache"
    -o Acquire::Languages=none -o APT::Update::Post-Invoke-Success=)

# They are large, and take seconds to fetch and to unpack.
update_lists() {
    [ -z "$(find "$cache/lists/ready" -mmin -60 2>/dev/null)" ] || return 0
    rm -f "$cache/lists/ready"
    apt-get "${options[@]}" update && touch "$cache/lists/ready"
}

# Servers may list a version before they have its files; the one before it is there.
download() {
    local version
    for version in $(apt-cache "${options[@]}" showsrc --only-source "$name" |
        sed -n 's/^Version: //p' | sort -Vru); do
        apt-get "${options[@]}" source --only-source --download-only "$name=$version" && return
        rm -f ./*
    done
    return 1
}
{
    { flock 8 && update_lists; } 8>"$cache/lists.lock"
    cd "$private/download"
    [ "$(id -u)" -ne 0 ] || chown _apt . 2>/dev/null || true
    download
} >"$private/log" 2>&1 </dev/null || {
    tail -20 "$private/log" >&2
    echo "The source package $name could not be fetched." >&2
    exit 1
}

if [ $# -eq 0 ]; then
    dpkg-source --no-check --extract ./*.dsc "$unpacked/source" >"$private/log" 2>&1 || {
        cat "$private/log" >&2
        exit 1
    }
    end_folder "$unpacked/source"
else
    tar -xf ./*.orig.tar.* -C "$unpacked" --strip-components=1 --wildcards --no-same-owner "$@"
    end_folder "$unpacked"
fi
