"""A checkout of a test's own: the scripts, and programs that stand in for those of the machine."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Of nobody's git, and of no run of ./test that the tests are a part of.
ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith(("GIT_", "SI_"))}
ENVIRONMENT |= {"GIT_CONFIG_GLOBAL": os.devnull, "GIT_CONFIG_NOSYSTEM": "1"}
for who in ("AUTHOR", "COMMITTER"):
    ENVIRONMENT |= {f"GIT_{who}_NAME": "A", f"GIT_{who}_EMAIL": "a@example.org"}


class CheckoutTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="si-ready-checkout-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.copy("scripts")
        (self.root / "bin").mkdir()

    def copy(self, *names):
        for name in names:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (shutil.copytree if (ROOT / name).is_dir() else shutil.copy)(ROOT / name, self.root / name)

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def program(self, name, text):
        """Found before the machine's own of that name."""
        self.write(f"bin/{name}", f"#!/bin/sh\n{text}\n")
        (self.root / "bin" / name).chmod(0o755)

    def start(self, *command, **variables):
        environment = ENVIRONMENT | {"PATH": f"{self.root}/bin:{os.environ['PATH']}"} | variables
        return subprocess.run(command, cwd=self.root, env=environment, capture_output=True, text=True, check=False)

    def git(self, *arguments):
        result = self.start("git", *arguments)
        self.assertEqual(0, result.returncode, result)
