#!/usr/bin/env python3
"""Where the processor time of a frame goes: a table, and a chart as SVG.

Renders the sequence of benches/compare.sh to several codecs under `perf record` and adds the samples up by process and
program library. Needs perf; run it on a quiet machine.
"""

import argparse
import collections
import html
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

CODECS = {"Motion JPEG A": "mjpa", "ProRes 422 HQ": "apch", "ProRes 4444": "ap4h", "H.264": "avc1", "PNG, 16 bit": "png",
          "Animation": "rle", "v210": "v210"}
# The first pattern that matches "process library" decides.
PARTS = [
    ("EXR: inflate", r"^corvel libdeflate", "#4477aa"),
    ("EXR: the rest", r"^corvel corvel$", "#66ccee"),
    ("curve (to_float)", r"^corvel libKexImage", "#228833"),
    ("host: kernel", r"^corvel \[kernel", "#bbbbbb"),
    ("host: other", r"^corvel ", "#dddddd"),
    ("conversion", r"^Corvel\S* (Corvel|libhwy)", "#ccbb44"),
    ("encoder", r"^Corvel\S* (libav|libx26|libz\.|libdeflate|libopenjp|libswscale)", "#ee6677"),
    ("helper: kernel", r"^Corvel\S* \[kernel", "#aaaaaa"),
    ("helper: other", r"^Corvel\S* ", "#cccccc"),
]


def used_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def shares(record):
    """Share of all samples by part."""
    report = subprocess.run(["perf", "report", "-i", record, "--no-children", "-g", "none", "--sort", "comm,dso"],
                            check=True, capture_output=True, text=True).stdout
    found = collections.Counter()
    for line in report.splitlines():
        match = re.match(r"\s*([\d.]+)%\s+(\S+)\s+(\S.*\S|\S)\s*$", line)
        if match:
            name = f"{match[2]} {match[3]}"
            part = next((part for part, pattern, _ in PARTS if re.search(pattern, name)), None)
            found[part] += float(match[1]) / 100
    return found


def measure(arguments, codec, folder):
    """Milliseconds of processor time a frame by part."""
    record = folder / "perf.data"
    command = [arguments.corvel, "render", str(arguments.frames / "frame.####.exr"), "-o", str(folder / "out.mov"), "-y",
               "--codec", codec, "--progress", "none"]
    before = used_seconds()
    subprocess.run(command, check=True)
    total = (used_seconds() - before) / len(list(arguments.frames.glob("*.exr")))
    subprocess.run(["perf", "record", "-q", "-F", "1999", "-o", record, "--", *command], check=True,
                   capture_output=True)
    return {part: share * total * 1000 for part, share in shares(record).items() if part}


def chart(rows):
    """A bar a codec, its parts side by side."""
    left, width, bar, gap, top = 130, 620, 22, 12, 16
    most = max(sum(parts.values()) for parts in rows.values())
    height = top + len(rows) * (bar + gap) + 30 + 22 * ((len(PARTS) + 2) // 3)
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 60}" height="{height}" '
             f'font-family="sans-serif" font-size="13">', f'<rect width="100%" height="100%" fill="#ffffff"/>']
    for number, (codec, parts) in enumerate(rows.items()):
        y, x = top + number * (bar + gap), float(left)
        lines.append(f'<text x="{left - 8}" y="{y + 16}" text-anchor="end">{html.escape(codec)}</text>')
        for part, _, colour in PARTS:
            length = parts.get(part, 0) * width / most
            title = f"{part}: {parts.get(part, 0):.1f} ms"
            lines.append(f'<rect x="{x:.1f}" y="{y}" width="{length:.1f}" height="{bar}" fill="{colour}">'
                         f'<title>{html.escape(title)}</title></rect>')
            x += length
        lines.append(f'<text x="{x + 6:.1f}" y="{y + 16}">{sum(parts.values()):.0f} ms</text>')
    base = top + len(rows) * (bar + gap) + 14
    for number, (part, _, colour) in enumerate(PARTS):
        x, y = left + number % 3 * 210, base + number // 3 * 22
        lines += [f'<rect x="{x}" y="{y}" width="14" height="14" fill="{colour}"/>',
                  f'<text x="{x + 20}" y="{y + 12}">{html.escape(part)}</text>']
    return "\n".join(lines + ["</svg>", ""])


def table(rows):
    lines = ["| ms a frame | " + " | ".join(rows) + " |", "|---|" + "---|" * len(rows)]
    for part, _, _ in PARTS:
        lines.append(f"| {part} | " + " | ".join(f"{parts.get(part, 0):.1f}" for parts in rows.values()) + " |")
    return "\n".join([*lines, "| **all** | " + " | ".join(f"**{sum(p.values()):.1f}**" for p in rows.values()) + " |"])


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--frames", type=pathlib.Path, default=root / "build/benches/frames/1080p-48-exr",
                        help="folder of the sequence (default: the one that benches/compare.sh makes)")
    parser.add_argument("--corvel", type=pathlib.Path,
                        default=root / "build/release/Corvel.app/Contents/MacOS/corvel", help="the program")
    parser.add_argument("--chart", type=pathlib.Path, help="SVG file to write")
    arguments = parser.parse_args()
    if not list(arguments.frames.glob("frame.*.exr")):
        sys.exit(f"{arguments.frames} holds no frames; benches/compare.sh makes them")
    with tempfile.TemporaryDirectory() as folder:
        rows = {name: measure(arguments, codec, pathlib.Path(folder)) for name, codec in CODECS.items()}
    print(table(rows))
    if arguments.chart:
        arguments.chart.write_text(chart(rows), encoding="utf-8")


if __name__ == "__main__":
    main()
