"""The example worker and the example plug-in, each put into a copy of the application's bundle and used as a person
would. What they write is read back by programs that we did not write.

Usage: ExamplesTest.py BUNDLE WORKER PLUGIN
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

BUNDLE, WORKER, PLUGIN = (pathlib.Path(sys.argv.pop(1)) for _ in range(3))
BALL = str(pathlib.Path(__file__).resolve().parents[3] / "examples/ball/ball.####.exr")


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)


class Examples(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="corvel-examples-")
        self.addCleanup(place.cleanup)
        self.folder = pathlib.Path(place.name)
        self.app = self.folder / "Corvel.app"
        shutil.copytree(BUNDLE, self.app, symlinks=True)
        self.corvel = str(self.app / "Contents/MacOS/corvel")

    def replace_worker(self):
        helper = self.app / "Contents/Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32"
        os.unlink(helper)
        shutil.copy(WORKER, helper)

    def test_the_worker_keeps_every_promise_but_those_about_reading_movies(self):
        table = run(self.corvel, "conformance", str(WORKER)).stdout
        fails = [line[:68].split(None, 1)[1].strip() for line in table.splitlines() if line.endswith("FAILS")]
        self.assertEqual(fails, ["describes a movie in eight numbers",
                                 "reads frames and refuses those that are not there",
                                 "lists metadata and properties whole"], table)
        self.assertIn("write        writes a movie with an index", table)

    def test_the_worker_takes_the_place_of_ours(self):
        self.replace_worker()
        movie = str(self.folder / "ball.mov")

        result = run(self.corvel, "render", BALL, "-o", movie, "--frames", "1001-1004")

        self.assertEqual(result.returncode, 0, result.stderr)
        facts = run("ffprobe", "-v", "error", "-count_frames", "-show_entries",
                    "stream=codec_tag_string,width,height,nb_read_frames,r_frame_rate", "-of", "csv=p=0", movie)
        self.assertEqual(facts.stdout.strip().split(","), ["raw ", "640", "360", "24/1", "4"], facts.stderr)

    def test_the_workers_movie_has_the_pixels_of_our_png_codec(self):
        pixels = []
        for own in (True, False):
            if not own:
                self.replace_worker()
            movie = str(self.folder / f"{own}.mov")
            codec = ["--codec", "png"] if own else []
            result = run(self.corvel, "render", BALL, "-o", movie, "--frames", "1020", *codec, "--channels", "rgb")
            self.assertEqual(result.returncode, 0, result.stderr)
            pixels.append(subprocess.run(["ffmpeg", "-v", "error", "-i", movie, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                                         capture_output=True, check=True).stdout)
        self.assertEqual(len(pixels[0]), 640 * 360 * 3)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(*pixels)), 1)

    def test_the_plugin_writes_an_image_a_frame_beside_ours(self):
        shutil.copytree(PLUGIN, self.app / "Contents/PlugIns/pfmWriter.bundle")
        pattern = str(self.folder / "ball.####.pfm")

        result = run(self.corvel, "render", BALL, "-o", pattern, "--frames", "1001-1003", "--knob", "gain=2")

        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(sorted(path.name for path in self.folder.glob("*.pfm")),
                         ["ball.1001.pfm", "ball.1002.pfm", "ball.1003.pfm"])
        self.assertEqual([path.name for path in self.folder.glob(".*")], [])
        difference = run("oiiotool", BALL.replace("####", "1002"), "--ch", "R,G,B", "--mulc", "2",
                         str(self.folder / "ball.1002.pfm"), "--fail", "1e-6", "--diff")
        self.assertEqual(difference.returncode, 0, difference.stdout + difference.stderr)
        # Both plug-ins are loaded, and movies are ours as before.
        movie = str(self.folder / "ball.mov")
        self.assertEqual(run(self.corvel, "render", BALL, "-o", movie, "--frames", "1001-1002").returncode, 0)

    def test_images_that_are_there_are_not_replaced_unasked(self):
        shutil.copytree(PLUGIN, self.app / "Contents/PlugIns/pfmWriter.bundle")
        old = self.folder / "ball.1001.pfm"
        old.write_text("old")

        result = run(self.corvel, "render", BALL, "-o", str(self.folder / "ball.####.pfm"), "--frames", "1001")

        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertEqual(old.read_text(), "old")


if __name__ == "__main__":
    unittest.main()
