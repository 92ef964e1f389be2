"""scripts/prepare.sh with stand-ins for apt-get, dpkg-query, cmake and ninja that record how they are called."""

import os
import unittest

from Tree import ROOT, TreeTest

RECORDER = """#!/usr/bin/env bash
printf '%s %s\\n' "${0##*/}" "$*" >>"$RECORD"
"""


class Prepare(TreeTest):
    def setUp(self):
        super().setUp()
        self.record = self.tree.parent / "record"
        self.tools = self.tree.parent / "tools"
        self.stand_in("apt-get", RECORDER)
        self.stand_in("cmake", RECORDER + """
mkdir -p build/release && touch build/release/build.ninja
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >build/release/CMakeCache.txt
""")
        self.stand_in("ninja", RECORDER)
        self.installed("alpha", "beta")
        self.write("packages.txt", "# a comment\nalpha\nbeta  # another\n\n")
        for folder in ("cmake", "desktop", "filesystem", "host", "platform", "processbridge", "property", "quicktime",
                       "timecode", "worker", "writer"):
            self.write(f"{folder}/CMakeLists.txt", "")
        self.write("CMakeLists.txt", "")
        self.write("CMakePresets.json", "")
        self.program = self.write("program", f"""#!/usr/bin/env bash
set -uo pipefail
root=$(cd "$(dirname "$0")" && pwd -P)
program=program
source '{ROOT}/scripts/prepare.sh'
installPackages "$root/packages.txt"
build .built bundleTargets bundleSources
echo ran "$@"
""", 0o755)

    def stand_in(self, name, text):
        self.write(f"../tools/{name}", text, 0o755)

    def installed(self, *names):
        lines = "".join(f"echo installed {name}\n" for name in names)
        self.stand_in("dpkg-query", RECORDER + lines)

    def run_program(self, *arguments):
        if self.record.exists():
            self.record.unlink()
        result = self.run_command(self.program, *arguments, path_first=self.tools, cwd="/",
                                  env={"RECORD": str(self.record), "CORVEL_CMAKE_ARGUMENTS": ""})
        self.calls = self.record.read_text().splitlines() if self.record.exists() else []
        return result

    def called(self, word):
        return [call for call in self.calls if call.startswith(word)]

    def age_everything(self):
        """Makes every source older than any stamp, as after a night."""
        for folder, _, files in os.walk(self.tree):
            if "build" not in folder.split("/"):
                for path in [folder, *(os.path.join(folder, name) for name in files)]:
                    os.utime(path, (1_000_000_000, 1_000_000_000))

    def test_the_first_run_configures_builds_and_passes_the_arguments_on(self):
        result = self.run_program("a b", "c")

        self.assertEqual(result.stdout, "ran a b c\n")
        self.assertEqual(result.stderr, "program: configuring\nprogram: building\n")
        self.assertEqual(self.called("apt-get"), [])

    def test_nothing_is_called_when_nothing_changed(self):
        self.age_everything()
        self.run_program()

        result = self.run_program()

        self.assertEqual((result.stdout, result.stderr, self.calls), ("ran\n", "", []))

    def test_a_new_file_is_built(self):
        self.age_everything()
        self.run_program()
        self.write("writer/New.cpp", "")

        result = self.run_program()

        self.assertEqual(result.stderr, "program: building\n")

    def test_a_failed_build_shows_the_end_of_its_log_and_is_tried_again(self):
        self.stand_in("ninja", RECORDER + "echo 'a.cpp:1: error: no'\nexit 1\n")

        first = self.run_program()
        second = self.run_program()

        for result in (first, second):
            self.assertEqual(result.returncode, 1)
            self.assertIn("a.cpp:1: error: no", result.stderr)
            self.assertEqual(result.stdout, "")

    def test_missing_packages_are_installed_together(self):
        if os.geteuid() != 0:
            self.skipTest("asks sudo unless it is root")
        self.installed("beta")

        result = self.run_program()

        self.assertIn("program: installing 1 system packages: alpha", result.stderr)
        self.assertEqual(len(self.called("apt-get")), 1)
        self.assertTrue(self.called("apt-get")[0].endswith("install alpha"))

    def test_package_lists_are_fetched_only_when_installing_fails(self):
        if os.geteuid() != 0:
            self.skipTest("asks sudo unless it is root")
        self.installed()
        self.stand_in("apt-get", RECORDER + """
[[ $* == *install* && ! -e $RECORD.updated ]] && { echo 'E: Unable to locate package alpha'; exit 100; }
[[ $* == *update* ]] && touch "$RECORD.updated"
exit 0
""")

        result = self.run_program()

        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([call.split()[-1] for call in self.called("apt-get")], ["beta", "update", "beta"])

    def test_an_installation_that_fails_twice_says_what_apt_said(self):
        if os.geteuid() != 0:
            self.skipTest("asks sudo unless it is root")
        self.installed()
        self.stand_in("apt-get", RECORDER + "echo 'E: no network'\nexit 100\n")

        result = self.run_program()

        self.assertEqual(result.returncode, 1)
        self.assertIn("E: no network", result.stderr)
        self.assertEqual(self.called("cmake"), [])

    def test_a_moved_folder_is_configured_afresh(self):
        self.age_everything()
        self.run_program()
        (self.tree / "build/release/CMakeCache.txt").write_text("CMAKE_HOME_DIRECTORY:INTERNAL=/elsewhere\n")
        (self.tree / "build/release/.built").write_text("/elsewhere")

        self.run_program()

        self.assertEqual(self.called("cmake"), ["cmake --preset release --fresh"])


if __name__ == "__main__":
    unittest.main()
