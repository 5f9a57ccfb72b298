#!/usr/bin/env python3
"""Fails every system call of vtv in turn, and kills it in front of each.

    tests/torture/torture.py --build build/gcc --all            # every point
    tests/torture/torture.py --build build/gcc --sample 500     # as many, of every kind
    tests/torture/torture.py --build build/gcc --all load run   # of some scenes (scenes.py)
    tests/torture/torture.py --build build/gcc --all --call 'write.*launches'   # of some calls
    tests/torture/torture.py --build build/gcc --point 'load 301 full+'

A point is a scene, the number of a call, and what happens to it: "kill", or a trouble of failing_calls.cpp, which with
a "+" goes on from then on; or the number of an allocation and "allocation"; or a time in
microseconds and "moment", at which it is killed. After each the TV has to be whole, the program has to have said what
happened, nothing is left behind, and the verb has to work when it is said again. Exit codes: 0 all is so, 1 it is not,
2 usage.
"""

import argparse
import collections
import multiprocessing
import pathlib
import random
import re
import sys
import tempfile
import time

import scenes
import strike

Point = collections.namedtuple("Point", "scene number how")
Programs = collections.namedtuple("Programs", "vtv failing_calls failing_memory")

# In front of these a kill leaves something else than in front of the call before.
CHANGING = {"write", "writev", "pwrite64", "fsync", "fdatasync", "ftruncate", "truncate", "rename", "renameat",
            "renameat2", "unlink", "unlinkat", "rmdir", "mkdir", "mkdirat", "link", "linkat", "symlink", "symlinkat",
            "fchmod", "fchown", "flock", "clone", "clone3", "vfork", "fork", "execve", "pidfd_send_signal"}


def is_killed(call):
    return call.name in CHANGING or "full" in call.troubles or (call.name == "fcntl" and "locks" in call.troubles)


def points_of(studio, wanted):
    """(kind, point) of a scene, in the order of its calls; of those that are wanted."""
    found = []
    for call, is_loading in studio.loading:
        if not re.search(wanted, f"{studio.scene.name} {call.name}({call.detail})"):
            continue
        if is_loading and not studio.scene.loads and call.name != "execve":
            continue
        hows = [trouble + more for trouble in call.troubles for more in ("", "+")]
        for how in hows + (["kill"] if is_killed(call) else []):
            kind = (studio.scene.name, call.program, call.name, how, is_loading)
            found.append((kind, Point(studio.scene.name, call.number, how)))
    return found


def sample(points, size):
    """Some of every kind: each kind's points are spread over its calls, and the kinds take turns."""
    kinds = collections.defaultdict(list)
    for kind, point in points:
        kinds[kind].append(point)
    chosen = []
    rounds = 0
    while len(chosen) < min(size, len(points)):
        rounds += 1
        chosen = []
        for of_kind in kinds.values():
            step = len(of_kind) / min(rounds, len(of_kind))
            chosen += [of_kind[int(step * (i + 0.5))] for i in range(min(rounds, len(of_kind)))]
    # The kinds alone may be more than were asked for.
    return [chosen[i * len(chosen) // size] for i in range(min(size, len(chosen)))]


studios = {}


def prepare(programs, folder):
    """In each process of the pool."""
    strike.adopt_descendants()
    prepare.programs, prepare.folder = programs, folder


def studio_of(name):
    if name not in studios:
        scene = next(scene for scene in scenes.SCENES if scene.name == name)
        studios[name] = strike.Studio(prepare.programs, scene, prepare.folder)
    return studios[name]


def try_point(point):
    return point, *studio_of(point.scene).strike(point.number, point.how)


def list_points(name, wanted):
    return points_of(studio_of(name), wanted)


def list_allocations(name):
    numbers = studio_of(name).allocations()
    return [Point(name, number, how) for number in numbers for how in ("allocation", "allocation+")]


def list_moments(name, count):
    """The same in every run, as far as a moment is the same."""
    moments = random.Random(name)
    studio = studio_of(name)
    if not studio.scene.moments:
        return []
    microseconds = int(1e6 * studio.pace())
    return [Point(name, moments.randrange(microseconds), "moment") for _ in range(count)]


def report(point, struck, wrong):
    print(f"\n{point.scene} {point.number} {point.how}: "
          + (f"{struck.program} {struck.name}({struck.detail})" if struck else ""))
    for one in wrong:
        print("  " + one.replace("\n", "\n  "))
    sys.stdout.flush()


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--sample", type=int, default=0)
    parser.add_argument("--memory", type=int, default=0, help="so many allocations fail, too; with --all, all")
    parser.add_argument("--call", default="", metavar="REGEX", help="only of calls like it, as 'copy getdents64(12:/.../state)'")
    parser.add_argument("--moments", type=int, default=0, help="so many kills of each scene at random moments, too")
    parser.add_argument("--shard", default="1/1", help="the nth of m parts, as 1/2")
    parser.add_argument("--point", action="append", default=[])
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--list", action="store_true", help="print the points, and try none")
    parser.add_argument("scenes", nargs="*")
    return parser.parse_args()


def main():
    options = arguments()
    binaries = options.build.resolve() / "bin"
    programs = Programs(str(binaries / "vtv"), str(binaries / "failing-calls"),
                        str(options.build.resolve() / "lib/libfailing-memory.so"))
    names = options.scenes or [scene.name for scene in scenes.SCENES]
    started = time.monotonic()
    failed = 0
    kinds = collections.Counter()
    with tempfile.TemporaryDirectory(prefix="vtv-torture-") as folder, \
            multiprocessing.Pool(options.jobs, prepare, (programs, folder)) as pool:
        if options.point:
            points = [Point(name, int(number), how) for name, number, how in
                      (point.split() for point in options.point)]
        else:
            lists = pool.starmap(list_points, [(name, options.call) for name in names], 1)
            points = [point for some in lists for point in some]
            points = [point for _, point in points] if options.all else sample(points, options.sample)
            if options.memory or (options.all and not options.call):
                allocations = [((name, point.how), point) for name in names
                               for point in pool.apply(list_allocations, (name,))]
                points += sample(allocations, len(allocations) if options.all else options.memory)
            for name in names:
                points += pool.apply(list_moments, (name, options.moments))
            part, parts = map(int, options.shard.split("/"))
            points = points[part - 1::parts]
        if options.list:
            for point in points:
                print(*point)
            return 0
        for point, struck, reached, wrong in pool.imap_unordered(try_point, points, 4):
            kinds[reached] += 1
            if wrong:
                failed += 1
                report(point, struck, wrong)
    seconds = time.monotonic() - started
    print(f"{len(points)} points of {len(names)} scenes in {seconds:.1f} s, {kinds[False]} not reached, {failed} failed")
    return 1 if failed or not points else 0


if __name__ == "__main__":
    sys.exit(main())
