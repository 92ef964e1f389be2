#!/usr/bin/env python3
"""Renders whose host, worker or both are killed with SIGKILL at a random moment.

Whatever was killed and when: every frame that had been handed over more than a second earlier can be read from the file
that is left, its time code too, and `corvel recover` makes an ordinary movie of it that loses none of them. Codecs whose
encoder looks ahead may still hold the last 48 frames.

    KillRenderTest.py --corvel Corvel.app/Contents/MacOS/corvel --walker walk_movie [--rounds 200] [--seed 1] [--at-once 2]
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[3]
FRAME = ROOT / "examples/ball/ball.1001.exr"
LOOK_AHEAD = 48  # frames, of encoders that look ahead
SECOND = 1.0
START = "01:00:00:00"
# Type and whether the encoder looks ahead.
CODECS = [("mjpa", False), ("apch", False), ("rle ", False), ("avc1", True), ("mp4v", True), ("png ", False)]
FRAMES = 4000  # more than any round lasts for


def output_of(command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: {done.stderr.strip()}")
    return done.stdout


class Helper:
    """The worker of one host, found among the processes."""

    def __init__(self, process, bridge):
        self.process, self.bridge = process, bridge

    @staticmethod
    def of(host):
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                parent = int(entry.joinpath("stat").read_text().rsplit(")", 1)[1].split()[1])
                words = entry.joinpath("cmdline").read_bytes().split(b"\0")
            except OSError:
                continue
            if parent == host and words[0] == b"/CorvelQuickTimeHelper-32":
                return Helper(int(entry.name), words[1].decode())
        return None

    def is_alive(self):
        try:
            return self.bridge.encode() in pathlib.Path(f"/proc/{self.process}/cmdline").read_bytes()
        except OSError:
            return False

    def remove_semaphores(self):
        """Nobody is left to do it when both were killed, or the host before the worker had found it."""
        for name in (f"RDY-{self.bridge[3:29]}", f"DN-Y-{self.bridge[3:28]}"):
            pathlib.Path(f"/dev/shm/sem.{name}").unlink(missing_ok=True)


class Render:
    """A running render and when each of its frames was handed over."""

    def __init__(self, corvel, folder, codec, frames):
        self.folder = pathlib.Path(folder)
        self.output = self.folder / "out.mov"
        bridge = self.folder / "bridge"
        bridge.mkdir()
        self.done = []  # moments, one a frame
        self.host = subprocess.Popen(
            [corvel, "render", str(FRAME), "--frames", f"1-{frames}", "-o", str(self.output), "--codec", codec,
             "--timecode", START, "--reel", "A001", "--progress", "json"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
            env=os.environ | {"CORVEL_TEMP_DIR": str(bridge)})
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        for line in self.host.stderr:
            if line.startswith(b'{"event":"frame"'):
                self.done += [time.monotonic()] * (json.loads(line)["done"] - len(self.done))

    def find_helper(self):
        while self.host.poll() is None:
            if found := Helper.of(self.host.pid):
                return found
            time.sleep(0.01)
        return None

    def wait_for_first_frame(self):
        while not self.done and self.host.poll() is None:
            time.sleep(0.01)

    def handed_over_before(self, moment):
        return sum(1 for done in self.done if done <= moment)

    def wait_for_all(self, helper):
        self.host.wait()
        end = time.monotonic() + 20
        while helper and helper.is_alive():
            if time.monotonic() > end:
                raise AssertionError("the worker outlived its host by 20 seconds")
            time.sleep(0.02)
        self.reader.join()

    def movie(self):
        if self.output.exists():
            return self.output
        left = [path for path in self.folder.iterdir() if path.is_file() and not path.name.endswith(".index")]
        return max(left, key=lambda path: path.stat().st_size, default=None)


def frames_of(movie):
    out = output_of(["ffprobe", "-v", "fatal", "-count_frames", "-select_streams", "v", "-show_entries",
                     "stream=nb_read_frames", "-of", "csv=p=0", str(movie)])
    return int(out.strip().strip(",") or 0)


def time_code_of(movie):
    return output_of(["ffprobe", "-v", "fatal", "-select_streams", "d", "-show_entries", "stream_tags=timecode",
                      "-of", "csv=p=0", str(movie)]).strip()


def check(render, arguments, least):
    """How many frames were read."""
    movie = render.movie()
    if least <= 0:
        return 0
    if movie is None:
        raise AssertionError(f"no file is left, {least} frames were expected")
    found = frames_of(movie)
    if found < least:
        raise AssertionError(f"{found} frames can be read, at least {least} were expected")
    if time_code_of(movie) != START:
        raise AssertionError(f"the time code reads {time_code_of(movie) or 'nothing'}")
    recovered = movie.with_name("recovered.mov")
    movie.rename(recovered)
    output_of([arguments.corvel, "recover", str(recovered)])
    output_of([arguments.walker, str(recovered)])
    if (kept := frames_of(recovered)) < least or time_code_of(recovered) != START:
        raise AssertionError(f"{kept} frames after recovery, at least {least} were expected")
    return found


def one_round(number, arguments):
    chance = random.Random(arguments.seed * 100_000 + number)
    codec, looks_ahead = CODECS[number % len(CODECS)]
    whom = ("worker", "host", "both")[number // len(CODECS) % 3]
    # Counted from the first frame, or for every eighth render from when the worker was seen.
    moment = chance.uniform(0.0, 5.0)
    # Every fourth render is so short that it is killed while it ends, or a little later.
    frames = chance.randint(20, 120) if number % 4 == 3 else FRAMES
    with tempfile.TemporaryDirectory(prefix="corvel-kill-") as folder:
        render = Render(arguments.corvel, folder, codec, frames)
        helper = render.find_helper()
        if number % 8 != 7:
            render.wait_for_first_frame()
        time.sleep(moment)
        killed = time.monotonic()
        for victim, process in (("worker", helper and helper.process), ("host", render.host.pid)):
            if whom in (victim, "both") and process and render.host.poll() is None:
                try:
                    os.kill(process, signal.SIGKILL)
                except ProcessLookupError:
                    pass
        if whom == "worker" and not helper:
            render.host.kill()
        render.wait_for_all(helper)
        if helper:
            helper.remove_semaphores()
        least = render.handed_over_before(killed - SECOND) - (LOOK_AHEAD if looks_ahead else 0)
        told = f"{codec} {whom} killed after {moment:.2f} s, {len(render.done)} frames handed over"
        try:
            return least, check(render, arguments, least), ""
        except AssertionError as failure:
            return least, 0, f"round {number}: {told}: {failure}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--corvel", required=True)
    parser.add_argument("--walker", required=True)
    parser.add_argument("--rounds", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--at-once", type=int, default=2)
    arguments = parser.parse_args()
    with concurrent.futures.ThreadPoolExecutor(arguments.at_once) as pool:
        rounds = list(pool.map(lambda number: one_round(number, arguments), range(arguments.rounds)))
    failures = [failure for _, _, failure in rounds if failure]
    promised = sum(max(0, least) for least, _, _ in rounds)
    found = sum(found for least, found, _ in rounds if least > 0)
    print(f"{len(rounds)} kills, {sum(least > 0 for least, _, _ in rounds)} of them with frames older than a second: "
          f"{promised} frames promised, {found} read, {len(failures)} failures")
    for failure in failures:
        print(failure, file=sys.stderr)
    return 1 if failures or promised == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
