"""A fuzz target as a trial: searches on from the corpus that earlier runs have found."""

import os
import pathlib
import re
import resource
import subprocess

import covered
from findings import Finding

SECONDS = 30
COVERAGE_EVERY = 10  # runs


class Fuzz:
    def __init__(self, target, folder, done):
        self.target = pathlib.Path(target)
        self.name = self.target.name[5:]
        self.corpus = pathlib.Path(folder).resolve() / "corpus" / self.name
        self.found = pathlib.Path(folder).resolve() / "found" / self.name
        self.runs = int(done.get("runs", 0))
        sources = pathlib.Path(__file__).resolve().parents[1] / "fuzz"
        self.seeds = sources / "corpus" / self.name
        # Targets whose names begin alike share their words.
        self.words = sources / "dictionaries" / f"{self.name.partition('_')[0]}.dict"
        # The same program built for coverage; what it counts is left out where it is not built.
        self.counting = self.target.parents[3] / "coverage/tests/fuzz" / self.target.name

    def step(self):
        for folder in (self.corpus, self.found):
            folder.mkdir(parents=True, exist_ok=True)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        dictionary = [f"-dict={self.words}"] if self.words.exists() else []
        result = self.run(f"-max_total_time={SECONDS}", "-max_len=4096", "-print_final_stats=1", "-print_funcs=0",
                          "-close_fd_mask=2", f"-artifact_prefix={self.found}/", *dictionary)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if result.returncode != 0:
            raise Finding(f"{self.name}: see {self.found}: {result.stderr[-1500:]}")
        inputs = re.search(r"number_of_executed_units:\s*(\d+)", result.stderr)
        processor = (after.ru_utime + after.ru_stime) - (before.ru_utime + before.ru_stime)
        self.runs += 1
        coverage = self.coverage() if self.runs % COVERAGE_EVERY == 1 and self.counting.exists() else {}
        return {"runs": 1, "inputs": int(inputs[1]) if inputs else 0, "processor minutes": processor / 60, **coverage}

    def run(self, *options):
        environment = {**os.environ, "CORVEL_FUZZ_CORPUS": str(self.corpus.parents[1])}
        return subprocess.run([self.target, *options, self.corpus, self.seeds], capture_output=True, text=True,
                              errors="replace", check=False, stdin=subprocess.DEVNULL, env=environment)

    def coverage(self):
        work = self.corpus.parents[1] / "coverage" / self.name
        regions = covered.own_regions(self.name, self.counting, [self.corpus, self.seeds], work)
        return {"most regions covered": sum(map(bool, regions.values())), "most regions of its code": len(regions)}
