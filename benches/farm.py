#!/usr/bin/env python3
"""What a render in chunks costs: measures start, frame, join and submission, fits a model, and predicts.

Usage: farm.py CORVEL [FRAMES] [MB_PER_SECOND]

A render of FRAMES (172800, two hours) in 1080p ProRes 422 HQ is predicted for 1 to 1,000 nodes of one thread each, with
a file system that copies MB_PER_SECOND (1000). Processor seconds are used where a machine that others use too would
distort the wall clock; see docs/farm.md.
"""

import math
import pathlib
import resource
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/slurm"))
import cluster  # noqa: E402

CHUNK_FRAMES = (1, 8, 24, 48)
JOINS = (("short", 1), ("short", 10), ("short", 40), ("long", 1), ("long", 4), ("long", 12))
MOST_CHUNKS = 1000


def measured(run, *words):
    """Wall and processor seconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    done = run([str(word) for word in words])
    assert done.returncode == 0, done.stderr
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return time.monotonic() - start, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def local(words):
    return subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)


def line(points):
    """Offset and slope of the line nearest to the points."""
    xs, ys = zip(*points)
    x, y = sum(xs) / len(xs), sum(ys) / len(ys)
    slope = sum((a - x) * (b - y) for a, b in points) / sum((a - x) ** 2 for a in xs)
    return y - slope * x, slope


def measure(corvel, folder):
    frames, movie = folder / "f.%04d.png", folder / "m.mov"
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=1920x1080", "-frames:v", "48", frames],
                   check=True)

    def render(count, name):
        return measured(local, corvel, "render", frames, "-o", folder / name, "-y", "--frames", f"1-{count}", "--codec",
                        "apch", "--threads", "1", "--progress", "none")

    start, frame = line([(count, render(count, "m.mov")[1]) for count in CHUNK_FRAMES])
    render(48, "long.mov")
    render(1, "short.mov")
    size = (folder / "long.mov").stat().st_size / 48e6
    joins = [(name, count, *measured(local, corvel, "join", *[folder / f"{name}.mov"] * count, "-o", movie, "-y"),
              movie.stat().st_size / 1e6) for name, count in JOINS]
    join, verify = line([(count, cpu) for name, count, _, cpu, _ in joins if name == "short"])
    for name, count, wall, cpu, megabytes in joins:
        print(f"join of {count} {name}: {megabytes:.0f} MB, {wall:.2f} s, {cpu:.2f} s of processor")
    with cluster.Cluster() as slurm:
        submit, _ = measured(lambda words: slurm.run(*words), corvel, "render", frames, "-o", folder / "s.mov", "--codec",
                             "apch", "--chunks", "8", "--threads", "1", "--farm", "slurm")
        slurm.wait_for(lambda: not (folder / ".s.mov.farm.json").exists(), 300)
    return {"submit": submit, "start": start, "frame": frame, "join": join, "verify": verify, "MB": size}


def predict(model, frames, nodes, speed):
    """Seconds of rendering and of joining."""
    chunks = min(MOST_CHUNKS, math.ceil(frames / 100))
    each = math.ceil(frames / chunks)
    waves = math.ceil(chunks / nodes)
    rendering = model["submit"] + waves * (model["start"] + each * model["frame"])
    joining = model["join"] + chunks * model["verify"] + frames * model["MB"] / speed
    return rendering, joining


def main():
    corvel = pathlib.Path(sys.argv[1]).resolve()
    frames, speed = (int(sys.argv[i]) if len(sys.argv) > i else usual for i, usual in ((2, 172800), (3, 1000)))
    with tempfile.TemporaryDirectory(prefix="corvel-farm-") as folder:
        model = measure(corvel, pathlib.Path(folder))
    print("  ".join(f"{name} {value:.3f}" for name, value in model.items()))
    for nodes in (1, 10, 100, 1000):
        rendering, joining = predict(model, frames, nodes, speed)
        print(f"{nodes:5} nodes: {rendering:8.0f} s to render, {joining:6.0f} s to join")


if __name__ == "__main__":
    main()
