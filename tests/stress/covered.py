"""How much of the code that a fuzz target is about is run by what has been found so far.

The targets are built once more for this (preset "coverage": without sanitizers, whose checks are branches that only a
mistake takes). A region is a piece of code that is entered in one place and left at its end; a region that several
builds of the same lines share, for several processors say, is one.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from findings import expect

# The code that a target is about: folders or files and, where a file holds other things too, the names of its
# functions. What begins and ends a process, and what no input decides, is left to the tests of those.
LOOP = {"worker/bridge/RequestLoop.cpp": ("serve", "answerFailure", "currentFailure"),
        "worker/bridge/BridgeEnd.cpp": ("readRequest", "readText", "mapWholeFile", "grow", "writeAnswer", "payload",
                                        "payloadText"),
        "worker/bridge/Request": ()}
CODE = {
    "bundle_plist": {"platform/linux/Bundles.cpp": ("identifierInPlist",)},
    "fields": {"property/FieldEncoding.cpp": ()},
    "movie_reader": {"worker/read/": ()},
    "movie_scan": {f"worker/movie/{name}": () for name in (
        "FragmentScan", "StoredMovie", "MovieDifferences", "AtomReader", "TopLevelAtoms", "Recovery", "OrdinaryMovie",
        "IndexPlacement", "CompactCopy", "IndexCheck")}
    | {"worker/movie/MovieIndex.cpp": ("readVideoTrack",), "worker/movie/TimecodeMedia.cpp": (),
       "worker/movie/MetadataAtoms.cpp": ("readMetadata", "copyMetadataAtoms")},
    "property_list": {"property/PropertyList": (), "property/Property.": (),
                      "property/FieldEncoding.cpp": ("splitFields", "joinFields")},
    "read_task": {"quicktime/QuickTimeCodecTask.cpp": ("QuickTimeCodecReadTask",), "quicktime/TaskArguments": ()},
    "requests_read": LOOP | {f"worker/read/{name}": () for name in (
        "ReadMode", "MovieReader", "FrameStore", "FrameDecoder", "FrameIndex")},
    "requests_videooutput": LOOP | {"worker/output/VideoOutputMode": ()},
    "requests_write": LOOP | {f"worker/write/{name}": () for name in ("WriteMode", "OpenMovie", "WriterSettings")},
    "settings": {"worker/codec/Settings": (), "worker/codec/PictureChoice": ()},
    "sound_file": {"worker/sound/SoundDecoder": (), "worker/sound/ByteOrder": (),
                   "worker/sound/SoundFormat.cpp": ("bytesPerSample", "bytesPerFrame"),
                   "worker/movie/SoundMedia.cpp": ("librarysHeader", "soundIndexTrack", "SoundTrackWriter")},
    "timecode_formatter": {"timecode/Timecode.cpp": ("formatTimecode", "formatFields", "formatFeet",
                                                     "dropFrameNumber", "magnitude", "framesASecond")},
    "timecode_parser": {"timecode/Timecode.cpp": ("parseTimecode", "parseFields", "parseFeet", "separatedFields",
                                                  "packedFields", "readInteger", "totalFrames", "isSeparator",
                                                  "isDigit", "framesASecond", "wrappingDifference")},
    "video_output_task": {"quicktime/VideoOutputTask": (), "quicktime/TaskArguments": ()},
    "write_task": {"quicktime/QuickTimeCodecTask.cpp": ("QuickTimeCodecWriteTask",), "quicktime/TaskArguments": ()},
}
CODE_REGION = 0  # of llvm-cov's kinds; others are macros' places, skipped lines and gaps


def tool(name):
    """Of the version that the project is built with, where that has a name of its own."""
    return shutil.which(f"{name}-14") or name


def regions(target, folders, work):
    """For each region of the target's own code the number of times it was run, by file, function and place.

    `target` is the program built for coverage, `folders` hold its inputs, `work` is a folder for what is between.
    """
    work.mkdir(parents=True, exist_ok=True)
    for old in work.glob("*.prof*"):
        old.unlink()
    for folder in folders:
        environment = {**os.environ, "CORVEL_FUZZ_CORPUS": str(work), "LLVM_PROFILE_FILE": f"{work}/%p.profraw"}
        result = subprocess.run([target, folder, "0"], capture_output=True, text=True, errors="replace", check=False,
                                stdin=subprocess.DEVNULL, env=environment)
        expect(result.returncode == 0, target, folder, result.stderr[-1500:])
    merged = work / "all.profdata"
    subprocess.run([tool("llvm-profdata"), "merge", "-o", merged, *work.glob("*.profraw")], check=True)
    exported = subprocess.run([tool("llvm-cov"), "export", f"-instr-profile={merged}", target], check=True,
                              capture_output=True, text=True)
    functions = json.loads(exported.stdout)["data"][0]["functions"]
    names = subprocess.run(["c++filt"], input="\n".join(function["name"].rpartition(":")[2] for function in functions),
                           capture_output=True, text=True, check=True).stdout.splitlines()
    root = str(target.resolve().parents[4])
    counts = {}
    for function, name in zip(functions, names):
        for *place, count, file, _, kind in function["regions"]:
            # A cache of compiled code may know the sources under another folder, but always from the build's.
            path = function["filenames"][file].rpartition("/../../")[2].removeprefix(f"{root}/")
            if kind == CODE_REGION and not path.startswith("/"):
                key = (path, name, *place)
                counts[key] = max(counts.get(key, 0), count)
    return counts


def is_about(code, path, function):
    # Of code that is compiled once for each instruction set the compiler counts only what no machine runs.
    if "::N_EMU128::" in function:
        return False
    for prefix, names in code.items():
        if path.startswith(prefix):
            return not names or any(re.search(rf"\b{name}\b", function) for name in names)
    return False


def own_regions(name, target, folders, work):
    """Of the code that the target `name` is about: whether a region is run, by file, function and place."""
    counts = {}
    for (path, function, *place), count in regions(target, folders, work).items():
        if is_about(CODE[name], path, function):
            counts[path, *place] = max(counts.get((path, *place), 0), count)
    expect(counts, name, "no code of its own is found")
    return counts


def main():
    """What is not reached of a target's code, as FILE:LINE:COLUMN-LINE:COLUMN."""
    if len(sys.argv) < 3:
        sys.exit("usage: covered.py build/coverage/tests/fuzz/fuzz_NAME FOLDER…")
    target = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as work:
        counts = own_regions(target.name[5:], target, sys.argv[2:], pathlib.Path(work))
    for (path, *place), count in sorted(counts.items()):
        if count == 0:
            print("{}:{}:{}-{}:{}".format(path, *place))
    print(f"{sum(map(bool, counts.values()))} of {len(counts)} regions are reached")


if __name__ == "__main__":
    main()
