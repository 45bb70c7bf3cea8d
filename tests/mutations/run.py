#!/usr/bin/env python3
"""Breaks the program in one place after the other and tells which breaks no test finds.

    run.py BUILD [NUMBER...]

BUILD is a folder of its own, which a copy of the sources and their build go into; nothing else is touched. With
numbers only these breaks are made, those of the windows behind the others. The windows are built only if a break needs
them. The last line is the number found and made. Ends with 1 if a break was not found, is not possible any more, or does
not compile.
"""

import filecmp
import os
import shutil
import signal
import subprocess
import sys

from mutations import MUTATIONS as PROGRAM_MUTATIONS
from window_mutations import MUTATIONS as WINDOW_MUTATIONS

MUTATIONS = PROGRAM_MUTATIONS + WINDOW_MUTATIONS
PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TEST_SECONDS = 300


def copy_changed(sources):
    names = subprocess.run(["git", "-C", PROJECT, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                           check=True, capture_output=True, text=True)
    for name in filter(None, names.stdout.split("\0")):
        source, copy = os.path.join(PROJECT, name), os.path.join(sources, name)
        if os.path.exists(copy) and filecmp.cmp(source, copy, shallow=False):
            continue
        os.makedirs(os.path.dirname(copy), exist_ok=True)
        shutil.copyfile(source, copy)


def prepare(sources, build, programs):
    copy_changed(sources)
    desktop = any(program.startswith("gui_") for program in programs)
    subprocess.run(["cmake", "-S", sources, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                    "-DTESSARIN_TESTS=ON", "-DTESSARIN_DESKTOP=" + ("ON" if desktop else "OFF")],
                   check=True, stdout=subprocess.DEVNULL)
    for program in sorted(programs):
        if is_found(build, [program]) is not False:
            sys.exit("%s does not pass as it is" % program)


def passes(build, program):
    """Whether the test program ends well, and in time; none of the programs that it runs outlives it."""
    environment = dict(os.environ, XDG_DATA_HOME=os.path.join(build, "data-home"))
    with subprocess.Popen([os.path.join(build, "bin", program), "--gtest_fail_fast", "--gtest_brief=1"], cwd=build,
                          env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.STDOUT,
                          start_new_session=True) as test:
        try:
            return test.wait(TEST_SECONDS) == 0
        except subprocess.TimeoutExpired:
            os.killpg(test.pid, signal.SIGKILL)
            return False


def is_found(build, programs):
    """Whether one of the programs fails; or None if they do not compile."""
    if subprocess.run(["ninja", "-C", build] + programs, stdout=subprocess.DEVNULL).returncode != 0:
        return None
    return not all(passes(build, program) for program in programs)


def main():
    work = os.path.abspath(sys.argv[1])
    numbers = [int(argument) for argument in sys.argv[2:]] or range(1, len(MUTATIONS) + 1)
    sources, build = os.path.join(work, "sources"), os.path.join(work, "build")
    prepare(sources, build, {program for n in numbers for program in MUTATIONS[n - 1][3].split()})
    found = 0
    for number in numbers:
        file, old, new, programs = MUTATIONS[number - 1]
        path = os.path.join(sources, file)
        with open(path, encoding="utf-8") as source:
            text = source.read()
        if text.count(old) != 1:
            print("%d %s: stands there %d times: %s" % (number, file, text.count(old), old), flush=True)
            continue
        with open(path, "w", encoding="utf-8") as source:
            source.write(text.replace(old, new))
        try:
            result = is_found(build, programs.split())
        finally:
            with open(path, "w", encoding="utf-8") as source:
                source.write(text)
        found += result is True
        word = {True: "found", False: "NOT FOUND", None: "does not compile"}[result]
        print("%d %s: %s -> %s: %s" % (number, file, old, new or "nothing", word), flush=True)
    print("found %d of %d" % (found, len(numbers)))
    return 0 if found == len(numbers) else 1


if __name__ == "__main__":
    sys.exit(main())
