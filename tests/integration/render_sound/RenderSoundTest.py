"""Renders with sound: a file without any is found before the first frame, one with sound is in the movie.

Usage: RenderSoundTest.py CORVEL WALK_MOVIE
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]
CORVEL = sys.argv.pop(1)
WALK_MOVIE = sys.argv.pop(1)


def run(*command):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False)


def ffmpeg(*arguments):
    assert run("ffmpeg", "-v", "error", "-f", "lavfi", *arguments).returncode == 0


class RenderWithSound(unittest.TestCase):
    def setUp(self):
        self.kept = tempfile.TemporaryDirectory(prefix="corvel sound ")
        self.folder = pathlib.Path(self.kept.name)
        self.movie = self.folder / "out.mov"

    def tearDown(self):
        self.assertEqual([path.name for path in self.folder.iterdir() if path.name.startswith(".")], [])
        self.kept.cleanup()

    def render(self, audio, *options):
        return run(CORVEL, "render", ROOT / "examples/ball/ball.####.exr", "--frames", "1001-1003", "-o", self.movie,
                   "--codec", "mjpa", "--audio", audio, "--progress", "json", *options)

    def expect_refused_at_once(self, audio):
        done = self.render(audio)
        self.assertEqual(done.returncode, 3, done.stderr)
        events = [json.loads(line) for line in done.stderr.splitlines()]
        self.assertNotIn("frame", [event["event"] for event in events])
        self.assertIn(str(audio), "".join(event.get("text", "") for event in events))
        self.assertFalse(self.movie.exists())

    def test_a_text_is_refused_before_the_first_frame(self):
        text = self.folder / "text.wav"
        text.write_text("This is no sound at all, just a line of text.\n")
        self.expect_refused_at_once(text)

    def test_a_movie_without_sound_is_refused_before_the_first_frame(self):
        silent = self.folder / "silent.mov"
        ffmpeg("-i", "testsrc=d=1", silent)
        self.expect_refused_at_once(silent)

    def test_a_sound_file_without_a_sample_is_refused_before_the_first_frame(self):
        empty = self.folder / "empty.wav"
        ffmpeg("-i", "anullsrc", "-t", "0", empty)
        self.expect_refused_at_once(empty)

    def test_sound_is_in_the_movie(self):
        sound = self.folder / "a b:c.wav"
        ffmpeg("-i", "sine=r=48000:d=1", "file:" + str(sound))
        self.assertEqual(self.render(sound).returncode, 0)
        probed = run("ffprobe", "-v", "error", "-select_streams", "a", "-show_entries", "stream=sample_rate", "-of",
                     "csv=p=0", self.movie)
        self.assertEqual(probed.stdout.strip(), "48000")
        walked = run(WALK_MOVIE, self.movie)
        self.assertEqual(walked.returncode, 0, walked.stdout + walked.stderr)


if __name__ == "__main__":
    unittest.main()
