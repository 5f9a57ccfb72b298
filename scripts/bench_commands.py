#!/usr/bin/env python3
"""bench_commands.py BUILD: whole commands beside those of another settings store, in turns, as JSON on the standard output.

Each is started 20 times. Needs a session bus (dbus-run-session), and a home of its own in $HOME.
"""
import json
import os
import select
import subprocess
import sys
import time
from pathlib import Path

STARTS = 20
SETTLED = 1.0  # seconds until whoever watches does
KEY = "db/menu_widget/language"
SCHEMA, PATH = "org.si-ready.bench", "/org/si-ready/bench/"

SCENARIOS = Path(__file__).resolve().parent.parent / "tests/host/scenarios"

build = Path(sys.argv[1]).resolve()
vtv = str(build / "bin/vtv")
os.environ["GSETTINGS_SCHEMA_DIR"] = str(build / "bench/schemas")

COMMANDS = {
    "vtv get": lambda i: [vtv, "get", KEY],
    "gsettings get": lambda i: ["gsettings", "get", SCHEMA, "value"],
    "dconf read": lambda i: ["dconf", "read", PATH + "value"],
    "vtv set": lambda i: [vtv, "set", KEY, "string", ("en_GB", "de_DE")[i % 2]],
    "gsettings set": lambda i: ["gsettings", "set", SCHEMA, "value", str(i)],
    "dconf write": lambda i: ["dconf", "write", PATH + "value", str(i + 1000)],
    "vtv show": lambda i: [vtv, "show"],
    "vtv run": lambda i: [vtv, "run", str(SCENARIOS)],
}
# From the start of the command that writes to the line of the one that watches.
WATCHES = {
    "vtv watch": ([vtv, "watch", KEY], "vtv set"),
    "gsettings monitor": (["gsettings", "monitor", SCHEMA, "value"], "gsettings set"),
    "dconf watch": (["dconf", "watch", PATH], "dconf write"),
}


def start(command):
    """Seconds of the clock and of the processor."""
    began = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    took = time.perf_counter() - began
    if process.returncode != 0:
        sys.exit(f"{' '.join(command)}: ended with {process.returncode}")
    return took, usage.ru_utime + usage.ru_stime


def seen(watching, writing):
    with subprocess.Popen(watching, stdout=subprocess.PIPE) as watcher:
        lines = watcher.stdout.fileno()
        time.sleep(SETTLED)
        took = []
        for i in range(STARTS):
            began = time.perf_counter()
            start(COMMANDS[writing](i + 5000))
            os.read(lines, 65536)
            took.append(time.perf_counter() - began)
            while select.select([lines], [], [], 0.05)[0]:  # what else it tells of this change
                os.read(lines, 65536)
        watcher.kill()
        return took


clock = {name: [] for name in COMMANDS}
processor = {name: [] for name in COMMANDS}
start([vtv, "show"])  # makes the TV
for i in range(STARTS):
    for name, command in COMMANDS.items():
        took, computed = start(command(i))
        clock[name].append(took)
        processor[name].append(computed)
json.dump({"clock": clock, "processor": processor, "seen": {name: seen(*what) for name, what in WATCHES.items()},
           "scenarios": len(list(SCENARIOS.glob("*.toml")))}, sys.stdout)
