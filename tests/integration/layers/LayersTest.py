"""Layers, views and parts of OpenEXR files that oiiotool, exrmultiview and exrmultipart have written: what corvel
makes of them is, sample by sample, what oiiotool takes out of them.

Usage: LayersTest.py CORVEL
"""

import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CORVEL = sys.argv.pop(1)
SIZE = "64x48"


def run(*command):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, capture_output=True, check=False,
                          text=True)


def must(*command):
    done = run(*command)
    assert done.returncode == 0, (command, done.stderr)
    return done.stdout


def noise(seed, names, path, *more):
    """A picture of noise in halves, with those channels."""
    count = len(names.split(","))
    must("oiiotool", "--create", SIZE, count, "--noise:type=uniform:min=0:max=1:seed=" + str(seed), "--chnames", names,
         *more, "-d", "half", "-o", path)


class Layers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.kept = tempfile.TemporaryDirectory(prefix="corvel layers ")
        cls.folder = pathlib.Path(cls.kept.name)
        left, right = cls.folder / "l.exr", cls.folder / "r.exr"
        names = "R,G,B,A,diffuse.R,diffuse.G,diffuse.B,depth.Z,matte.a"
        for seed, path in ((1, left), (2, right)):
            noise(seed, names, path, "--compression", "zip")
        cls.layered = left
        # One part with two views, by OpenEXR's own tool.
        cls.multiview = cls.folder / "multiview.exr"
        must("exrmultiview", "-z", "zip", "left", left, "right", right, cls.multiview)
        # Parts, by oiiotool: two views and a part without colours; and by OpenEXR's own tool, out of single files.
        cls.parts = cls.folder / "parts.exr"
        noise(3, "R,G,B,A", cls.folder / "p0.exr")
        noise(4, "R,G,B,A", cls.folder / "p1.exr")
        noise(5, "Z", cls.folder / "p2.exr")
        words = []
        for number, (name, view) in enumerate((("rgba.left", "left"), ("rgba.right", "right"), ("depth.left", "left"))):
            words += [cls.folder / f"p{number}.exr", "--attrib", "oiio:subimagename", name, "--attrib", "view", view]
        must("oiiotool", *words, "--siappendall", "-o", cls.parts)
        cls.combined = cls.folder / "combined.exr"
        must("exrmultipart", "-combine", "-i", f"{cls.folder / 'p0.exr'}::one", f"{cls.folder / 'p1.exr'}::two", "-o",
             cls.combined, "-override", "1")

    @classmethod
    def tearDownClass(cls):
        cls.kept.cleanup()

    def setUp(self):
        self.out = pathlib.Path(tempfile.mkdtemp(dir=self.folder))

    def refused(self, path, *options, code=3):
        done = run(CORVEL, "render", path, *options, "-o", self.out / "refused.mov", "--progress", "none")
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertFalse((self.out / "refused.mov").exists())
        self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
        return done.stderr

    def assert_reads(self, path, options, *extraction):
        """What corvel makes of the file with these options is what oiiotool extracts with those words."""
        expected, actual = self.out / "expected.exr", self.out / "actual.exr"
        must("oiiotool", path, *extraction, "-d", "half", "-o", expected)
        done = run(CORVEL, "render", path, *options, "-o", actual, "-y", "--progress", "none")
        self.assertEqual(done.returncode, 0, done.stderr)
        channels = json.loads(must(CORVEL, "info", actual, "--json"))["channels"]
        self.assertEqual(channels, json.loads(must(CORVEL, "info", expected, "--json"))["channels"])
        done = run("oiiotool", "--fail", "0", "--failpercent", "0", expected, actual, "--diff")
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_layers_of_one_part_are_those_that_oiiotool_extracts(self):
        path = self.layered
        rgb = ",R={0}.R,G={0}.G,B={0}.B"
        self.assert_reads(path, [], "--ch", "R,G,B,A")
        self.assert_reads(path, ["--layer", "diffuse"], "--ch", rgb.format("diffuse")[1:])
        self.assert_reads(path, ["--channels", "R=diffuse.R,G=G,B=B,A=matte.a"], "--ch", "R=diffuse.R,G=G,B=B,A=matte.a")
        self.assert_reads(path, ["--channels", "A=matte.a"], "--ch", "R,G,B,A=matte.a")
        self.assert_reads(path, ["--channels", "B,G,R"], "--ch", "R=B,G=G,B=R")
        self.assert_reads(path, ["--channels", "depth.Z"], "--ch", "R=depth.Z,G=depth.Z,B=depth.Z")

    def test_other_compressions_and_tiles_are_read_alike(self):
        for words in (["--compression", "piz"], ["--compression", "rle"], ["--tile", "16", "16"]):
            path = self.out / "other.exr"
            must("oiiotool", self.layered, *words, "-o", path)
            self.assert_reads(path, ["--layer", "diffuse"], "--ch", "R=diffuse.R,G=diffuse.G,B=diffuse.B")

    def test_views_of_one_part_are_the_files_that_it_was_made_of(self):
        path = self.multiview
        self.assert_reads(path, [], "--ch", "R,G,B,A")
        self.assert_reads(path, ["--stereo-view", "left"], "--ch", "R,G,B,A")
        self.assert_reads(path, ["--stereo-view", "right"], "--ch", "R=right.R,G=right.G,B=right.B,A=right.A")
        for view in ("left", "right"):
            self.assert_reads(path, ["--stereo-view", view, "--layer", "diffuse"], "--ch",
                              f"R=diffuse.{view}.R,G=diffuse.{view}.G,B=diffuse.{view}.B")

    def test_parts_are_those_that_oiiotool_extracts(self):
        for path, options, number in ((self.parts, [], 0), (self.parts, ["--part", "rgba.right"], 1),
                                      (self.parts, ["--part", "1"], 1), (self.parts, ["--stereo-view", "right"], 1),
                                      (self.combined, ["--part", "two"], 1), (self.combined, ["--layer", "two"], 1),
                                      (self.combined, [], 0)):
            with self.subTest(path=path.name, options=options):
                self.assert_reads(path, options, "--subimage", number)
        self.assert_reads(self.parts, ["--part", "2", "--channels", "Z"], "--subimage", "2", "--ch", "R=Z,G=Z,B=Z")

    def test_a_movie_of_a_layer_is_the_movie_of_its_extract(self):
        must("oiiotool", self.layered, "--ch", "R=diffuse.R,G=diffuse.G,B=diffuse.B", "-o", self.out / "extract.exr")
        sums = []
        for path, options in ((self.layered, ["--layer", "diffuse"]), (self.out / "extract.exr", [])):
            movie = self.out / "out.mov"
            must(CORVEL, "render", path, *options, "--codec", "png ", "-o", movie, "-y", "--progress", "none")
            sums.append(must("ffmpeg", "-v", "error", "-i", movie, "-f", "framemd5", "-"))
        self.assertEqual(*sums)

    def stereo_shot(self):
        for view, seed in (("left", 10), ("right", 20)):
            (self.out / view).mkdir()
            for frame in range(1, 5):
                noise(seed + frame, "R,G,B", self.out / view / f"shot_{view[0]}.{frame:04d}.exr")
        return self.out / "%V" / "shot_%v.####.exr"

    def test_the_view_stands_for_its_mark_in_names(self):
        pattern = self.stereo_shot()
        for options, view in (([], "left"), (["--stereo-view", "right"], "right")):
            must(CORVEL, "render", pattern, *options, "-o", self.out / "out.####.exr", "-y", "--progress", "none")
            for frame in range(1, 5):
                must("oiiotool", "--fail", "0", self.out / view / f"shot_{view[0]}.{frame:04d}.exr",
                     self.out / f"out.{frame:04d}.exr", "--diff")

    def test_missing_files_of_one_view_are_told(self):
        pattern = self.stereo_shot()
        (self.out / "right" / "shot_r.0003.exr").unlink()
        self.assertIn("frame 3 is missing", self.refused(pattern, "--stereo-view", "right"))
        must(CORVEL, "render", pattern, "--stereo-view", "right", "--missing", "hold", "-o", self.out / "held.mov",
             "--progress", "none")
        shutil.rmtree(self.out / "left")
        said = self.refused(pattern)
        self.assertIn("/left", said)
        self.assertIn("--stereo-view right", said)

    def test_chunks_of_a_farm_read_the_same(self):
        pattern = self.stereo_shot()
        options = ["--stereo-view", "right", "--channels", "B,G,R", "--codec", "png ", "--progress", "none"]
        must(CORVEL, "render", pattern, *options, "-o", self.out / "whole.mov")
        must(CORVEL, "render", pattern, *options, "-o", self.out / "farm.mov", "--farm", "local", "--chunks", "2")
        sums = [must("ffmpeg", "-v", "error", "-i", self.out / name, "-f", "framemd5", "-")
                for name in ("whole.mov", "farm.mov")]
        self.assertEqual(*sums)

    def test_a_dry_run_says_what_is_read(self):
        said = must(CORVEL, "render", self.parts, "--part", "1", "-o", self.out / "out.mov", "--dry-run")
        self.assertIn("R, G, B, A of part 1 (rgba.right)", said)

    def test_what_is_not_there_is_named_with_what_is(self):
        said = self.refused(self.layered, "--layer", "difuse")
        self.assertIn(f"{self.layered}: it has no layer \"difuse\" (layers: depth, diffuse, matte)", said)
        self.assertIn("did you mean \"diffuse\"?", said)
        self.assertIn("(views: left, right)", self.refused(self.multiview, "--stereo-view", "middle"))
        self.assertIn("did you mean \"rgba.right\"?", self.refused(self.parts, "--part", "rgba.rigth"))
        self.assertIn("did you mean \"matte.a\"?", self.refused(self.layered, "--channels", "A=mate.a"))
        self.assertIn("only depth.Z", self.refused(self.layered, "--layer", "depth"))
        self.assertIn("has no colours, only Z; colours are in --layer rgba", self.refused(self.parts, "--part", "2"))

    def test_channels_that_make_no_sense_are_a_usage_error(self):
        for words, reason in (("R=a,R=b", "stands twice"), ("R=,G=b", "names no channel"), ("R,,B", "empty"),
                              ("Z,Z,Z", "stands twice"), ("R,G", "three or four")):
            self.assertIn(reason, self.refused(self.layered, "--channels", words, code=2))
        self.assertIn("empty", self.refused(self.layered, "--layer", "", code=2))

    def test_movies_have_no_layers(self):
        movie = self.out / "in.mov"
        must(CORVEL, "render", self.layered, "-o", movie, "--progress", "none")
        self.assertIn("is a movie", self.refused(movie, "--layer", "diffuse", code=2))

    def test_luminance_with_chroma_is_refused_in_words(self):
        path = self.out / "chroma.exr"
        path.write_bytes(header_of_chroma())
        self.assertIn("luminance and chroma", self.refused(path))

    def test_info_lists_parts_layers_views_and_channels(self):
        facts = json.loads(must(CORVEL, "info", self.parts, "--json"))
        self.assertEqual([part["name"] for part in facts["parts"]], ["rgba.left", "rgba.right", "depth.left"])
        self.assertEqual([part["view"] for part in facts["parts"]], ["left", "right", "left"])
        self.assertEqual(facts["views"], ["left", "right"])
        self.assertEqual(facts["layers"], ["rgba", "depth"])
        self.assertEqual((facts["width"], facts["height"], facts["channels"]), (64, 48, 4))
        facts = json.loads(must(CORVEL, "info", self.multiview, "--json"))
        self.assertEqual(facts["layers"], ["depth", "diffuse", "matte"])
        self.assertIn({"name": "diffuse.right.R", "type": "half", "layer": "diffuse", "view": "right",
                       "subsampled": False}, facts["parts"][0]["channels"])
        text = must(CORVEL, "info", self.multiview)
        self.assertIn("left, right", text)
        self.assertIn("R, G, B (half)", text)

    def test_info_tells_of_sequences_and_other_formats(self):
        pattern = self.stereo_shot()
        (self.out / "left" / "shot_l.0002.exr").unlink()
        facts = json.loads(must(CORVEL, "info", pattern, "--json"))
        self.assertEqual((facts["first"], facts["last"], facts["frames"], facts["missing"]), (1, 4, 3, [2]))
        for ending, form in (("png", "png"), ("tif", "tiff"), ("dpx", "dpx")):
            path = self.out / f"a.{ending}"
            must("oiiotool", "--create", SIZE, "3", "-d", "uint16", "-o", path)
            facts = json.loads(must(CORVEL, "info", path, "--json"))
            self.assertEqual((facts["format"], facts["width"], facts["bits"]), (form, 64, 16))
        done = run(CORVEL, "info", self.out / "missing.exr")
        self.assertEqual(done.returncode, 3)
        self.assertIn("there is no file", done.stderr)

    def test_files_that_are_cut_short_or_damaged_end_in_an_error(self):
        whole = self.parts.read_bytes()
        for length in (3, 40, 200, 500, len(whole) // 2):
            path = self.out / "short.exr"
            path.write_bytes(whole[:length])
            done = run(CORVEL, "render", path, "--stereo-view", "right", "-o", self.out / "out.mov", "--progress", "none")
            self.assertEqual(done.returncode, 3, done.stderr)
            self.assertIn(str(path), done.stderr)
            self.assertFalse((self.out / "out.mov").exists())
        for name in (b"rgba.right", b"view\0", b"chlist\0"):
            path = self.out / "damaged.exr"
            path.write_bytes(whole.replace(name, b"\xff" * len(name)))
            for command in (["info", path], ["render", path, "-o", self.out / "out.mov", "-y", "--stereo-view", "right"]):
                self.assertIn(run(CORVEL, *command).returncode, (0, 3), command)


def header_of_chroma():
    """An OpenEXR file of 2 x 2 pixels with channels Y, RY and BY, not compressed."""
    def attribute(name, kind, value):
        return name.encode() + b"\0" + kind.encode() + b"\0" + len(value).to_bytes(4, "little") + value

    def channel(name, sampling):
        return name.encode() + b"\0" + (1).to_bytes(4, "little") + bytes(4) + sampling.to_bytes(4, "little") * 2

    box = bytes(8) + (1).to_bytes(4, "little") * 2
    one = b"\x00\x00\x80\x3f"
    header = (b"\x76\x2f\x31\x01" + (2).to_bytes(4, "little") +
              attribute("channels", "chlist", channel("BY", 2) + channel("RY", 2) + channel("Y", 1) + b"\0") +
              attribute("compression", "compression", b"\0") + attribute("dataWindow", "box2i", box) +
              attribute("displayWindow", "box2i", box) + attribute("lineOrder", "lineOrder", b"\0") +
              attribute("pixelAspectRatio", "float", one) + attribute("screenWindowCenter", "v2f", bytes(8)) +
              attribute("screenWindowWidth", "float", one) + b"\0")
    first = b"".join(number.to_bytes(4, "little") for number in (0, 8)) + bytes(8)
    second = b"".join(number.to_bytes(4, "little") for number in (1, 4)) + bytes(4)
    start = len(header) + 16
    return header + start.to_bytes(8, "little") + (start + len(first)).to_bytes(8, "little") + first + second


if __name__ == "__main__":
    unittest.main()
