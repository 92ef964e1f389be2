#!/usr/bin/env python3
"""Every codec at every quality: writes movies with the worker's own code, measures them, lets other programs read them,
and lets the `ffmpeg` tool encode the same frames with the same library. Makes docs/codecs.md.

    cmake --preset release -DCORVEL_BENCHES=ON && ninja -C build/release codec_movie
    benches/codecs.py                     all codecs, into docs/codecs.md
    benches/codecs.py --only apch,avc1    some of them, to standard output

The frames have the statistics of a photograph with film grain. PSNR is that of red, green and blue together against the
frames before any conversion, decoded by libavcodec. Times are of this machine and only say something beside each other.
"""

import argparse
import json
import math
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FRAMES = 12
QUALITIES = ["Min", "Low", "Normal", "High", "Max", "Lossless"]
BEST = 4  # Max: what a Write node has when nobody chooses
# PSNR is limited to this where the samples are the source's.
EXACT = 99.9

# Options that only tell how good: how to make the file a little larger or smaller, for a comparison at equal size.
STEPS = {
    "qscale": lambda value, step: int(value) - step,
    "crf": lambda value, step: float(value) - step,
    "quality": lambda value, step: int(value) - step,
    "compression_level": lambda value, step: float(value) * 0.85**step,
}
LOWEST = {"qscale": 1, "crf": 0.1, "quality": 0, "compression_level": 1}


def run(command, timeout=300):
    """Exit code, standard output and standard error of a program."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=timeout, check=False)
    return done.returncode, done.stdout.decode(errors="replace"), done.stderr.decode(errors="replace")


class Bench:
    def __init__(self, tool, folder):
        self.tool = tool
        self.folder = pathlib.Path(folder)

    def ask(self, *arguments):
        code, out, err = run([str(self.tool), *map(str, arguments)])
        if code != 0:
            raise RuntimeError(f"{' '.join(map(str, arguments))}: {err.strip()}")
        return json.loads(out)

    def write(self, codec, quality, alpha):
        movie = self.folder / "ours.mov"
        made = self.ask("write", codec["type"], quality, alpha, FRAMES, movie)
        return movie, made | self.measure(codec, quality, alpha, movie)

    def measure(self, codec, quality, alpha, movie):
        return self.ask("measure", codec["type"], quality, alpha, FRAMES, movie)

    def source(self, codec):
        path = self.folder / "source.raw"
        self.ask("source", codec["type"], 0, 0, FRAMES, path)
        return path


# The same frames through the tool.


def conversion(made):
    """The tool's best conversion to that picture: the one that does not mistake the matrix."""
    name = made["format"]
    if name in ("rgb24", "rgba"):
        return f"format=gbrp16le,zscale=d=none,format=gbrp,format={name}"
    if not name.startswith(("yuv", "uyvy")):
        return f"format={name}"
    full = name.startswith("yuvj") or made["range"] == "pc"
    matrix = {"bt709": "709", "smpte170m": "170m"}[made["matrix"]]
    planar = {"uyvy422": "yuv422p"}.get(name, name.replace("yuvj", "yuv"))
    return f"format=gbrp16le,zscale=m={matrix}:r={'full' if full else 'limited'},format={planar},format={name}"


def encode_with_tool(bench, codec, made, options):
    path = bench.folder / "theirs.mov"
    command = ["ffmpeg", "-v", "error", "-y", "-filter_threads", "1", "-f", "rawvideo", "-pix_fmt", "rgba64le", "-s",
               f"{codec['width']}x{codec['height']}", "-r", "24", "-i", str(bench.folder / "source.raw"),
               "-vf", conversion(made), "-pix_fmt", made["format"], "-c:v", made["encoder"], "-strict", "unofficial"]
    for key, value in options.items():
        command += ["-qscale:v" if key == "qscale" else f"-{key}", str(value)]
        if key == "qscale":
            command += ["-qmin", "1"]
    if made["format"].startswith("yuvj"):
        command += ["-color_range", "pc"]
    if made["filter"]:
        command += ["-bsf:v", made["filter"], "-tag:v", codec["type"]]
    code, _, err = run([*command, str(path)])
    if code != 0:
        raise RuntimeError(f"{' '.join(command)}: {err.strip()}")
    return path


def psnr_of_tool_at(bench, codec, quality, made):
    """What the tool reaches at the size of our movie: its own PSNR where the sizes agree, else the line through its two
    points on both sides, over the logarithm of the size."""
    points = []
    knob = next((key for key in STEPS if key in made["options"] and made["options"][key] not in ("0", 0)), None)
    for step in (0, 1, -1):
        options = dict(made["options"])
        if step:
            value = STEPS[knob](options[knob], step)
            if value < LOWEST[knob]:
                continue
            options[knob] = value
        theirs = encode_with_tool(bench, codec, made, options)
        found = bench.measure(codec, quality, 0, theirs)
        if not step and (knob is None or abs(found["bytes"] / made["bytes"] - 1) < 0.0005):
            return found["psnr"]
        points.append((math.log(found["bytes"]), found["psnr"]))
    points.sort()
    wanted = math.log(made["bytes"])
    low, high = next(((a, b) for a, b in zip(points, points[1:]) if wanted <= b[0]), (points[-2], points[-1]))
    return low[1] + (high[1] - low[1]) * (wanted - low[0]) / (high[0] - low[0])


# Programs that are not ours.


def read_by_ffmpeg(movie, _codec):
    code, out, err = run(["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v", "-show_entries",
                          "stream=nb_read_frames", "-of", "csv=p=0", str(movie)])
    return "yes" if code == 0 and not err and out.strip().strip(",") == str(FRAMES) else "no"


def read_by_mediainfo(movie, _codec):
    _, out, _ = run(["mediainfo", "--Output=JSON", str(movie)])
    video = next(track for track in json.loads(out)["media"]["track"] if track["@type"] == "Video")
    if video.get("FrameCount") != str(FRAMES):
        return "no"
    return "yes" if video.get("Format") else "type only"


def read_by_exiftool(movie, codec):
    _, out, _ = run(["exiftool", "-s3", "-CompressorID", "-ImageWidth", str(movie)])
    found = out.split("\n")
    return "yes" if found[0] == codec["type"].strip() and found[1] == str(codec["width"]) else "no"


def read_by_gstreamer(movie, codec):
    """Whether its picture is the one that ffmpeg decodes."""
    seen, reference = movie.with_suffix(".gst"), movie.with_suffix(".rgb")
    code, _, _ = run(["timeout", "60", "gst-launch-1.0", "-q", "filesrc", f"location={movie}", "!", "decodebin", "!",
                      "videoconvert", "!", "video/x-raw,format=RGB", "!", "filesink", f"location={seen}"])
    size = FRAMES * codec["width"] * codec["height"] * 3
    if code != 0 or not seen.exists() or seen.stat().st_size != size:
        return "no"
    run(["ffmpeg", "-v", "error", "-y", "-i", str(movie), "-f", "rawvideo", "-pix_fmt", "rgb24", str(reference)])
    raw = ["-f", "rawvideo", "-pix_fmt", "rgb24", "-s", f"{codec['width']}x{codec['height']}", "-i"]
    _, _, err = run(["ffmpeg", *raw, str(seen), *raw, str(reference), "-lavfi", "psnr", "-f", "null", "-"])
    average = re.search(r"average:(\S+)", err)
    return "yes" if average and float(average[1]) > 30 else "opens it, other picture"


READERS = {"ffmpeg": read_by_ffmpeg, "MediaInfo": read_by_mediainfo, "ExifTool": read_by_exiftool,
           "GStreamer": read_by_gstreamer}


# Table.


def decibels(value):
    return "exact" if value >= EXACT else f"{value:.2f}"


def meanings(codec):
    """One text a quality."""
    if codec["qualities"] == 1:
        return [codec["meaning"]]
    return [part.split(": ", 1)[1] for part in codec["meaning"].split("; ")]


def rows_of(bench, codec):
    """One row a quality, and the readers of the movie at the default quality."""
    rows, readers = [], {}
    bench.source(codec)
    for quality, meaning in enumerate(meanings(codec)):
        chosen = quality if codec["qualities"] > 1 else BEST
        movie, made = bench.write(codec, chosen, 0)
        if chosen == BEST:
            readers = {name: read(movie, codec) for name, read in READERS.items()}
        theirs = None
        if made["psnr"] < EXACT and codec["lossless"] != "always" and codec["type"] not in NO_COMPARISON:
            theirs = psnr_of_tool_at(bench, codec, chosen, made)
        error = bench.write(codec, chosen, 1)[1]["alpha_error"] if codec["alpha"] else None
        rows.append({"name": codec["name"], "quality": QUALITIES[quality] if codec["qualities"] > 1 else "all",
                     "meaning": meaning, "bytes": made["bytes"], "psnr": made["psnr"], "alpha": error,
                     "milliseconds": made["milliseconds"], "theirs": theirs})
        print(f"{codec['type']} {rows[-1]['quality']}: {made['psnr']:.2f} dB, {made['bytes']} bytes"
              + ("" if theirs is None else f", ffmpeg {theirs:.2f} dB"), file=sys.stderr)
    return rows, readers


# The tool has no other way to the fixed palette than its own, which is made for each movie.
NO_COMPARISON = {"smc "}


def document(codecs, rows, readers, versions):
    lines = [INTRODUCTION.format(frames=FRAMES, versions=versions), "## Quality, size, time", "",
             "| codec | quality | means | kB a frame | PSNR, dB | alpha error | ms a frame | beside `ffmpeg`, dB |",
             "|---|---|---|---|---|---|---|---|"]
    for row in rows:
        alpha = "–" if row["alpha"] is None else "0" if row["alpha"] < 1 / 65536 else f"{row['alpha']:.5f}"
        theirs = "–" if row["theirs"] is None or row["meaning"] == "lossless" else f"{row['psnr'] - row['theirs']:+.2f}"
        name = row["name"] if row["quality"] in ("all", "Min") else ""
        lines.append(f"| {name} | {row['quality']} | {row['meaning']} | {row['bytes'] / 1000:.1f} | "
                     f"{decibels(row['psnr'])} | {alpha} | {row['milliseconds']:.1f} | {theirs} |")
    lines += ["", "## Readers", "", "| codec | type | size tried | " + " | ".join(READERS) + " |",
              "|---|---|---|" + "---|" * len(READERS)]
    for codec in codecs:
        found = readers[codec["type"]]
        lines.append(f"| {codec['name']} | `{codec['type']}` | {codec['width']} x {codec['height']} | "
                     + " | ".join(found[name] for name in READERS) + " |")
    return "\n".join(lines) + "\n"


INTRODUCTION = """# Codecs: measured

Made by `benches/codecs.py`; not written by hand. {frames} frames with the statistics of a grainy photograph, written by the
worker's code, with {versions}.

- **PSNR** is that of red, green and blue together against the source frames, which are floats: conversion to the codec's
  picture, subsampling and rounding count. A codec of 8 bits cannot pass 59 dB, one of 4:2:0 chroma comes near 45 to 50
  whatever its quantiser; *exact* means that every sample is the source's to 16 bits.
- **Alpha error** is the largest difference of a pixel's alpha from the source's, of 1; 0 where the samples are the source's to
  16 bits, – where there is no alpha.
- **ms a frame** is processor time of conversion, encoding and writing, all threads together.
- **Beside `ffmpeg`** is how much better (+) or worse (-) the picture is than what the `ffmpeg` tool makes of the same frames
  with the same encoder and options, through zimg with the right matrix, at equal size. Where the sizes differ the tool's
  PSNR is interpolated between two of its movies. – where there is no loss, or no such command.
- **Readers**: *ffmpeg* decodes every frame without a complaint; *MediaInfo* counts the frames and knows the format (*type only*:
  it names the four characters); *ExifTool* finds type and size; *GStreamer* decodes to the same RGB as ffmpeg
  (of some uncompressed and 16-bit pictures it makes something else, or nothing). The movie is that of quality Max.
"""


def versions():
    tool = run(["ffmpeg", "-version"])[1].split("\n")[0].split(" ")[2]
    gst = run(["gst-launch-1.0", "--version"])[1].split("\n")[0].split(" ")[-1]
    mediainfo = run(["mediainfo", "--Version"])[1].strip().split(" ")[-1]
    return f"ffmpeg {tool}, MediaInfo {mediainfo}, ExifTool {run(['exiftool', '-ver'])[1].strip()}, GStreamer {gst}"


def results_of(bench, codec, kept):
    """Measured now, or what an earlier run of the same program has left."""
    file = kept / f"{codec['type'].strip()}.json"
    if file.exists() and file.stat().st_mtime > pathlib.Path(bench.tool).stat().st_mtime:
        return json.loads(file.read_text(encoding="utf-8"))
    rows, readers = rows_of(bench, codec)
    file.write_text(json.dumps([rows, readers]), encoding="utf-8")
    return rows, readers


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--tool", default=ROOT / "build/release/benches/codec_movie", help="the codec_movie program")
    parser.add_argument("--kept", default=ROOT / "build/benches/codecs", type=pathlib.Path,
                        help="folder of results; those newer than the program are not measured again")
    parser.add_argument("--only", help="types, separated by commas; the table goes to standard output")
    arguments = parser.parse_args()
    arguments.kept.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="corvel-codecs-") as folder:
        bench = Bench(arguments.tool, folder)
        wanted = arguments.only.split(",") if arguments.only else None
        codecs = [codec for codec in bench.ask("list") if wanted is None or codec["type"].strip() in wanted]
        rows, readers = [], {}
        for codec in codecs:
            new, readers[codec["type"]] = results_of(bench, codec, arguments.kept)
            rows += new
    text = document(codecs, rows, readers, versions())
    if wanted:
        print(text)
    else:
        (ROOT / "docs/codecs.md").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
