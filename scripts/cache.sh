# Shared by the scripts that make a folder in the cache and print where it is. Expects to be sourced
# before anything looks at the arguments: with --folder, which it takes away, a script only prints the
# folder and makes nothing.
#
# A folder is made once, by one process, and is there when it holds the file `finished`: what waits for
# its files may have made empty folders before.

cache=${XDG_CACHE_HOME:-$HOME/.cache}/vell-file
only_folder=
[ "${1:-}" != --folder ] || {
    only_folder=1
    shift
}

# FOLDER: prints it and ends the script where it is there, or where nothing else is asked for. Otherwise
# goes on, with `target` set, as the one process that makes it.
begin_folder() {
    target=$1
    if [ -z "$only_folder" ] && [ ! -e "$target/finished" ]; then
        mkdir -p "${target%/*}"
        exec 9>"$target.lock"
        flock 9 # somebody else may be making it
        [ -e "$target/finished" ] || return 0
    fi
    echo "$target"
    exit
}

# MADE: puts that folder in the place of the target.
end_folder() {
    local attempt
    touch "$1/finished"
    chmod 755 "$1"
    for attempt in 1 2 3 4 5; do
        rm -rf "$target"
        mv -T "$1" "$target" && break
        [ $attempt -lt 5 ] || exit 1
    done
    echo "$target"
}
