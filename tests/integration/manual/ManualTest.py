"""The manual page against the program: everything that its help names is there, and every word that completions offer
is one that the program takes.

Usage: ManualTest.py CORVEL FOLDER CORVEL_MANUAL
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

CORVEL, FOLDER, CORVEL_MANUAL = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1)), sys.argv.pop(1)


def output(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    return result.stdout + result.stderr


def page():
    text = subprocess.run(["man", "--local-file", str(FOLDER / "corvel.1")], capture_output=True, text=True, check=True,
                          env={"PATH": "/usr/bin:/bin", "MANWIDTH": "1000", "LC_ALL": "C.UTF-8"}).stdout
    return re.sub(".\b", "", text)


def commands(*command):
    """The commands of the program, or the subcommands of one."""
    listed = output(CORVEL, *command, "--help").partition("Subcommands:")[2].split("\n\n")[0]
    return re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE)


class Manual(unittest.TestCase):
    def test_names_every_command_and_option_of_the_help(self):
        text = page()
        self.assertGreater(len(commands()), 5)
        for command in commands():
            section = re.search(rf"^   {command}\n(.*?)(?=^   \S|^\S)", text, re.MULTILINE | re.DOTALL)
            self.assertIsNotNone(section, command)
            for typed in [[command], *([command, subcommand] for subcommand in commands(command))]:
                help_text = output(CORVEL, *typed, "--help").split("\nExamples")[0]
                self.assertIn("corvel " + " ".join(typed), section.group(1))
                for option in set(re.findall(r"--(?:\[no-\])?([\w-]+)", help_text)) - {"help"}:
                    self.assertIn(f"--{option}", section.group(1), typed)

    def test_page_has_no_complaint_of_the_formatter(self):
        complaints = subprocess.run(["man", "--warnings", "--local-file", str(FOLDER / "corvel.1")], text=True,
                                    capture_output=True, check=True, env={"PATH": "/usr/bin:/bin"}).stderr
        self.assertEqual(complaints, "")

    def test_words_that_are_completed_are_taken(self):
        rows = re.findall(r"render,(--[\w-]+)\) _corvel_words '([^']+)'", output(CORVEL_MANUAL, "bash"))
        self.assertGreaterEqual(len(rows), 6)
        example = str(pathlib.Path(__file__).parents[3] / "examples/ball/ball.####.exr")
        with tempfile.TemporaryDirectory() as folder:
            # The first word of every option in one run, then the second of each, and so on.
            for turn in range(max(len(words.split()) for _, words in rows)):
                options = [part for option, words in rows for part in (option, words.split()[turn % len(words.split())])]
                result = subprocess.run([CORVEL, "render", example, "-o", f"{folder}/a.mov", "-n", *options],
                                        capture_output=True, text=True, check=False)
                self.assertEqual(result.returncode, 0, f"{options}: {result.stderr}")

    def test_unknown_renderings_are_refused(self):
        self.assertEqual(subprocess.run([CORVEL_MANUAL, "csh"], capture_output=True, check=False).returncode, 2)


if __name__ == "__main__":
    unittest.main()
