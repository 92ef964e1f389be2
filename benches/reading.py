"""Movies read by corvel's reader and by the codec library, side by side; see compare.sh --reading.

In order: our reader, worker and shared memory included, gives packed RGBA floats; ffmpeg decodes the same movie to
planar floats and drops them, by the faster of its two converters. At random: the same frames by a program that
seeks, decodes and converts with the library alone. Runs alternate; ratio = ffmpeg / corvel, wall time.
"""

import argparse
import os
import pathlib
import shlex
import statistics
import subprocess
import sys
import tempfile
import time

MOVIES = {
    "ProRes 422 HQ": ("apch.mov", "gbrpf32le", "-c:v prores_ks -profile:v hq -q:v 6 -pix_fmt yuv422p10le"),
    "ProRes 4444 alpha": ("ap4h.mov", "gbrapf32le", "-c:v prores_ks -profile:v 4444 -q:v 6 -pix_fmt yuva444p10le"),
    "H.264": ("avc1.mov", "gbrpf32le", "-c:v libx264 -crf 20 -g 24 -bf 3 -pix_fmt yuv420p"),
}
COLOUR = "-colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range tv"


def make_movie(arguments, name):
    file, _, options = MOVIES[name]
    movie = arguments.work / f"reading-{arguments.frames}-{file}"
    if not movie.exists():
        part = movie.with_suffix(".part.mov")
        source = "testsrc2=size=1920x1080:rate=25,noise=alls=6:allf=t+u"
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-frames:v",
                        str(arguments.frames), "-vf", "scale=out_color_matrix=bt709:out_range=tv",
                        *options.split(), *COLOUR.split(), str(part)], check=True)
        part.rename(movie)
    return movie


def run(command):
    """Seconds of wall time, and of all processors'."""
    begun = time.monotonic()
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL) as process:
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - begun
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{shlex.join(map(str, command))}\nended with {process.returncode}")
    return wall, usage.ru_utime + usage.ru_stime


def ffmpeg_in_order(movie, pixels):
    """The faster of both converters."""
    filters = [f"scale=in_color_matrix=bt709,format={pixels}", f"zscale=min=709:m=gbr:r=full,format={pixels}"]
    commands = [["ffmpeg", "-nostdin", "-v", "error", "-i", movie, "-vf", one, "-f", "null", "-"] for one in filters]
    return min(commands, key=lambda command: min(run(command)[0] for _ in range(2)))


def compare(arguments, name, how, ours, theirs):
    runs = ([], [])
    for number in range(arguments.runs):
        for side in (0, 1) if number % 2 == 0 else (1, 0):
            runs[side].append(run((ours, theirs)[side]))
    ratios = sorted(theirs[0] / ours[0] for ours, theirs in zip(*runs))
    wall, cpu = ([statistics.median(one[what] for one in side) for side in runs] for what in (0, 1))
    print(f"{name:20}{how:12}{wall[0]:9.2f}{wall[1]:9.2f}{statistics.median(ratios):8.2f}"
          f"{cpu[0]:8.2f}{cpu[1]:8.2f}   ({ratios[0]:.2f} to {ratios[-1]:.2f})", flush=True)


def main():
    parser = argparse.ArgumentParser(prog="benches/compare.sh --reading", description=__doc__.split("\n")[0])
    parser.add_argument("--movies", default=",".join(MOVIES), help="some of: " + ", ".join(MOVIES))
    parser.add_argument("--frames", type=int, default=120, help="frames of a movie (default: 120)")
    parser.add_argument("--random", type=int, default=40, help="frames read at random (default: 40)")
    parser.add_argument("--runs", type=int, default=7, help="timed runs of each side (default: 7)")
    parser.add_argument("--work", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    read_movie = arguments.build / "tests/bundles/ReadMovie.app/Contents/MacOS/read_movie"
    seek_movie = arguments.build / "benches/reading/seek_movie"
    print(f"{arguments.frames} frames 1080p in order, {arguments.random} at random; {arguments.runs} runs each\n"
          f"{'movie':20}{'order':12}{'corvel s':>9}{'ffmpeg s':>9}{'ratio':>8}{'CPU s':>8}{'CPU s':>8}   (ratios)")
    # As corvel has it: memory shared in memory.
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as shared:
        os.environ["CORVEL_TEMP_DIR"] = shared
        for name in [one for one in MOVIES if one in arguments.movies.split(",")]:
            movie = make_movie(arguments, name)
            compare(arguments, name, "in order", [read_movie, movie], ffmpeg_in_order(movie, MOVIES[name][1]))
            compare(arguments, name, "at random", [read_movie, movie, str(arguments.random)],
                    [seek_movie, movie, str(arguments.random)])


if __name__ == "__main__":
    main()
