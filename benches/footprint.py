#!/usr/bin/env python3
"""Start, memory and scaling of a render: time to the first frame, peak memory of both processes, threads, length.

Uses the sequences that benches/compare.sh makes (1080p and 4k). Needs Linux; run it on a quiet machine.
"""

import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time


def children(pid):
    """Of all the process's threads."""
    found = []
    for task in pathlib.Path(f"/proc/{pid}/task").glob("*/children"):
        try:
            found += [int(child) for child in task.read_text().split()]
        except OSError:
            pass
    return found


def peak_kilobytes(pid):
    """Private memory and what is shared of the frames alike; 0 for a process that is gone."""
    try:
        status = pathlib.Path(f"/proc/{pid}/status").read_text(encoding="ascii")
    except OSError:
        return 0
    return next((int(line.split()[1]) for line in status.splitlines() if line.startswith("VmHWM")), 0)


def render(arguments, frames, *options):
    """Seconds to the first frame and in all, and each process's peak memory in megabytes."""
    peaks = {}
    with tempfile.TemporaryDirectory() as folder:
        command = [arguments.corvel, "render", str(frames / "frame.####.exr"), "-o", f"{folder}/out.mov", "--codec",
                   arguments.codec, "--progress", "json", *options]
        begun, first = time.monotonic(), None
        with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as process:
            for line in process.stderr:
                event = json.loads(line)
                if first is None and event.get("event") == "frame":
                    first = time.monotonic() - begun
                for pid in [process.pid, *children(process.pid)]:
                    peaks[pid] = max(peaks.get(pid, 0), peak_kilobytes(pid))
        seconds = time.monotonic() - begun
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} ended with {process.returncode}")
    return first, seconds, [kilobytes / 1024 for kilobytes in peaks.values()]


def middle(arguments, frames, *options):
    """The run of median length."""
    runs = sorted((render(arguments, frames, *options) for _ in range(arguments.runs)), key=lambda run: run[1])
    return runs[len(runs) // 2]


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--codec", default="apch", help="default: apch, ProRes 422 HQ")
    parser.add_argument("--runs", type=int, default=5, help="runs of each, of which the median counts (default: 5)")
    parser.add_argument("--frames", type=pathlib.Path, default=root / "build/benches/frames",
                        help="where benches/compare.sh keeps its sequences")
    parser.add_argument("--corvel", type=pathlib.Path,
                        default=root / "build/release/Corvel.app/Contents/MacOS/corvel", help="the program")
    arguments = parser.parse_args()
    hd = arguments.frames / "1080p-48-exr"
    first = statistics.median(render(arguments, hd, "--frames", "1-4")[0] for _ in range(arguments.runs))
    print(f"first frame after {first:.3f} s")
    for name, folder in (("1080p", hd), ("4K", next(arguments.frames.glob("4k-*-exr"), None))):
        if folder:
            _, seconds, peaks = middle(arguments, folder)
            print(f"{name}: {seconds:.2f} s, peak memory {' + '.join(f'{peak:.0f}' for peak in peaks)} MB")
    for threads in (1, 2):
        print(f"1080p, --threads {threads}: {middle(arguments, hd, '--threads', str(threads))[1]:.2f} s")
    for last in (12, 24, 48):
        print(f"1080p, {last} frames: {middle(arguments, hd, '--frames', f'1-{last}')[1]:.2f} s")


if __name__ == "__main__":
    main()
