# bash completion for tessarin-cli. What can be typed is asked of the program itself, so it is always up to date.

# The first words of the lines of a section of the help that is on standard input.
_tessarin_cli_section() {
    sed -n "/^$1:/,/^[^ ]/s/^  \([^ ][^ ]*\).*/\1/p"
}

_tessarin_cli() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} word help
    local -a path=()
    help=$("$program" --help 2>/dev/null) || return
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if _tessarin_cli_section Subcommands <<<"$help" | grep -qxFe "$word"; then
            path+=("$word")
            help=$("$program" "${path[@]}" --help 2>/dev/null) || return
        fi
    done
    local choices
    choices=$(_tessarin_cli_section Subcommands <<<"$help")
    if [[ $current == -* ]]; then
        choices=$(_tessarin_cli_section Options <<<"$help" | tr , '\n' | sed 's/{.*//')
    fi
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
}

# Files where the program offers nothing of its own.
complete -o default -F _tessarin_cli tessarin-cli
