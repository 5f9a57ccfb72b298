"""One strike: a scene is set, vtv plays it with one call failing, and everything is looked at."""

import contextlib
import ctypes
import dataclasses
import json
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import time

LIMIT = 30  # seconds for what takes some milliseconds
SETTLES = 5  # seconds that what ends by itself may take
AT_LAST = "at last"
KILLS = ("kill", "moment")
NEVER = 1000000000  # the number of no call
LOADER_FAILED = 127
LOADER_LACKED_MEMORY = (127, 128 + signal.SIGSEGV)  # it has no words of its own for every lack
COULD_NOT_BE_DONE = 4
ALLOCATIONS = struct.Struct("=qq")  # as failing_memory.cpp keeps its books
NOTIFICATION = "org.nemra.alert-syspopup"  # it ends by itself
PR_SET_CHILD_SUBREAPER = 36

# What is there for itself: records of what happened, and what processes wait for each other with.
NOTHING_OF_NOTE = re.compile(r"vtv/\w+/(log/.*|trace/.*|switches|\.lock|apps/\.lock|launches\.jsonl|owner/(.*/)?)|"
                             r"vtv/(tv/)?|at-hand/")
UNCERTAIN = re.compile(r'(?<=time=")[0-9.]+|(?<="pid" : )\d+|(?<="pid":)\d+|(?<="time" : )"[^"]*"|'
                       r'(?<="time":)\d+|(?<=timestamp=")[^"]*')

# What an error speaks of: a file, or what the machine lacks.
TELLING = re.compile(r"/|[a-z0-9]+\.[a-z]+|inotify|standard output|memory|allocate|ulimit")

# A key of the settings, which the provider reads while it is pressed.
SETTING = re.compile(r"\b(db|memory)%2F")

# From then on nothing can be removed: by anybody, or by who cannot open a folder.
UNREMOVABLE = ("broken+", "denied+", "files+")


def adopt_descendants():
    """Whoever loses its parent becomes a child of this process, where it is found and ended."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1)


def children(pid):
    found = []
    try:
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            found += [int(child) for child in (task / "children").read_text().split()]
    except OSError:
        pass
    return found


def descendants(pid):
    found = []
    for child in children(pid):
        found += [child, *descendants(child)]
    return found


def end(pids):
    for pid in pids:
        try:
            os.kill(pid, signal.SIGKILL)
        except ProcessLookupError:
            pass


def reap():
    try:
        while os.waitpid(-1, os.WNOHANG)[0] > 0:
            pass
    except ChildProcessError:
        pass


@dataclasses.dataclass
class Call:
    number: int
    program: str
    name: str
    troubles: list
    detail: str

    @staticmethod
    def parse(line):
        number, program, name, troubles, detail = line.split(" ", 4)
        return Call(int(number), program, name, [] if troubles == "-" else troubles.split(","), detail)


def with_loading(calls):
    """(call, whether the dynamic linker makes it) of each."""
    is_loading = True
    for call in calls:
        if call.name == "execve":
            is_loading = True  # of the program that is started
        elif call.name == "fcntl" and call.detail.startswith("0:"):
            is_loading = False  # the first that main() does
        yield call, is_loading


@dataclasses.dataclass
class Played:
    code: int  # as a shell has it; None for what does not end
    out: str
    err: str
    calls: list


class Stage:
    """The folders of one run: "vtv" with the TVs, "at-hand", the working folder, and "tmp"."""

    def __init__(self, programs, root):
        self.programs = programs
        self.root = pathlib.Path(root)
        self.hand = self.root / "at-hand"

    def environment(self):
        return {"PATH": "/usr/bin:/bin", "HOME": str(self.root / "home"), "XDG_DATA_HOME": str(self.root),
                "XDG_CONFIG_HOME": str(self.root / "home"), "XDG_RUNTIME_DIR": str(self.root / "home"),
                "TMPDIR": str(self.root / "tmp")}

    def furnish(self, scene):
        for folder in ("home", "vtv", "at-hand", "tmp"):
            (self.root / folder).mkdir(parents=True)
        for name, text in scene.at_hand.items():
            (self.hand / name).write_text(text)
        if scene.model:
            self.require("new", "tv", "--model", scene.model)
        for command in scene.before:
            self.require(*command)

    def vtv(self, *arguments):
        return subprocess.run([self.programs.vtv, *arguments], cwd=self.hand, env=self.environment(), text=True,
                              capture_output=True, timeout=LIMIT, stdin=subprocess.DEVNULL, check=False)

    def require(self, *arguments):
        done = self.vtv(*arguments)
        if done.returncode != 0:
            raise RuntimeError(f"vtv {' '.join(arguments)} ended with {done.returncode}: {done.stderr}")

    def play(self, scene, number, how):
        """The scene's command with its call of that number struck; 0 for none."""
        program = [self.programs.vtv]
        moment = None
        if how == "moment":
            number, how, moment = NEVER, "kill", number / 1e6
        if how.startswith("allocation"):
            program = self.with_failing_memory(str(number) + how[len("allocation"):])
            number, how = NEVER, "kill"
        status, trace, out, err = (pathlib.Path(f"{self.root}.{name}") for name in ("status", "trace", "out", "err"))
        with open(out, "w+", encoding="utf-8", errors="replace") as out, \
                open(err, "w+", encoding="utf-8", errors="replace") as err:
            process = subprocess.Popen(
                [self.programs.failing_calls, status, trace, str(number), how, *program, *scene.command],
                cwd=self.hand, env=self.environment(), stdout=out, stderr=err, stdin=subprocess.DEVNULL)
            while not children(process.pid) and process.poll() is None:
                time.sleep(0.0002)
            started = time.monotonic()
            if moment is not None:
                time.sleep(moment)
                end(children(process.pid))
            code = self.wait_for(process, status, "main ", LIMIT)
            self.seconds = time.monotonic() - started  # of the program itself
            self.left = self.settle(scene, process, status) if code is not None else []
            out.seek(0)
            err.seek(0)
            return Played(None if code is None else int(code), out.read(), err.read(), self.calls())

    def calls(self):
        """Those that are written down by now: all, or the one that was struck."""
        text = pathlib.Path(f"{self.root}.trace").read_text(errors="replace")
        return [Call.parse(line) for line in text.splitlines()]

    def with_failing_memory(self, which):
        file = pathlib.Path(f"{self.root}.allocations")
        file.write_bytes(ALLOCATIONS.pack(0, 0))
        return ["/usr/bin/env", f"LD_PRELOAD={self.programs.failing_memory}", f"FAILING_ALLOCATION={which}",
                f"ALLOCATIONS_FILE={file}", self.programs.vtv]

    def allocations(self):
        """How many there were, and which process the one that failed was of."""
        return ALLOCATIONS.unpack(pathlib.Path(f"{self.root}.allocations").read_bytes())

    @staticmethod
    def wait_for(process, status, word, limit):
        """What stands behind the word in a line of the file; None when it does not come."""
        deadline = time.monotonic() + limit
        while True:
            over = process.poll() is not None
            for line in status.read_text().splitlines() if status.exists() else []:
                if line.startswith(word):
                    return line[len(word):]
            if over or time.monotonic() > deadline:
                return None
            time.sleep(0.001)

    def settle(self, scene, process, status):
        """The processes that run on although they are no application of the TV."""
        deadline = time.monotonic() + SETTLES
        while True:
            if self.wait_for(process, status, "all", 0.01) is not None:
                return []
            known = set() if scene.ends else {pid for pid, _ in self.applications()}
            left = [pid for pid in descendants(process.pid) if pid not in known]
            if not left or time.monotonic() > deadline:
                return left

    def applications(self):
        """(process, id) of what the TV says that it runs."""
        found = []
        for file in (self.root / "vtv/tv/apps").glob("*.json"):
            try:
                record = json.loads(file.read_text())
                found.append((record["pid"], record["app"]))
            except (OSError, ValueError, KeyError):
                pass
        return found

    def certain(self, text):
        """Without what differs from run to run."""
        return UNCERTAIN.sub("~", text.replace(str(self.root), "ROOT"))

    def state(self):
        """Everything that lies in the folders: its name and what it holds."""
        found = {}
        for folder, folders, files in os.walk(self.root):
            for name in folders:
                path = os.path.relpath(os.path.join(folder, name), self.root) + "/"
                if not NOTHING_OF_NOTE.fullmatch(path):
                    found[path] = ""
            for name in files:
                path = os.path.relpath(os.path.join(folder, name), self.root)
                if not NOTHING_OF_NOTE.fullmatch(path) and "/tv/apps/" not in path:
                    text = pathlib.Path(folder, name).read_text(encoding="utf-8", errors="backslashreplace")
                    found[path] = self.certain(text)
        found["running"] = sorted(app for pid, app in self.applications()
                                  if app != NOTIFICATION and os.path.exists(f"/proc/{pid}"))
        return found


class Studio:
    """A scene, set once, of which each strike gets a copy."""

    def __init__(self, programs, scene, folder):
        self.programs = programs
        self.scene = scene
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=scene.name + "-", dir=folder))
        Stage(programs, self.folder / "set").furnish(scene)
        with self.stage() as stage:
            self.before = stage.state()
            self.undisturbed = stage.play(scene, 0, "kill")
            self.after = stage.state()
            self.said = stage.certain(self.undisturbed.out)
        self.loading = list(with_loading(self.undisturbed.calls))
        if self.undisturbed.code != 0:
            raise RuntimeError(f"{scene.name} ended with {self.undisturbed.code}: {self.undisturbed.err}")

    def pace(self):
        """How long the program takes when nobody writes down its calls, in seconds."""
        return min(self.undisturbed_run() for _ in range(3))

    def undisturbed_run(self):
        with self.stage() as stage:
            stage.play(self.scene, NEVER, "kill")
        return stage.seconds

    @contextlib.contextmanager
    def stage(self):
        root = pathlib.Path(tempfile.mkdtemp(prefix="run-", dir=self.folder))
        root.rmdir()
        shutil.copytree(self.folder / "set", root, symlinks=True)
        stage = Stage(self.programs, root)
        try:
            for command in self.scene.each:
                stage.require(*command)
            yield stage
        finally:
            end(descendants(os.getpid()))
            reap()
            shutil.rmtree(root)
            for name in ("status", "trace", "out", "err", "allocations"):
                pathlib.Path(f"{root}.{name}").unlink(missing_ok=True)

    def allocations(self):
        """The numbers of those that the scene makes."""
        with self.stage() as stage:
            stage.play(self.scene, 0, "allocation")
            return range(1, stage.allocations()[0] + 1)

    def strike(self, number, how):
        """The call that was struck, whether anything was, and what is wrong then."""
        with self.stage() as stage:
            played = stage.play(self.scene, number, how)
            struck = played.calls[0] if played.calls else None
            wrong = Judge(self, stage, struck, played, how).judge()
            if how.startswith("allocation"):
                return struck, stage.allocations()[1] != 0, wrong
        reached = struck is not None or played.code == 128 + signal.SIGKILL
        return struck, reached, wrong

    def close(self):
        shutil.rmtree(self.folder)


class Judge:
    """What is wrong after a strike."""

    def __init__(self, studio, stage, struck, played, how):
        self.studio, self.stage, self.struck, self.played, self.how = studio, stage, struck, played, how
        self.scene = studio.scene
        self.wrong = []

    def judge(self):
        played = self.played
        if played.code is None:
            self.wrong.append(f"it does not end in {LIMIT} s")
            return self.wrong
        if self.stage.left:
            self.wrong.append(f"{len(self.stage.left)} processes are left")
        self.judge_what_was_said()
        if self.is_misread():
            # To the provider the setting has no value, and it turns over what it takes for the value.
            if played.code == 0:
                self.wrong.append("it said 0, although a setting could not be read")
            self.judge_show()
            return self.wrong
        here = self.stage.state()
        if self.could_clean_up():
            self.judge_what_is_left(here, "at its end")
        if self.is_done(played.code) and self.of_note(here) != self.studio.after:
            self.complain_of_state("it said 0", here, self.studio.after)
        self.judge_what_follows()
        return self.wrong

    def is_misread(self):
        return (self.scene.name.startswith("press") and self.struck is not None and self.struck.program == "vtv" and
                not self.how.endswith("+") and self.struck.name in ("openat", "read", "pread64") and SETTING.search(self.struck.detail) is not None)

    def could_clean_up(self):
        is_removal = self.struck is not None and self.struck.name in ("unlink", "unlinkat", "rmdir")
        is_postponed = "follows when the TV is opened next" in self.played.err
        # A folder cannot be emptied without a descriptor.
        ends_at_once = self.how in KILLS or self.how.startswith("allocation")
        return not ends_at_once and self.how not in UNREMOVABLE and not is_removal and not is_postponed

    def is_done(self, code):
        """Whether it said that all is done. What a started application does is not the verb's to say."""
        if self.struck is None:  # by then; what was started may be struck later
            is_the_verb = not self.scene.launches
        elif self.scene.ends or (self.how in KILLS and self.scene.launches):
            # What was struck may be the started application before it had a name of its own, or, where the verb's own
            # process lives, has to be.
            is_the_verb = False
        else:
            is_the_verb = self.struck.program != "vtv-app" and self.struck.name != "execve"
        return code == 0 and is_the_verb

    def judge_what_was_said(self):
        code, err = self.played.code, self.played.err.strip()
        if code == 128 + signal.SIGKILL and self.how in KILLS:
            return
        # A provider that lacks memory answers all the same, with what it has.
        is_the_providers = self.how.startswith("allocation") and self.scene.asks
        if code == 0:
            said = self.stage.certain(self.played.out)
            if self.is_done(code) and said != self.studio.said and not is_the_providers and \
                    not (self.scene.tells and self.scene.tells in said):
                self.wrong.append(f"it said 0, and printed:\n{said}instead of:\n{self.studio.said}")
            return
        if code == LOADER_FAILED and self.how.startswith("allocation") and "env:" in err:
            return
        if code == LOADER_FAILED and "error while loading shared libraries" in err:
            return
        if code in LOADER_LACKED_MEMORY and self.how.startswith("memory") and self.is_in_loader():
            return
        if code != COULD_NOT_BE_DONE:
            self.wrong.append(f"it ended with {code}: {err}")
        elif not re.fullmatch(r"(vtv|\S+\.toml(:\d+)?): .*\S", err.splitlines()[-1] if err else ""):
            self.wrong.append(f"it ended with {code}, and said {err!r}")
        elif not TELLING.search(err):
            self.wrong.append(f"it named no file: {err}")

    def is_in_loader(self):
        number = self.struck.number if self.struck else 0
        return any(is_loading and call.number == number for call, is_loading in self.studio.loading)

    def of_note(self, here):
        """Without what is looked at by judge_what_is_left()."""
        return {name: text for name, text in here.items()
                if ".vtv-" not in name and "/.changes/" not in name and not name.startswith("tmp/vtv-") and
                not (name.startswith("at-hand/") and text == "")}  # an empty file is as good as none

    def judge_what_is_left(self, here, when):
        left = sorted(set(here) - set(self.studio.before) - set(self.studio.after))
        if when != AT_LAST:  # what of a removed TV could not be deleted goes with the next verb
            left = [name for name in left if ".vtv-removed-" not in name]
        if self.how in UNREMOVABLE:
            left = [name for name in left if not name.startswith("tmp/")]
        if left:
            self.wrong.append(f"{when} there is left behind: {', '.join(left)}")

    def judge_state(self, here, when):
        before, after = self.studio.before, self.studio.after
        if self.scene.atomic:
            if here not in (before, after):
                self.complain_of_state(when + ", neither as it was nor as it shall be", here, after)
                return
        for name in {*before, *after, *here}:
            if here.get(name) not in (before.get(name), after.get(name)):
                self.complain_of_state(when, {name: here.get(name)},
                                       {name: f"{before.get(name)!r} or {after.get(name)!r}"})

    def complain_of_state(self, when, here, wanted):
        lines = [f"{when}:"]
        for name in sorted({*here, *wanted}):
            if here.get(name) != wanted.get(name):
                lines.append(f"    {name}: {here.get(name)!r}, and not {wanted.get(name)!r}")
        self.wrong.append("\n".join(lines))

    def judge_show(self):
        if (self.stage.root / "vtv/tv").exists():
            look = self.stage.vtv("show", "--json", "--tv", "tv")
            if look.returncode != 0 or look.stderr:
                self.wrong.append(f"vtv show ends with {look.returncode}: {look.stderr}")

    def is_application_struck(self):
        """Then that of the first time may end at any moment, and have been resumed before."""
        calls = self.stage.calls()
        goes_on = self.scene.launches and not self.scene.ends
        return goes_on and calls != [] and (self.struck is None or calls[0].program == "vtv-app" or self.how[-1] == "+")

    def say_again(self, wanted):
        again = self.stage.vtv(*self.scene.command)
        if again.returncode != wanted:
            self.wrong.append(f"said again it ends with {again.returncode} and not {wanted}: {again.stderr.strip()}")
        deadline = time.monotonic() + SETTLES
        while self.scene.ends and self.stage.applications() and time.monotonic() < deadline:
            time.sleep(0.01)

    def judge_what_follows(self):
        """The TV works on, and so does the verb."""
        self.judge_show()
        here = self.of_note(self.stage.state())
        is_done = here == self.studio.after
        is_between = not is_done and here != self.studio.before
        if self.scene.model or is_done:
            self.judge_state(here, "the next one sees")
        self.say_again(self.scene.again if is_done else 0)
        here = self.stage.state()
        deadline = time.monotonic() + SETTLES
        while self.of_note(here) != self.studio.after and self.is_application_struck() and time.monotonic() < deadline:
            self.say_again(0)
            here = self.stage.state()
        self.judge_what_is_left(here, AT_LAST)
        if not self.scene.turns and not (self.scene.ends and is_between) and self.of_note(here) != self.studio.after:
            self.complain_of_state("said again", here, self.studio.after)
