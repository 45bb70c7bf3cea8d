#!/bin/bash
# Types the beginnings of commands and looks at what the shell offers; and sees whether the manual page names all
# commands of the program.
#
#   completion_test.sh PROGRAM PROJECT
set -eu
program=$1 project=$2
. "$project/packaging/completion.bash"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# offered WORD...: the last word is the one that is being typed.
offered() {
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _tessarin_cli
    echo "${COMPREPLY[*]}"
}

expect() {
    local wanted=$1
    shift
    [ "$(offered "$@")" = "$wanted" ] || fail "$* <tab> offers \"$(offered "$@")\" instead of \"$wanted\""
}

expect "perft" pe
expect "book" bo
expect "--depth" bench --de
expect "build" book bu
expect "--deep-positions --deep-nodes" book build --dee
expect "--games" match a.bin b.bin --ga
expect "--no-adjudicate" match --no-a
expect "-h" perft -h
expect "" perft 5 W:
expect "" nonsense x
[ "$(offered "" | wc -w)" -gt 10 ] || fail "an empty command offers too little: $(offered "")"

for command in $(offered ""); do
    grep -q "^\.BI\? $command\b" "$project/packaging/man/tessarin-cli.1" ||
        fail "the manual page says nothing of $command"
done
