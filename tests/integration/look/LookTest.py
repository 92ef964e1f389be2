#!/usr/bin/env python3
"""Stills of `corvel look` beside the frames of lossless movies that are rendered with the same options.

Usage: LookTest.py CORVEL
"""

import array
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

CORVEL = sys.argv[1]
WIDTH, HEIGHT = 160, 90
LOSSLESS = ("--codec", "png ", "--settings", "bitdepth=16")


def run(*arguments, **environment):
    kept = {k: v for k, v in os.environ.items() if k != "OCIO"}
    return subprocess.run([str(a) for a in arguments], capture_output=True, text=True, env={**kept, **environment}, check=False)


def checked(*arguments):
    done = run(*arguments)
    if done.returncode != 0:
        raise AssertionError(f"{arguments}: {done.stdout}{done.stderr}")
    return done.stdout


def colours_of(path, position=0):
    """Size, channels and samples of a frame as another program reads them, 16 bits each."""
    stream = json.loads(checked("ffprobe", "-v", "error", "-show_streams", "-select_streams", "v", "-of", "json", path))["streams"][0]
    channels = 4 if "a" in stream["pix_fmt"] else 3
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", str(path), "-vf", f"select=eq(n\\,{position})", "-frames:v", "1",
                          "-f", "rawvideo", "-pix_fmt", "rgba64le" if channels == 4 else "rgb48le", "-"],
                         capture_output=True, check=True).stdout
    return stream["width"], stream["height"], channels, array.array("H", raw)


def chunks_of(path):
    data, place, found = path.read_bytes(), 8, {}
    while place < len(data):
        length, kind = struct.unpack(">I4s", data[place:place + 8])
        found.setdefault(kind.decode(), data[place + 8:place + 8 + length])
        place += 12 + length
    return found


class Look(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="corvel-look-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.movie, self.still = self.folder / "movie.mov", self.folder / "still.png"
        self.scratch = self.folder / "scratch"
        self.scratch.mkdir()

    def sequence(self, alpha=False, frames=(1001, 1002, 1003)):
        for number in frames:
            channels = 4 if alpha else 3
            last = (",1", ",0.2", ",0.7", ",0") if alpha else ("",) * 4
            top = 0.3 + (number - 1000)
            checked("oiiotool", "--pattern", f"fill:topleft=0,0,{top}{last[0]}:topright={top * (0.2 if alpha else 1)},0.02,0.1{last[1]}"
                    f":bottomleft=0.18,0.4,0.3{last[2]}:bottomright={0 if alpha else 0.5},0,0{last[3]}", f"{WIDTH}x{HEIGHT}",
                    channels, "-d", "half", "--compression", "zip", "-o", self.folder / f"shot.{number}.exr")
        return self.folder / "shot.####.exr"

    def look(self, picture, *options, still=None):
        done = run(CORVEL, "look", picture, "-o", still or self.still, "-y", *options, TMPDIR=str(self.scratch))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(list(self.scratch.iterdir()), [])
        return done.stderr

    def render(self, picture, *options):
        done = run(CORVEL, "render", picture, "-o", self.movie, "-y", "--progress", "none", *options)
        self.assertEqual(done.returncode, 0, done.stderr)

    def assert_same(self, picture, position, *options, frame=()):
        """The still's colours are those of that frame of the lossless movie, every code value of them."""
        self.look(picture, *frame, *LOSSLESS, *options)
        self.render(picture, *LOSSLESS, *options)
        width, height, channels, wanted = colours_of(self.movie, position)
        still = colours_of(self.still)
        self.assertEqual(still[:2], (width, height), options)
        for colour in range(3):
            self.assertEqual(still[3][colour::still[2]], wanted[colour::channels], (options, colour))
        self.assertGreater(len(set(wanted)), 50)

    def test_the_still_is_the_movies_frame_to_the_code_value(self):
        shot = self.sequence()
        for options in ((), ("--lut", "rec709"), ("--lut", "linear"), ("--input-lut", "cineon"),
                        ("--display", "sRGB - Display", "--view", "Filmic"),
                        ("--display", "Rec.2100-PQ - Display", "--input-space", "ARRI LogC4"),
                        ("--output-space", "ACEScct"),
                        ("--format", "128x128", "--fit", "inside", "--mask", "2.39:0.5"),
                        ("--crop", "100x50+7+9", "--display", "P3-D65 - Display"),
                        ("--burnin", "default", "--field", "show=Orion"),
                        ("--burnin", "timecode", "--timecode", "01:00:00:00", "--display", "Rec.2100-HLG - Display"),
                        ("--burnin-text", "top-left={codec} {fps} {frames}", "--fps", "25")):
            with self.subTest(options=options):
                self.assert_same(shot, 0, *options)

    def test_any_frame_and_the_slate_are_the_movies_own(self):
        shot = self.sequence()
        written = ("--slate", "default", "--burnin", "default", "--timecode", "01:00:00:00", "--fps", "24")
        for position, number in enumerate((1000, 1001, 1002, 1003)):
            self.assert_same(shot, position, *written, frame=("--frame", number))
        for position, number in enumerate((1001, 1002, 1003, 1004)):
            self.assert_same(shot, position, "--reverse", "--hold", "2", "--step", "2", "--burnin", "frame", frame=("--frame", number))

    def test_movies_are_looked_at_too(self):
        self.render(self.sequence(), *LOSSLESS)
        source = self.folder / "source.mov"
        self.movie.rename(source)
        for options in ((), ("--display", "Rec.1886 Rec.709 - Display"), ("--format", "100x60", "--fit", "fill")):
            self.assert_same(source, 1, *options, frame=("--frame", 2))

    def test_translucent_colours_are_multiplied_and_a_png_file_leaves_alpha_out(self):
        shot = self.sequence(alpha=True)
        self.assert_same(shot, 0)
        self.assertEqual(colours_of(self.still)[2], 3)
        self.assert_same(shot, 0, "--channels", "rgb")

    def test_other_files_say_that_colours_are_multiplied(self):
        shot, still = self.sequence(alpha=True), self.folder / "still.tif"
        self.look(shot, *LOSSLESS, still=still)
        self.render(shot, *LOSSLESS)
        self.assertEqual(colours_of(still)[2:], colours_of(self.movie)[2:])
        self.assertIn("Associated Alpha", checked("exiftool", "-ExtraSamples", still))

    def test_straight_alpha_is_divided_as_in_the_movie(self):
        shot = self.sequence(alpha=True)
        for curve in ((), ("--lut", "rec709"), ("--display", "sRGB - Display")):
            options = ("--codec", "png ", "--settings", "bitdepth=16:alpha=straight", *curve)
            self.look(shot, *options)
            self.render(shot, *options)
            still, movie = colours_of(self.still), colours_of(self.movie)
            self.assertEqual(still[:3], movie[:3])
            self.assertEqual(still[3], movie[3], curve)

    def test_a_lossy_codec_s_frame_is_seen_as_it_comes_back(self):
        shot = self.sequence()
        options = ("--codec", "jpeg", "--quality", "min", "--display", "sRGB - Display")
        self.look(shot, "--frame", 1002, "--encoded", *options)
        self.render(shot, *options)
        exact = self.folder / "exact.png"
        self.look(self.movie, "--frame", 2, still=exact)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(colours_of(self.still)[3], colours_of(exact)[3], strict=True)), 1)
        self.look(shot, "--frame", 1002, *options, still=exact)
        self.assertNotEqual(colours_of(self.still)[3], colours_of(exact)[3])

    def test_translucent_colours_come_back_from_a_codec_as_they_are_without_alpha(self):
        """What a movie with straight alpha has is seen of a movie with multiplied colours too."""
        shot, straight = self.sequence(alpha=True), self.folder / "straight.png"
        self.look(shot, "--codec", "png ", "--settings", "bitdepth=16:alpha=straight", still=straight)
        wanted = colours_of(straight)[3]
        for alpha in ("straight", "premultiplied"):
            self.look(shot, "--encoded", "--codec", "png ", "--settings", f"bitdepth=16:alpha={alpha}")
            ours = colours_of(self.still)[3]
            for i in range(0, len(wanted), 4):
                if wanted[i + 3] > 6553:
                    for colour in range(4):
                        self.assertLessEqual(abs(ours[i + colour] - wanted[i + colour]), 20, (alpha, i))

    def test_a_png_file_says_what_its_colours_are(self):
        shot = self.sequence(frames=(1001,))
        for options, wanted in (((), (1, 13)), (("--lut", "rec709"), (1, 1)),
                                (("--display", "sRGB - Display"), (1, 13)),
                                (("--display", "Display P3 - Display"), (12, 13)),
                                (("--display", "P3-D65 - Display"), (12, 17)),
                                (("--display", "Rec.1886 Rec.709 - Display"), (1, 1)),
                                (("--display", "Rec.2100-PQ - Display"), (9, 16)),
                                (("--display", "Rec.2100-HLG - Display"), (9, 18)),
                                (("--display", "Rec.2100-HLG - Display", "--settings", "transfer=smpte2084"), (9, 16))):
            self.look(shot, *options)
            chunks = chunks_of(self.still)
            self.assertEqual(tuple(chunks["cICP"]), (*wanted, 0, 1), options)
            self.assertEqual("sRGB" in chunks, wanted == (1, 13), options)
        self.look(shot, "--output-space", "ACEScct")
        self.assertNotIn("cICP", set(chunks_of(self.still)))
        self.assertIn("still.png PNG 160x90", checked("identify", self.still))

    def test_other_kinds_of_stills_are_written(self):
        shot = self.sequence(frames=(1001,))
        for ending in ("exr", "dpx", "tiff"):
            still = self.folder / f"still.{ending}"
            self.look(shot, "--display", "sRGB - Display", still=still)
            self.assertIn(f"{WIDTH} x", checked("oiiotool", "--info", still))

    def test_gaps_are_only_in_the_way_of_the_frames_that_lack(self):
        shot = self.sequence(frames=(1001, 1003))
        self.look(shot, "--frame", 1003)
        done = run(CORVEL, "look", shot, "--frame", 1002, "-o", self.folder / "gap.png")
        self.assertEqual((done.returncode, "frame 1002 is missing" in done.stderr), (3, True), done.stderr)
        self.look(shot, "--frame", 1002, "--missing", "hold", "--burnin", "frame")
        self.look(shot, "--frame", 1002, "--missing", "black")
        self.assertEqual(max(colours_of(self.still)[3]), 0)

    def test_what_cannot_be_is_refused_and_nothing_is_left(self):
        shot = self.sequence()
        before = sorted(self.folder.iterdir())
        for code, words, arguments in (
                (3, "there is no frame 7; the render has 1001-1003", (shot, "--frame", 7)),
                (3, "none.####.exr", (self.folder / "none.####.exr",)),
                (2, "a still's name ends in one of .exr, .dpx, .png, .tif", (shot, "-o", self.folder / "a.jpg")),
                (2, "a still's name ends in", (shot, "-o", self.folder / "a.mov")),
                (2, "names many images", (shot, "-o", self.folder / "a.####.png")),
                (2, "there is no folder", (shot, "-o", self.folder / "none" / "a.png")),
                (2, "--output is required", (shot, None)),
                (2, "--frame", (shot, "--frame", "first")),
                (2, 'no display "None"', (shot, "--display", "None")),
                (2, 'no view "None"', (shot, "--view", "None")),
                (2, 'no colour space "None"', (shot, "--input-space", "None")),
                (3, "no colour configuration", (shot, "--ocio", self.folder / "none.ocio")),
                (2, 'no curve "none"', (shot, "--lut", "none")),
                (2, "--fit", (shot, "--fit", "inside")),
                (2, "--farm", (shot, "--farm", "local")),
                (1, "could not be encoded", (shot, "--codec", "h263", "--encoded"))):
            words_of = [a for a in arguments if a is not None]
            output = () if "-o" in words_of or None in arguments else ("-o", self.still)
            done = run(CORVEL, "look", *words_of, *output)
            self.assertEqual(done.returncode, code, (arguments, done.stderr))
            self.assertIn(words, done.stderr, arguments)
            self.assertEqual(sorted(self.folder.iterdir()), before, arguments)

    def test_an_existing_still_is_only_replaced_when_that_is_asked_for(self):
        shot = self.sequence(frames=(1001,))
        self.still.write_text("kept", encoding="utf-8")
        done = run(CORVEL, "look", shot, "-o", self.still)
        self.assertEqual((done.returncode, "exists already; -y replaces it" in done.stderr), (2, True), done.stderr)
        self.assertEqual(self.still.read_text(encoding="utf-8"), "kept")
        link = self.folder / "link.png"
        link.symlink_to("still.png")
        self.look(shot, still=link)
        self.assertTrue(link.is_symlink())
        self.assertEqual(colours_of(self.still)[0], WIDTH)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
