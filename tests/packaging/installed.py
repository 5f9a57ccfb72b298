"""What the tests of an installed build share."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CONSUMER = pathlib.Path(__file__).resolve().parent / "consumer"
BUILD = pathlib.Path(os.environ["BUILD"])
WHOLE = os.environ["WHOLE"] == "1"
PLATFORM = os.environ["PLATFORM"]
EXPLORATIONS = ("check", "depends", "diff", "impact", "merge", "replay", "sequences", "table")


def from_cache(name):
    for line in (BUILD / "CMakeCache.txt").read_text().splitlines():
        if line.startswith(name + ":"):
            return line.partition("=")[2]
    raise KeyError(name)


def of_the_provider(lib):
    return {f"{lib}/si-ready/libsi-ready.so", f"{lib}/pkgconfig/si-ready.pc", "include/si-ready/abi/si_provider.h",
            f"{lib}/cmake/si-ready/si-ready-config.cmake", f"{lib}/cmake/si-ready/si-ready-config-version.cmake",
            f"{lib}/cmake/si-ready/si-ready-targets.cmake"}


def of_the_virtual_tv(lib, verbs):
    files = {f"bin/{program}" for program in ("vtv", "vtv-app", "vtv-explore")}
    files |= {f"{lib}/vtv/libvirtual-tv.so", "share/vtv/explorer/inputs.toml",
              "share/bash-completion/completions/vtv", "share/zsh/vendor-completions/_vtv"}
    files |= {f"share/vtv/tvs/{model.name}" for model in (ROOT / "virtual-tv/tvs").glob("*.toml")}
    files |= {f"share/vtv/schemas/{schema.name}" for schema in (ROOT / "docs/schemas").glob("*.json")}
    files |= {f"share/vtv/locale/{language}/LC_MESSAGES/si-ready.mo"
              for language in (ROOT / "virtual-tv/po/LINGUAS").read_text().split()}
    pages = {"vtv"} | {f"vtv-{verb}" for verb in verbs} | {f"vtv-explore-{verb}" for verb in EXPLORATIONS}
    return files | {f"share/man/man1/{page}.1" for page in pages}


def of_the_window():
    if from_cache("SI_BUILD_WINDOW") != "ON":
        return set()
    return {"bin/vtv-window", "share/vtv/window/tv.edj", "share/vtv/window/fonts.conf",
            "share/applications/vtv-window.desktop"}


def files_below(folder):
    return {str(file.relative_to(folder)) for file in folder.rglob("*") if not file.is_dir()}


def without_build_type(files):
    """CMake adds a file that is named after the type of the build."""
    return {name for name in files if "si-ready-targets-" not in name}


class InstalledCase(unittest.TestCase):
    def setUp(self):
        # Below the build, where it takes the same disk, and is found when it was left behind.
        (BUILD / "Testing").mkdir(exist_ok=True)
        folder = tempfile.TemporaryDirectory(prefix="packaging-", dir=BUILD / "Testing")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": str(self.folder), "LANG": "C.UTF-8",
                            "XDG_RUNTIME_DIR": str(self.folder)}
        self.environment |= {name: value for name, value in os.environ.items() if name.startswith(("CC", "CMAKE_"))}

    def run_command(self, *command, **more):
        environment = self.environment | {name: str(value) for name, value in more.items()}
        return subprocess.run([str(word) for word in command], cwd=self.folder, env=environment, capture_output=True,
                              text=True, check=False)

    def done(self, *command, **more):
        result = self.run_command(*command, **more)
        self.assertEqual(0, result.returncode, result)
        return result.stdout

    def install(self):
        """Staged, and moved to where nothing expects it."""
        self.done("cmake", "--install", BUILD, "--prefix", "/opt/house", DESTDIR=self.folder / "stage")
        place = self.folder / "moved"
        shutil.move(self.folder / "stage/opt/house", place)
        self.assertEqual(set(), files_below(self.folder / "stage"))
        return place

    def build_consumer(self, how, *options):
        build = self.folder / how
        self.done("cmake", "-S", CONSUMER, "-B", build, "-G", "Ninja", f"-DHOW={how}", "-DCMAKE_BUILD_TYPE=Debug",
                  f"-DCMAKE_C_COMPILER={from_cache('CMAKE_C_COMPILER')}",
                  f"-DCMAKE_CXX_COMPILER={from_cache('CMAKE_CXX_COMPILER')}", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                  f"-DSI_READY={ROOT}", *options)
        self.done("cmake", "--build", build, "--target", "host", "provider")
        return build

    def expect_a_host_and_a_provider(self, build, name="libprovider.so"):
        self.assertEqual("menu/x\n", self.done(build / "host", build / name, "menu/x"))

    def expect_installed_provider_answers(self, host, plugins):
        title = self.done(host, pathlib.Path(plugins) / "libsi-ready.so", "menu/system/general-voice",
                          LD_PRELOAD=PLATFORM)
        self.assertNotIn("no title", title)
