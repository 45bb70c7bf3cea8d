"""Reads the program's files by readers that were written from docs/formats.md alone, and compares what they
say with what the program says.

    formats_test.py PROGRAM PROJECT
"""

import json
import os
import random
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import book
import pdn
import settings
import weights
import wld
from board import Position, fen_of_position, position_from_fen

PROGRAM, PROJECT = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])


def project_file(*names, mode="rb"):
    with open(os.path.join(PROJECT, *names), mode) as file:
        return file.read()


def ask(arguments, lines=()):
    answer = subprocess.run([PROGRAM] + arguments, input="".join(line + "\n" for line in lines),
                            capture_output=True, text=True, check=True)
    return answer.stdout.splitlines()


def random_position(rng, counts):
    """Black men, black kings, white men and white kings, so many of each, no man on his last row."""
    free = list(range(1, 51))
    groups = []
    for count, squares in zip(counts, (range(1, 46), range(1, 51), range(6, 51), range(1, 51))):
        group = rng.sample([s for s in free if s in squares], count)
        free = [s for s in free if s not in group]
        groups.append(frozenset(group))
    return Position(rng.randrange(2), *groups)


def heeds_termination(process):
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        caught = next(int(line.split()[1], 16) for line in file if line.startswith("SigCgt:"))
    return caught >> (signal.SIGTERM - 1) & 1


class Weights(unittest.TestCase):
    def test_values_of_positions(self):
        read = weights.Weights(project_file("data", "weights.bin"))
        rng = random.Random(1)
        positions = [random_position(rng, [rng.randrange(1, 12), rng.randrange(4) // 2, rng.randrange(1, 12),
                                           rng.randrange(4) // 2]) for _ in range(1000)]
        positions += [random_position(rng, [rng.randrange(3), rng.randrange(1, 3), rng.randrange(3),
                                            rng.randrange(1, 3)]) for _ in range(500)]
        lines = ask(["inspect", "-"], [fen_of_position(p) for p in positions])
        self.assertEqual(len(lines), len(positions))
        for position, line in zip(positions, lines):
            told = json.loads(line)
            self.assertEqual(weights.phase(position), told["phase"], told["fen"])
            self.assertEqual(weights.evaluate(read, position), told["eval"], told["fen"])


class Book(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.read = book.Book(project_file("data", "Tessarin.odb"))

    def test_positions_are_where_their_hash_says(self):
        slots = self.read.filled_slots()
        self.assertEqual(len(slots), self.read.positions)
        self.assertGreaterEqual(self.read.version, "3.00")
        for slot in slots:
            self.assertEqual(self.read.find(self.read.key(slot)), slot)
        self.assertIsNone(self.read.find((1, 2, 0, 0)))

    def test_entries_are_what_the_program_prints(self):
        printed = {}
        for line in ask(["book", "dump", "--book", os.path.join(PROJECT, "data", "Tessarin.odb")]):
            fen, best, second, value = line.split()
            printed[fen] = (best, second, int(value))
        entries = [self.read.entry(slot) for slot in self.read.filled_slots()]
        self.assertEqual({fen_of_position(e.position) for e in entries}, set(printed))
        some = random.Random(2).sample(entries, 500)
        for entry, line in zip(some, ask(["inspect", "-"], [fen_of_position(e.position) for e in some])):
            moves = [move["text"] for move in json.loads(line)["moves"]]
            second = "-" if entry.second == book.NO_MOVE else moves[entry.second]
            self.assertEqual((moves[entry.best], second, entry.value), printed[fen_of_position(entry.position)])


class WinLossDraw(unittest.TestCase):
    def test_values_of_positions(self):
        folder = os.path.join(PROJECT, "data", "wld_database")
        catalogues = wld.read_catalogues(project_file("egdb", "catalogues_table.cpp", mode="r"))
        self.assertEqual([len(rows) for rows in catalogues], [256] * 50)
        rng = random.Random(3)
        looked_up = 0
        for pieces in (2, 3, 4):
            name = os.path.join(folder, "db%d." % pieces)
            pair = wld.Pair(project_file(name + "idx1", mode="r"), project_file(name + "cpr1"), catalogues)
            positions = []
            while len(positions) < 1000:
                counts = [0] * 4
                for _ in range(pieces):
                    counts[rng.randrange(4)] += 1
                if counts[0] + counts[1] and counts[2] + counts[3]:
                    positions.append(random_position(rng, counts))
            lines = ask(["egdb", "probe", folder, "-"], [fen_of_position(p) for p in positions])
            self.assertEqual(len(lines), len(positions))
            for position, line in zip(positions, lines):
                told = line.split()[1]
                if told == "capture":
                    continue
                self.assertEqual(pair.value(position), told, line)
                looked_up += 1
        self.assertGreater(looked_up, 1500)


class Games(unittest.TestCase):
    def test_printed_games(self):
        for name in ("data/games/sample.pdn", "tests/data/games/toprest1.pdn"):
            path = os.path.join(PROJECT, name)
            games = pdn.games_of("\n".join(ask(["pdn", "--print", path])) + "\n")
            moves = sum(len(moves) for _, moves, _ in games)
            self.assertIn("games %d, moves %d, " % (len(games), moves), ask(["pdn", path])[-1])
            for headers, _, result in games:
                self.assertEqual(result, "*")
                self.assertEqual(list(headers)[:5], ["Event", "Date", "White", "Black", "Result"])


class Settings(unittest.TestCase):
    WISHES = {"search_threads": 3, "hash_mb": 32, "wld_max_pieces": 7, "wld_max_kings_8": 2,
              "wld_cache_mb": 333, "wld_folder": "/no/such/folder/ü", "mtc_folder": "/nor/this"}

    WISHES2 = {"match_repeats": 7, "match_ballot_file": "/openings/ü", "increment_mode": 1,
               "initial_seconds": 12.5, "increment_seconds": 0.25}
    NO_LANGUAGE, ENGLISH = 12345, 40117

    def run_with(self, files):
        """Starts the desktop program with the files and ends it as the end of a session does. Returns what it
        wrote to its log and what the files are then."""
        desktop = os.path.join(os.path.dirname(PROGRAM), "tessarin")
        if not os.path.exists(desktop):
            self.skipTest("no desktop program was built")
        with tempfile.TemporaryDirectory() as home:
            folder = "Quillorn/Tessarin International"
            paths = {name: os.path.join(home, "config", folder, name) for name in files}
            os.makedirs(os.path.join(home, "config", folder))
            for name, content in files.items():
                with open(paths[name], "wb") as file:
                    file.write(content)
            surroundings = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, "config"),
                                XDG_DATA_HOME=os.path.join(home, "data"), XDG_RUNTIME_DIR=home,
                                QT_QPA_PLATFORM="offscreen")
            with subprocess.Popen([desktop], env=surroundings, stderr=subprocess.DEVNULL) as program:
                end = time.monotonic() + 60
                while not heeds_termination(program.pid) and time.monotonic() < end:
                    time.sleep(0.05)
                program.terminate()
                self.assertEqual(program.wait(), 0)
            with open(os.path.join(home, "data", folder, "Tessarin.log"), encoding="utf-8") as file:
                log = dict(line.rstrip("\n").split(": ", 1) for line in file if ": " in line)
            for name, path in paths.items():
                with open(path, "rb") as file:
                    files[name] = file.read()
        return log, files

    def test_records_are_taken_and_written(self):
        first = settings.write_record(self.WISHES | {"save_on_exit": 1}, settings.FIELDS, settings.SIZE)
        wishes = self.WISHES2 | {"language_id": self.NO_LANGUAGE, "match_incremental": 1}
        second = settings.write_record(wishes, settings.FIELDS2, settings.SIZE2)
        read = settings.read_record(first, settings.FIELDS, settings.SIZE)
        self.assertEqual({name: read[name] for name in self.WISHES}, self.WISHES)
        self.assertIsNone(settings.read_record(first[:-1] + b"x", settings.FIELDS, settings.SIZE))
        log, files = self.run_with({"settings": first, "settings2": second})
        self.assertEqual(log["search threads"], "3")
        self.assertEqual(log["hashtable size"], "32")
        self.assertEqual(log["WLD max pieces"], "7")
        self.assertEqual(log["WLD max kings 1 side 8 pieces"], "2")
        self.assertEqual(log["WLD memory"], "333")
        self.assertEqual(log["WLD directory"], "/no/such/folder/ü")
        self.assertEqual(log["MTC directory"], "/nor/this")
        kept = settings.read_record(files["settings"], settings.FIELDS, settings.SIZE)
        self.assertEqual({name: kept[name] for name in self.WISHES}, self.WISHES)
        kept = settings.read_record(files["settings2"], settings.FIELDS2, settings.SIZE2)
        self.assertEqual({name: kept[name] for name in self.WISHES2}, self.WISHES2)
        self.assertEqual(kept["language_id"], self.ENGLISH)
        self.assertEqual(kept["match_incremental"], 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
