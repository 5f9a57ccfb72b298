#!/usr/bin/env python3
"""Does `vtv explore diff` tell every faulty provider from the right one?

Edits one place of si-ready/src at a time (a condition, constant, text, order, argument, type, return value, a
statement or a null check that goes, a variable that remembers), builds the library and compares it with the original. One of which the
compiler makes the very same code is the same program. A mutant that is not told from the original is listed; those in
tests/explorer/mutants-alike.txt are explained there, do not count as failures and are not tried but with --explained.

    tests/explorer/mutants.py --build build/dev            # 90 mutants, spread over all sources
    tests/explorer/mutants.py --build build/dev --sample   # one of each kind in each source, as the tests run it
    tests/explorer/mutants.py --build build/dev --all      # every mutant that can be made
    tests/explorer/mutants.py --build build/dev --faults   # those of tests/explorer/faults.toml, which are told for sure

What takes long can be interrupted, and shared among machines that have the same sources:

    tests/explorer/mutants.py --build build/dev --all --results FILE               # goes on where it was interrupted
    tests/explorer/mutants.py --build build/dev --all --results FILE --shard 2/8   # the second of eight parts
    cat FILE... > ALL; tests/explorer/mutants.py --build build/dev --all --results ALL   # the parts together

Exit codes: 0 all were told from the original or are explained, 1 some were not, 2 trouble, 130 interrupted.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import tomllib

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
SOURCES = ["SIMenuUtil", "MVAList", "general_voice_visiblechecker",
           "general_voice_enablechecker", "general_voice_dataprovider"]
VERDICTS = ("told", "the same code", "explained", "alike", "does not build", "trouble")
INTERRUPTED = 130
EXPLAINED = os.path.join(HERE, "mutants-alike.txt")
SAMPLE = os.path.join(HERE, "mutants-sample.txt")

TOKEN = re.compile(r'''//[^\n]*|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\])*'|'''
                   r'''[A-Za-z_]\w*|\d+|==|!=|<=|>=|&&|\|\||<<|>>|->|\+\+|--|\+=|::|.''', re.S)

REPLACEMENTS = {
    "==": ("condition", "!="), "!=": ("condition", "=="), "&&": ("condition", "||"),
    "||": ("condition", "&&"), "true": ("constant", "false"), "false": ("constant", "true"),
    "<": ("relation", "<="), "<=": ("relation", "<"), ">": ("relation", ">="), ">=": ("relation", ">"),
    "empty": None,
}


def tokens_of(text):
    """(offset, token) without comments and preprocessor lines."""
    line_starts_directive = set()
    offset = 0
    for line in text.splitlines(keepends=True):
        if line.lstrip().startswith("#"):
            line_starts_directive.update(range(offset, offset + len(line)))
        offset += len(line)
    for match in TOKEN.finditer(text):
        token = match.group()
        if token.startswith("//") or token.isspace() or match.start() in line_starts_directive:
            continue
        yield match.start(), token


def mutate_text(token):
    """Another text: its last letter is changed."""
    body = token[1:-1]
    for at in range(len(body) - 1, -1, -1):
        if body[at].isalpha() and (at == 0 or body[at - 1] not in "%\\"):
            return '"' + body[:at] + ("x" if body[at] != "x" else "y") + body[at + 1:] + '"'
    return None


def edits_of(name, text):
    """Every single edit: (kind, offset, old, new)."""
    tokens = list(tokens_of(text))
    for index, (offset, token) in enumerate(tokens):
        before = tokens[index - 1][1] if index else ""
        after = tokens[index + 1][1] if index + 1 < len(tokens) else ""
        if REPLACEMENTS.get(token):
            kind, new = REPLACEMENTS[token]
            # "operator=", rvalue references, default arguments and lists of templates are not conditions.
            is_of_type = kind == "relation" and f" {token} " != text[offset - 1:offset + len(token) + 1]
            if not is_of_type and not (token == "&&" and before in (">", "auto")):
                yield kind, offset, token, new
        elif token == "!" and after.isidentifier() and before in ("(", "&&", "||", "return", "="):
            yield "condition", offset, "!", ""
        elif token.isdigit() and len(token) < 5:
            yield "constant", offset, token, str(int(token) + 1)
        elif token.startswith('"') and len(token) > 3 and before not in ("include",):
            new = mutate_text(token)
            if new:
                yield "text", offset, token, new
    yield from swaps_of(text)
    yield from rewrites_of(text)


STATEMENT = re.compile(r"^    +[A-Za-z_:]+(?:::|\()[^;{}\n]*;$")


def swaps_of(text):
    """Two calls that follow each other change places."""
    lines = text.splitlines(keepends=True)
    offset = 0
    for index, line in enumerate(lines[:-1]):
        following = lines[index + 1]
        if (STATEMENT.match(line.rstrip()) and STATEMENT.match(following.rstrip())
                and "return" not in line + following and "static_assert" not in line):
            yield "order", offset, line + following, following + line
        offset += len(line)


# (kind, what stands in a line of a function, what takes its place)
CALL = r"\w[\w:]*\([^()]*\)"
REWRITES = [
    ("remembers", re.compile(r"^(    +)((?:const )?(?:auto|int|bool|size_t|std::string|ASSISTANT_TYPE)[&*]* \w+ = )"),
     r"\1static \2"),
    ("reads", re.compile(rf"(!?{CALL}) (&&|\|\|) (!?{CALL})"), r"\3 \2 \1"),
    ("type", re.compile(r"\bVconfGetBool\("), "VconfGetInt("),
    ("type", re.compile(r"\bVconfGetInt\("), "VconfGetBool("),
    ("type", re.compile(r"\bvconf_get_bool\("), "vconf_get_int("),
    ("type", re.compile(r"\bvconf_get_int\("), "vconf_get_bool("),
    ("null check", re.compile(r"[\w.*\[\]>:-]+ != nullptr"), "true"),
    ("null check", re.compile(r"[\w.*\[\]>:-]+ == nullptr"), "false"),
    ("free", re.compile(r"^    +[\w:]*(?:free|destroy|clear)\w*\([^;{}]*\);$"), ""),
    ("argument", re.compile(r"\((\w+), (\w+)\)"), r"(\2, \1)"),
    ("return", re.compile(r'^(    +)return "";$'), r'\1return "?";'),
    ("return", re.compile(r'^(    +)return (?!"";)[^;{}]+;$'), r"\1return {};"),
    ("left out", re.compile(r"^    +[A-Za-z_:]+\([^;{}]*\);$"), ""),
]


def rewrites_of(text):
    offset = 0
    for line in text.splitlines(keepends=True):
        old = line.rstrip("\n")
        if line.startswith("    ") and not old.lstrip().startswith("//"):
            for kind, pattern, replacement in REWRITES:
                new = pattern.sub(replacement, old, count=1)
                if new != old:
                    yield kind, offset, old, new
        offset += len(line)


def all_mutants():
    mutants = []
    for name in SOURCES:
        path = os.path.join(ROOT, "si-ready", "src", name + ".cpp")
        with open(path, encoding="utf-8") as file:
            text = file.read()
        for kind, offset, old, new in edits_of(name, text):
            mutants.append({"source": name, "kind": kind, "offset": offset, "old": old, "new": new,
                            "line": text.count("\n", 0, offset) + 1,
                            "code": text[text.rfind("\n", 0, offset) + 1:
                                         (text + "\n").find("\n", offset)].strip()})
    seen = collections.Counter()
    for mutant in mutants:
        mutant["name"] = identity(mutant)
        seen[mutant["name"]] += 1
        if seen[mutant["name"]] > 1:
            mutant["name"] += f' ({seen[mutant["name"]]})'
    return mutants


def chosen_faults(are_narrow=False):
    with open(os.path.join(HERE, "faults.toml"), "rb") as file:
        faults = tomllib.load(file)["fault"]
    for fault in faults:
        with open(os.path.join(ROOT, "si-ready", "src", fault["file"] + ".cpp"), encoding="utf-8") as file:
            text = file.read()
        if text.count(fault["old"]) != 1:
            raise SystemExit(f'mutants: {fault["what"]!r}: {fault["file"]}.cpp holds {text.count(fault["old"])} times:\n'
                             + fault["old"])
        offset = text.index(fault["old"])
        fault.update(source=fault["file"], kind="alike" if fault.get("alike") else "fault", offset=offset,
                     line=text.count("\n", 0, offset) + 1, name=fault["what"])
    return [fault for fault in faults if "only" in fault or not are_narrow]


def identity(mutant):
    """A name that stays when lines move."""
    def shown(text):
        return " ".join(text.split())
    return f'{mutant["source"]}: {shown(mutant["code"])}: {shown(mutant["old"])} -> {shown(mutant["new"])}'


def sample_of(mutants):
    """One of each kind in each source, of which the file tells one that is soon told."""
    with open(SAMPLE, encoding="utf-8") as file:
        names = {line.rstrip("\n") for line in file if line.strip() and not line.startswith("#")}
    return [mutant for mutant in mutants if mutant["name"] in names]


def spread(mutants, count):
    """Evenly over kinds and sources, always the same ones."""
    if count >= len(mutants):
        return mutants
    kinds = {}
    for mutant in mutants:
        kinds.setdefault(mutant["kind"], []).append(mutant)
    chosen = []
    share = -(-count // len(kinds))
    for group in kinds.values():
        step = max(1.0, len(group) / share)
        chosen += [group[int(i * step)] for i in range(min(share, len(group)))]
    return chosen[:count] if len(chosen) >= count else chosen


class Builder:
    """Builds the provider with one source replaced."""

    def __init__(self, build):
        self.build = os.path.abspath(build)
        with open(os.path.join(self.build, "compile_commands.json"), encoding="utf-8") as file:
            commands = json.load(file)
        self.compile = {}
        for command in commands:
            name = os.path.splitext(os.path.basename(command["file"]))[0]
            if "/si-ready/" in command["file"] and "si-ready.dir" in command["command"]:
                self.compile[name] = shlex.split(command["command"])
        missing = [name for name in SOURCES if name not in self.compile]
        if missing:
            raise SystemExit(f"mutants: {self.build} does not build {', '.join(missing)}")
        self.objects = {}
        for name, words in self.compile.items():
            self.objects[name] = os.path.join(self.build, words[words.index("-o") + 1])
        self.script = os.path.join(self.build, "si-ready", "exports.map")

        # Without the text of a mutant's folder, so that what is the same code is the same file.
        with tempfile.TemporaryDirectory(prefix="mutant-") as folder:
            self.codes = {name: self.code_of(self.compiled(name, self.source_of(name), folder)) for name in SOURCES}
        if not all(self.codes.values()):
            raise SystemExit(f"mutants: the sources do not compile as in {self.build}: build first")

    @staticmethod
    def source_of(name):
        with open(os.path.join(ROOT, "si-ready", "src", name + ".cpp"), encoding="utf-8") as file:
            return file.read()

    @staticmethod
    def code_of(made):
        if made is None:
            return None
        with open(made, "rb") as file:
            return file.read()

    def compiled(self, name, text, folder):
        """The object file of a source with that text, or None when it does not compile."""
        source = os.path.join(folder, name + ".cpp")
        with open(source, "w", encoding="utf-8") as file:
            file.write(text)
        words = [word for word in self.compile[name] if word not in ("ccache", "-Werror", "-MD")]
        words = [word for word in words if not word.startswith("-O")]
        for option in ("-MT", "-MF"):
            if option in words:
                at = words.index(option)
                del words[at:at + 2]
        made = os.path.join(folder, name + ".o")
        words[words.index("-o") + 1] = made
        words[words.index("-c") + 1] = source
        sources = os.path.join(ROOT, "si-ready", "src")
        # In a session of its own, so that Ctrl-C does not look like a mutant that does not compile.
        done = subprocess.run(words + ["-O1", "-w", "-I", sources, f"-ffile-prefix-map={folder}={sources}"],
                              cwd=self.build, capture_output=True, start_new_session=True)
        return made if done.returncode == 0 else None

    def make(self, mutant, folder):
        """(the library's file, "") or (None, why there is none)."""
        name = mutant["source"]
        text = self.source_of(name)
        at = mutant["offset"]
        text = text[:at] + mutant["new"] + text[at + len(mutant["old"]):]
        made = self.compiled(name, text, folder)
        if made is None:
            return None, "does not build"
        if self.code_of(made) == self.codes[name]:
            return None, "the same code"
        library = os.path.join(folder, "mutant.so")
        objects = [made if other == name else file for other, file in self.objects.items()]
        link = [self.compile[name][0], "-shared", "-fPIC", "-o", library, *objects,
                "-Wl,--version-script=" + self.script, "-ljsoncpp"]
        link = [word for word in link if word != "ccache"]
        done = subprocess.run(link, cwd=self.build, capture_output=True, start_new_session=True)
        return (library, "") if done.returncode == 0 else (None, "does not build")


class Results:
    """What was found already, one JSON object a line: of a mutant, and of the program and provider that it was found with."""

    def __init__(self, file, judged_by):
        self.file = file
        self.digest = hashlib.sha256()
        for name in judged_by:
            with open(name, "rb") as one:
                self.digest.update(one.read())
        self.digest = self.digest.hexdigest()[:16]
        self.verdicts = {}
        if file and os.path.exists(file):
            with open(file, encoding="utf-8") as lines:
                for line in lines:
                    self.take(line)

    def take(self, line):
        try:
            found = json.loads(line)
            if found["with"] == self.digest:
                self.verdicts[found["mutant"]] = found["verdict"]
        except (ValueError, KeyError, TypeError):
            pass  # cut off where the run was ended

    def add(self, mutant, verdict):
        self.verdicts[mutant["name"]] = verdict
        if self.file:
            with open(self.file, "a", encoding="utf-8") as lines:
                lines.write("\n" * self.is_cut_off()
                            + json.dumps({"with": self.digest, "mutant": mutant["name"], "verdict": verdict}) + "\n")

    def is_cut_off(self):
        with open(self.file, "rb") as lines:
            if lines.seek(0, os.SEEK_END) == 0:
                return False
            lines.seek(-1, os.SEEK_END)
            return lines.read(1) != b"\n"


def explained():
    known = {}
    if os.path.exists(EXPLAINED):
        with open(EXPLAINED, encoding="utf-8") as file:
            for line in file:
                if line.strip() and not line.startswith("#"):
                    what, _, why = line.rstrip("\n").partition(" | ")
                    known[what] = why
    return known


def try_mutant(builder, program, original, mutant):
    with tempfile.TemporaryDirectory(prefix="mutant-") as folder:
        library, why = builder.make(mutant, folder)
        if library is None:
            return why
        only = [word for name in mutant.get("only", []) for word in ("--only", name)]
        command = [program, "diff", "--brief", "--quiet", "--jobs", "1", *only, original, library]
        result = subprocess.run(command, capture_output=True, text=True, start_new_session=True)
        return {0: "alike", 1: "told"}.get(result.returncode, "trouble: " + result.stderr.strip())


def judged(mutant, verdict, known):
    """The verdict, by what is known of the mutant beforehand."""
    if verdict == "alike" and (mutant["name"] in known or mutant["kind"] == "alike"):
        return "explained"
    if verdict == "told" and mutant["kind"] == "alike":
        return "trouble: this change is none that anybody could see"
    return verdict


def try_all(chosen, results, jobs, attempt, tell):
    """Whether all were tried; Ctrl-C and SIGTERM end it behind those that are being tried."""
    def once(mutant):
        return None if mutant["name"] in results.verdicts else attempt(mutant)

    tries = {}
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        former = {number: signal.signal(number, lambda *_: [one.cancel() for one in list(tries)])
                  for number in (signal.SIGINT, signal.SIGTERM)}
        try:
            tries.update((pool.submit(once, mutant), mutant) for mutant in chosen)
            for one in concurrent.futures.as_completed(tries):
                if one.cancelled():
                    continue
                if one.result() is not None:
                    results.add(tries[one], one.result())
                tell(tries[one])
        finally:
            for number, handler in former.items():
                signal.signal(number, handler)
    return not any(one.cancelled() for one in tries)


def part_of(mutants, shard):
    part, parts = (int(number) for number in shard.split("/"))
    if not 1 <= part <= parts:
        raise ValueError
    return mutants[part - 1::parts]


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", help="a folder in which the project is built")
    parser.add_argument("--count", type=int, default=90, help="how many mutants (90)")
    parser.add_argument("--sample", action="store_true", help="only one of each kind in each source")
    parser.add_argument("--all", action="store_true", help="every mutant that can be made")
    parser.add_argument("--faults", action="store_true", help="those of faults.toml")
    parser.add_argument("--narrow", action="store_true", help="of these only those that name the questions that tell them")
    parser.add_argument("--explained", action="store_true", help="walk those that are explained, too, minutes each")
    parser.add_argument("--shard", metavar="I/N", default="1/1", help="only the Ith of N parts")
    parser.add_argument("--results", metavar="FILE", help="keeps what is found; what it holds is not tried again")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--check", action="store_true", help="only say whether the faults fit the sources")
    options = parser.parse_args()
    if options.build is None and not options.check:
        parser.error("--build is missing")
    try:
        part_of([], options.shard)
    except ValueError:
        parser.error(f"--shard is I/N, as 2/8, and not {options.shard}")
    return options


def report(counts, survivors, tried, made, is_whole):
    print(f'{"" if is_whole else "interrupted: "}{tried} of {made} mutants: ' +
          ", ".join(f"{number} {what}" for what, number in counts.items() if number))
    for mutant in survivors:
        if mutant["verdict"] == "alike":
            print("not told from the original: " + mutant["name"])
        elif mutant["verdict"].startswith("trouble"):
            print("trouble: " + mutant["name"] + "\n" + mutant["verdict"])


def main():
    options = arguments()
    if options.check:
        print(f"{len(chosen_faults())} faults fit their sources")
        return 0

    program = os.path.join(options.build, "bin", "vtv-explore")
    original = os.path.join(options.build, "lib", "libsi-ready.so")
    inputs = os.path.join(options.build, "share", "vtv", "explorer", "inputs.toml")  # decides what is asked
    for file in (program, original, inputs):
        if not os.path.exists(file):
            print(f"mutants: {file} is not there: build first", file=sys.stderr)
            return 2
    builder = Builder(options.build)
    mutants = all_mutants()
    chosen = part_of(chosen_faults(options.narrow) if options.faults else mutants if options.all
                     else sample_of(mutants) if options.sample else spread(mutants, options.count), options.shard)
    known = explained()
    results = Results(options.results, (program, original, inputs))
    counts = dict.fromkeys(VERDICTS, 0)
    survivors = []
    tried = []

    def tell(mutant):
        mutant["verdict"] = judged(mutant, results.verdicts[mutant["name"]], known)
        tried.append(mutant)
        counts[mutant["verdict"].split(":")[0]] += 1
        if mutant["verdict"] == "alike" or mutant["verdict"].startswith("trouble"):
            survivors.append(mutant)
        if not options.json:
            print(f'{mutant["verdict"]:14} {mutant["kind"]:9} {mutant["source"]}.cpp:{mutant["line"]}: '
                  f'{mutant["old"].strip()!r} -> {mutant["new"].strip()!r}', flush=True)

    def attempt(mutant):
        is_known = mutant["name"] in known and not options.explained
        return "explained" if is_known else try_mutant(builder, program, original, mutant)

    is_whole = try_all(chosen, results, options.jobs, attempt, tell)
    if options.json:
        print(json.dumps({"mutants": tried, "counts": counts, "possible": len(mutants), "whole": is_whole}, indent=2))
    else:
        report(counts, survivors, len(tried), len(mutants), is_whole)
    if not is_whole:
        return INTERRUPTED
    if counts["trouble"]:
        return 2
    return 1 if counts["alike"] else 0


if __name__ == "__main__":
    sys.exit(main())
