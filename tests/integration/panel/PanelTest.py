"""The panel, used with the keyboard: what a person sets is what the movie has.

Usage: PanelTest.py CORVEL
"""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "windows"))
from VirtualDisplay import VirtualDisplay, wait_for  # noqa: E402

CORVEL = pathlib.Path(sys.argv.pop(1))
BALL = HERE.parents[2] / "examples" / "ball"
READY = "Corvel: ball.####.exr"


def streams(movie):
    probe = subprocess.run(["ffprobe", "-v", "error", "-show_streams", "-of", "json", movie],
                           capture_output=True, text=True, check=True)
    return json.loads(probe.stdout)["streams"]


class PanelTest(unittest.TestCase):
    def setUp(self):
        self.display = VirtualDisplay()
        self.addCleanup(self.display.close)
        self.folder = pathlib.Path(self.display.folder.name)
        self.scratch = self.folder / "scratch"
        self.scratch.mkdir()
        self.environment = {**self.display.environment, "CORVEL_TEMP_DIR": str(self.folder),
                            "TMPDIR": str(self.scratch)}
        for frame in range(1001, 1005):
            shutil.copy(BALL / f"ball.{frame}.exr", self.folder)
        self.movie = self.folder / "ball.mov"

    def open(self, *arguments, title=READY):
        self.panel = subprocess.Popen([CORVEL, "panel", *arguments], env=self.environment)
        self.addCleanup(self.close)
        return self.display.window(title)

    def close(self):
        if self.panel.poll() is None:
            self.panel.terminate()
        self.panel.wait()

    def remembered(self):
        """The knobs as the panel keeps them, which it does whenever one has changed."""
        try:
            lines = (self.folder / "corvel/panel.ini").read_text(encoding="utf-8").splitlines()
        except FileNotFoundError:
            return {}
        text = next((line[len("knobs="):] for line in lines if line.startswith("knobs=")), "")
        if text.startswith('"@ByteArray(') or text.startswith('"'):
            text = text[text.index("{"):text.rindex("}") + 1].replace('\\"', '"').replace("\\\\", "\\")
        try:
            return json.loads(text)
        except ValueError:
            return {}

    def wait_for_knob(self, name, value):
        try:
            wait_for(f"{name} to be {value}", lambda: self.remembered().get(name) == value)
        except AssertionError as error:
            raise AssertionError(f"{error}: {self.remembered()}") from None

    def choose_codec(self, window, index):
        # Not by typing its name: on a busy machine the letters come too late to be taken for one word.
        self.display.keys(window, "alt+c", "Home", *["Down"] * int(index))
        self.wait_for_knob("codec", index)

    def render(self, window, title="Corvel: wrote ball.mov"):
        self.display.keys(window, "alt+r")
        self.display.window(title)

    def index_of(self, codec):
        listed = subprocess.run([CORVEL, "codecs", "--json"], capture_output=True, text=True, check=True)
        return next(str(one["index"]) for one in json.loads(listed.stdout) if one["type"] == codec)

    def test_what_the_dialog_was_told_is_in_the_movie(self):
        window = self.open(self.folder / "ball.####.exr")
        index = self.index_of("ap4h")
        self.choose_codec(window, index)
        self.display.keys(window, "alt+a")
        title = "QuickTime settings: ProRes 4444"
        dialog = self.display.window(title)
        self.display.window("Corvel: settings dialog")
        self.display.keys(dialog, "alt+f", "ctrl+a")
        self.display.type(dialog, "30")
        self.display.keys(dialog, "alt+a", "s")
        self.display.window(title + "*")
        self.display.keys(dialog, "Return")
        self.wait_for_knob("settings", "alpha=straight")
        self.wait_for_knob("fps", "30")
        self.display.window(READY)
        self.render(window)
        video = streams(self.movie)[0]
        self.assertEqual((video["codec_name"], video["profile"], video["r_frame_rate"]),
                         ("prores", "4444", "30/1"))
        told = subprocess.run([CORVEL, "info", self.movie, "--json"], capture_output=True, text=True, check=True)
        self.assertEqual(json.loads(told.stdout)["metadata"]["quicktime/alpha"], "straight")

    def test_a_cancelled_dialog_leaves_everything(self):
        window = self.open(self.folder / "ball.####.exr")
        self.choose_codec(window, self.index_of("ap4h"))
        before = self.remembered()
        self.display.keys(window, "alt+a")
        title = "QuickTime settings: ProRes 4444"
        dialog = self.display.window(title)
        self.display.keys(dialog, "alt+a", "s")
        self.display.window(title + "*")
        self.display.keys(dialog, "Escape")
        self.display.window(READY)
        self.assertEqual(self.remembered(), before)

    def test_settings_are_there_again_the_next_time(self):
        window = self.open(self.folder / "ball.####.exr")
        self.display.keys(window, "alt+q", "n")
        self.wait_for_knob("quality", "2")
        self.close()
        self.open()
        self.wait_for_knob("quality", "2")

    def test_a_preset_sets_all_its_knobs(self):
        window = self.open(self.folder / "ball.####.exr")
        self.display.keys(window, "alt+e", "e", "Return")
        self.wait_for_knob("codec", self.index_of("apch"))
        self.wait_for_knob("writeTimeCode", "on")
        self.render(window)
        self.assertIn("tmcd", [stream["codec_tag_string"] for stream in streams(self.movie)])

    def test_a_failed_render_says_why(self):
        window = self.open(self.folder / "ball.####.exr")
        self.choose_codec(window, self.index_of("h263"))
        self.render(window, "Corvel: the render failed")
        self.assertFalse(self.movie.exists())

    def test_a_panel_that_is_killed_takes_its_dialog_along(self):
        window = self.open(self.folder / "ball.####.exr")
        self.display.keys(window, "alt+a")
        dialog = "QuickTime settings: Motion JPEG A"
        self.display.window(dialog)
        self.panel.send_signal(signal.SIGKILL)
        self.panel.wait()
        wait_for("the end of the dialog", lambda: dialog not in self.display.titles().values())

    def test_a_panel_that_is_told_to_end_leaves_nothing(self):
        self.open(self.folder / "ball.####.exr")
        self.assertNotEqual(list(self.scratch.iterdir()), [])
        self.panel.terminate()
        self.assertEqual(self.panel.wait(), 0)
        self.assertEqual(list(self.scratch.iterdir()), [])

    def test_a_panel_that_is_told_to_end_while_it_renders_leaves_nothing_half_done(self):
        window = self.open(self.folder / "ball.####.exr")
        before = {file.name for file in self.folder.iterdir()}
        self.display.keys(window, "alt+r")
        wait_for("the render's beginning", lambda: READY not in self.display.titles().values())
        self.panel.terminate()
        self.assertEqual(self.panel.wait(), 0)
        after = {file.name for file in self.folder.iterdir()} - before
        self.assertLessEqual(after, {self.movie.name})
        if after:
            self.assertEqual(streams(self.movie)[0]["codec_name"], "mjpeg")
        self.assertEqual(list(self.scratch.iterdir()), [])

    def test_an_input_that_cannot_be_opened_is_none(self):
        window = self.open(self.folder / "none.####.exr", title="Corvel: no input")
        self.display.keys(window, "alt+i", "ctrl+a")
        self.display.type(window, f"{self.folder}/ball.####.exr\t")
        self.display.window(READY)

    def test_a_node_that_has_died_is_replaced(self):
        window = self.open(self.folder / "ball.####.exr")
        self.display.keys(window, "alt+q", "n")
        self.wait_for_knob("quality", "2")
        node = subprocess.run(["pgrep", "-P", str(self.panel.pid), "-f", "corvel node"], capture_output=True,
                              text=True, check=True)
        os.kill(int(node.stdout.split()[0]), signal.SIGKILL)
        self.display.window("Corvel: the node has ended")
        self.display.keys(window, "alt+w")
        self.wait_for_knob("writeTimeCode", "on")
        self.assertEqual(self.remembered()["quality"], "2")

    def test_options_for_pictures_count_for_what_is_shown_and_rendered(self):
        window = self.open("--display", "Rec.2100-PQ - Display", "--format", "320x240", "--fit", "INSIDE",
                           "--burnin-text", "top-left={codec}", self.folder / "ball.####.exr")
        self.render(window)
        video = streams(self.movie)[0]
        self.assertEqual((video["width"], video["height"], video["color_transfer"]), (320, 240, "smpte2084"))

    def test_options_that_cannot_be_are_refused_before_there_is_a_window(self):
        result = subprocess.run([CORVEL, "panel", "--format", "wide"], env=self.environment, capture_output=True, text=True,
                                check=False)
        self.assertEqual((result.returncode, "--format" in result.stderr), (2, True), result.stderr)

    def test_without_a_display_it_says_so(self):
        environment = {name: value for name, value in self.environment.items() if name != "DISPLAY"}
        result = subprocess.run([CORVEL, "panel"], env=environment, capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 2)
        self.assertIn("there is no display for the panel", result.stderr)


if __name__ == "__main__":
    unittest.main()
