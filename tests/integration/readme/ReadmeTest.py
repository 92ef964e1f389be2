"""Runs the shell examples of the README in order, in a folder of their own, with the bundle's corvel.

Usage: ReadmeTest.py CORVEL
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[3]
BLOCK = re.compile(r"^```sh\n(.*?)^```", re.MULTILINE | re.DOTALL)


def examples():
    for block in BLOCK.findall((ROOT / "README.md").read_text(encoding="utf-8")):
        lines = block.replace("\\\n", " ").splitlines()
        yield from (line for line in lines if line.strip() and not line.startswith("#"))


def run(command, folder):
    result = subprocess.run(command, shell=True, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                            text=True, check=False)
    print(f"{'ok' if result.returncode == 0 else 'FAILED'}: {command}", flush=True)
    if result.returncode != 0:
        print(f"exit code {result.returncode}\n{result.stdout}{result.stderr}")
    return result.returncode == 0


def main():
    corvel = pathlib.Path(sys.argv[1])
    commands = list(examples())
    with tempfile.TemporaryDirectory(prefix="corvel readme ") as name:
        folder = pathlib.Path(name)
        os.symlink(corvel, folder / "corvel")
        os.symlink(ROOT / "examples", folder / "examples")
        succeeded = [run(command, folder) for command in commands]
        left = sorted(path.name for path in folder.iterdir() if path.name.startswith("."))
    if left:
        print(f"left behind: {left}")
    print(f"{sum(succeeded)} of {len(commands)} examples work")
    return 0 if commands and all(succeeded) and not left else 1


if __name__ == "__main__":
    sys.exit(main())
