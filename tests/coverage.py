"""Reads the JSON of gcovr and prints the share of lines that ran of each folder and of all, then, file by file,
the lines that did not."""

import collections
import json
import sys


def ranges(numbers):
    """1, 2, 3, 7 -> 1-3 7"""
    parts = []
    for number in numbers:
        if parts and parts[-1][1] == number - 1:
            parts[-1][1] = number
        else:
            parts.append([number, number])
    return " ".join("%d-%d" % (a, b) if a != b else str(a) for a, b in parts)


def main():
    run, lines = collections.Counter(), collections.Counter()
    missing = {}
    for file in json.load(sys.stdin)["files"]:
        counted = [line for line in file["lines"] if not line.get("gcovr/noncode")]
        never = sorted(line["line_number"] for line in counted if line["count"] == 0)
        for name in (file["file"].rpartition("/")[0], "all"):
            lines[name] += len(counted)
            run[name] += len(counted) - len(never)
        if never:
            missing[file["file"]] = never
    for name in sorted(lines, key=lambda name: (name == "all", name)):
        if lines[name]:
            print("%-10s %5d of %5d lines, %5.1f %%" % (name, run[name], lines[name], 100 * run[name] / lines[name]))
    for file in sorted(missing):
        print("%s: %s" % (file, ranges(missing[file])))


main()
