#!/usr/bin/env python3
"""Makes the pictures of pictures.md anew, images/pictures/*.png: real renders to images, made small (ImageMagick). The
pictures are committed.

Usage: pictures.py [FOLDER]
"""

import pathlib
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORVEL = ROOT / "build/release/Corvel.app/Contents/MacOS/corvel"

# A landscape with something round and something in every corner.
PLATE = """-size 2048x858 gradient:#2b4f8c-#f2b27a -fill #ffe9b8 -draw 'circle 1430,330 1430,210'
-fill #3d4f63 -draw 'polygon 0,858 0,520 330,380 700,600 1010,430 1390,640 1720,470 2048,600 2048,858'
-fill #1f2b33 -draw 'polygon 0,858 0,700 420,610 900,740 1500,650 2048,760 2048,858'
-fill none -stroke white -strokewidth 6 -draw 'circle 1024,429 1024,229'
-stroke none -fill white -draw 'rectangle 40,40 46,140 rectangle 40,40 140,46'
-draw 'rectangle 2002,40 2008,140 rectangle 1908,40 2008,46'
-draw 'rectangle 40,718 46,818 rectangle 40,812 140,818'
-draw 'rectangle 2002,718 2008,818 rectangle 1908,812 2008,818'"""

SMALL = ["--format", "640x360"]
GEOMETRY = {
    "inside": [*SMALL, "--fit", "inside"],
    "fill": [*SMALL, "--fit", "fill"],
    "stretch": [*SMALL, "--fit", "stretch"],
    "crop": [*SMALL, "--fit", "crop"],
    "lowerleft": SMALL,
    "mask": [*SMALL, "--fit", "fill", "--mask", "2.39"],
    "mask-sides": [*SMALL, "--fit", "fill", "--mask", "1.33:0.7"],
}

WORDS = ["--timecode", "01:00:00:00", "--field", "show=Orion", "--field", "note=for review"]
MORE = ["--field", "version=v012", "--field", "artist=J. Müller, 山田", "--field", "task=comp", "--reel", "A001"]
SLATE = ["--format", "1280x720", "--fit", "inside", "--codec", "apch", "--fps", "24", "--slate", "default", *WORDS, *MORE]
WRITTEN = {
    "burnin-480": (["--format", "854x480", "--fit", "fill", "--burnin", "default", *WORDS], 854),
    "burnin-2160": (["--format", "3840x2160", "--fit", "fill", "--burnin", "default", *WORDS], 854),
}


def run(*command):
    subprocess.run([str(word) for word in command], check=True, stdin=subprocess.DEVNULL)


def make_plates(folder):
    """Three frames of a shot."""
    for frame in range(1001, 1004):
        run("convert", *shlex.split(PLATE), "-depth", "8", folder / f"sh010_comp.{frame}.png")


def render(folder, options, path, width=0):
    run(CORVEL, "render", folder / "sh010_comp.####.png", "-o", folder / "made.####.png", "-y", "--channels", "rgb",
        "--progress", "none", *options)
    made = min(folder.glob("made.*.png"))
    # Few enough colours for a document.
    run("convert", made, *(["-resize", width] if width else []), "-depth", "8", "-strip", "-colors", "256", "-define", "png:exclude-chunks=date,time", path)


def render_slate(folder, path):
    """Out of a movie, whose codec it names."""
    movie, made = folder / "sh010_comp.mov", folder / "slate.png"
    run(CORVEL, "render", folder / "sh010_comp.####.png", "-o", movie, "--progress", "none", *SLATE)
    run("ffmpeg", "-v", "error", "-y", "-i", movie, "-frames:v", "1", made)
    run("convert", made, "-resize", "854", "-depth", "8", "-strip", "-colors", "256", "-define",
        "png:exclude-chunks=date,time", path)


def main():
    target = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "docs/images/pictures")
    target.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="corvel-pictures-") as temporary:
        folder = pathlib.Path(temporary)
        make_plates(folder)
        for name, options in GEOMETRY.items():
            render(folder, options, target / f"{name}.png")
        for name, (options, width) in WRITTEN.items():
            render(folder, options, target / f"{name}.png", width)
        render_slate(folder, target / "slate.png")


if __name__ == "__main__":
    main()
