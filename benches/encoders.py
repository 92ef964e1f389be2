#!/usr/bin/env python3
"""Codecs for which the library has two encoders, side by side: size, PSNR and processor time a frame, one thread.

    benches/encoders.py    after ninja -C build/release codec_movie

Every candidate gets the same pictures, already converted to its pixel format, from the same tool; runs of the candidates
alternate and the fastest of three counts.
"""

import argparse
import json
import pathlib
import re
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FRAMES = 4
SIZE = "1920x1080"

# Pixel format, then encoder and options of each candidate.
GROUPS = {
    "ProRes 422 HQ": ("yuv422p10le", [
        ("prores_ks", ["-profile:v", "3"]),
        ("prores_aw", ["-profile:v", "3"]),
        *(("prores_ks", ["-profile:v", "3", "-qscale:v", str(q)]) for q in (2, 3, 4, 7))]),
    "ProRes 422 Proxy": ("yuv422p10le", [
        ("prores_aw", ["-profile:v", "0"]),
        *(("prores_ks", ["-profile:v", "0", "-qscale:v", str(q)]) for q in (6, 12))]),
    "ProRes 422": ("yuv422p10le", [
        ("prores_ks", ["-profile:v", "2"]),
        ("prores_aw", ["-profile:v", "2"]),
        *(("prores_ks", ["-profile:v", "2", "-qscale:v", str(q)]) for q in (3, 4, 5, 6))]),
    "ProRes 4444": ("yuv444p10le", [
        ("prores_ks", ["-profile:v", "4"]),
        ("prores_aw", ["-profile:v", "4"]),
        *(("prores_ks", ["-profile:v", "4", "-qscale:v", str(q)]) for q in (1, 2, 3))]),
    "JPEG 2000": ("rgb24", [
        *(("libopenjpeg", ["-compression_level", str(ratio)]) for ratio in (12, 6)),
        *(("jpeg2000", ["-qscale:v", str(q)]) for q in (3, 6))]),
    "MPEG-4": ("yuv420p", [
        *((encoder, ["-qscale:v", str(q)]) for encoder in ("mpeg4", "libxvid") for q in (2, 4, 7))]),
}


def run(command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: {done.stderr[-500:]}")
    return done.stdout, done.stderr


def raw(pixels, path):
    return ["-f", "rawvideo", "-pix_fmt", pixels, "-s", SIZE, "-r", "24", "-i", str(path)]


def encode(pixels, source, encoder, options, movie):
    """Processor seconds of the whole run."""
    _, told = run(["ffmpeg", "-y", "-benchmark", "-threads", "1", *raw(pixels, source), "-c:v", encoder, *options,
                   "-threads", "1", str(movie)])
    return float(re.search(r"utime=([\d.]+)s", told)[1])


def measure(pixels, source, movie):
    packets, _ = run(["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "packet=size", "-of", "json",
                      str(movie)])
    sizes = [int(packet["size"]) for packet in json.loads(packets)["packets"]]
    _, told = run(["ffmpeg", "-i", str(movie), *raw(pixels, source), "-lavfi", f"[0]format={pixels}[a];[a][1]psnr", "-f",
                   "null", "-"])
    return sum(sizes) / len(sizes) / 1000, float(re.search(r"average:(\S+)", told)[1])


def compare(folder, name, tool):
    pixels, candidates = GROUPS[name]
    source, movie = folder / "source.raw", folder / "movie.mov"
    run([str(tool), "source", "AVdn", "0", "0", str(FRAMES), str(folder / "rgba.raw")])
    run(["ffmpeg", "-y", *raw("rgba64le", folder / "rgba.raw"), "-vf", "format=gbrp16le,format=" + pixels
         if pixels.startswith("rgb") else f"format=gbrp16le,zscale=m=709:r=limited,format={pixels}", "-f", "rawvideo",
         str(source)])
    idle = min(encode(pixels, source, "rawvideo", ["-f", "null"], "-") for _ in range(3))
    times = [[] for _ in candidates]
    for _ in range(3):
        for taken, (encoder, options) in zip(times, candidates):
            taken.append(encode(pixels, source, encoder, options, movie))
    print(f"\n| {name} | kB a frame | PSNR, dB | ms a frame |\n|---|---|---|---|")
    for taken, (encoder, options) in zip(times, candidates):
        encode(pixels, source, encoder, options, movie)
        kilobytes, psnr = measure(pixels, source, movie)
        shown = " ".join([encoder, *options]).replace("-profile:v", "profile").replace("-qscale:v", "quantiser")
        print(f"| {shown.replace('-compression_level', 'ratio')} | {kilobytes:.0f} | {psnr:.2f} | "
              f"{1000 * max(0, min(taken) - idle) / FRAMES:.1f} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--tool", default=ROOT / "build/release/benches/codec_movie", help="the codec_movie program")
    parser.add_argument("--only", choices=GROUPS, action="append", help="one of the comparisons")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="corvel-encoders-") as folder:
        for name in arguments.only or GROUPS:
            compare(pathlib.Path(folder), name, arguments.tool)


if __name__ == "__main__":
    main()
