import unittest

from Tree import ROOT, TreeTest


class CheckIncludes(TreeTest):
    def check(self):
        return self.run_command("python3", ROOT / "scripts/check-includes.py", self.tree)

    def assert_found(self, text):
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(text, result.stdout)

    def assert_clean(self):
        result = self.check()
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_an_include_of_a_lower_layer_is_allowed(self):
        self.write("processbridge/A.cpp", '#include "platform/B.h"\n#include "filesystem/C.h"\n#include <vector>\n')
        self.assert_clean()

    def test_an_include_of_a_higher_layer_is_found(self):
        self.write("property/A.h", '#pragma once\n#include "quicktime/B.h"\n')
        self.assert_found("property/A.h:2: property must not include quicktime/B.h")

    def test_the_writer_may_not_skip_to_the_bridge(self):
        self.write("writer/A.cpp", '#include "processbridge/Controller.h"\n')
        self.assert_found("writer/A.cpp:1: writer must not include processbridge/Controller.h")

    def test_the_worker_may_not_know_the_host(self):
        self.write("worker/movie/A.cpp", '#include "host/app/B.h"\n#include "Kex/Image/Row.h"\n')
        self.assert_found("worker/movie/A.cpp:1: worker must not include host/app/B.h")
        self.assert_found("worker/movie/A.cpp:2: worker must not include Kex/Image/Row.h")

    def test_an_sdk_header_must_stand_alone_but_a_source_of_it_need_not(self):
        self.write("host/sdk/Kex/Image/A.cpp", '#include "filesystem/B.h"\n')
        self.assert_clean()
        self.write("host/sdk/Kex/Image/A.h", '#include "filesystem/B.h"\n')
        self.assert_found("host/sdk/Kex/Image/A.h:1: filesystem/B.h in a header of the SDK")

    def test_codec_libraries_stay_in_the_worker(self):
        self.write("worker/A.cpp", "#include <libavcodec/avcodec.h>\n#include <SDL2/SDL.h>\n")
        self.assert_clean()
        for header in ("libavcodec/avcodec.h", "libswresample/swresample.h", "SDL2/SDL.h", "SDL.h"):
            with self.subTest(header):
                self.write("host/app/A.cpp", f"#include <{header}>\n")
                self.assert_found(f"host/app/A.cpp:1: {header} is of a")

    def test_image_libraries_stay_in_the_host(self):
        self.write("host/app/A.cpp", "#include <OpenImageIO/imageio.h>\n#include <OpenColorIO/OpenColorIO.h>\n")
        self.assert_clean()
        self.write("writer/A.cpp", "#include <OpenImageIO/imageio.h>\n")
        self.assert_found("writer/A.cpp:1: OpenImageIO/imageio.h is of a image library")

    def test_windows_stay_in_their_folders(self):
        includes = '#include <QWidget>\n#include <QtWidgets/QLabel>\n#include "desktop/Appearance.h"\n'
        self.write("worker/dialog/A.cpp", includes)
        self.write("host/panel/A.cpp", includes)
        self.write("desktop/A.cpp", includes)
        self.assert_clean()
        self.write("host/app/A.cpp", includes)
        self.write("worker/write/A.cpp", '#include "quicktime/QuickTimeCodecTask.h"\n' + includes)
        self.assert_found("host/app/A.cpp:1: QWidget is for windows")
        self.assert_found("host/app/A.cpp:2: QtWidgets/QLabel is for windows")
        self.assert_found("host/app/A.cpp:3: desktop/Appearance.h is for windows")
        self.assert_found("worker/write/A.cpp:2: QWidget is for windows")

    def test_one_line_may_differ_by_system(self):
        self.write("host/app/A.cpp", "#ifdef __APPLE__\nopenMac();\n#else\nopenLinux();\n#endif\nint a;\nint b;\n")
        self.assert_clean()

    def test_more_than_one_line_by_system_is_found_outside_platform(self):
        text = "#if defined(__linux__)\n// why\na();\nb();\n#endif\n"
        self.write("platform/A.cpp", text)
        self.assert_clean()
        self.write("filesystem/A.cpp", text)
        self.assert_found("filesystem/A.cpp:1: more than one line that depends on the operating system")

    def test_the_other_branch_counts_too(self):
        self.write("filesystem/A.cpp", "#ifdef __APPLE__\na();\n#else\nb();\nc();\n#endif\n")
        self.assert_found("filesystem/A.cpp:3: more than one line")

    def test_conditionals_on_anything_else_are_free(self):
        self.write("filesystem/A.cpp", "#ifdef NDEBUG\na();\nb();\nc();\n#endif\n")
        self.assert_clean()


if __name__ == "__main__":
    unittest.main()
