"""A fuzz target as a trial: searches on from the corpus that earlier runs have found."""

import os
import pathlib
import re
import resource
import subprocess

from findings import Finding, expect

SECONDS = 30
COVERAGE_EVERY = 20  # runs

# The code that a target is about; every edge of it counts, also what the target cannot reach.
CODE = {
    "bundle_plist": ("platform/linux/Bundles",),
    "fields": ("property/FieldEncoding",),
    "movie_reader": ("worker/read/",),
    "movie_scan": ("worker/movie/FragmentScan", "worker/movie/MovieIndex", "worker/movie/StoredMovie",
                   "worker/movie/TimecodeMedia", "worker/movie/AtomReader", "worker/movie/TopLevelAtoms",
                   "worker/movie/SampleTable", "worker/movie/MovieDifferences"),
    "property_list": ("property/",),
    "read_task": ("quicktime/QuickTimeCodecTask", "quicktime/TaskArguments"),
    "requests_read": ("worker/bridge/", "worker/read/"),
    "requests_videooutput": ("worker/bridge/", "worker/output/VideoOutputMode", "worker/output/OutputMode"),
    "requests_write": ("worker/bridge/", "worker/write/WriteMode", "worker/write/OpenMovie",
                       "worker/write/WriterSettings"),
    "settings": ("worker/codec/Settings", "worker/codec/PictureChoice"),
    "timecode_formatter": ("timecode/",),
    "timecode_parser": ("timecode/",),
    "video_output_task": ("quicktime/VideoOutputTask", "quicktime/TaskArguments"),
    "write_task": ("quicktime/QuickTimeCodecTask", "quicktime/TaskArguments"),
}


class Fuzz:
    def __init__(self, target, folder, done):
        self.target = pathlib.Path(target)
        self.name = self.target.name[5:]
        self.corpus = pathlib.Path(folder).resolve() / "corpus" / self.name
        self.found = pathlib.Path(folder).resolve() / "found" / self.name
        self.runs = int(done.get("runs", 0))
        self.seeds = pathlib.Path(__file__).resolve().parents[1] / "fuzz" / "corpus" / self.name

    def step(self):
        for folder in (self.corpus, self.found):
            folder.mkdir(parents=True, exist_ok=True)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        result = self.run(f"-max_total_time={SECONDS}", "-max_len=4096", "-print_final_stats=1", "-print_funcs=0",
                          "-close_fd_mask=2", f"-artifact_prefix={self.found}/")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if result.returncode != 0:
            raise Finding(f"{self.name}: see {self.found}: {result.stderr[-1500:]}")
        inputs = re.search(r"number_of_executed_units:\s*(\d+)", result.stderr)
        processor = (after.ru_utime + after.ru_stime) - (before.ru_utime + before.ru_stime)
        self.runs += 1
        coverage = self.coverage() if self.runs % COVERAGE_EVERY == 1 else {}
        return {"runs": 1, "inputs": int(inputs[1]) if inputs else 0, "processor minutes": processor / 60, **coverage}

    def run(self, *options):
        environment = {**os.environ, "CORVEL_FUZZ_CORPUS": str(self.corpus.parents[1])}
        return subprocess.run([self.target, *options, self.corpus, self.seeds], capture_output=True, text=True,
                              errors="replace", check=False, stdin=subprocess.DEVNULL, env=environment)

    def coverage(self):
        """How much of the code that a target is about is run by what has been found so far."""
        result = self.run("-runs=0", "-print_coverage=1")
        expect(result.returncode == 0, self.name, result.stderr[-1500:])
        covered = edges = 0
        place = r"\S*/build/fuzz/\.\./\.\./(\S+):\d+$"
        pattern = re.compile(r"(?:UN)?COVERED_FUNC: hits: \d+ edges: (\d+)/(\d+) .* " + place)
        for line in result.stderr.splitlines():
            function = pattern.match(line)
            if function and function[3].startswith(CODE[self.name]):
                covered += int(function[1])
                edges += int(function[2])
        expect(edges, self.name, "no code of its own is found")
        return {"most edges covered": covered, "most edges of its code": edges}
