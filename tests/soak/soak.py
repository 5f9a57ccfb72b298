#!/usr/bin/env python3
"""A virtual TV in use for a long time, with others watching it: nothing grows that should not.

    tests/soak/soak.py --build build/gcc --seconds 60

Prints what it measured. Exit codes: 0 all stayed bounded, 1 something grew, was left behind or failed, 2 usage.
"""

import argparse
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

MIB = 1 << 20
# What grows is set aside when it is full, for as many older files as there may be, each a record longer at most; every
# other file is small.
MOST_BYTES = {"log/tv.log": 4 * MIB, "log/applications.log": 2 * MIB, "trace/events": 16 * MIB, "launches.jsonl": 2 * MIB}
A_RECORD = 64 * 1024
MOST_FILES = 200
MOST_DESCRIPTORS = 20  # four files of a log, the TV's folders, what it waits for
MOST_GROWTH = 4 * MIB  # of what a process that watches holds, after its first quarter

POLICIES = (
    '[{"VAOrder":1,"VAId":"ORVIK2","VAAppId":"com.vantelo.tv.voice-instant-app","VAName":"Orvik","VAFFSupport":true}]',
    '[{"VAOrder":1,"VAId":"GVA","VAAppId":"com.vantelo.tv.google-assistant","VAName":"Google","VAFFSupport":true},'
    '{"VAOrder":2,"VAId":"ALEXA","VAAppId":"com.vantelo.tv.alexa","VAName":"Alexa","VAFFSupport":false}]',
    "[]",
)
# Each verb with the exit codes that it may have: an item may be dimmed, an application may not run.
VERBS = (
    (("press", "voice-wake-up"), (0, 1)),
    (("press", "situational-hint"), (0, 1)),
    (("press", "voice-assistant", "--choose", "2", "--ok"), (0, 1, 2)),
    (("press", "onboarding"), (0, 1)),
    (("app", "cancel"), (0, 1, 3)),
    (("app", "finish"), (0, 1, 3)),
    (("set", "db/comss/cisblock", "int", "0"), (0,)),
    (("language", "de_DE"), (0,)),
    (("language", "en_US"), (0,)),
    (("snapshot", "SNAPSHOT"), (0,)),
    (("restore", "SNAPSHOT"), (0,)),
    (("power-cycle",), (0,)),
    *(((("policy", "publish", f"POLICY{index}")), (0,)) for index in range(len(POLICIES))),
)
WATCHERS = (("watch",), ("show", "--watch"), ("log", "--follow"))


class Soak:
    def __init__(self, build, folder):
        self.vtv = str(pathlib.Path(build, "bin/vtv").resolve())
        self.folder = folder
        self.tv = folder / "tvs/tv"
        self.temporary = folder / "tmp"
        self.temporary.mkdir()
        self.environment = dict(os.environ, VTV_HOME=str(folder / "tvs"), TMPDIR=str(self.temporary), HOME=str(folder),
                                XDG_CONFIG_HOME=str(folder / "config"), VTV_TV="tv", NO_COLOR="1")
        self.wrong = []
        self.run(("new", "tv", "--model", "farfield-eu"), (0,))
        self.run(("trace", "on"), (0,))
        self.run(("snapshot", str(folder / "snapshot")), (0,))
        for index, policy in enumerate(POLICIES):
            (folder / f"policy{index}").write_text(policy)
        self.watchers = [subprocess.Popen([self.vtv, *verb], env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                         for verb in WATCHERS]

    def run(self, words, codes):
        words = [word.replace("SNAPSHOT", str(self.folder / "snapshot")).replace("POLICY", str(self.folder / "policy"))
                 for word in words]
        done = subprocess.run([self.vtv, *words], env=self.environment, capture_output=True, text=True, check=False)
        if done.returncode not in codes:
            self.wrong.append(f"vtv {' '.join(words)} ended with {done.returncode}: {done.stderr.strip()}")

    def look_at_watchers(self):
        for verb, process in zip(WATCHERS, self.watchers):
            if process.poll() is not None:
                self.wrong.append(f"vtv {' '.join(verb)} ended by itself with {process.returncode}")

    def measure(self):
        """What each watcher holds, and what lies on the disk."""
        found = {}
        for verb, process in zip(WATCHERS, self.watchers):
            name = " ".join(verb)
            status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
            found[f"{name}: descriptors"] = len(os.listdir(f"/proc/{process.pid}/fd"))
            found[f"{name}: bytes"] = int(status.split("VmRSS:")[1].split()[0]) * 1024
        files = [path for path in self.tv.rglob("*") if path.is_file()]
        found["files"] = len(files)
        for name in MOST_BYTES:
            found[f"bytes of {name}"] = sum(path.stat().st_size for path in files
                                            if str(path.relative_to(self.tv)).startswith(name))
        return found

    def compare(self, early, late):
        for name, value in late.items():
            if name.endswith("descriptors") and value > MOST_DESCRIPTORS:
                self.wrong.append(f"{name}: {value} are open")
            if name.endswith(": bytes") and value > early[name] + MOST_GROWTH:
                self.wrong.append(f"{name} grew from {early[name]} to {value}")
        if late["files"] > MOST_FILES:
            self.wrong.append(f"the TV has {late['files']} files")
        for name, most in MOST_BYTES.items():
            if late[f"bytes of {name}"] > most + 4 * A_RECORD:
                self.wrong.append(f"{name} has {late[f'bytes of {name}']} bytes")

    def end(self):
        self.run(("power-cycle",), (0,))
        for process in self.watchers:
            process.terminate()
            process.wait()
        for path in list(self.temporary.iterdir()) + list(self.tv.rglob(".tmp-*")):
            self.wrong.append(f"{path} was left behind")


def soak(build, seconds, seed):
    chance = random.Random(seed)
    with tempfile.TemporaryDirectory(prefix="vtv-soak-") as name:
        use = Soak(build, pathlib.Path(name))
        begin = time.monotonic()
        early = None
        verbs = 0
        while time.monotonic() < begin + seconds and not use.wrong:
            use.run(*chance.choice(VERBS))
            use.look_at_watchers()
            verbs += 1
            if early is None and not use.wrong and time.monotonic() > begin + seconds / 4:
                early = use.measure()
        late = {}
        if not use.wrong:
            late = use.measure()
            use.compare(early or late, late)
        use.end()
        print(f"{verbs} verbs in {seconds} s")
        for what, value in late.items():
            print(f"  {what}: {(early or late)[what]} after a quarter, {value} at the end")
        for text in use.wrong:
            print(text, file=sys.stderr)
        return 1 if use.wrong else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--seed", type=int, default=20)
    options = parser.parse_args()
    return soak(options.build, options.seconds, options.seed)


if __name__ == "__main__":
    sys.exit(main())
