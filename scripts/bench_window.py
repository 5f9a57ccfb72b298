#!/usr/bin/env python3
"""bench_window.py BUILD: the window on a display of its own, as JSON on the standard output: seconds until pixels change.

The display's screen is a file, which is watched for the frame that shows what was done. Needs Xvfb and xdotool, and a
home of its own in $HOME.
"""
import json
import mmap
import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

STARTS, KEYS, CHANGES = 20, 100, 40
WIDTH, HEIGHT = 1280, 720
LONGEST = 10.0  # seconds
SETTLED = 0.1  # after which nothing is drawn any more, but for lights that go out
LIGHT = 1.6  # until they have
SWITCH = "db%2Fmulti-assistant%2Fsituational_hint_supported"

build, home = Path(sys.argv[1]).resolve(), Path(os.environ["HOME"])
vtv = str(build / "bin/vtv")
os.environ |= {"VTV_HOME": str(home / "tvs"), "XDG_RUNTIME_DIR": str(home), "LANG": "C.UTF-8"}


class Screen:
    """The pixels that tell: some lines across the page."""

    def __init__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-noreset", "-nolisten", "tcp",
             "-fbdir", str(home)], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.environ["DISPLAY"] = ":" + os.read(reading, 20).decode().strip()
        with (home / "Xvfb_screen0").open("rb") as file:
            self.memory = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        begin, line = len(self.memory) - 4 * WIDTH * HEIGHT, 4 * WIDTH
        # Each row of the page is crossed at least once.
        self.lines = [(begin + y * line, begin + (y + 1) * line) for y in range(20, HEIGHT, 28)]

    def seen(self):
        return [self.memory[begin:end] for begin, end in self.lines]

    def changed(self, before):
        """When it is otherwise than before, by time.perf_counter()."""
        latest = time.perf_counter() + LONGEST
        while self.seen() == before:
            if time.perf_counter() > latest:
                sys.exit("bench_window.py: nothing was drawn")
            time.sleep(0.0002)
        return time.perf_counter()


def end(process):
    process.kill()
    process.wait()


def open_window():
    return subprocess.Popen([vtv, "window", "--tv", "tv"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def first_frames(screen):
    took = []
    for _ in range(STARTS):
        black = screen.seen()
        began = time.perf_counter()
        window = open_window()
        took.append(screen.changed(black) - began)
        end(window)
        deadline = time.perf_counter() + LONGEST
        while screen.seen() != black and time.perf_counter() < deadline:
            time.sleep(0.01)
    return took


def keys(screen):
    """From the line that the one who presses keys reads, to the frame with the focus elsewhere."""
    took = []
    with subprocess.Popen(["xdotool", "-"], stdin=subprocess.PIPE, text=True) as hand:
        for i in range(KEYS):
            before = screen.seen()
            began = time.perf_counter()
            hand.stdin.write("key --delay 0 " + ("Down\n", "Up\n")[i % 2])
            hand.stdin.flush()
            took.append(screen.changed(before) - began)
            time.sleep(SETTLED)
        hand.stdin.close()
    return took


def changes(screen):
    """From the moment when another process's value is the one in the store, to the frame with the switch turned over."""
    file = home / "tvs/tv/settings" / SWITCH
    values = []
    for value in ("off", "on"):
        subprocess.run([vtv, "choose", "situational-hint", value, "--tv", "tv"], check=True, stdout=subprocess.DEVNULL)
        values.append(file.read_bytes())
    took = []
    time.sleep(LIGHT)
    for i in range(CHANGES):
        written = home / "written"
        written.write_bytes(values[i % 2])
        before = screen.seen()
        began = time.perf_counter()
        os.rename(written, file)
        took.append(screen.changed(before) - began)
        time.sleep(LIGHT)
    return took


def memory(window):
    text = Path(f"/proc/{window.pid}/smaps_rollup").read_text()
    sizes = dict(line.split(":") for line in text.splitlines() if ":" in line and line.endswith("kB"))
    return {name: int(sizes[name].split()[0]) * 1024 for name in ("Rss", "Pss")}


def main():
    screen = Screen()
    try:
        subprocess.run([vtv, "new", "tv", "--model", "farfield-eu"], check=True, stdout=subprocess.DEVNULL)
        figures = {"first": first_frames(screen)}
        black = screen.seen()
        window = open_window()
        screen.changed(black)
        time.sleep(LIGHT)
        figures |= {"key": keys(screen), "other": changes(screen), "memory": memory(window)}
        end(window)
    finally:
        end(screen.server)
    json.dump(figures, sys.stdout)


if shutil.which("Xvfb") is None or shutil.which("xdotool") is None:
    sys.exit("bench_window.py: needs Xvfb and xdotool: apt-get install xvfb xdotool")
main()
