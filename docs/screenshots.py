#!/usr/bin/env python3
"""Takes the pictures of the windows anew: images/panel.png and images/settings.png, from the real windows on a display
that exists only in memory (Xvfb, xdotool, ImageMagick). The pictures are committed.

Usage: screenshots.py [--scale FACTOR] [--look light|dark] [FOLDER]
"""

import argparse
import os
import pathlib
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tests/integration/windows"))
from VirtualDisplay import VirtualDisplay, wait_for  # noqa: E402

CORVEL = ROOT / "build/release/Corvel.app/Contents/MacOS/corvel"


def settled(display, window, path, colours=0):
    """A picture of the window once two in a row are the same and have so many colours: everything has been drawn,
    also what takes a while."""
    def look():
        before = path.read_bytes() if path.exists() else b""
        time.sleep(1.5)
        display.screenshot(window, path)
        subprocess.run(["mogrify", "-strip", "-define", "png:exclude-chunks=date,time", path], check=True)
        count = subprocess.run(["identify", "-format", "%k", path], capture_output=True, text=True, check=True)
        return path.read_bytes() == before and int(count.stdout) >= colours
    path.unlink(missing_ok=True)
    wait_for("a window that stands still", look)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--scale", default="1")
    parser.add_argument("--look", default="light", choices=["light", "dark"])
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=ROOT / "docs/images")
    wanted = parser.parse_args()
    wanted.folder.mkdir(parents=True, exist_ok=True)
    display = VirtualDisplay("2600x1800")
    settings = pathlib.Path(display.folder.name) / "corvel"
    settings.mkdir()
    (settings / "windows.ini").write_text(f"[General]\nappearance={wanted.look}\n", encoding="utf-8")
    os.chdir(ROOT)
    panel = subprocess.Popen([CORVEL, "panel", "examples/ball/ball.####.exr"],
                             env={**display.environment, "QT_SCALE_FACTOR": wanted.scale})
    try:
        window = display.window("Corvel: ball.####.exr")
        display.keys(window, "alt+c", "Home", *["Down"] * 18)  # ProRes 4444
        display.keys(window, "alt+s", "ctrl+a")
        display.type(window, "1024\t")
        settled(display, window, wanted.folder / "panel.png", colours=3000)
        display.keys(window, "alt+a")
        settled(display, display.window("QuickTime settings: ProRes 4444"), wanted.folder / "settings.png")
    finally:
        panel.terminate()
        panel.wait()
        display.close()


if __name__ == "__main__":
    main()
