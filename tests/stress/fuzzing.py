"""A fuzz target as a trial: searches on from the corpus that earlier runs have found."""

import os
import pathlib
import re
import resource
import subprocess

from trials import Finding

SECONDS = 30


class Fuzz:
    def __init__(self, target, folder):
        self.target = pathlib.Path(target)
        self.name = self.target.name[5:]
        self.corpus = pathlib.Path(folder).resolve() / "corpus" / self.name
        self.found = pathlib.Path(folder).resolve() / "found" / self.name
        self.seeds = pathlib.Path(__file__).resolve().parents[1] / "fuzz" / "corpus" / self.name

    def step(self):
        for folder in (self.corpus, self.found):
            folder.mkdir(parents=True, exist_ok=True)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        command = [self.target, f"-max_total_time={SECONDS}", "-max_len=4096", "-print_final_stats=1", "-print_funcs=0", "-close_fd_mask=2",
                   f"-artifact_prefix={self.found}/", self.corpus, self.seeds]
        environment = {**os.environ, "CORVEL_FUZZ_CORPUS": str(self.corpus.parents[1])}
        result = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False,
                                stdin=subprocess.DEVNULL, env=environment)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if result.returncode != 0:
            raise Finding(f"{self.name}: see {self.found}: {result.stderr[-1500:]}")
        runs = re.search(r"number_of_executed_units:\s*(\d+)", result.stderr)
        edges = re.findall(r"cov: (\d+)", result.stderr)
        processor = (after.ru_utime + after.ru_stime) - (before.ru_utime + before.ru_stime)
        return {"inputs": int(runs[1]) if runs else 0, "processor minutes": processor / 60,
                "most edges covered": int(edges[-1]) if edges else 0}
