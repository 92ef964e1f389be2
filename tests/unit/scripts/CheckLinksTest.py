import unittest

from Tree import ROOT, TreeTest


class CheckLinks(TreeTest):
    def check(self):
        return self.run_command("python3", ROOT / "scripts/check-links.py", self.tree)

    def test_links_to_what_is_there_pass(self):
        self.write("docs/a.md", "# One & two\n[page](b.md), [above](../README.md#first-steps), [web](https://a.b)\n")
        self.write("docs/b.md", "[own](#own-heading)\n\n## Own `heading`\n")
        self.write("README.md", "## First steps\n`docs/a.md` and `build/none.h`\n")
        self.assertEqual(self.check().stdout, "everything that the documents point to is there\n")

    def test_each_fault_is_found(self):
        faults = {
            "[a](none.md)": "none.md is not there",
            "![a](images/none.svg)": "images/none.svg is not there",
            "[a](#none)": "there is no such heading",
            "`worker/codec/None.cpp`": "names worker/codec/None.cpp, which is not there",
        }
        for text, message in faults.items():
            with self.subTest(text):
                self.write("README.md", f"# Title\n{text}\n")
                result = self.check()
                self.assertEqual(result.returncode, 1)
                self.assertIn(message, result.stdout)

    def test_code_blocks_are_not_looked_at(self):
        self.write("README.md", "```\n[a](none.md)\n```\n")
        self.assertEqual(self.check().returncode, 0)


if __name__ == "__main__":
    unittest.main()
