# Shared by the scripts that build libraries into the cache folder. Expects to be sourced with the folder
# of the scripts as `scripts`.
#
# What is in the cache is not built again as long as the recipe, the toolchain and the compiler stay
# the same.

. "$scripts/cache.sh"
toolchain=$scripts/../cmake/mingw64.cmake

# NAME FILE…: begins the folder (scripts/cache.sh) of what these files and the words on standard input
# make, and sets `work` to a folder to build in, of which work/installed becomes the target.
begin_library() {
    local name=$1
    shift
    local recipe
    recipe=$({
        cat "$@" "$toolchain" "$scripts"/{cache,library_build,source_package}.sh -
        x86_64-w64-mingw32-g++-posix --version
    } | sha256sum | cut -c 1-16)
    begin_folder "$cache/$name-$recipe"
    work=$(mktemp -d -p "$cache")
    trap 'rm -rf "$work"' EXIT
    mkdir "$work/installed"
}

# PACKAGE…: prints the folders of their sources, one a line. They are fetched side by side.
fetch_sources() {
    local package output outputs=() source
    for package in "$@"; do
        exec {output}< <("$scripts/source_package.sh" "$package")
        outputs+=("$output")
    done
    for output in "${outputs[@]}"; do
        IFS= read -r source <&"$output" || return 1
        echo "$source"
    done
}

end_library() { end_folder "$work/installed"; }

# NAME COMMAND…: what it writes goes to the log of that name; shows the log's end when the command fails.
logged() {
    local name=$1 log=$work/$1.log
    shift
    "$@" </dev/null >>"$log" 2>&1 || {
        tail -30 "$log" >&2
        echo "Building $name failed at: $*" >&2
        exit 1
    }
}

# NAME SOURCE OPTION…
configure() {
    local name=$1 source=$2
    shift 2
    logged "$name" cmake -S "$source" -B "$work/$name" -G Ninja --toolchain "$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
        -DCMAKE_INSTALL_PREFIX="$work/installed" -DCMAKE_INSTALL_LIBDIR=lib "$@"
}

# NAME: builds what is configured, and installs it into the folder that becomes the target.
install_library() {
    logged "$1" cmake --build "$work/$1"
    logged "$1" cmake --install "$work/$1"
}
