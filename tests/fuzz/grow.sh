#!/bin/sh
# Fuzzes each target for a while and lets its corpus grow by what was found.
#
#   tests/fuzz/grow.sh BUILD WORK SECONDS [TARGET...]
#
# BUILD is a build by the `fuzz` preset. WORK is a folder of its own outside the sources: it keeps everything that was
# ever found, so that the next run begins there, for each target a log and the processor time of all its runs, and the
# inputs that broke one. Into the corpus of the tests goes the smallest set that reaches as much, the shortest inputs
# first, up to CORPUS_BYTES a target. Ends with 1 if a target broke. Needs the command of Debian's package time.
set -eu
CORPUS_BYTES=140000
FOUND='.*/[0-9a-f]{40}'  # as inputs that were found are named; the others were written by hand and stay

build=$(readlink -f "$1")
mkdir -p "$2"
work=$(readlink -f "$2")
seconds=$3
shift 3
corpus=$(dirname "$(readlink -f "$0")")/corpus
[ $# -gt 0 ] || set -- $(ls "$corpus")

status=0
for target in "$@"; do
    mkdir -p "$work/$target"
    found_before=$(ls "$work/$target" | wc -l)
    /usr/bin/time -a -o "$work/$target.seconds" -f '%U %S' "$build/bin/$target" -max_total_time="$seconds" \
        -artifact_prefix="$work/$target-" "$work/$target" "$corpus/$target" >"$work/$target.log" 2>&1 || {
        echo "$target broke: $work/$target.log"
        status=1
        continue
    }
    runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$work/$target.log")
    rm -rf "$work/$target.least"
    mkdir "$work/$target.least"
    find "$corpus/$target" -regextype posix-extended -type f ! -regex "$FOUND" -exec cp -t "$work/$target.least" {} +
    "$build/bin/$target" -merge=1 "$work/$target.least" "$corpus/$target" "$work/$target" >/dev/null 2>&1
    find "$corpus/$target" -regextype posix-extended -type f -regex "$FOUND" -delete
    bytes=0
    for input in $(ls -Sr "$work/$target.least" | grep -Ex '[0-9a-f]{40}'); do
        bytes=$((bytes + $(stat -c %s "$work/$target.least/$input")))
        [ $bytes -le $CORPUS_BYTES ] || break
        cp "$work/$target.least/$input" "$corpus/$target/"
    done
    spent=$(awk '/^[0-9. ]+$/ { sum += $1 + $2 } END { printf "%.0f", sum }' "$work/$target.seconds")
    echo "$target: $runs runs, $(($(ls "$work/$target" | wc -l) - found_before)) inputs found, $spent s of processor time" \
        "in all runs"
done
exit $status
