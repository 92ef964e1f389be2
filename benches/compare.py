"""Renders of corvel and of ffmpeg side by side; see compare.sh.

What is equal on both sides: the frames, the codec, the option that sets the codec's quality, the sRGB curve applied
to linear frames, the index at the front of the file, the file synced to disk, and all processors. ffmpeg gets the
fastest of several commands that reach corvel's picture quality, found by trying them; corvel gets its defaults and a
quality.

Each side's movie is decoded by ffmpeg with the matrix that the movie itself states, and compared in 16-bit RGB with
the source frames taken through the same curve.
"""

import argparse
import json
import os
import pathlib
import platform
import re
import shlex
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass, field

SIZES = {"1080p": (1920, 1080), "4k": (3840, 2160)}
RATE = 24  # frames a second

SWSCALE = "scale=out_color_matrix={matrix}:out_range={range}"
ZSCALE = "zscale=m={zmatrix}:r={range}"
VIDEO = {"matrix": "bt709", "zmatrix": "709", "range": "tv"}
JPEG = {"matrix": "bt601", "zmatrix": "470bg", "range": "pc"}
RGB = None  # no matrix: ffmpeg only repacks


@dataclass
class Codec:
    """One line of the table: what corvel is asked for, and the commands ffmpeg may choose from."""

    name: str
    corvel: list
    pixels: str  # ffmpeg's pixel format
    colour: dict
    encoders: list  # ffmpeg's output options, one text a candidate
    alpha: bool = False
    bits: int = 8


CODECS = {
    "mjpa": Codec("Motion JPEG A", ["--codec", "mjpa", "--quality", "Max"], "yuvj422p", JPEG,
                  ["-c:v mjpeg -q:v 2 -huffman default -bsf:v mjpegadump -tag:v mjpa"]),
    "apch": Codec("ProRes 422 HQ", ["--codec", "apch", "--quality", "Max"], "yuv422p10le", VIDEO,
                  ["-c:v prores_ks -profile:v hq -q:v 3 -vendor apl0",
                   "-c:v prores_aw -profile:v 3 -vendor apl0"], bits=10),
    "ap4h": Codec("ProRes 4444, alpha", ["--codec", "ap4h", "--quality", "Max"], "yuva444p10le", VIDEO,
                  ["-c:v prores_ks -profile:v 4444 -q:v 3 -alpha_bits 16 -vendor apl0",
                   "-c:v prores_aw -profile:v 4 -vendor apl0"], alpha=True, bits=10),
    "avc1": Codec("H.264", ["--codec", "avc1", "--quality", "High", "--keyframerate", "0"], "yuv420p", VIDEO,
                  ["-c:v libx264 -crf 18"]),
    "png": Codec("PNG 16-bit", ["--codec", "png ", "--settings", "bitdepth=16"], "rgb48be", RGB,
                 ["-c:v png -compression_level 1 -pred none", "-c:v png -compression_level 1 -pred sub",
                  "-c:v png"], bits=16),
    "rle": Codec("Animation", ["--codec", "rle "], "rgb24", RGB, ["-c:v qtrle -g 1"]),
    "v210": Codec("v210", ["--codec", "v210"], "yuv422p10le", VIDEO, ["-c:v v210"], bits=10),
}


@dataclass
class Run:
    wall: float  # seconds
    cpu: float  # seconds, user and system, all processes


@dataclass
class Side:
    """What was measured of one program for one codec."""

    command: list
    movie: pathlib.Path
    runs: list = field(default_factory=list)
    psnr: float = 0  # dB over all three colour planes
    alpha_psnr: float | None = None
    size: int = 0  # bytes

    def median(self, what):
        return statistics.median(getattr(run, what) for run in self.runs)

    def spread(self):
        """Half the distance from the first to the third quartile, as a part of the median."""
        if len(self.runs) < 3:
            return 0
        low, _, high = statistics.quantiles([run.wall for run in self.runs], n=4)
        return (high - low) / 2 / self.median("wall")


def run_once(command, movie):
    movie.unlink(missing_ok=True)
    begun = time.monotonic()
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE) as process:
        errors = process.stderr.read().decode(errors="replace")
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - begun
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{shlex.join(command)}\nended with {process.returncode}:\n{errors}")
    return Run(wall, usage.ru_utime + usage.ru_stime)


def reading_options(frames):
    curve = ["-apply_trc", "iec61966_2_1"] if frames.suffix == ".exr" else []
    return [*curve, "-framerate", str(RATE), "-i", str(frames)]


def ffmpeg_commands(codec, frames, movie):
    """Every candidate: each encoder behind each way of converting the pictures."""
    filters = [f"format={codec.pixels}"]
    if codec.colour:
        filters = [f"{how.format(**codec.colour)},format={codec.pixels}"
                   for how in (SWSCALE, ZSCALE, f"format=gbrp16,{ZSCALE}")]
    if codec.colour is VIDEO:
        # On the frames, not on the stream: some encoders write what the frames say.
        filters = [f"{chain},setparams=colorspace=bt709:color_primaries=bt709:color_trc=bt709" for chain in filters]
    for encoder in codec.encoders:
        for chain in filters:
            tool = ["ffmpeg", "-nostdin", "-v", "error", "-y", *reading_options(frames), "-vf", chain,
                    *encoder.split(), "-movflags", "+faststart", str(movie)]
            yield ["sh", "-c", f"{shlex.join(tool)} && sync {shlex.quote(str(movie))}"]


def best_ffmpeg(codec, frames, movie, wanted_psnr):
    """The fastest command that comes within half a dB of what corvel reaches; if none does, the best picture."""
    tried = []
    for command in ffmpeg_commands(codec, frames, movie):
        run_once(command, movie)
        wall = min(run_once(command, movie).wall for _ in range(2))
        tried.append((wall, psnr(frames, movie, "colour"), command))
    good = [one for one in tried if one[1] >= wanted_psnr - 0.5]
    return min(good)[2] if good else max(tried, key=lambda one: one[1])[2]


def corvel_command(arguments, codec, frames, movie):
    pattern = str(frames)
    return [arguments.corvel, "render", pattern, "-o", str(movie), "--fps", str(RATE), "--progress", "none",
            *codec.corvel]


def stated_colour(movie):
    """The matrix and range that the movie states, as zscale names them."""
    answer = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-of", "json", "-show_entries",
                             "stream=color_space,color_range,pix_fmt", str(movie)],
                            check=True, capture_output=True, text=True)
    stream = json.loads(answer.stdout)["streams"][0]
    if re.match(r"rgb24|bgr24|0rgb|rgb0|argb|rgba|bgra|abgr", stream["pix_fmt"]):
        # The default scaler makes 16 bits of packed 8 by way of YCbCr, which costs 7 dB.
        return "format=gbrp,zscale=min=gbr:rin=full:m=gbr:r=full"
    if re.match(r"rgb|bgr|gbr", stream["pix_fmt"]):
        return None
    matrix = {"bt709": "709", "bt470bg": "470bg", "smpte170m": "170m"}.get(stream.get("color_space"))
    if matrix is None:
        sys.exit(f"{movie} does not state its matrix")
    full = stream.get("color_range") == "pc" or stream["pix_fmt"].startswith("yuvj")
    return f"zscale=min={matrix}:rin={'full' if full else 'limited'}:m=gbr:r=full"


def psnr(frames, movie, planes):
    """dB between movie and frames; planes is what both are brought to before: colour or alpha."""
    decode = stated_colour(movie)
    if planes == "alpha":
        chains = ["format=gbrap16,extractplanes=a"] * 2
        if decode:
            chains[0] = f"{decode},{chains[0]}"
    else:
        chains = ["format=gbrp16", "format=gbrp16"]
        if decode:
            chains[0] = f"{decode},format=gbrp16"
    # By frame number: neither side's time stamps decide which frames are compared.
    number = f"settb=1/{RATE},setpts=N"
    graph = f"[0:v]{chains[0]},{number}[movie];[1:v]{chains[1]},{number}[frames];[movie][frames]psnr=shortest=1"
    result = subprocess.run(["ffmpeg", "-nostdin", "-v", "info", "-i", str(movie), *reading_options(frames),
                             "-filter_complex", graph, "-f", "null", "-"], capture_output=True, text=True, check=False)
    match = re.search(r"average:(inf|[\d.]+)", result.stderr)
    if result.returncode != 0 or not match:
        sys.exit(f"{movie} could not be compared with {frames}:\n{result.stderr[-2000:]}")
    return float(match.group(1))


def make_frames(arguments, extension, alpha):
    width, height = SIZES[arguments.size]
    folder = arguments.work / "frames" / f"{arguments.size}-{arguments.frames}-{extension}{'-alpha' if alpha else ''}"
    if not (folder / "complete").exists():
        folder.mkdir(parents=True, exist_ok=True)
        print(f"making {arguments.frames} frames in {folder}", file=sys.stderr)
        command = [arguments.work / "MakeSequence", folder, extension, str(width), str(height), str(arguments.frames)]
        subprocess.run([*command, *(["alpha"] if alpha else [])], check=True)
        (folder / "complete").touch()
    return folder / f"frame.%04d.{extension}"


def measure(arguments, codec, frames):
    corvel_movie = arguments.work / "corvel.mov"
    ffmpeg_movie = arguments.work / "ffmpeg.mov"
    corvel = Side(corvel_command(arguments, codec, frames, corvel_movie), corvel_movie)
    run_once(corvel.command, corvel.movie)
    ffmpeg = Side(best_ffmpeg(codec, frames, ffmpeg_movie, psnr(frames, corvel_movie, "colour")), ffmpeg_movie)
    for number in range(arguments.runs):
        for side in (corvel, ffmpeg) if number % 2 == 0 else (ffmpeg, corvel):
            side.runs.append(run_once(side.command, side.movie))
    for side in (corvel, ffmpeg):
        side.size = side.movie.stat().st_size
        side.psnr = psnr(frames, side.movie, "colour")
        if codec.alpha:
            side.alpha_psnr = psnr(frames, side.movie, "alpha")
        side.movie.unlink()
    return corvel, ffmpeg


def remark(corvel, ffmpeg):
    """Why a ratio is not between equals, or nothing."""
    reasons = []
    # Beyond 80 dB only the last of 16 bits differs.
    if corvel.psnr < min(ffmpeg.psnr, 80) - 0.05:
        reasons.append(f"PSNR {ffmpeg.psnr - corvel.psnr:.2f} dB lower")
    if corvel.alpha_psnr is not None and corvel.alpha_psnr < min(ffmpeg.alpha_psnr, 80) - 0.05:
        reasons.append("alpha less exact")
    if corvel.size > 1.05 * ffmpeg.size:
        reasons.append(f"{100 * corvel.size / ffmpeg.size - 100:.0f} % larger")
    return "corvel: " + ", ".join(reasons) if reasons else ""


HEADER = ("codec", "from", "corvel s", "ffmpeg s", "ratio", "CPU s", "CPU s", "PSNR dB", "PSNR dB", "MB", "MB", "")
WIDTHS = (20, 4, 13, 13, 6, 6, 6, 8, 8, 7, 7, 0)


def line(cells):
    return "  ".join(str(cell).ljust(width) if i in (0, 1, 11) else str(cell).rjust(width)
                     for i, (cell, width) in enumerate(zip(cells, WIDTHS))).rstrip()


def table_line(codec, extension, corvel, ffmpeg):
    seconds = [f"{side.median('wall'):.2f} ±{100 * side.spread():4.1f} %" for side in (corvel, ffmpeg)]
    return line((codec.name, extension, *seconds, f"{ffmpeg.median('wall') / corvel.median('wall'):.2f}",
                 *(f"{side.median('cpu'):.2f}" for side in (corvel, ffmpeg)),
                 *(f"{side.psnr:.2f}" for side in (corvel, ffmpeg)),
                 *(f"{side.size / 1e6:.1f}" for side in (corvel, ffmpeg)), remark(corvel, ffmpeg)))


def as_json(side):
    return {"command": side.command, "wall_seconds": [run.wall for run in side.runs],
            "cpu_seconds": [run.cpu for run in side.runs], "median_wall_seconds": side.median("wall"),
            "median_cpu_seconds": side.median("cpu"), "spread": side.spread(), "bytes": side.size,
            "psnr_db": str(side.psnr) if side.psnr == float("inf") else side.psnr,
            "alpha_psnr_db": str(side.alpha_psnr) if side.alpha_psnr == float("inf") else side.alpha_psnr}


def parse_arguments():
    parser = argparse.ArgumentParser(prog="benches/compare.sh", description=__doc__.split("\n")[0])
    parser.add_argument("--codecs", default="mjpa", help=f"'all', or some of {','.join(CODECS)} (default: mjpa)")
    parser.add_argument("--inputs", default="exr", help="some of exr,dpx,png,tif (default: exr)")
    parser.add_argument("--size", choices=SIZES, default="1080p")
    parser.add_argument("--frames", type=int, default=48)
    parser.add_argument("--runs", type=int, default=9, help="timed runs of each side (default: 9)")
    parser.add_argument("--json", type=pathlib.Path, help="where the figures go (default: build/benches/compare.json)")
    parser.add_argument("--work", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--corvel", required=True, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    arguments.codecs = list(CODECS) if arguments.codecs == "all" else arguments.codecs.split(",")
    unknown = [name for name in arguments.codecs if name not in CODECS]
    if unknown:
        parser.error(f"no such codec: {', '.join(unknown)}")
    return arguments


def main():
    arguments = parse_arguments()
    results = []
    print(f"{arguments.frames} frames {arguments.size}, {arguments.runs} runs each, alternated; median and half the "
          f"quartile distance; ratio = ffmpeg / corvel, wall time; of two columns the first is corvel's")
    print(line(HEADER), flush=True)
    for extension in arguments.inputs.split(","):
        for name in arguments.codecs:
            codec = CODECS[name]
            frames = make_frames(arguments, extension, codec.alpha and extension != "dpx")
            corvel, ffmpeg = measure(arguments, codec, frames)
            print(table_line(codec, extension, corvel, ffmpeg), flush=True)
            results.append({"codec": name, "input": extension, "ratio": ffmpeg.median("wall") / corvel.median("wall"),
                            "remark": remark(corvel, ffmpeg), "corvel": as_json(corvel), "ffmpeg": as_json(ffmpeg)})
    target = arguments.json or arguments.work / "compare.json"
    machine = {"cores": os.cpu_count(), "machine": platform.machine(), "system": platform.platform()}
    target.write_text(json.dumps({"frames": arguments.frames, "size": arguments.size, "runs": arguments.runs,
                                  "machine": machine, "results": results}, indent=2) + "\n")
    print(f"figures in {target}", file=sys.stderr)


if __name__ == "__main__":
    main()
