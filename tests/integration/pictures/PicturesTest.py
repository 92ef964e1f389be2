"""Pictures scaled, written into and behind a slate, in movies and images that ffprobe and ffmpeg read back.

Usage: PicturesTest.py CORVEL
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[3]
CORVEL = sys.argv.pop(1)
BALL = ROOT / "examples/ball/ball.####.exr"


def run(*command):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, capture_output=True, check=False)


def probed(movie):
    done = run("ffprobe", "-v", "error", "-show_streams", "-show_format", "-of", "json", movie)
    return json.loads(done.stdout)


def frame(movie, number, width, height):
    """A frame's RGB bytes."""
    done = run("ffmpeg", "-v", "error", "-i", movie, "-vf", f"select=eq(n\\,{number})", "-frames:v", "1", "-f", "rawvideo",
               "-pix_fmt", "rgb24", "-")
    assert len(done.stdout) == width * height * 3, done.stderr
    return done.stdout


def samples(path):
    return run("ffmpeg", "-v", "error", "-i", path, "-f", "s16le", "-c:a", "pcm_s16le", "-").stdout


class Pictures(unittest.TestCase):
    def setUp(self):
        self.kept = tempfile.TemporaryDirectory(prefix="corvel pictures ")
        self.folder = pathlib.Path(self.kept.name)
        self.movie = self.folder / "out.mov"

    def tearDown(self):
        self.kept.cleanup()

    def render(self, *options, frames="1001-1004", expected=0):
        done = run(CORVEL, "render", BALL, "--frames", frames, "-o", self.movie, "-y", "--codec", "png ", "--progress",
                   "none", *options)
        self.assertEqual(done.returncode, expected, done.stderr)
        return done.stderr.decode()

    def test_bars_are_black_and_the_picture_is_whole(self):
        self.render("--format", "200x200", "--fit", "inside", "--channels", "rgb")
        video = probed(self.movie)["streams"][0]
        self.assertEqual((video["width"], video["height"]), (200, 200))
        pixels = frame(self.movie, 0, 200, 200)
        row = 200 * 3
        self.assertEqual(set(pixels[:43 * row]), {0})
        self.assertEqual(set(pixels[-43 * row:]), {0})
        self.assertNotEqual(set(pixels[100 * row:101 * row]), {0})

    def test_reversed_and_held_frames_are_those_of_the_input(self):
        self.render("--channels", "rgb")
        forward = [frame(self.movie, i, 640, 360) for i in range(4)]
        self.render("--channels", "rgb", "--reverse", "--hold", "2")
        self.assertEqual([forward.index(frame(self.movie, i, 640, 360)) for i in range(8)], [3, 3, 2, 2, 1, 1, 0, 0])

    def test_a_slate_keeps_time_code_and_sound_with_their_pictures(self):
        self.render("--channels", "rgb", "--timecode", "01:00:00:00")
        plain = frame(self.movie, 0, 640, 360)
        self.render("--channels", "rgb", "--timecode", "01:00:00:00", "--slate", "default", "--audio",
                    ROOT / "examples/ball/ball.wav")
        streams = probed(self.movie)["streams"]
        video = next(stream for stream in streams if stream["codec_type"] == "video")
        sound = next(stream for stream in streams if stream["codec_type"] == "audio")
        self.assertEqual(video["nb_frames"], "5")
        self.assertEqual(video["tags"]["timecode"], "00:59:59:23")
        self.assertEqual(frame(self.movie, 1, 640, 360), plain)
        self.assertNotEqual(frame(self.movie, 0, 640, 360), plain)
        self.assertEqual(video["r_frame_rate"], "24/1")
        late = int(sound["sample_rate"]) // 24 * 2 * sound["channels"]  # bytes of a frame's time
        heard, original = samples(self.movie), samples(ROOT / "examples/ball/ball.wav")
        self.assertEqual(set(heard[:late]), {0})
        self.assertEqual(heard[late:late + 8000], original[:8000])

    def test_a_slate_is_a_file_of_its_own_among_images(self):
        done = run(CORVEL, "render", BALL, "--frames", "1001-1002", "-o", self.folder / "out.####.png", "--slate", "default",
                   "--burnin", "default", "--progress", "none")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()),
                         ["out.1000.png", "out.1001.png", "out.1002.png"])

    def test_black_frames_are_written_into_too(self):
        self.render("--channels", "rgb", "--missing", "black", "--burnin-text", "center={frame}", frames="1047-1050")
        self.assertNotEqual(set(frame(self.movie, 3, 640, 360)), {0})

    def test_unknown_fields_are_refused_before_anything_is_written(self):
        slate = self.folder / "slate.json"
        slate.write_text('{"title": "{shoe}"}')
        self.assertIn("no field {shoe}", self.render("--slate", slate, expected=2))
        self.assertIn("no field {foo}", self.render("--burnin-text", "left={foo}", expected=2))
        self.assertFalse(self.movie.exists())

    def test_letters_that_no_font_has_are_told_once(self):
        told = self.render("--burnin-text", "left={frame} \U0010FFFD")
        self.assertEqual(told.count("no font here has"), 1, told)

    def test_a_crop_beyond_the_picture_is_refused(self):
        self.assertIn("does not lie within", self.render("--crop", "700x100", expected=2))
        self.assertIn("--fit", self.render("--fit", "inside", expected=2))


if __name__ == "__main__":
    unittest.main()
