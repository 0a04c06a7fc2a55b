# Shared by run, test and fuzz/run. Expects to be sourced with the project's folder as `root`.

say() { printf '%s\n' "$*" >&2; }
die() {
    say "$*"
    exit 2
}

# Installs the Debian packages that are missing, and touches nothing when none is.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "These packages are missing, and installing them needs root: ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing Debian packages (half a minute or so): ${missing[*]}"
    mkdir -p "$root/build"
    local log="$root/build/install.log"
    {
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q &&
            "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y \
                --no-install-recommends "${missing[@]}"
    } </dev/null >"$log" 2>&1 || {
        tail -20 "$log" >&2
        die "The packages could not be installed; the whole output is in build/install.log"
    }
}

build_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix mingw-w64-tools libz-mingw-w64-dev
    googletest wine64 wine dpkg-dev poppler-data libboost-dev nlohmann-json3-dev ccache
    nasm)
site_packages=(python3 python3-markdown-it python3-pygments)
browser_packages=(chromium) # the tests of the site; npm may come with a Node.js of another source
command -v npm >/dev/null || browser_packages+=(nodejs npm)
test_packages=("${build_packages[@]}" "${site_packages[@]}" "${browser_packages[@]}" clang
    libclang-rt-14-dev zlib1g-dev libjpeg62-turbo-dev libpng-dev liblcms2-dev libexpat1-dev xvfb xauth jq
    clang-tidy cppcheck llvm
    libimage-exiftool-perl exiv2 pngcheck webp libtiff-tools libjpeg-turbo-progs
    zip unzip p7zip-full libarchive-tools
    qpdf poppler-utils ffmpeg mediainfo libvips-tools imagemagick python3-pil python3-numpy)
package_packages=(git python3 python3-markdown-it osslsigncode openssl)
test_packages+=("${package_packages[@]}")

# Calls Wine's server for this build's prefix, never the user's own.
wine_server() {
    WINEPREFIX="${VELL_WINEPREFIX:-$root/build/wine}" wineserver "$@" </dev/null >/dev/null 2>&1
}

# build PRESET TARGET… [-- CMAKE-OPTION…]: configures where that is due and builds. Says so when it
# takes more than a moment.
build() {
    local preset=$1 log="$root/build/$1.log"
    shift
    local targets=()
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        targets+=("$1")
        shift
    done
    [ $# -gt 0 ] && shift
    mkdir -p "$root/build"
    # What a preset says is kept where it was configured.
    if [ ! "$root/build/$preset/build.ninja" -nt "$root/CMakePresets.json" ]; then
        say "Building ($preset; a few minutes the first time)"
        # The longest part need not wait for the configuring. The build waits for it, and tells what fails.
        case $preset in
        release | windows) "$root/scripts/poppler.sh" >/dev/null 2>&1 & ;;
        esac
        (cd "$root" && cmake --preset "$preset" "$@") </dev/null >"$log" 2>&1 || {
            tail -30 "$log" >&2
            die "Configuring failed; the whole output is in build/$preset.log"
        }
    else
        (sleep 1 </dev/null >/dev/null 2>&1 && say "Building what has changed ($preset)") &
        local notice=$!
    fi
    cmake --build "$root/build/$preset" --target "${targets[@]}" </dev/null >"$log" 2>&1
    local status=$?
    [ -n "${notice:-}" ] && kill "$notice" 2>/dev/null && wait "$notice" 2>/dev/null
    [ $status -eq 0 ] || {
        grep -A15 'FAILED\|error' "$log" | head -60 >&2
        die "The build failed; the whole output is in build/$preset.log"
    }
}
