"""Renders of the usual files of ffmpeg, ImageMagick, oiiotool and corvel itself do without the general image library, and
what only it can tell is told as it would.

Usage: LoadingTest.py CORVEL
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

CORVEL = sys.argv.pop(1)
LIBRARY = "libOpenImageIO.so"


def run(*command):
    return subprocess.run([str(word) for word in command], stdin=subprocess.DEVNULL, capture_output=True, check=False)


def must(*command):
    done = run(*command)
    assert done.returncode == 0, (command, done.stderr)
    return done.stdout.decode()


class Loading(unittest.TestCase):
    def setUp(self):
        self.kept = tempfile.TemporaryDirectory(prefix="corvel loading ")
        self.folder = pathlib.Path(self.kept.name)

    def tearDown(self):
        self.kept.cleanup()

    def opens_library(self, *words):
        """Whether a program or one of its children opens the library."""
        trace = self.folder / "trace"
        done = run("strace", "-f", "-qq", "-e", "trace=openat,open", "-o", trace, *words)
        self.assertEqual(done.returncode, 0, done.stderr)
        return LIBRARY in trace.read_text(errors="replace")

    def loads(self, path, *options):
        return self.opens_library(CORVEL, "render", path, "-o", self.folder / "out.mov", "-y", "--progress", "none", *options)

    def frames(self, ending, *options):
        """Two frames by ffmpeg."""
        pattern = self.folder / f"f.%02d.{ending}"
        must("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x48:r=24", "-frames:v", 2, *options, pattern)
        return pattern

    def test_files_of_ffmpeg(self):
        for ending, form in (("dpx", "gbrp10be"), ("png", "rgb24"), ("png", "rgba64be"), ("png", "gray"), ("tif", "rgb48le"),
                             ("tif", "rgba"), ("tif", "gray16le")):
            with self.subTest(ending=ending, form=form):
                pattern = self.frames(ending, "-pix_fmt", form, "-y")
                self.assertFalse(self.loads(pattern))

    def test_files_of_imagemagick(self):
        first = self.frames("png", "-pix_fmt", "rgba64be")
        for name, *options in (("a.dpx", "-depth", "10", "-alpha", "off"), ("a.png",), ("b.png", "-depth", "8", "-define", "png:color-type=2"),
                               ("a.tif", "-compress", "LZW"), ("b.tif", "-compress", "Zip", "-depth", "8")):
            with self.subTest(name=name, options=options):
                must("/usr/bin/convert", str(first) % 1, *options, self.folder / name)
                self.assertFalse(self.loads(self.folder / name))

    def test_files_of_oiiotool_and_of_corvel(self):
        for ending in ("dpx", "png", "tif"):
            with self.subTest(ending=ending):
                path = self.folder / f"a.{ending}"
                must("oiiotool", "--pattern", "noise", "64x48", 3, "-d", "uint10" if ending == "dpx" else "uint16", "-o", path)
                self.assertFalse(self.loads(path))
                own = self.folder / f"own.####.{ending}"
                must(CORVEL, "render", path, "-o", own, "--progress", "none")
                self.assertFalse(self.loads(own))

    def test_no_option_of_an_ordinary_render_needs_the_library(self):
        pattern = self.frames("dpx", "-pix_fmt", "gbrp10be")
        for options in (("--frames", "1-2"), ("--fps", "25"), ("--input-lut", "rec709"), ("--format", "32x24"),
                        ("--burnin", "default"), ("--timecode", "01:00:00:00"), ("--threads", "2"), ("--reverse",),
                        ("--dry-run",)):
            with self.subTest(options=options):
                self.assertFalse(self.loads(pattern, *options))

    def test_other_files_need_it(self):
        self.assertTrue(self.loads(self.frames("jpg")))
        self.assertTrue(self.loads(self.frames("dpx", "-pix_fmt", "gbrp12be")))

    def test_an_entry_of_the_header_is_burnt_in(self):
        path = self.folder / "a.png"
        must("oiiotool", "--pattern", "constant:color=.2,.2,.2", "64x48", 3, "--attrib", "Software", "somebody's", "-d",
             "uint8", "-o", path)
        entries = json.loads(must(CORVEL, "info", path, "--json"))["metadata"]
        self.assertTrue(entries["Software"])
        pictures = []
        for text in ("{meta:Software}", entries["Software"], "another"):
            out = self.folder / "out.png"
            must(CORVEL, "render", path, "-y", "-o", out, "--progress", "none", "--burnin-text", f"top-left={text}")
            pictures.append(must("oiiotool", "--hash", out).split(": ")[-1])
        self.assertEqual(pictures[0], pictures[1])
        self.assertNotEqual(pictures[0], pictures[2])


if __name__ == "__main__":
    unittest.main()
