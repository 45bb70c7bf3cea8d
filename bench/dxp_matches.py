#!/usr/bin/env python3
"""Matches of two copies of the console program over the network on this machine.

    bench/dxp_matches.py kills PROGRAM FOLDER [SEED]
        A match of 158 games, some 0.05 s a move. The side that asks for the games is killed at random moments
        and resumed until the match is whole; then plan, games, results and counters are checked. FOLDER keeps
        the files; with those of a run that was ended in it, that match goes on.
    bench/dxp_matches.py soak PROGRAM FOLDER SECONDS [OPTION...]
        Games as fast as the program plays them, both sides with OPTIONs, as --threads 2 --book good. Every ten
        seconds memory, threads and open files of both sides and the games so far go to samples.csv in FOLDER.
        At the end all games must replay.
"""
import atexit
import collections
import os
import random
import re
import signal
import socket
import subprocess
import sys
import time

GAMES = 158
SLOW = ["--ballots", "2", "--initial", "1", "--increment", "0.05"]
FASTEST = ["--ballots", "3", "--minutes", "0", "--moves", "75", "--repeat", "1000000", "--quiet"]
KILL_WITHIN = 120  # seconds of the start
SAMPLE_SECONDS = 10
PATIENCE = 60  # seconds
MOST_FAILURES = 10  # matches broken off in a row, as by a listener that is not back yet
RESULTS_OF_WHITE = {"2-0": "wins", "0-2": "losses", "1-1": "draws", "*": "unknowns"}
SIDE_CHANGED = {"wins": "losses", "losses": "wins"}


class Copy:
    """One side. A data folder for the two makes the listener the first copy and the other the second,
    whatever else runs on the machine."""

    def __init__(self, program, folder, name, arguments):
        environment = dict(os.environ, HOME=folder, XDG_DATA_HOME=folder + "/data", XDG_CONFIG_HOME=folder + "/config")
        self.output = f"{folder}/{name}.txt"
        with open(self.output, "wb") as output:
            self.process = subprocess.Popen([program, "dxp"] + arguments, env=environment, stdin=subprocess.DEVNULL,
                                            stdout=output, stderr=subprocess.STDOUT)
        atexit.register(self.process.kill)

    def text(self):
        return read(self.output)

    def interrupt(self):
        self.process.send_signal(signal.SIGINT)
        self.process.wait(PATIENCE)


def read(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except FileNotFoundError:
        return ""


def file_of(folder, name, pattern):
    return f"{folder}/data/Quillorn/Tessarin International/" + pattern % ("[1]" if name == "initiator" else "")


def counters_of(folder, name):
    """The statistics file: wins, losses, draws and unknowns."""
    text = read(file_of(folder, name, "dxpstats%s.txt"))
    line = re.search(r":  (\d+) wins, (\d+) losses, (\d+) draws, (\d+) unknowns\n$", text)
    counts = map(int, line.groups()) if line else (0, 0, 0, 0)
    return dict(zip(("wins", "losses", "draws", "unknowns"), counts))


def expect(holds, complaint):
    if not holds:
        sys.exit(f"failed: {complaint}")


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return str(probe.getsockname()[1])


def start_listener(program, folder, port, options=()):
    listener = Copy(program, folder, "listener", ["listen", "-s", "--quiet", "--hash", "4", "--port", port, *options])
    end = time.monotonic() + PATIENCE
    while "listening on port" not in listener.text():
        expect(listener.process.poll() is None and time.monotonic() < end, "nobody listens: " + listener.text())
        time.sleep(0.05)
    return listener


def start_match(program, folder, port, arguments):
    return Copy(program, folder, "initiator", ["match", "127.0.0.1", "--hash", "4", "--port", port] + arguments)


def headers(games, name):
    return re.findall(rf'^\[{name} "(.*)"\]$', games, re.MULTILINE)


def expect_replay(program, path, games):
    replayed = output_of(program, "pdn", path)
    expect(re.search(rf"games {games}, .*broken 0$", replayed.strip()), "not all games replay: " + replayed)


def check_plan(program, path):
    """The games of the file are those of the plan, in its order, each start position twice with colours
    swapped, and all replay. Returns what the initiator has of each."""
    expect_replay(program, path, GAMES)
    games = read(path)
    ballots = [line.split("  ") for line in output_of(program, "ballots", "2", "--moves").splitlines()]
    for i, (event, fen, white, black) in enumerate(
            zip(*(headers(games, name) for name in ("Event", "FEN", "White", "Black")), strict=True)):
        ballot = ballots[i // 2]
        expect(event == f"Game {i + 1}, opening {ballot[1]}" and fen == ballot[0], f"{event}, {fen} is not {ballot}")
        ours, theirs = (white, black) if i % 2 == 0 else (black, white)
        expect("[1]" in ours and "[1]" not in theirs, f"game {i + 1} has {white} against {black}")
    results = [RESULTS_OF_WHITE[result] for result in headers(games, "Result")]
    expect(len(results) == GAMES, f"{len(results)} results")
    return collections.Counter(
        result if i % 2 == 0 else SIDE_CHANGED.get(result, result) for i, result in enumerate(results))


def check_match(program, folder, before, kills):
    """`before` is what was counted when the listener was started, whose own counters begin at 0."""
    results = check_plan(program, file_of(folder, "initiator", "dxpgames%s.pdn"))
    ours, theirs = counters_of(folder, "initiator"), counters_of(folder, "listener")
    expect(+results == +collections.Counter(ours), f"{dict(results)} in the games, {ours} counted")
    # A game that ended at the very moment of a kill the listener has counted, and it is played once more.
    more = sum(theirs.values()) + sum(before.values()) - GAMES
    expect(0 <= more <= kills, f"the listener counts {theirs}")
    for result, count in ours.items():
        surplus = theirs[SIDE_CHANGED.get(result, result)] + before[result] - count
        expect(0 <= surplus <= more, f"{ours} against {theirs}")
    print(f"initiator {ours}, {sum(before.values())} of them before; listener {theirs}")


def run_kills(program, folder, seed=None):
    chance = random.Random(seed)
    port = free_port()
    listener = start_listener(program, folder, port)
    before = counters_of(folder, "initiator")
    start, kills, failures = time.monotonic(), 0, 0
    while True:
        resume = ["--resume"] if sum(counters_of(folder, "initiator").values()) > 0 else []
        initiator = start_match(program, folder, port, SLOW + resume)
        try:
            status = initiator.process.wait(chance.uniform(0, KILL_WITHIN))
        except subprocess.TimeoutExpired:
            initiator.process.kill()
            initiator.process.wait()
            kills, failures = kills + 1, 0
            print(f"{time.monotonic() - start:.0f} s: killed behind {counters_of(folder, 'initiator')}", flush=True)
            continue
        if status == 0:
            break
        failures += 1
        print(initiator.text(), flush=True)
        expect(failures < MOST_FAILURES, "it cannot go on")
        time.sleep(1)
    listener.interrupt()
    check_match(program, folder, before, kills)
    print(f"whole behind {kills} kills and {time.monotonic() - start:.0f} seconds")


def sample(process):
    """Resident kilobytes, threads and open files."""
    status = read(f"/proc/{process.pid}/status")
    files = len(os.listdir(f"/proc/{process.pid}/fd"))
    return [re.search(rf"{name}:\s+(\d+)", status)[1] for name in ("VmRSS", "Threads")] + [str(files)]


def run_soak(program, folder, seconds, *options):
    port = free_port()
    listener = start_listener(program, folder, port, options)
    initiator = start_match(program, folder, port, FASTEST + list(options))
    start = time.monotonic()
    with open(folder + "/samples.csv", "w") as file:
        file.write("seconds,games,initiator kB,threads,files,listener kB,threads,files\n")
        while time.monotonic() - start < float(seconds):
            time.sleep(SAMPLE_SECONDS)
            expect(initiator.process.poll() is None and listener.process.poll() is None, "a side has ended")
            row = [f"{time.monotonic() - start:.0f}", str(sum(counters_of(folder, "initiator").values()))]
            file.write(",".join(row + sample(initiator.process) + sample(listener.process)) + "\n")
            file.flush()
    initiator.interrupt()
    listener.interrupt()
    print(initiator.text(), listener.text())
    expect_replay(program, file_of(folder, "initiator", "dxpgames%s.pdn"),
                  sum(counters_of(folder, "initiator").values()))


def main():
    kinds = {"kills": run_kills, "soak": run_soak}
    if len(sys.argv) < 4 or sys.argv[1] not in kinds:
        sys.exit(__doc__)
    program, folder = map(os.path.abspath, sys.argv[2:4])
    os.makedirs(folder, exist_ok=True)
    kinds[sys.argv[1]](program, folder, *sys.argv[4:])


main()
