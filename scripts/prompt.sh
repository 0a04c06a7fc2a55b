# The prompt at a terminal: bash's line editing (GNU readline) in front of the console host, with a
# history that lasts and completion of functions, script steps, commands, switches and paths.
# Expects to be sourced with `root` and `vellhost` (the command) set.

prompt_state="${XDG_STATE_HOME:-$HOME/.local/state}/vell-file"
prompt_reference="$root/docs/reference/functions"

# Sends a line and prints the answer up to the mark behind it; false when the host has gone.
prompt_answer() {
    local line
    if [ $# -gt 0 ]; then printf '%s\n' "$1" >&"${HOST[1]}" 2>/dev/null || return 1; fi
    while IFS= read -r line <&"${HOST[0]}"; do
        [ "$line" = $'\x1e' ] && return
        printf '%s\n' "$line"
    done
    return 1
}

# The names that may stand where the word begins that ends at the cursor.
prompt_names() {
    printf '%s\n' help describe list history variables quit "${prompt_functions[@]}"
}

# Candidates for the word $2 behind the text $1, one a line.
prompt_candidates() {
    local before=$1 word=$2 function
    case $before in
    # Inside a text: a switch of the function that is being typed, or a path.
    *\"*)
        local quotes=${before//[^\"]/}
        if [ $((${#quotes} % 2)) -eq 1 ]; then
            function=$(grep -o 'VlFile_[A-Za-z]*' <<<"$before" | tail -1)
            if [[ $word == -* ]]; then
                grep -oh '`-[A-Za-z0-9_=]*' "$prompt_reference/$function.md" 2>/dev/null |
                    tr -d '`' | sort -u | grep -i -- "^$word"
            elif [[ $before =~ step\ *\"[^\"]*$ ]]; then
                printf '%s\n' "${prompt_steps[@]}" | grep -i "^$word"
            else
                compgen -f -- "${word#[Zz]:}"
            fi
            return
        fi
        ;;
    esac
    [ -n "$word" ] && prompt_names | grep -i -e "^$word" -e "^VlFile_$word"
}

# The longest text that all lines begin with.
prompt_common() {
    awk 'NR == 1 { common = $0; next }
        { while (index($0, common) != 1) common = substr(common, 1, length(common) - 1) }
        END { print common }'
}

prompt_complete() {
    local before=${READLINE_LINE:0:READLINE_POINT} word
    word=$(grep -o '[^ "(;&]*$' <<<"$before")
    local found
    mapfile -t found < <(prompt_candidates "${before%"$word"}" "$word")
    [ ${#found[@]} -eq 0 ] && return
    local chosen
    chosen=$(printf '%s\n' "${found[@]}" | prompt_common)
    if [ ${#found[@]} -gt 1 ] && [ ${#chosen} -le ${#word} ]; then
        printf '%s\n' "${found[@]}" | column -c "$(tput cols 2>/dev/null || echo 80)" >&2
        return
    fi
    [ ${#found[@]} -eq 1 ] && [[ $chosen == VlFile_* ]] && [[ ${READLINE_LINE:READLINE_POINT} != *"("* ]] &&
        chosen+="( "
    READLINE_LINE=${before%"$word"}$chosen${READLINE_LINE:READLINE_POINT}
    READLINE_POINT=$((${#before} - ${#word} + ${#chosen}))
}

prompt_loop() {
    local line list
    mkdir -p "$prompt_state" && touch "$prompt_state/history"
    HISTFILE="$prompt_state/history" HISTSIZE=2000 HISTFILESIZE=2000 HISTCONTROL=ignoredups
    set -o history -o emacs
    history -r
    bind -x '"\t": prompt_complete' 2>/dev/null
    coproc HOST { exec "${vellhost[@]}" --prompt; }
    prompt_answer || return
    list=$("${vellhost[@]}" --list)
    mapfile -t prompt_functions < <(grep -o 'VlFile_[A-Za-z]*' <<<"$list" | sort -u)
    mapfile -t prompt_steps < <(sed -n 's/.*step "\([^"]*\)".*/\1/p' <<<"$list")
    while IFS= read -r -e -p '> ' line; do
        [ -z "$line" ] && continue
        case $line in history) history | tail -50 && continue ;; quit | exit) break ;; esac
        history -s -- "$line"
        prompt_answer "$line" || break
    done
    history -w
    printf '\n'
    eval "exec ${HOST[1]}>&-"
    wait "$HOST_PID" 2>/dev/null
}
