#!/bin/bash
# Ends Wine's server of the prefix WINEPREFIX when nothing has run for some seconds. Only scripts/wine
# starts it, with the file `keeper` locked, which tells that there is one. VELL_WINE_LINGER is how often
# it looks, in seconds.
exec 8<>"$WINEPREFIX/users" 9<>"$WINEPREFIX/lock"

# What runs in the prefix, a line each: process number and name.
processes() {
    local environment
    while IFS= read -r environment; do
        environment=${environment%/*}
        echo "${environment##*/} $(cat "$environment/comm" 2>/dev/null)"
    done < <(grep -lszxF "WINEPREFIX=$WINEPREFIX" /proc/[0-9]*/environ)
}

# Whether there are programs that others have started; services do not count.
has_programs() {
    processes | grep '\.exe$' |
        grep -qvE ' (services|plugplay|winedevice|svchost|rpcss|explorer|conhost)\.exe$'
}

end_server() {
    if [ -d "$WINEPREFIX" ]; then
        wineserver -k
        wineserver -w
    else # the build folder was deleted, and nothing finds the server any more
        processes | awk '$2 ~ /^wineserver/ { print $1 }' | xargs -r kill
    fi
} 7>&- 8>&- 9>&-

while sleep "${VELL_WINE_LINGER:-10}"; do
    flock -n 9 || continue
    if flock -n 8 && ! has_programs; then
        end_server
        exit
    fi
    flock -u 8
    flock -u 9
done
