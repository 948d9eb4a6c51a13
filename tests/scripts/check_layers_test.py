"""Feeds scripts/check_layers.py small trees, each with one breach, and expects its refusal."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts" / "check_layers.py"

# One header for each name that a rule mentions, so that only the rule can refuse it.
HEADERS = """
    core/entry.h core/host.h core/core_integer.h core/integer.h
    curve/entry.h curve/field_element.h curve/curve_domain.h curve/sect163r2.h curve/point.h
    random/random_generator.h random/random_device.h project/open_to_read.h project/project_file.h
    engine/signature_engine.h
    engine/mapped_file.h frontend/request_record.h tools/project_writer.h tests/support/helper.h
""".split()


class CheckLayers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for header in HEADERS:
            self.write(header, "#pragma once\n")

    def write(self, name, text):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def run_script(self):
        return subprocess.run(
            [sys.executable, SCRIPT, self.tree], capture_output=True, text=True, check=False
        )

    def assert_accepted(self):
        result = self.run_script()
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def assert_refused(self, name, message, line=1):
        result = self.run_script()
        self.assertEqual(result.stdout, f"{name}:{line}: {message}\n")
        self.assertEqual((result.returncode, result.stderr), (1, ""))

    def assert_grants(self, name, *, allowed=(), denied=()):
        """`name` may include each header of the one list and none of the other."""
        for header in [*allowed, *denied]:
            shown = f"<{header}>" if header not in HEADERS else f'"{header}"'
            self.write(name, f"#include {shown}\n")
            with self.subTest(file=name, header=header):
                if header in allowed:
                    self.assert_accepted()
                else:
                    folder = name.split("/")[0]
                    self.assert_refused(name, f"{folder}/ may not include {header} here")
        (self.tree / name).unlink()

    def test_accepts_this_tree(self):
        result = subprocess.run([SCRIPT], capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_core_knows_the_standard_library_alone(self):
        self.assert_grants(
            "core/x.cpp",
            allowed=["array", "cstdint", "core/integer.h"],
            denied=["curve/entry.h", "random/random_generator.h", "project/project_file.h",
                    "frontend/request_record.h", "nlohmann/json.hpp", "pthread.h", "unistd.h",
                    "stdint.h", "openssl/sha.h", "tests/support/helper.h"],
        )

    def test_curve_knows_core(self):
        self.assert_grants(
            "curve/x.cpp",
            allowed=["core/integer.h", "core/host.h", "curve/point.h", "memory"],
            denied=["random/random_generator.h", "project/project_file.h",
                    "engine/signature_engine.h", "unistd.h"],
        )

    def test_random_knows_the_host_the_entry_and_threads(self):
        self.assert_grants(
            "random/x.cpp",
            allowed=["core/host.h", "core/entry.h", "pthread.h", "mutex"],
            denied=["core/integer.h", "core/core_integer.h", "curve/entry.h", "unistd.h"],
        )

    def test_project_knows_the_two_entries_and_their_records(self):
        entries = ["core/entry.h", "curve/entry.h", "core/core_integer.h",
                   "curve/field_element.h", "curve/curve_domain.h"]
        self.assert_grants(
            "project/x.cpp",
            allowed=entries,
            denied=["core/integer.h", "core/host.h", "curve/point.h", "curve/sect163r2.h",
                    "engine/signature_engine.h", "fcntl.h", "unistd.h"],
        )
        self.assert_grants(
            "project/project_file_format.cpp",
            allowed=["unistd.h"],
            denied=["fcntl.h", "sys/mman.h", "core/integer.h"],
        )
        self.assert_grants("project/sub/project_file_format.cpp", denied=["unistd.h"])
        self.write("project/open_to_read.cpp",
                   '#include "project/open_to_read.h"\n\n#include <fcntl.h>\n')
        self.assert_accepted()

    def test_engine_knows_project_the_entries_and_the_curve(self):
        self.assert_grants(
            "engine/x.cpp",
            allowed=["project/project_file.h", "core/entry.h", "curve/entry.h",
                     "core/core_integer.h", "curve/curve_domain.h", "curve/sect163r2.h"],
            denied=["core/integer.h", "curve/point.h", "random/random_generator.h",
                    "frontend/request_record.h", "sys/mman.h", "fcntl.h"],
        )
        # Its own header stands first, so the system's are tried behind it.
        for header in ["sys/mman.h", "sys/stat.h", "unistd.h"]:
            self.write("engine/mapped_file.cpp",
                       f'#include "engine/mapped_file.h"\n\n#include <{header}>\n')
            self.assert_accepted()

    def test_frontend_knows_the_engine_and_json(self):
        self.assert_grants(
            "frontend/x.cpp",
            allowed=["engine/signature_engine.h", "nlohmann/json.hpp", "nlohmann/json_fwd.hpp"],
            denied=["engine/mapped_file.h", "project/project_file.h", "core/entry.h",
                    "nlohmann/adl_serializer.hpp", "unistd.h"],
        )
        self.assert_grants(
            "frontend/main.cpp", allowed=["core/entry.h"], denied=["core/host.h", "curve/entry.h"]
        )

    def test_launcher_knows_the_judge_of_the_random_device(self):
        self.assert_grants(
            "launcher/x.cpp",
            allowed=["random/random_device.h"],
            denied=["random/random_generator.h", "core/entry.h", "frontend/request_record.h",
                    "unistd.h"],
        )
        self.assert_grants("launcher/limits.cpp", allowed=["sys/resource.h"],
                           denied=["sys/auxv.h"])

    def test_tools_know_all_folders(self):
        self.assert_grants(
            "tools/x.cpp",
            allowed=["core/integer.h", "curve/point.h", "random/random_generator.h",
                     "project/project_file.h", "engine/mapped_file.h",
                     "frontend/request_record.h", "nlohmann/json.hpp"],
            denied=["tests/support/helper.h", "fcntl.h", "CLI/CLI.hpp"],
        )

    def test_tools_grant_system_headers_to_single_files_of_their_folders(self):
        self.assert_grants("tools/files/whole_file.cpp", allowed=["fcntl.h"], denied=["sys/mman.h"])
        self.assert_grants("tools/whole_file.cpp", allowed=[], denied=["fcntl.h"])

    def test_tests_include_what_they_like(self):
        self.write("tests/unit/core/x_test.cpp",
                   '#include "curve/point.h"\n#include <gtest/gtest.h>\n#include <unistd.h>\n')
        self.assert_accepted()

    def test_refuses_a_folder_without_a_rule(self):
        self.write("util/x.cpp", "")
        self.assert_refused("util/x.cpp", "the folder util/ has no rule in check_layers.py")

    def test_refuses_a_source_outside_of_a_folder(self):
        self.write("x.cpp", "")
        self.assert_refused("x.cpp", "C++ outside of a folder")

    def test_refuses_other_suffixes(self):
        self.write("core/x.hpp", "#pragma once\n")
        self.assert_refused("core/x.hpp", "C++ is written in .h and .cpp files")

    def test_refuses_a_tree_without_sources(self):
        with tempfile.TemporaryDirectory() as empty:
            result = subprocess.run([sys.executable, SCRIPT, empty], capture_output=True,
                                    text=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (1, f"{empty}: no C++ here\n"))

    def test_looks_past_build_and_hidden_folders(self):
        self.write("build/dev/x.cpp", '#include "nothing.h"\n')
        self.write(".cache/x.cpp", '#include "nothing.h"\n')
        self.assert_accepted()

    def test_refuses_a_header_that_does_not_begin_with_pragma_once(self):
        for text in ["", "\n#pragma once\n", "// Words.\n#pragma once\n", "#ifndef X\n"]:
            self.write("core/x.h", text)
            with self.subTest(text=text):
                self.assert_refused("core/x.h", "a header begins with #pragma once")

    def test_refuses_a_source_that_does_not_include_its_header_first(self):
        breaches = {"": 1, "#include <array>\n": 1, '\n#include "core/host.h"\n': 2,
                    '#include <array>\n#include "core/integer.h"\n': 1}
        for text, line in breaches.items():
            self.write("core/integer.cpp", text)
            with self.subTest(text=text):
                self.assert_refused(
                    "core/integer.cpp", "core/integer.h must be included first", line)

    def test_refuses_a_path_that_does_not_start_at_the_root(self):
        self.write("core/x.cpp", '#include <array>\n#include "integer.h"\n')
        self.assert_refused(
            "core/x.cpp", '"integer.h" is no header of this tree, from its root', line=2)

    def test_refuses_a_way_round_through_the_parent_folder(self):
        self.write("core/x.cpp", '#include "core/../curve/point.h"\n')
        self.assert_refused("core/x.cpp", "an include must write its header out")

    def test_refuses_angle_brackets_around_a_header_of_the_tree(self):
        self.write("core/x.cpp", "#include <core/integer.h>\n")
        self.assert_refused(
            "core/x.cpp", "<core/integer.h> is a header of this tree: use quotation marks")

    def test_refuses_a_header_named_by_a_macro(self):
        self.write("core/x.cpp", '#define HEADER "curve/point.h"\n#include HEADER\n')
        self.assert_refused("core/x.cpp", "an include must write its header out", line=2)

    def test_sees_includes_however_they_are_spaced(self):
        for text in ['  #  include   "curve/point.h"  \n', '#include"curve/point.h"\n',
                     '#include "curve/point.h"  // words\n', '#include /* x */ "curve/point.h"\n']:
            self.write("core/x.cpp", text)
            with self.subTest(text=text):
                self.assert_refused("core/x.cpp", "core/ may not include curve/point.h here")

    def test_passes_over_includes_in_comments(self):
        self.write("core/x.cpp", '// #include "curve/point.h"\n/*\n#include "curve/point.h"\n*/\n')
        self.assert_accepted()


if __name__ == "__main__":
    unittest.main()
