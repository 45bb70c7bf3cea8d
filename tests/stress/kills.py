#!/usr/bin/env python3
"""Kills the console program at random moments of its work and looks at what it left.

    tests/stress/kills.py PROGRAM FOLDER [KILLS [SEED]]

Games saved: what was in the file stays as it was. Games analysed: they stay as they were, and what is written of
the analysis replays. A book, a database and games of self-play: the same commands go on, and in the end every file
is as it is without a kill. KILLS of each; FOLDER is emptied.
"""
import os
import random
import re
import shutil
import subprocess
import sys
import time

GAME = "32-28 19-23 28x19 14x23 33-28 23x32 37x28 10-14"
BUILDS = {
    "book": ["book", "build", "b.odb", "--work", "b.work", "--positions", "300", "--nodes", "20000", "--jobs", "2",
             "--deep-nodes", "20000", "--line-nodes", "20000", "--line-reply-nodes", "10000", "--line-moves", "1"],
    "database": ["egdb", "build", "db", "--pieces", "3", "--threads", "2"],
    "selfplay": ["selfplay", "--out", "games.bin", "--games", "60", "--depth", "3", "--seed", "5"],
}
PATIENCE = 300  # seconds


class Stress:
    def __init__(self, program, folder, kills, seed):
        self.program, self.folder, self.kills = program, folder, kills
        self.chance = random.Random(seed)
        self.environment = dict(os.environ, HOME=folder, XDG_DATA_HOME=folder + "/data",
                                XDG_CONFIG_HOME=folder + "/config")

    def start(self, folder, arguments, text=None):
        stdin = subprocess.DEVNULL if text is None else subprocess.PIPE
        process = subprocess.Popen([self.program] + arguments, cwd=folder, env=self.environment, stdin=stdin,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        if text is not None:
            try:
                process.stdin.write(text.encode())
                process.stdin.close()
            except BrokenPipeError:
                pass
        return process

    def run(self, folder, arguments, text=None):
        """To its end. Returns the seconds."""
        start = time.monotonic()
        process = self.start(folder, arguments, text)
        errors = process.stderr.read().decode()
        expect(process.wait(PATIENCE) == 0, f"{arguments}: {errors}")
        return time.monotonic() - start

    def kill(self, folder, arguments, seconds, text=None):
        """True if it was killed in time."""
        process = self.start(folder, arguments, text)
        try:
            process.wait(self.chance.uniform(0, seconds))
        except subprocess.TimeoutExpired:
            process.kill()
        errors = process.stderr.read().decode()  # to the end of its workers too
        status = process.wait()
        expect(status in (0, -9), f"{arguments}: {errors}")
        return status == -9

    def replayed(self, path):
        result = subprocess.run([self.program, "pdn", path], capture_output=True, text=True, check=False)
        return re.search(r"games (\d+), .*broken (\d+)$", result.stdout.strip())


def expect(holds, complaint):
    if not holds:
        sys.exit(f"failed: {complaint}")


def content(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


def contents(folder):
    """Without work files, where what was found stands in the order in which it was, and without what of books and
    games was being written aside at a kill, which nobody takes away."""
    return {os.path.relpath(os.path.join(path, name), folder): content(os.path.join(path, name))
            for path, _, names in os.walk(folder) for name in names
            if not name.endswith(".work") and not re.search(r"\.(odb|bin|work)\.new\d+-\d+$", name)}


def fresh(path):
    shutil.rmtree(path, ignore_errors=True)
    os.makedirs(path)
    return path


def stress_saving(stress):
    folder = fresh(stress.folder + "/saving")
    path = folder + "/games.pdn"
    arguments = ["play", "--quiet", "--mode", "twoplayers"]
    text = "\n".join(GAME.split()) + "\n" + "save games.pdn\n" * 2000 + "quit\n"
    seconds = stress.run(folder, arguments, text)
    kills = whole = 0
    while kills < stress.kills:
        before = content(path)
        kills += stress.kill(folder, arguments, seconds, text)
        expect(content(path).startswith(before), "games that were saved have changed")
        if not content(path):
            continue
        games = stress.replayed(path)
        expect(games and int(games[2]) == 0, "a saved game does not replay")
        whole = int(games[1])
        if len(before) > 4 << 20:
            os.remove(path)
    return f"{whole} games in the last file"


def stress_analysis(stress):
    folder = fresh(stress.folder + "/analysis")
    games = "".join(f'[Event "{i}"]\n[Result "*"]\n{GAME} *\n\n' for i in range(20))
    with open(folder + "/games.pdn", "w", encoding="ascii") as file:
        file.write(games)
    arguments = ["analyze", "games.pdn", "--time", "0.005", "--output", "out.pdn"]
    seconds = stress.run(folder, arguments)
    kills = 0
    while kills < stress.kills:
        kills += stress.kill(folder, arguments, seconds)
        expect(content(folder + "/games.pdn") == games.encode(), "the games have changed")
        if content(folder + "/out.pdn"):
            replayed = stress.replayed(folder + "/out.pdn")
            expect(replayed and int(replayed[2]) == 0, "an analysed game does not replay")
    return "all games as they were"


def stress_build(stress, name):
    arguments = BUILDS[name]
    whole = fresh(f"{stress.folder}/{name}-whole")
    seconds = stress.run(whole, arguments)
    wanted = contents(whole)
    folder = fresh(f"{stress.folder}/{name}")
    kills = ends = 0
    while kills < stress.kills:
        if stress.kill(folder, arguments, seconds / 2):
            kills += 1
            continue
        ends += 1
        expect(contents(folder) == wanted, f"{name} has become {describe(folder, wanted)}")
        fresh(folder)
    stress.run(folder, arguments)
    expect(contents(folder) == wanted, f"{name} has become {describe(folder, wanted)}")
    return f"as without a kill, {ends + 1} times"


def describe(folder, wanted):
    found = contents(folder)
    return ", ".join(name for name in sorted(found.keys() | wanted.keys()) if found.get(name) != wanted.get(name))


def main():
    if len(sys.argv) not in (3, 4, 5):
        sys.exit(__doc__)
    program, folder = map(os.path.abspath, sys.argv[1:3])
    kills = int(sys.argv[3]) if len(sys.argv) > 3 else 100
    stress = Stress(program, fresh(folder), kills, int(sys.argv[4]) if len(sys.argv) > 4 else None)
    print(f"saving: {kills} kills, {stress_saving(stress)}", flush=True)
    print(f"analysis: {kills} kills, {stress_analysis(stress)}", flush=True)
    for name in BUILDS:
        print(f"{name}: {kills} kills, {stress_build(stress, name)}", flush=True)


main()
