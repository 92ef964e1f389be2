#!/usr/bin/env python3
"""Renders under colour management: pixels beside oiiotool's with the same configuration, and tags as other programs
read them.

Usage: ColourTest.py CORVEL CONFIG
"""

import array
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CORVEL, CONFIG = sys.argv[1], sys.argv[2]
WIDTH, HEIGHT = 96, 64


def run(*arguments, **environment):
    return subprocess.run([str(a) for a in arguments], capture_output=True, text=True,
                          env={**{k: v for k, v in os.environ.items() if k != "OCIO"}, **environment})


def checked(*arguments):
    done = run(*arguments)
    if done.returncode != 0:
        raise AssertionError(f"{arguments}: {done.stdout}{done.stderr}")
    return done.stdout


def pixels_of(movie, layout, code):
    """The first frame's samples as the file has them, planes or pixels as the layout has them."""
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", str(movie), "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", layout,
                          "-"], capture_output=True, check=True).stdout
    samples = array.array(code, raw)
    return samples


class Colour(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="corvel-colour-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def grid(self, name, top):
        """A picture of many colours from black to `top`, as floats."""
        path = self.folder / name
        checked("oiiotool", "--pattern", f"fill:topleft=0,0,{top}:topright={top},0.02,0.1:bottomleft=0.18,{top},0.3"
                f":bottomright={top},{top},{top}", f"{WIDTH}x{HEIGHT}", 3, "--mulc", "1,0.9,0.8", "-d", "float",
                "--compression", "zip", "-o", path)
        return path

    def reference(self, picture, space, display, view):
        """What oiiotool makes of the picture, as a list of floats."""
        path = self.folder / "reference.exr"
        checked("oiiotool", "--colorconfig", CONFIG, picture, f"--ociodisplay:from={space}", display, view, "-d", "float",
                "-o", path)
        planes = pixels_of(path, "gbrpf32le", "f")
        count = WIDTH * HEIGHT
        floats = [planes[plane * count + i] for i in range(count) for plane in (2, 0, 1)]
        self.assertEqual(len(floats), WIDTH * HEIGHT * 3)
        return floats

    def render(self, picture, movie, *options):
        done = run(CORVEL, "render", picture, "-o", movie, "-y", "--progress", "plain", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stderr

    def tags(self, movie):
        stream = json.loads(checked("ffprobe", "-v", "error", "-show_streams", "-select_streams", "v", "-of", "json", movie))
        return [stream["streams"][0].get(key) for key in ("color_primaries", "color_transfer", "color_space")]

    def test_sixteen_bit_pixels_are_within_one_code_value_of_oiiotool(self):
        for space, top in (("ACEScg", 8), ("ARRI LogC3 (EI800)", 1), ("S-Log3 S-Gamut3.Cine", 0.95), ("Linear Rec.2020", 2)):
            picture = self.grid("grid.exr", top)
            for display, view in (("sRGB - Display", "Filmic"), ("Rec.1886 Rec.709 - Display", "Un-tone-mapped"),
                                  ("Rec.2100-PQ - Display", "Filmic"), ("Rec.2100-HLG - Display", "Un-tone-mapped"),
                                  ("P3-D65 - Display", "Filmic")):
                movie = self.folder / "a.mov"
                log = self.render(picture, movie, "--codec", "png ", "--settings", "bitdepth=16", "--ocio", CONFIG,
                                  "--input-space", space, "--display", display, "--view", view)
                self.assertIn("the Write node's curve is bypassed", log)
                ours = pixels_of(movie, "rgb48le", "H")
                worst = max(abs(o - round(65535 * min(max(r, 0), 1))) for o, r in
                            zip(ours, self.reference(picture, space, display, view), strict=True))
                self.assertLessEqual(worst, 1, f"{space} to {display} / {view}")

    def test_ten_bit_video_is_within_one_code_value_and_uses_the_matrix_of_its_tags(self):
        for display, (kr, kb) in (("Rec.1886 Rec.709 - Display", (0.2126, 0.0722)), ("Rec.2100-PQ - Display", (0.2627, 0.0593))):
            picture = self.grid("grid.exr", 4)
            movie = self.folder / "a.mov"
            self.render(picture, movie, "--codec", "v410", "--ocio", CONFIG, "--input-space", "ACEScg", "--display", display)
            ours = pixels_of(movie, "yuv444p10le", "H")
            count = WIDTH * HEIGHT
            reference = self.reference(picture, "ACEScg", display, "Filmic")
            compared = 0
            for i in range(count):
                r, g, b = reference[3 * i:3 * i + 3]
                if not 0 <= min(r, g, b) <= max(r, g, b) <= 1:
                    continue  # brighter than white, which each codec cuts off in its own way
                compared += 1
                y = kr * r + (1 - kr - kb) * g + kb * b
                wanted = (64 + 876 * y, 512 + 448 * (b - y) / (1 - kb), 512 + 448 * (r - y) / (1 - kr))
                for plane in range(3):
                    code = min(max(round(wanted[plane]), 0), 1023)
                    self.assertLessEqual(abs(ours[plane * count + i] - code), 1, (display, i, plane))
            self.assertGreater(compared, count // 2)

    def test_other_programs_read_the_tags_of_the_display(self):
        picture = self.grid("grid.exr", 1)
        for display, wanted, named in (
                ("sRGB - Display", ["bt709", "iec61966-2-1", "bt709"], ("BT.709", "sRGB", "BT.709")),
                ("Rec.1886 Rec.709 - Display", ["bt709", "bt709", "bt709"], ("BT.709", "BT.709", "BT.709")),
                ("Display P3 - Display", ["smpte432", "iec61966-2-1", "bt709"], ("SMPTE EG 432", "sRGB", "BT.709")),
                ("P3-D65 - Display", ["smpte432", "smpte428", "bt709"], ("SMPTE EG 432", "SMPTE ST 428", "BT.709")),
                ("Rec.2100-PQ - Display", ["bt2020", "smpte2084", "bt2020nc"], ("BT.2020", "SMPTE ST 2084", "BT.2020")),
                ("Rec.2100-HLG - Display", ["bt2020", "arib-std-b67", "bt2020nc"], ("BT.2020", "HLG", "BT.2020"))):
            movie = self.folder / "a.mov"
            self.render(picture, movie, "--codec", "apch", "--ocio", CONFIG, "--display", display)
            self.assertEqual(self.tags(movie), wanted, display)
            read = json.loads(checked("exiftool", "-j", movie))[0]
            for key, part in zip(("ColorPrimaries", "TransferCharacteristics", "MatrixCoefficients"), named):
                self.assertIn(part, str(read.get(key)), (display, key))

    def test_tags_that_the_person_gives_stay(self):
        movie = self.folder / "a.mov"
        self.render(self.grid("grid.exr", 1), movie, "--codec", "apch", "--display", "Rec.2100-PQ - Display",
                    "--settings", "transfer=arib-std-b67")
        self.assertEqual(self.tags(movie), ["bt2020", "arib-std-b67", "bt2020nc"])
        self.render(self.grid("grid.exr", 1), movie, "--codec", "apch", "--display", "Rec.2100-PQ - Display",
                    "--settings", "colour=srgb")
        self.assertEqual(self.tags(movie), ["bt709", "iec61966-2-1", "bt709"])

    def test_every_codec_takes_a_wide_display(self):
        for codec in ("jpeg", "png ", "avc1", "dvc ", "rle "):
            size = "720x480" if codec == "dvc " else f"{WIDTH}x{HEIGHT}"
            self.render(self.grid("grid.exr", 1), self.folder / "a.mov", "--codec", codec, "--format", size,
                        "--display", "Rec.2100-PQ - Display")

    def test_straight_alpha_is_the_displays_own_colour(self):
        picture = self.folder / "half.exr"
        checked("oiiotool", "--pattern", "constant:color=0.25,0.1,0.05,0.5", f"{WIDTH}x{HEIGHT}", 4, "-d", "float", "-o", picture)
        opaque = self.folder / "opaque.exr"
        checked("oiiotool", picture, "--unpremult", "--ch", "R,G,B", "-d", "float", "-o", opaque)
        movie = self.folder / "a.mov"
        self.render(picture, movie, "--codec", "png ", "--settings", "bitdepth=16:alpha=straight", "--ocio", CONFIG,
                    "--input-space", "ACEScg", "--display", "sRGB - Display")
        ours = pixels_of(movie, "rgba64le", "H")[:4]
        wanted = self.reference(opaque, "ACEScg", "sRGB - Display", "Filmic")[:3]
        for i in range(3):
            self.assertLessEqual(abs(ours[i] - 65535 * wanted[i]), 1.5)

    def test_the_variable_ocio_names_the_configuration_and_alone_turns_nothing_on(self):
        picture, movie = self.grid("grid.exr", 1), self.folder / "a.mov"
        done = run(CORVEL, "render", picture, "-o", movie, "-y", "--display", "sRGB - Display", OCIO="/nowhere.ocio")
        self.assertEqual((done.returncode, "no colour configuration /nowhere.ocio" in done.stderr), (3, True), done.stderr)
        done = run(CORVEL, "render", picture, "-o", movie, "-y", OCIO="/nowhere.ocio")
        self.assertEqual((done.returncode, "colours:" in done.stderr), (0, False), done.stderr)
        done = run(CORVEL, "render", picture, "-o", movie, "-y", "--ocio", "corvel", OCIO="/nowhere.ocio")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_a_curve_of_the_node_and_colour_management_exclude_each_other(self):
        done = run(CORVEL, "render", self.grid("grid.exr", 1), "-o", self.folder / "a.mov", "--lut", "srgb", "--view", "Filmic")
        self.assertEqual(done.returncode, 2)
        self.assertIn("--lut", done.stderr)
        self.assertFalse((self.folder / "a.mov").exists())

    def test_broken_samples_are_mended_and_told(self):
        picture, still = self.folder / "broken.exr", self.folder / "still.png"
        checked("oiiotool", "--pattern", "constant:color=0,-0.5,-0.5", f"{WIDTH}x{HEIGHT}", 3, "--powc", "-1,0.5,1", "-d", "float",
                "-o", picture)
        for options in ((), ("--display", "sRGB - Display", "--view", "Un-tone-mapped", "--input-space", "Linear Rec.709 (sRGB)")):
            log = self.render(picture, still, *options)
            self.assertIn(f"frame 1 has {WIDTH * HEIGHT} samples that are not a number, written as 0, and "
                          f"{WIDTH * HEIGHT} infinite ones, written as 65504 or 0", log)
            self.assertEqual(list(pixels_of(still, "rgb48le", "H")[:3]), [65535, 0, 0], options)

    def test_images_get_the_displays_values_as_they_are(self):
        picture, still = self.grid("grid.exr", 1), self.folder / "still.png"
        self.render(picture, still, "--ocio", CONFIG, "--input-space", "ACEScg", "--display", "sRGB - Display")
        ours = pixels_of(still, "rgb48le", "H")
        reference = self.reference(picture, "ACEScg", "sRGB - Display", "Filmic")
        self.assertLessEqual(max(abs(o - round(65535 * min(max(r, 0), 1))) for o, r in zip(ours, reference, strict=True)), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
