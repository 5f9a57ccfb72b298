"""Reads what callgrind has dumped: the instructions of each function, by the library that it is in."""

import collections
import re
import subprocess
import tempfile
from pathlib import Path

NAME = re.compile(r"^(c?(?:ob|fl|fi|fe|fn)|cfi)=\((\d+)\)(?: (.*))?$")


class Dump:
    """The part of a run between two requests of the program, named by the second."""

    def __init__(self, name):
        self.name = name
        self.functions = collections.Counter()  # (library, function) -> instructions of its own

    def total(self):
        return sum(self.functions.values())

    def of(self, library="", function=""):
        return sum(count for (lib, fn), count in self.functions.items()
                   if re.search(library, lib) and re.search(function, fn))


def read_dumps(folder):
    """Names are written out once in a run, in whichever dump they come first."""
    dumps, names = {}, {}
    for path in sorted(folder.glob("out.*"), key=lambda path: int(path.suffix[1:])):
        dump = _read(path, names)
        if dump.name:
            dumps[dump.name] = dump
    return dumps


def _read(path, names):
    dump, library, function, is_call = Dump(""), "", "", False
    for line in path.read_text().splitlines():
        named = NAME.match(line)
        if line.startswith("desc: Trigger: Client Request: "):
            dump.name = line.split(": ", 3)[3]
        elif named:
            kind, number, text = named.groups()
            key = (kind[-2:], number)
            if text:
                names[key] = text
            if kind == "ob":
                library = names[key]
            elif kind == "fn":
                function = names[key]
        elif line.startswith("calls="):
            is_call = True  # the next line has the cost of what is called, which counts there
        elif line and line[0] in "0123456789+-*":
            if not is_call:
                dump.functions[(library, function)] += int(line.split()[1])
            is_call = False
    return dump


def count(program):
    """Runs a program that asks callgrind for dumps."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["valgrind", "--tool=callgrind", "--quiet", "--collect-atstart=no",
                        f"--callgrind-out-file={folder}/out", *program],
                       check=True, stdout=subprocess.DEVNULL)
        return read_dumps(Path(folder))
