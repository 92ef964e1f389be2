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
import struct
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

    def test_a_filter_does_not_spread_broken_samples(self):
        """One pixel that is no number and one that is infinite, in a grey picture that is made half as large."""
        picture, movie = self.folder / "dots.exr", self.folder / "a.mov"
        checked("oiiotool", "--pattern", "constant:color=0.25,0.25,0.25", f"{WIDTH}x{HEIGHT}", 3, "-d", "float", "-o", self.folder / "grey.exr")
        self.paste(self.folder / "grey.exr", {(20, 20): float("nan"), (60, 40): float("inf"), (80, 40): float("-inf")}, picture)
        for options in (("--lut", "linear"), ("--output-space", "ACEScg", "--input-space", "ACEScg")):
            log = self.render(picture, movie, "--codec", "png ", "--settings", "bitdepth=16", "--format", f"{WIDTH // 2}x{HEIGHT // 2}",
                              "--fit", "stretch", *options)
            self.assertEqual(log.count("samples that are not a number"), 1)
            self.assertIn("3 samples that are not a number, written as 0, and 6 infinite ones, written as 65504 or 0", log)
            ours = pixels_of(movie, "rgb48le", "H")
            grey = round(0.25 * 65535)
            touched = {(i // 3 % (WIDTH // 2), i // 3 // (WIDTH // 2)) for i, sample in enumerate(ours) if abs(sample - grey) > 1}
            # The filter reaches three of the smaller pixels to each side.
            for x, y in touched:
                self.assertTrue(any(abs(x - a) <= 3 and abs(y - b) <= 3 for a, b in ((10, 10), (30, 20), (40, 20))), (options, x, y))
            at = lambda x, y: ours[3 * (y * (WIDTH // 2) + x)]
            self.assertLess(at(10, 10), grey)
            self.assertEqual(at(30, 20), 65535)
            self.assertLess(at(40, 20), grey)

    def paste(self, picture, samples, path):
        """The picture with other values in single pixels, as an uncompressed file."""
        checked("oiiotool", picture, "-d", "float", "--compression", "none", "-o", path)
        data = bytearray(path.read_bytes())
        end = len(data) - HEIGHT * (8 + 3 * 4 * WIDTH)  # a line: its number, its size, then blue, green, red
        for (x, y), value in samples.items():
            for plane in range(3):
                struct.pack_into("<f", data, end + y * (8 + 12 * WIDTH) + 8 + 4 * (plane * WIDTH + x), value)
        path.write_bytes(data)

    def film_scan(self, transfer=1, colorimetric=1):
        """A DPX file whose header says that its values are printing densities, or something else (SMPTE 268M)."""
        path = self.folder / "scan.dpx"
        checked("oiiotool", "--pattern", "fill:topleft=0.1,0.1,0.1:topright=0.7,0.6,0.5:bottomleft=0.4,0.5,0.3:bottomright=0.9,0.9,0.9",
                f"{WIDTH}x{HEIGHT}", 3, "-d", "uint10", "-o", path)
        data = bytearray(path.read_bytes())
        data[801:803] = bytes((transfer, colorimetric))
        path.write_bytes(data)
        return path

    def foreign(self, spaces, rules="  - !<Rule> {name: Default, colorspace: Light}"):
        """A configuration of somebody else's: a linear space, these, and a display."""
        path = self.folder / "foreign.ocio"
        path.write_text("ocio_profile_version: 2\nroles:\n  default: Light\n  scene_linear: Light\n  reference: Light\n"
                        f"file_rules:\n{rules}\n"
                        "displays:\n  Screen:\n    - !<View> {name: Plain, colorspace: Shown}\n"
                        "colorspaces:\n  - !<ColorSpace> {name: Light}\n"
                        "  - !<ColorSpace>\n    name: Shown\n    from_scene_reference: !<ExponentTransform> {value: [2.4, 2.4, 2.4, 1], direction: inverse}\n"
                        + "".join(f"  - !<ColorSpace> {{name: {name}}}\n" for name in spaces), encoding="utf-8")
        return path

    def test_film_scans_are_printing_densities_without_being_told(self):
        movie = self.folder / "a.mov"
        for transfer, colorimetric, space, why in (
                (1, 1, "Film log (Cineon)", "by the file's printing densities"), (3, 1, "Film log (Cineon)", "by the file's"),
                (2, 6, "Linear Rec.709 (sRGB)", "as usual for such files"), (6, 6, "Rec.709 - Camera", "as usual for such files"),
                (0, 0, "sRGB - Texture", "as usual for such files")):
            scan = self.film_scan(transfer, colorimetric)
            log = self.render(scan, movie, "--codec", "png ", "--settings", "bitdepth=16", "--ocio", CONFIG, "--display", "sRGB - Display")
            self.assertIn(f"colours: {space}, {why}", log)
            plain = self.folder / "plain.tif"  # without a header that anybody could read something into
            checked("oiiotool", scan, "--eraseattrib", ".*", "-d", "uint16", "-o", plain)
            ours = pixels_of(movie, "rgb48le", "H")
            wanted = self.reference(plain, space, "sRGB - Display", "Filmic")
            self.assertLessEqual(max(abs(o - round(65535 * min(max(r, 0), 1))) for o, r in zip(ours, wanted, strict=True)), 2, space)
        # White at code value 685 and black at 95.
        light = checked("oiiotool", "--colorconfig", CONFIG, "--pattern", f"constant:color={685 / 1023},{95 / 1023},{445 / 1023}", "1x1", 3,
                        "-d", "float", "--colorconvert", "Film log (Cineon)", "Linear Rec.709 (sRGB)", "--printstats")
        self.assertRegex(light, r"Stats Avg: 1\.0000\d* (-)?0\.0000\d* 0\.1493\d*")

    def test_a_foreign_configuration_is_asked_by_rule_then_by_name_and_else_doubted(self):
        scan, movie = self.film_scan(), self.folder / "a.mov"
        for names, rules, wanted in (
                ((), "  - !<Rule> {name: scans, pattern: '*', extension: dpx, colorspace: Shown}\n  - !<Rule> {name: Default, colorspace: Light}",
                 "colours: Shown, by a file rule"),
                (("Cineon",), "  - !<Rule> {name: Default, colorspace: Light}", "colours: Cineon, by the file's printing densities"),
                ((), "  - !<Rule> {name: Default, colorspace: Light}",
                 "no space is known for values with the curve cineon; they are taken for Light; --input-space says what they are")):
            log = self.render(scan, movie, "--codec", "png ", "--ocio", self.foreign(names, rules))
            self.assertIn(wanted, log)
            self.assertEqual("no space is known" in log, "no space" in wanted)

    def test_a_movies_own_tags_say_what_it_is(self):
        picture, source, movie = self.grid("grid.exr", 1), self.folder / "source.mov", self.folder / "a.mov"
        for display, tags in (("sRGB - Display", "bt709 and iec61966-2-1"), ("Rec.1886 Rec.709 - Display", "bt709 and bt709"),
                              ("Display P3 - Display", "smpte432 and iec61966-2-1"), ("P3-D65 - Display", "smpte432 and smpte428"),
                              ("Rec.2100-PQ - Display", "bt2020 and smpte2084"), ("Rec.2100-HLG - Display", "bt2020 and arib-std-b67")):
            self.render(picture, source, "--codec", "ap4h", "--ocio", CONFIG, "--display", display)
            log = self.render(source, movie, "--codec", "png ", "--settings", "bitdepth=16", "--ocio", CONFIG, "--display", display,
                              "--view", "Un-tone-mapped")
            self.assertIn(f"colours: {display}, by the movie's tags {tags} to {display}", log)
            # There and back again: the values that the movie had.
            self.render(source, self.folder / "plain.mov", "--codec", "png ", "--settings", "bitdepth=16")
            ours, before = pixels_of(movie, "rgb48le", "H"), pixels_of(self.folder / "plain.mov", "rgb48le", "H")
            self.assertLessEqual(max(abs(o - b) for o, b in zip(ours, before, strict=True)), 3, display)
        self.render(picture, source, "--codec", "ap4h", "--settings", "primaries=bt2020:transfer=bt2020-10")
        self.assertIn("colours: Rec.2020 - Camera, by the movie's tags", self.render(source, movie, "--display", "sRGB - Display"))
        self.render(picture, source, "--codec", "ap4h", "--settings", "primaries=film:transfer=gamma28")
        log = self.render(source, movie, "--display", "sRGB - Display")
        self.assertIn("no space is known for a movie whose tags are film and bt470bg", log)

    def test_a_later_frame_that_states_other_colours_is_named_once(self):
        for number, space in ((1, "0.713,0.293,0.165,0.83,0.128,0.044,0.32168,0.33767"),
                              *((n, "0.64,0.33,0.3,0.6,0.15,0.06,0.3127,0.329") for n in (2, 3, 4))):
            checked("oiiotool", "--pattern", "constant:color=0.2,0.3,0.4", f"{WIDTH}x{HEIGHT}", 3, "--attrib:type=float[8]",
                    "chromaticities", space, "-d", "half", "-o", self.folder / f"a.{number:04d}.exr")
        shot, movie = self.folder / "a.####.exr", self.folder / "a.mov"
        log = self.render(shot, movie, "--display", "sRGB - Display")
        self.assertIn("colours: ACEScg, by the file's chromaticities", log)
        self.assertEqual(log.count("is Linear Rec.709 (sRGB) by its header"), 1, log)
        self.assertRegex(log, "frame [234] is Linear Rec.709 .* taken for ACEScg")
        for options in (("--input-space", "ACEScg", "--display", "sRGB - Display"), ("--frames", "2-4", "--display", "sRGB - Display"), ()):
            self.assertNotIn("by its header", self.render(shot, movie, *options))

    def test_written_white_is_graphics_white(self):
        """203 cd/m2 on displays that are brighter than paper (ITU-R BT.2408), else the display's own white."""
        picture, movie = self.folder / "dark.exr", self.folder / "a.mov"
        checked("oiiotool", "--pattern", "constant:color=0.01,0.01,0.01", "640x360", 3, "-d", "half", "-o", picture)
        for display, white in (("Rec.2100-PQ - Display", 0.5807), ("Rec.2100-HLG - Display", 0.75),
                               ("sRGB - Display", 1), ("Rec.1886 Rec.709 - Display", 1)):
            for written in (("--burnin-text", "center=\u2588\u2588\u2588"), ("--slate", "default")):
                self.render(picture, movie, "--codec", "v410", "--display", display, *written)
                ours = pixels_of(movie, "yuv444p10le", "H")
                luma = max(ours[:640 * 360])
                wanted = 64 + 876 * white
                # A template may be a little less than opaque.
                self.assertLessEqual(luma, wanted + 2, (display, written))
                self.assertGreaterEqual(luma, wanted - 0.07 * 876 * white, (display, written))

    def test_what_the_configuration_lacks_is_refused_with_what_it_has(self):
        picture, movie = self.grid("grid.exr", 1), self.folder / "a.mov"
        broken, lacking = self.folder / "broken.ocio", self.folder / "lacking.ocio"
        broken.write_text("ocio_profile_version: 2\nroles: [", encoding="utf-8")
        lacking.write_text(self.foreign(()).read_text(encoding="utf-8") + "  - !<ColorSpace>\n    name: Cube\n"
                           "    to_scene_reference: !<FileTransform> {src: nowhere.cube}\n", encoding="utf-8")
        for code, words, options in (
                (3, "there is no colour configuration", ("--ocio", self.folder / "none.ocio")),
                (3, "cannot be used", ("--ocio", broken)),
                (3, "cannot be used", ("--ocio", picture)),
                (3, "a file of it is missing", ("--ocio", lacking, "--input-space", "Cube")),
                (2, 'no colour space "Nothing"', ("--input-space", "Nothing")),
                (2, 'no colour space "Nothing"', ("--output-space", "Nothing")),
                (2, 'no display "Nothing"', ("--display", "Nothing")),
                (2, 'has no view "Nothing"', ("--view", "Nothing")),
                (2, 'no look "nothing"', ("--looks", "+nothing")),
                (2, "exclude each other", ("--output-space", "ACEScg", "--view", "Filmic")),
                (2, "not of the form NAME=VALUE", ("--context", "SHOT"))):
            done = run(CORVEL, "render", picture, "-o", movie, *options)
            self.assertEqual((done.returncode, words in done.stderr), (code, True), (options, done.stderr))
            self.assertFalse(movie.exists())
        self.assertIn("there are", run(CORVEL, "render", picture, "-o", movie, "--display", "Nothing").stderr)

    def test_images_get_the_displays_values_as_they_are(self):
        picture, still = self.grid("grid.exr", 1), self.folder / "still.png"
        self.render(picture, still, "--ocio", CONFIG, "--input-space", "ACEScg", "--display", "sRGB - Display")
        ours = pixels_of(still, "rgb48le", "H")
        reference = self.reference(picture, "ACEScg", "sRGB - Display", "Filmic")
        self.assertLessEqual(max(abs(o - round(65535 * min(max(r, 0), 1))) for o, r in zip(ours, reference, strict=True)), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
