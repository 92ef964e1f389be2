"""The worker's settings dialog, opened by the "advanced" button of a Write node and used with the keyboard.

Usage: SettingsDialogTest.py CORVEL
"""

import os
import pathlib
import signal
import subprocess
import sys
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "windows"))
from VirtualDisplay import VirtualDisplay, wait_for  # noqa: E402

CORVEL = pathlib.Path(sys.argv.pop(1))
BALL = HERE.parents[2] / "examples" / "ball" / "ball.####.exr"
HELPER = CORVEL.parents[1] / "Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32"
H264 = "QuickTime settings: H.264"


def helpers_of(process):
    """The processes that this one has started and that still run."""
    found = subprocess.run(["ps", "-o", "pid=,stat=", "--ppid", str(process)], capture_output=True, text=True,
                           check=False).stdout.split("\n")
    return [int(line.split()[0]) for line in found if line.strip() and "Z" not in line.split()[1]]


class SettingsDialogTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.display = VirtualDisplay()
        cls.addClassCleanup(cls.display.close)

    def start(self, *arguments, environment=None):
        """A dry run, which prints every knob once the dialog is closed."""
        output = os.path.join(self.display.folder.name, "out.mov")
        process = subprocess.Popen(
            [CORVEL, "render", BALL, "-o", output, "-y", "-n", "--codec", "avc1", *arguments],
            env=environment or self.display.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def knobs(self, process):
        text, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 0, errors)
        lines = (line.partition(" ") for line in text.splitlines())
        return {name: value.strip() for name, _, value in lines}, errors

    def test_what_a_person_changes_reaches_the_node(self):
        process = self.start("--advanced", "--settings", "preset=fast:meta.title=kept")
        window = self.display.window(H264)
        self.display.keys(window, "alt+q", "n")
        self.display.window(H264 + "*")
        self.display.keys(window, "alt+f", "ctrl+a")
        self.display.type(window, "29.97")
        self.display.keys(window, "alt+k", "ctrl+a")
        self.display.type(window, "12")
        self.display.keys(window, "alt+p", "h", "Return")
        knobs, _ = self.knobs(process)
        self.assertEqual(knobs["quality"], "Normal")
        self.assertEqual(knobs["fps"], "29.97")
        self.assertEqual(knobs["keyframerate"], "12")
        self.assertEqual(knobs["settings"], "preset=fast:meta.title=kept:profile=high")

    def test_another_codec_can_be_chosen(self):
        process = self.start("--advanced", "--settings", "crf=20")
        window = self.display.window(H264)
        self.display.keys(window, "alt+c", "Home", "Down")
        self.display.keys(self.display.window("QuickTime settings: Cinepak*"), "Return")
        knobs, _ = self.knobs(process)
        self.assertEqual((knobs["codec"], knobs["settings"]), ("cvid Cinepak", ""))

    def test_cancel_leaves_everything(self):
        given = ("--settings", "preset=fast: crf = 20", "--quality", "Low", "--keyframerate", "7")
        untouched, _ = self.knobs(self.start(*given))
        process = self.start("--advanced", *given)
        window = self.display.window(H264)
        self.display.keys(window, "alt+c", "a")
        changed = self.display.window("QuickTime settings: Animation*")
        self.display.keys(changed, "Escape")
        self.assertEqual(self.knobs(process)[0], untouched)

    def test_ok_without_a_change_leaves_everything(self):
        given = ("--settings", "preset=fast: crf = 20")
        untouched, _ = self.knobs(self.start(*given))
        process = self.start("--advanced", *given)
        self.display.keys(self.display.window(H264), "Return")
        self.assertEqual(self.knobs(process)[0], untouched)

    def test_reset_takes_changes_back(self):
        process = self.start("--advanced", "--settings", "crf=20", "--quality", "Low")
        window = self.display.window(H264)
        self.display.keys(window, "alt+q", "n")
        self.display.window(H264 + "*")
        self.display.keys(window, "alt+r")
        self.display.window(H264)
        self.display.keys(window, "Return")
        knobs, _ = self.knobs(process)
        self.assertEqual((knobs["settings"], knobs["quality"]), ("crf=20", "Low"))

    def test_without_a_display_the_settings_stay_at_once(self):
        untouched, _ = self.knobs(self.start("--settings", "crf=20"))
        for display in (None, "", ":54321"):
            with self.subTest(display):
                environment = {**self.display.environment, "DISPLAY": display or ""}
                if display is None:
                    del environment["DISPLAY"]
                process = self.start("--advanced", "--settings", "crf=20", environment=environment)
                knobs, errors = self.knobs(process)
                self.assertEqual(knobs, untouched)
                self.assertIn("no display for the settings dialog: the settings stay as they are", errors)

    def test_a_dialog_whose_host_dies_goes_away(self):
        process = self.start("--advanced")
        self.display.window(H264)
        helper = wait_for("the helper", lambda: helpers_of(process.pid))[0]
        process.send_signal(signal.SIGKILL)
        killed = time.monotonic()
        wait_for("the end of the dialog", lambda: H264 not in self.display.titles().values())
        print(f"the dialog was gone {time.monotonic() - killed:.2f} s after its host")
        wait_for("the end of the helper", lambda: not os.path.exists(f"/proc/{helper}"))

    def test_who_opens_no_dialog_loads_no_windows(self):
        for program in (HELPER, CORVEL, CORVEL.parents[1] / "PlugIns/movWriter.bundle/Contents/MacOS/movWriter"):
            libraries = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
            self.assertNotIn("Qt", libraries)


if __name__ == "__main__":
    unittest.main()
