import unittest

from Tree import ROOT, TreeTest


class CheckWords(TreeTest):
    def setUp(self):
        super().setUp()
        self.run_command("git", "init", "-q")

    def check(self):
        return self.run_command(ROOT / "scripts/check-words.sh", self.tree)

    def test_a_clean_tree_passes(self):
        self.write("a.cpp", "int main() {\n    assert(a == b && c != d && e <= f);\n}\n")
        self.assertEqual(self.check().returncode, 0)

    def test_each_fault_is_found_and_named(self):
        faults = {
            "unfinished work": "// TO" + "DO later\n",
            "work done inside assert": "assert(++count);\n",
            "names of a whole namespace": "using namespace std;\n",
            "older of our compilers": "#include <ranges>\n",
            "unsafe calls": "strcpy(a, b);\n",
            "folders of one machine": 'open("/ho' + 'me/me/a.mov");\n',
            "marks of a merge": "<<<<<<< HEAD\n",
            "blanks at the end": "int a; \n",
            "tabs": "\tint a;\n",
        }
        for name, text in faults.items():
            with self.subTest(name):
                self.write("a.cpp", text)
                result = self.check()
                self.assertEqual(result.returncode, 1)
                self.assertIn(name, result.stdout)
                self.assertIn("a.cpp:1:", result.stdout)

    def test_an_assignment_inside_assert_is_found(self):
        self.write("a.cpp", "assert((a = next()) > 0);\n")
        self.assertIn("work done inside assert", self.check().stdout)


if __name__ == "__main__":
    unittest.main()
