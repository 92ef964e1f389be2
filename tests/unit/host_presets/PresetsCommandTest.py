"""Presets as a person uses them: `corvel presets` and `corvel render --preset`, in a configuration of their own.

Usage: PresetsCommandTest.py CORVEL
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

CORVEL = sys.argv.pop(1)
BALL = pathlib.Path(__file__).resolve().parents[3] / "examples" / "ball" / "ball.####.exr"


class PresetsCommandTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="corvel presets ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(self.folder / "config")}

    def corvel(self, *arguments, code=0):
        result = subprocess.run([CORVEL, *arguments], env=self.environment, capture_output=True, text=True,
                                check=False)
        self.assertEqual(result.returncode, code, result.stdout + result.stderr)
        return result.stdout

    def render(self, *arguments):
        output = self.folder / "out.mov"
        self.corvel("render", str(BALL), "-o", str(output), "-y", "--frames", "1001-1004", *arguments)
        probe = subprocess.run(["ffprobe", "-v", "error", "-show_streams", "-of", "json", str(output)],
                               capture_output=True, text=True, check=True)
        return json.loads(probe.stdout)["streams"]

    def test_the_shipped_presets_make_what_they_promise(self):
        video = self.render("--preset", "review")[0]
        self.assertEqual(video["codec_name"], "h264")
        video = self.render("--preset", "editorial")[0]
        self.assertEqual((video["codec_name"], video["profile"]), ("prores", "HQ"))
        streams = self.render("--preset", "archive")
        self.assertEqual((streams[0]["codec_name"], streams[0]["pix_fmt"]), ("png", "rgba64be"))
        self.assertIn("tmcd", [stream["codec_tag_string"] for stream in streams])

    def test_options_beside_a_preset_count_more(self):
        video = self.render("--preset", "editorial", "--codec", "apcs", "--fps", "30")[0]
        self.assertEqual((video["profile"], video["r_frame_rate"]), ("LT", "30/1"))

    def test_what_was_saved_can_be_listed_shown_used_and_deleted(self):
        self.corvel("presets", "save", "mine", "--codec", "ap4h", "--fps", "25", "--description", "Mine")
        listed = {one["name"]: one for one in json.loads(self.corvel("presets", "list", "--json"))}
        self.assertEqual(listed["mine"]["knobs"], {"codec": "ap4h", "fps": "25"})
        self.assertEqual(json.loads(self.corvel("presets", "show", "mine"))["description"], "Mine")
        self.assertEqual(self.render("--preset", "mine")[0]["profile"], "4444")
        self.corvel("presets", "delete", "mine")
        self.corvel("presets", "show", "mine", code=2)

    def test_a_preset_that_no_node_takes_is_not_saved(self):
        self.corvel("presets", "save", "bad", "--codec", "no such codec", code=2)
        self.corvel("presets", "save", "bad", "--knob", "nothing=1", code=2)
        self.corvel("presets", "save", "bad", code=2)
        self.assertEqual(len(json.loads(self.corvel("presets", "list", "--json"))), 3)

    def test_an_unknown_preset_is_a_wrong_command_line(self):
        self.corvel("render", str(BALL), "-o", str(self.folder / "x.mov"), "--preset", "nothing", code=2)


if __name__ == "__main__":
    unittest.main()
