#!/usr/bin/env python3
"""Uses the desktop program as a monkey would, on a display of its own: clicks, drags, keys, menus and sizes at random.

    monkey.py PROGRAM FOLDER SECONDS SEED

FOLDER is a new one, for the settings, the files and what the program prints. When the program ends by itself it is started
again. Prints what was wrong: an end with a status or a complaint of a sanitizer. Ends with 1 if
anything was. Needs the commands of Debian's packages xvfb, openbox and xdotool. Meant for a build with sanitizers.
"""

import os
import random
import re
import subprocess
import sys
import time

WIDTH, HEIGHT = 1280, 900
ACTIONS = 20  # in one call of xdotool
KEYS = ["Left", "Right", "Home", "End", "Up", "Down", "Return", "Escape", "Tab", "shift+Tab", "space", "Delete", "BackSpace",
        "Page_Up", "Page_Down", "ctrl+a", "ctrl+c", "ctrl+v", "ctrl+i", "alt+c", "alt+n", "alt+y", "alt+o", "shift+F10", "F1",
        "1", "5", "9", "a", "e", "s", "w", "minus", "period"]
MENUS = ["alt+g", "alt+e", "alt+t", "alt+o", "alt+w", "alt+h", "F10"]
TEXTS = ["32-28", "3.5", "0", "1e-9", "99999", "1e9", "abc", "x.pdn", "/", "localhost"]
# The window manager gives the focus to what is clicked and does nothing else.
MANAGER = """<openbox_config xmlns="http://openbox.org/3.4/rc"><desktops><number>1</number></desktops><mouse>
<context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
</context></mouse></openbox_config>"""
COMPLAINTS = re.compile("ERROR: AddressSanitizer|ThreadSanitizer|runtime error|ASSERT|terminate called")


class Monkey:
    def __init__(self, seed):
        self.random = random.Random(seed)

    def anywhere(self):
        return ["mousemove", str(self.random.randrange(WIDTH)), str(self.random.randrange(HEIGHT))]

    # Where the board stands when the program is started for the first time.
    def board(self):
        return ["mousemove", str(self.random.randrange(310, 750)), str(self.random.randrange(260, 700))]

    def click(self):
        place = self.board() if self.random.random() < 0.7 else self.anywhere()
        return place + ["click", self.random.choice("111111113345")]

    def double_click(self):
        return self.anywhere() + ["click", "--repeat", "2", "--delay", "40", "1"]

    def drag(self):
        return self.anywhere() + ["mousedown", "1"] + self.anywhere() + self.anywhere() + ["mouseup", "1"]

    def key(self):
        return ["key", self.random.choice(KEYS)]

    def menu(self):
        keys = [self.random.choice(MENUS)] + ["Down"] * self.random.randrange(14)
        if self.random.random() < 0.3:
            keys += ["Right"] + ["Down"] * self.random.randrange(6)
        return ["key"] + keys + [self.random.choice(["Return", "Return", "Return", "Escape"])]

    def text(self):
        return ["type", "--delay", "5", "--args", "1", self.random.choice(TEXTS)]

    def escape(self):
        return ["key", "Escape", "Escape", "Escape"]

    def wait(self):
        return ["sleep", "0.3"]

    def size(self):
        return ["search", "--onlyvisible", "--class", "tessarin", "windowsize", str(self.random.randrange(200, WIDTH)),
                str(self.random.randrange(150, HEIGHT))]

    def actions(self):
        """For one call of xdotool, each a list of its words."""
        if self.random.random() < 0.05:
            return [self.size()]  # must be the only one, as it chooses the window of what follows
        kinds = [self.click, self.key, self.menu, self.drag, self.double_click, self.text, self.wait, self.escape]
        chosen = self.random.choices(kinds, [35, 30, 20, 7, 3, 2, 2, 1], k=ACTIONS)
        return [kind() for kind in chosen]


def environment(folder, display):
    places = {"HOME": "home", "XDG_DATA_HOME": "data", "XDG_CONFIG_HOME": "config", "XDG_RUNTIME_DIR": "run"}
    result = dict(os.environ, DISPLAY=display, QT_QPA_PLATFORM="xcb")
    result.pop("DBUS_SESSION_BUS_ADDRESS", None)
    result.setdefault("ASAN_OPTIONS", "detect_leaks=0")
    for variable, name in places.items():
        result[variable] = os.path.join(folder, name)
        os.makedirs(result[variable], mode=0o700)
    return result


def start_display():
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "%dx%dx24" % (WIDTH, HEIGHT)], pass_fds=[write],
                              stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as numbers:
        return server, ":" + numbers.readline().strip()


def use(program, folder, seconds, monkey, environ):
    """Returns what was wrong."""
    wrong, actions, starts = [], 0, 0
    running = None
    end = time.monotonic() + seconds
    with open(os.path.join(folder, "printed"), "wb") as printed:
        while time.monotonic() < end:
            if running is None or running.poll() is not None:
                if running is not None and running.returncode != 0:
                    wrong.append("ended with status %d behind %d actions" % (running.returncode, actions))
                running = subprocess.Popen([program], env=environ, cwd=environ["HOME"], stdout=printed,
                                           stderr=subprocess.STDOUT)
                starts += 1
                time.sleep(3)
            chosen = monkey.actions()
            subprocess.run(["xdotool"] + sum(chosen, []), env=environ, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL, timeout=300)
            actions += len(chosen)
        if running.poll() not in (None, 0):
            wrong.append("ended with status %d behind %d actions" % (running.returncode, actions))
        running.kill()
        running.wait()
    print("%d actions, %d starts" % (actions, starts))
    return wrong


def main():
    program, folder, seconds, seed = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), *map(int, sys.argv[3:5])
    os.makedirs(folder)
    server, display = start_display()
    environ = environment(folder, display)
    rules = os.path.join(folder, "manager.xml")
    with open(rules, "w", encoding="utf-8") as file:
        file.write(MANAGER)
    manager = subprocess.Popen(["openbox", "--config-file", rules], env=environ, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    try:
        wrong = use(program, folder, seconds, Monkey(seed), environ)
    finally:
        manager.terminate()
        server.terminate()
    with open(os.path.join(folder, "printed"), encoding="utf-8", errors="replace") as printed:
        wrong += sorted(set(line.strip() for line in printed if COMPLAINTS.search(line)))
    print("\n".join(wrong) or "nothing wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
