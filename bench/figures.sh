#!/bin/sh
# Measures what docs/performance.md tells, all in one go, and prints it; about half an hour on a machine with nothing
# else to do. Matches, soaks and play from databases take hours and have commands of their own there.
#
#   bench/figures.sh BUILD [DATABASE]
#
# BUILD is a release build with tests and desktop. DATABASE is a folder of five-piece databases, for the second column of
# their tables. Needs the commands of Debian's packages time, xvfb and openbox.
set -eu
build=$(readlink -f "$1")
database=${2:+$(readlink -f "$2")}
bin=$build/bin
project=$(dirname "$(dirname "$(readlink -f "$0")")")
export QT_QPA_PLATFORM=offscreen
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
cd "$bin"  # where the programs find the weights
START=$(sed -n 's/^ *"\(W:W31,32,33.*\)",$/\1/p' "$project/cli/bench_positions_table.cpp" | head -n 1)

row() { printf '\n## %s\n' "$1"; }
# In seconds: the clock, processor time of user and system, and the most memory that was resident.
timed() { /usr/bin/time -f '%e s by the clock, %U user, %S system, %M kB' "$@"; }

row "The machine"
uname -srm
sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | sort | uniq -c
uptime
git -C "$project" log --oneline -n 1

row "Moves and search"
for turn in 1 2 3; do
    "$bin/tessarin-cli" perft 10 | tail -n 1
    "$bin/tessarin-cli" search "$START" --depth 21 | tail -n 2
    "$bin/tessarin-cli" bench --depth 15 | tail -n 1
done
for turn in 1 2; do
    for depth in 17 18; do
        for threads in 1 2; do
            echo "depth $depth, threads $threads: $("$bin/tessarin-cli" bench --depth $depth --threads $threads | tail -n 1)"
        done
    done
done
"$bin/search_stops" 1000 8

row "A game analysed, and the sum of its search times"
for turn in 1 2; do
    XDG_DATA_HOME=$work/$turn timed "$bin/tessarin-cli" analyze "$project/data/games/sample.pdn" --time 0.1 \
        --output "$work/$turn.pdn" 2>&1 | tail -n 1
    cat "$work/$turn"/*/*/Tessarin.log | sed -n 's/.* nodes \([0-9]*\), time .*, \([0-9]*\) kN.*/\1 \2/p' |
        awk '$2 > 0 { sum += $1 / $2 / 1000 } END { print sum " s of " NR " searches" }'
done

row "Game control, network"
"$bin/bench_tick"
"$bin/dxp_reply" console
"$bin/dxp_reply" ticks
"$bin/dxp_reply_window"

row "Evaluation, book, games as text, board"
for bench in eval book pdn gui; do "$bin/bench_$bench" --benchmark_color=false 2>/dev/null; done

row "Start of the window"
python3 "$project/bench/window_starts.py" "$bin/tessarin"

row "Databases"
"$bin/bench_egdb" --benchmark_color=false 2>/dev/null
[ -z "$database" ] || TESSARIN_EGDB=$database "$bin/bench_egdb" --benchmark_color=false 2>/dev/null
timed "$bin/tessarin-cli" egdb build "$work/built" --pieces 4 --threads 2 2>&1 | tail -n 1
timed "$bin/tessarin-cli" egdb build "$work/built-mtc" --mtc --pieces 4 --threads 2 2>&1 | tail -n 1
for turn in 1 2 3; do
    for folder in '' "$project/data/wld_database" ${database:+"$database"}; do
        echo "depth 20 with ${folder:-none}: $(timed "$bin/tessarin-cli" search "$START" --depth 20 ${folder:+--egdb "$folder"} 2>&1 | tail -n 2 | tr '\n' ' ')"
    done
done

row "The time of a move"
"$bin/time_trace" fixed 0.1 2
"$bin/time_trace" moves 75 0.5 3
"$bin/time_trace" moves 75 5 1
"$bin/time_trace" increment 10 0.1 2
