"""A real window: on a display of its own, driven by the keys and the mouse of that display."""

import os
import pathlib
import select
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

BUILD = pathlib.Path(os.environ["BUILD"])
VTV = BUILD / "bin/vtv"
SECONDS = 20


def pixels_of_xwd(file):
    """Width, height and the rows of a screen as RGB. All of the header's fields are 32-bit, the most significant first."""
    data = file.read_bytes()
    header_size, _, _, _, width, height = struct.unpack(">6I", data[:24])
    bytes_per_line, = struct.unpack(">I", data[48:52])
    colours, = struct.unpack(">I", data[76:80])
    begin = header_size + 12 * colours
    rows = []
    for y in range(height):
        line = data[begin + y * bytes_per_line:][:4 * width]
        rgb = bytearray(3 * width)
        rgb[0::3], rgb[1::3], rgb[2::3] = line[2::4], line[1::4], line[0::4]
        rows.append(bytes(rgb))
    return width, height, rows


def rows_of_png(file):
    """Of a picture as vtv writes it: RGB, no filter."""
    data = file.read_bytes()
    at, packed, width = 8, b"", 0
    while at < len(data):
        size, = struct.unpack(">I", data[at:at + 4])
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, = struct.unpack(">I", body[:4])
        elif kind == b"IDAT":
            packed += body
        at += 12 + size
    raw, line = zlib.decompress(packed), 3 * width + 1
    return [raw[begin + 1:begin + line] for begin in range(0, len(raw), line)]


class DisplayTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vtv-display-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": str(self.folder), "LANG": "C.UTF-8",
                            "VTV_HOME": str(self.folder / "tvs"), "XDG_RUNTIME_DIR": str(self.folder)}
        self.environment |= {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
        self.start_display()
        self.vtv("new", "tv", "--model", "farfield-eu")

    def start_display(self):
        reading, writing = os.pipe()
        # The screen is a file, of which a picture can be taken without asking anybody.
        server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x720x24", "-noreset",
                                   "-nolisten", "tcp", "-fbdir", str(self.folder)], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        self.addCleanup(self.end, server)
        number = ""
        while not number.endswith("\n"):
            self.assertTrue(select.select([reading], [], [], SECONDS)[0], "Xvfb does not start")
            number += os.read(reading, 20).decode()
        os.close(reading)
        self.environment["DISPLAY"] = ":" + number.strip()

    @staticmethod
    def end(process):
        process.kill()
        process.wait(SECONDS)
        for stream in (process.stdout, process.stderr):
            if stream is not None:
                stream.close()

    def run_command(self, *command):
        done = subprocess.run([str(word) for word in command], env=self.environment, capture_output=True, text=True,
                              timeout=SECONDS, check=False)
        self.assertEqual(0, done.returncode, done)
        return done.stdout

    def vtv(self, *words):
        return self.run_command(VTV, *words)

    def open_window(self):
        window = subprocess.Popen([str(VTV), "window", "--tv", "tv"], env=self.environment, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.end, window)
        self.run_command("xdotool", "search", "--sync", "--onlyvisible", "--name", "tv · Voice")
        self.wait_for(lambda: any(any(row) for row in self.screen()), "the window stays black")
        return window

    def wait_for(self, holds, otherwise):
        latest = time.monotonic() + SECONDS
        while not holds():
            self.assertLess(time.monotonic(), latest, otherwise)
            time.sleep(0.05)

    def screen(self):
        return pixels_of_xwd(self.folder / "Xvfb_screen0")[2]

    def clipboard(self):
        done = subprocess.run(["xclip", "-o", "-selection", "clipboard"], env=self.environment, capture_output=True, text=True,
                              timeout=SECONDS, check=False)
        return done.stdout

    def value_of(self, title):
        lines = [line for line in self.vtv("show", "--tv", "tv").splitlines() if title in line]
        return " on " in lines[0]

    def drawn_without_display(self, keys):
        (self.folder / "keys").write_text(f"{keys}\npicture {self.folder}/page.png\n")
        self.vtv("window", "--tv", "tv", "--keys", self.folder / "keys", "--display", "none")
        return rows_of_png(self.folder / "page.png")

    def test_keys_press_items_and_escape_leaves_the_window(self):
        window = self.open_window()
        self.assertTrue(self.value_of("Hands-free"))
        self.run_command("xdotool", "key", "Down", "Return")
        self.wait_for(lambda: not self.value_of("Hands-free"), "the key turned no switch over")
        self.run_command("xdotool", "key", "Escape")
        self.assertEqual(0, window.wait(SECONDS))

    def test_the_panel_copies_the_command_of_the_last_action_to_the_clipboard(self):
        self.open_window()
        self.run_command("xdotool", "key", "F2", "Down", "Return")
        self.wait_for(lambda: not self.value_of("Hands-free"), "the key turned no switch over")
        self.run_command("xdotool", "key", "y")
        self.wait_for(lambda: self.clipboard() == "vtv press voice-wake-up --tv tv", "the clipboard has something else")

    def test_the_mouse_presses_what_it_points_at(self):
        self.open_window()
        # "Voice Hints", the fifth row.
        self.run_command("xdotool", "mousemove", "300", str(int((176 + 4.5 * 86) / 1.5)), "click", "1")
        self.wait_for(lambda: not self.value_of("Voice Hints"), "the mouse turned no switch over")

    def test_the_window_looks_as_the_picture_without_a_display_also_after_others_changed_the_tv(self):
        self.open_window()
        before = self.drawn_without_display("")
        self.wait_for(lambda: self.screen() == before, "the window is drawn otherwise")
        self.vtv("choose", "voice-wake-up", "off", "--tv", "tv")
        after = self.drawn_without_display("")
        self.assertNotEqual(before, after)
        self.wait_for(lambda: self.screen() == after, "the change is not seen")


if __name__ == "__main__":
    unittest.main()
