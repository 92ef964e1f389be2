"""Frames with their numbers in them, renders of them, and what other programs read from movies."""

import json
import pathlib
import subprocess
import tempfile
import unittest

WIDTH, HEIGHT = 256, 128
NUMBER_BITS = 16
BLOCK = WIDTH // NUMBER_BITS

INTRA_CODECS = {
    "ProRes 422 HQ": ["--codec", "apch"],
    "ProRes 4444": ["--codec", "ap4h"],
    "Motion JPEG A": ["--codec", "mjpa"],
    "PNG": ["--codec", "png "],
    "Animation": ["--codec", "rle "],
    "DNxHR": ["--codec", "AVdh"],
}
RATES = ["24", "23.976", "29.97", "59.94"]


def run(*command, **options):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False, **options)


def read(*command):
    done = run(*command)
    assert done.returncode == 0, done.stderr
    return done.stdout


def numbered_picture(number):
    """Rows of WIDTH grey bytes: in the upper half the number as black and white blocks, below it something that moves."""
    upper = b"".join((b"\xeb" if number >> bit & 1 else b"\x10") * BLOCK for bit in reversed(range(NUMBER_BITS)))
    lower = bytes((x * 7 + number * 11) % 200 + 20 for x in range(WIDTH))
    return upper * (HEIGHT // 2) + lower * (HEIGHT // 2)


def write_frames(folder, first, count):
    """FOLDER/in.NNNN.png, each with its number in it; gives the pattern."""
    pattern = pathlib.Path(folder) / "in.%04d.png"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "rawvideo", "-pix_fmt", "gray", "-s", f"{WIDTH}x{HEIGHT}", "-i", "-",
                    "-pix_fmt", "rgb24", "-start_number", str(first), str(pattern)], check=True,
                   input=b"".join(numbered_picture(first + i) for i in range(count)))
    return pattern


def numbers_in(movie):
    """The numbers in a movie's pictures, in the order in which they are shown."""
    decoded = subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", f"file:{movie}", "-map", "0:v", "-fps_mode",
                              "passthrough", "-f", "rawvideo", "-pix_fmt", "gray", "-"], stdin=subprocess.DEVNULL,
                             capture_output=True, check=True).stdout
    size = WIDTH * HEIGHT
    row = HEIGHT // 4 * WIDTH
    return [sum((decoded[start + row + block * BLOCK + BLOCK // 2] > 128) << (NUMBER_BITS - 1 - block)
                for block in range(NUMBER_BITS)) for start in range(0, len(decoded), size)]


def packets(movie, stream):
    """Every packet with its times and the hash of its bytes."""
    probed = read("ffprobe", "-v", "error", "-select_streams", stream, "-show_packets", "-show_data_hash", "md5",
                  "-show_entries", "packet=pts,dts,duration,size,flags,data_hash", "-of", "json", f"file:{movie}")
    return json.loads(probed)["packets"]


def description(movie):
    """Streams and tags but for where the file is and when it was made; the sizes of sound packets are the reader's."""
    probed = json.loads(read("ffprobe", "-v", "error", "-show_streams", "-show_format", "-of", "json", f"file:{movie}"))
    for part in [*probed["streams"], probed["format"]]:
        part.get("tags", {}).pop("creation_time", None)
    for key in ("filename", "size", "bit_rate"):
        probed["format"].pop(key, None)
    return probed


def sound(movie):
    return read("ffmpeg", "-v", "error", "-i", f"file:{movie}", "-map", "0:a", "-f", "md5", "-")


class MoviesTest(unittest.TestCase):
    """A folder of the test's own, in which nothing hidden is left."""

    corvel = walk_movie = None
    frames = 0
    first = 1001

    @classmethod
    def setUpClass(cls):
        cls.shared = tempfile.TemporaryDirectory(prefix="corvel chunks ")
        cls.source = write_frames(cls.shared.name, cls.first, cls.frames)
        cls.wav = pathlib.Path(cls.shared.name) / "mix.wav"
        read("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=r=48000:d=2", "-c:a", "pcm_s24le", cls.wav)

    @classmethod
    def tearDownClass(cls):
        cls.shared.cleanup()

    def setUp(self):
        self.kept = tempfile.TemporaryDirectory(prefix="corvel chunks ")
        self.folder = pathlib.Path(self.kept.name)

    def tearDown(self):
        self.assertEqual(self.hidden(), [])
        self.kept.cleanup()

    def hidden(self):
        return sorted(path.name for path in self.folder.iterdir() if path.name.startswith("."))

    def render(self, name, first, last, *options):
        """A render of frames in one pass; gives the movie."""
        movie = self.folder / name
        done = run(self.corvel, "render", self.source, "-o", movie, "--frames", f"{first}-{last}", "--progress", "none",
                   *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return movie

    def expect_same_movie(self, movie, one_pass, with_sound=True):
        self.assertEqual(packets(movie, "v"), packets(one_pass, "v"))
        self.assertEqual(description(movie), description(one_pass))
        if with_sound:
            self.assertEqual(sound(movie), sound(one_pass))
        walked = run(self.walk_movie, movie)
        self.assertEqual(walked.returncode, 0, walked.stdout + walked.stderr)
