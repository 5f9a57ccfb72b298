#!/usr/bin/env python3
"""Runs the command blocks of a page of documentation, in order, as its reader would.

    tests/docs/run_blocks.py --build BUILD PAGE...

A block marked "sh" is run command by command in one shell, in a copy of the sources with the built programs
on the PATH and a home of its own. A command ends with 0, unless a comment behind it says otherwise:

    vtv get no/such/key        # ends with 1
    vtv show --watch           # until Ctrl+C
    vtv get db/menu/voice/x
    #> on                      what it prints has this in it, up to two blanks

A block marked "text COMMAND" is what the command prints; lines may be left out. One marked "text" has no commands. Commands that cannot be run
stand in not-run.txt, with the reason. Exit codes: 0 all is as the pages say, 1 it is not, 2 usage.
"""

import argparse
import collections
import ctypes
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = pathlib.Path(__file__).resolve().parent
NO_COMMANDS = {"toml", "json", "cmake", "c", "cpp", "text"}
UNTIL_INTERRUPTED = 124  # how timeout(1) tells that it had to end the command

# How a line begins that is a command of ours.
OURS = re.compile(r"(vtv(-explore|-app|-window)?|\./(run|test)|(scripts|tests)/[-\w./]+)( |$)")

Step = collections.namedtuple("Step", "line command status prints picture")


class Wrong(Exception):
    """The page is not written as this file asks."""


def blocks_of(page):
    """(line, mark, lines) of each fenced block. What looks like code has to be fenced."""
    fence = None
    before = ""
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("```"):
            if fence is None:
                fence = (number + 1, line[3:].strip(), [])
            else:
                yield fence
                fence = None
        elif fence is not None:
            fence[2].append(line)
        elif re.match(r"    \S", line) and not before:
            raise Wrong(f"{page.name}:{number}: fence this block and mark it: sh, text, toml, ...")
        before = line
    if fence is not None:
        raise Wrong(f"{page.name}:{fence[0]}: this block has no end")


def steps_of(page):
    for line, mark, lines in blocks_of(page):
        language, _, command = mark.partition(" ")
        if language == "sh":
            yield from commands_of(page, line, lines)
        elif language == "text" and command:
            yield Step(line, command, None, [], [text for text in lines if text.strip()])
        elif language == "text" and any(OURS.match(text) for text in lines):
            raise Wrong(f"{page.name}:{line}: these are commands, which are run: mark the block sh")
        elif language not in NO_COMMANDS:
            raise Wrong(f'{page.name}:{line}: is "{mark}" run or not? Mark the block: sh, '
                        f'{", ".join(sorted(NO_COMMANDS))}')


def commands_of(page, first, lines):
    step = None
    pending = []
    for number, line in enumerate(lines, first):
        if line.startswith("#> ") and not pending:
            if step is None:
                raise Wrong(f"{page.name}:{number}: no command printed this")
            step.prints.append(line[3:].split("  ")[0].strip())
            continue
        if not pending and (not line.strip() or line.startswith("#")):
            continue
        pending.append(line)
        if not complete("\n".join(pending)):
            continue
        if step:
            yield step
        step = step_from(number - len(pending) + 1, "\n".join(pending))
        pending = []
    if step:
        yield step
    if pending:
        raise Wrong(f"{page.name}:{number}: this command has no end")


def complete(text):
    if text.endswith("\\"):
        return False
    check = subprocess.run(["bash", "-n", "-c", text], capture_output=True, check=False)
    return check.returncode == 0 and not check.stderr


def step_from(line, command):
    says = re.search(r"\s#.*\bends with (\d+)\b", command)
    status = int(says.group(1)) if says else 0
    if re.search(r"\s#.*\buntil Ctrl\+C\b", command):
        status, command = UNTIL_INTERRUPTED, "timeout --signal=INT 2 " + command
    return Step(line, command, status, [], [])


def bare(command):
    """On one line, without the comment behind it."""
    return re.sub(r"\s+#.*", "", re.sub(r"\\\n\s*", "", command))


def not_run():
    """{(page, command): reason}"""
    known = {}
    for line in (HERE / "not-run.txt").read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            page, _, rest = line.partition(" | ")
            command, _, reason = rest.rpartition(" | ")
            known[page, command] = reason
    return known


def check(name, build):
    """What is wrong with a page, in words."""
    left_out = {command for page, command in not_run() if page == name}
    used = set()
    steps = []
    for step in steps_of(ROOT / name):
        command = bare(step.command)
        if command in left_out:
            used.add(command)
        else:
            steps.append(step)
    wrong = [f"not-run.txt: {name} has no such command: {command}" for command in left_out - used]
    with tempfile.TemporaryDirectory(prefix="si-ready-docs-") as folder:
        for step, (status, output) in zip(steps, run(steps, pathlib.Path(folder), build)):
            for fault in faults_of(step, status, output):
                wrong.append(f"{name}:{step.line}: {step.command}\n    {fault}\n" +
                             "".join(f"    | {line}\n" for line in output.splitlines()[-12:]))
    print(f"{name}: {len(steps)} commands run, {len(used)} left out")
    return wrong


def faults_of(step, status, output):
    if status is None:
        yield "was not reached"
    elif step.status is not None and status != step.status:
        yield f"ended with {status}, and the page says {step.status}"
    for text in step.prints:
        if text not in output:
            yield f'did not print "{text}"'
    lines = iter(line.rstrip() for line in output.splitlines())
    for text in step.picture:
        if text.rstrip() not in lines:
            yield f'did not print the line "{text}", or not there'
            break


def run(steps, folder, build):
    """(status, output) of each step."""
    checkout = folder / "checkout"
    shutil.copytree(ROOT, checkout, symlinks=True, ignore=shutil.ignore_patterns("build", ".git"))
    (checkout / "build").mkdir()
    for preset in ("release", "dev"):
        (checkout / "build" / preset).symlink_to(build)
    results = folder / "results"
    results.mkdir()
    script = ["source tests/docs/at-hand.sh || exit"]
    for index, step in enumerate(steps):
        script += ["{", step.command, f"}} >{results}/{index} 2>&1 </dev/null",
                   f"echo $? >{results}/{index}.status"]
    (folder / "script").write_text("\n".join(script) + "\n", encoding="utf-8")
    shell(folder, checkout, build)
    for index in range(len(steps)):
        status = results / f"{index}.status"
        output = results / str(index)
        yield (int(status.read_text()) if status.exists() else None,
               output.read_text(encoding="utf-8", errors="replace") if output.exists() else "")


def shell(folder, checkout, build):
    environment = {"PATH": f"{build}/bin:/usr/bin:/bin", "HOME": str(folder / "home"),
                   "LANG": "C.UTF-8", "TERM": "dumb", "TMPDIR": str(folder / "tmp"),
                   "XDG_RUNTIME_DIR": str(folder / "run")}
    for name in ("home", "tmp", "run"):
        (folder / name).mkdir(mode=0o700)
    try:
        subprocess.run(["bash", str(folder / "script")], cwd=checkout, env=environment, timeout=240,
                       check=False)
    except subprocess.TimeoutExpired:
        print("the commands did not end within 4 minutes", file=sys.stderr)
    finally:
        end_children()


def adopt_descendants():
    """Applications of a TV outlive the shell; they become this process's children."""
    pr_set_child_subreaper = 36
    ctypes.CDLL(None).prctl(pr_set_child_subreaper, 1, 0, 0, 0)


def end_children():
    me = os.getpid()
    while True:
        children = pathlib.Path(f"/proc/{me}/task/{me}/children").read_text().split()
        if not children:
            return
        for child in children:
            os.kill(int(child), signal.SIGKILL)
            os.waitpid(int(child), 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("pages", nargs="+", metavar="PAGE", help="relative to the sources")
    options = parser.parse_args()
    adopt_descendants()
    wrong = []
    for page in options.pages:
        try:
            wrong += check(page, options.build.resolve())
        except Wrong as fault:
            wrong.append(str(fault))
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
