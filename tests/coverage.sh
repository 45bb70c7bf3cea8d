#!/bin/sh
# Tells which lines of the program run in the tests: the share of each folder, then the lines that never do.
#
#   tests/coverage.sh BUILD
#
# BUILD is a folder of its own, outside the sources. The windows, and what takes a display or many minutes, stay
# out. Needs gcovr.
set -eu
project=$(dirname "$(dirname "$(readlink -f "$0")")")
mkdir -p "$1"
build=$(readlink -f "$1")

cmake -S "$project" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTESSARIN_TESTS=ON -DTESSARIN_DESKTOP=OFF \
    -DCMAKE_PROJECT_INCLUDE="$project/tests/coverage.cmake" >"$build/coverage.log"
cmake --build "$build" >>"$build/coverage.log"
find "$build" -name '*.gcda' -delete
export XDG_DATA_HOME="$build/tests/data-home"
# Whole programs, as every process adds its counts to all files.
for program in "$build"/bin/*_tests "$build"/bin/*_test; do
    case "${program##*/}" in
    *deep*) ;;
    *) (cd "$build" && "$program" --gtest_brief=1) >>"$build/coverage.log" 2>&1 || echo "failed: $program" ;;
    esac
done
ctest --test-dir "$build" -R '^formats$' >>"$build/coverage.log" || echo "failed: formats"
gcovr --root "$project" --object-directory "$build" --filter "$project/" --exclude "$project/tests/" \
    --exclude "$project/bench/" --gcov-ignore-parse-errors --json - 2>>"$build/coverage.log" "$build" |
    python3 -B "$project/tests/coverage.py"
