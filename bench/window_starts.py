#!/usr/bin/env python3
"""Times the desktop program from the start of its process to the painted board, on a screen of its own.

    bench/window_starts.py build/release/bin/tessarin [STARTS]

Needs Xvfb and openbox. The first start may have to read its files from the disk.
"""
import contextlib
import os
import statistics
import struct
import subprocess
import sys
import tempfile
import time

SCREEN = "1280x900x24"
PATIENCE = 60  # seconds
LOOK_AGAIN = 0.005


def board_is_seen(picture):
    """Light wood on the middle line of the picture that the server keeps in a file."""
    with open(picture, "rb") as file:
        dump = file.read()
    header = struct.unpack(">25I", dump[:100])
    width, height, line = header[4], header[5], header[12]
    start = header[0] + header[19] * 12 + height // 2 * line
    wood = 0
    for x in range(start, start + 4 * width, 32):
        blue, green, red = dump[x : x + 3]
        wood += red > 200 and 150 < green < 225 and 90 < blue < 190 and red > blue + 30
    return wood > 5


def wait_until(condition):
    start = time.perf_counter()
    while not condition():
        if time.perf_counter() - start > PATIENCE:
            sys.exit("it did not come")
        time.sleep(LOOK_AGAIN)


def processor_seconds(process):
    with open(f"/proc/{process.pid}/stat") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def measure(program, starts, environment, picture):
    """Processor and clock times of the starts."""
    walls, processors = [], []
    for _ in range(starts):
        begin = time.perf_counter()
        process = subprocess.Popen([program], env=environment, stderr=subprocess.DEVNULL)
        try:
            wait_until(lambda: board_is_seen(picture))
            walls.append(time.perf_counter() - begin)
            processors.append(processor_seconds(process))
        finally:
            process.kill()
            process.wait()
        wait_until(lambda: not board_is_seen(picture))
    return walls, processors


def main():
    program, starts = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 20
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as started:
        def begin(command, **options):
            process = subprocess.Popen(command, stderr=subprocess.DEVNULL, **options)
            started.callback(lambda: (process.terminate(), process.wait()))
            return process

        server = begin(
            ["Xvfb", "-displayfd", "1", "-screen", "0", SCREEN, "-fbdir", folder, "-nolisten", "tcp", "-noreset"],
            stdout=subprocess.PIPE)
        display = ":" + server.stdout.readline().decode().strip()
        environment = dict(os.environ, DISPLAY=display, HOME=folder, XDG_CONFIG_HOME=folder + "/config",
                           XDG_DATA_HOME=folder + "/data", XDG_RUNTIME_DIR=folder, QT_QPA_PLATFORM="xcb")
        begin(["openbox", "--sm-disable"], env=environment)
        time.sleep(2)
        walls, processors = measure(program, starts, environment, folder + "/Xvfb_screen0")
        for name, times in (("wall", walls), ("processor", processors)):
            print(f"{name}: median {statistics.median(times):.2f} s, {min(times):.2f} to {max(times):.2f} s")
        print("wall, in turn:", " ".join(f"{wall:.2f}" for wall in walls))


main()
