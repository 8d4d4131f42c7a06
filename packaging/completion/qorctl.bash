# bash completion of qorctl. Sub-commands, options and their values are what the program's own help
# says, so that this file need not follow it.

_qorctl_subcommands() {
    "$1" --help 2>/dev/null |
        awk '/^Subcommands:/ { found = 1; next } /^[^ ]/ { found = 0 }
            found && /^  [a-z]/ { print $1 }'
}

_qorctl_options() {
    "$@" --help 2>/dev/null | grep -oE '^ +(-[a-zA-Z],)?--?[a-z][a-z-]*' | grep -oE -- '--[a-z-]+'
}

# The words of "--option first|second" in the help.
_qorctl_values() {
    local option="$1"
    shift
    "$@" --help 2>/dev/null |
        awk -v option="$option" '$1 == option && $2 ~ /[|]/ { gsub(/[|]/, "\n", $2); print $2 }'
}

_qorctl() {
    local current="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
    local program="${COMP_WORDS[0]}" values
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_qorctl_subcommands "$program") --help" -- "$current")
        return
    fi
    if [[ " ${COMP_WORDS[*]:1:COMP_CWORD - 1} " == *" -- "* ]]; then
        mapfile -t COMPREPLY < <(compgen -c -- "$current")
        return
    fi
    if [[ "$previous" == -* ]]; then
        values="$(_qorctl_values "$previous" "$program" "${COMP_WORDS[1]}")"
        if [[ -n "$values" ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
            return
        fi
    fi
    if [[ "$current" == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_qorctl_options "$program" "${COMP_WORDS[1]}")" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -o filenames -F _qorctl qorctl
