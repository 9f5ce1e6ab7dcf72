"""Runs each source check on small trees that break its rule, and on one that keeps it."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOLS = pathlib.Path(sys.argv.pop())


def run(check, files, *options):
    with tempfile.TemporaryDirectory() as top:
        for name, text in files.items():
            path = pathlib.Path(top, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return subprocess.run([TOOLS / check, *options, top], capture_output=True, text=True, check=False)


class Arrows(unittest.TestCase):
    def result(self, files, *options):
        return run("check-arrows", {"VelmoraCore/Empty.h": "", **files}, *options)

    def broken(self, name, include):
        result = self.result({name: f"#pragma once\n#include <{include}>\n"})
        self.assertEqual(result.returncode, 1, name)
        self.assertIn(f"{name}:2:", result.stderr)

    def kept(self, files):
        result = self.result(files)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_an_engine_that_includes_qt_is_reported(self):
        self.broken("VelmoraCore/LinkCleaner.cpp", "QString")

    def test_an_interface_that_includes_the_engine_is_reported(self):
        self.broken("VelmoraPlatform/Pasteboard.h", "VelmoraCore/LinkCleaner.h")

    def test_an_application_that_includes_a_back_end_is_reported(self):
        self.broken("VelmoraMac/AppState.cpp", "VelmoraLinux/Clipboard/X11Pasteboard.h")

    def test_a_back_end_that_includes_the_application_is_reported(self):
        self.broken("VelmoraLinux/Clipboard/X11Pasteboard.cpp", "VelmoraMac/AppState.h")

    def test_the_composition_root_may_name_both(self):
        self.kept({"VelmoraLinux/main.cpp": "#include <VelmoraMac/AppState.h>\n"})

    def test_state_that_includes_the_screens_is_reported(self):
        self.broken("VelmoraMac/AppState.h", "QQuickWindow")
        self.broken("VelmoraMac/State/IgnoredDomains.cpp", "QGuiApplication")

    def test_state_that_includes_a_controller_is_reported(self):
        self.broken("VelmoraMac/State/CleaningResult.h", "VelmoraMac/StatusBarController.h")

    def test_style_that_includes_state_is_reported(self):
        for folder in ("StyleKit", "Drawing", "Motion", "Controls"):
            self.broken(f"VelmoraMac/{folder}/Any.cpp", "VelmoraMac/AppState.h")
            self.broken(f"VelmoraMac/{folder}/Any.cpp", "VelmoraMac/State/CleaningResult.h")

    def test_a_controller_that_includes_a_view_is_reported(self):
        self.broken("VelmoraMac/StatusBarController.cpp", "VelmoraMac/QuickViews/QuickPanel.h")

    def test_a_folder_without_a_layer_is_reported(self):
        self.broken("VelmoraMac/Elsewhere/Any.h", "QString")

    def test_includes_that_follow_the_layers_are_fine(self):
        self.kept({"VelmoraMac/StatusBarController.h": "#include \"AppState.h\"\n#include <VelmoraMac/Shell/Panel.h>\n",
                   "VelmoraMac/StyleKit/Surroundings.h": "#include <VelmoraMac/State/AppTypes.h>\n",
                   "VelmoraMac/QuickViews/QuickPanel.h": "#include <QQuickView>\n#include <VelmoraMac/Shell/Panel.h>\n",
                   "VelmoraMac/AppState.h": "", "VelmoraMac/Shell/Panel.h": "", "VelmoraMac/State/AppTypes.h": ""})

    def test_style_in_qml_that_names_state_or_another_view_is_reported(self):
        for line in ("required property AppState appState", "PopoverHeader { }", "required property cleaningResult result"):
            result = self.result({"VelmoraMac/StyleKit/StatTile.qml": f"Item {{\n    {line}\n}}\n",
                                  "VelmoraMac/Popover/PopoverHeader.qml": "Item { }\n"})
            self.assertEqual(result.returncode, 1, line)
            self.assertIn("VelmoraMac/StyleKit/StatTile.qml:2:", result.stderr)

    def test_views_in_qml_may_name_state_and_style(self):
        self.kept({"VelmoraMac/StyleKit/StatTile.qml": "FocusRing { } // Not of an AppState.\n",
                   "VelmoraMac/Controls/FocusRing.qml": "Item { }\n",
                   "VelmoraMac/Popover/PopoverStats.qml": "StatTile { required property AppState appState }\n"})

    def test_folders_that_include_each_other_are_reported_with_their_includes(self):
        result = self.result({"VelmoraLinux/Login/A.h": "#include <VelmoraLinux/Updates/B.h>\n",
                              "VelmoraLinux/Updates/B.h": "#include \"C.h\"\n",
                              "VelmoraLinux/Updates/C.h": "#include <VelmoraLinux/Process/D.h>\n",
                              "VelmoraLinux/Process/D.h": "#include <VelmoraLinux/Login/A.h>\n"})
        self.assertEqual(result.returncode, 1)
        for source in ("Login/A.h:1", "Updates/C.h:1", "Process/D.h:1"):
            self.assertIn(f"VelmoraLinux/{source}: the circle ", result.stderr)
        self.assertNotIn("Updates/B.h:1", result.stderr)

    def test_the_graph_names_the_lowest_folder_first(self):
        result = self.result({"VelmoraLinux/Login/A.h": "#include <VelmoraLinux/Process/D.h>\n#include <QString>\n",
                              "VelmoraLinux/Process/D.h": ""}, "--graph")
        self.assertEqual(result.stdout, "VelmoraLinux/Process\n"
                                        "VelmoraLinux/Login -> VelmoraLinux/Process\n")

    def test_a_folder_that_is_not_the_project_is_refused(self):
        self.assertEqual(run("check-arrows", {"README.md": ""}).returncode, 1)


class TestsListed(unittest.TestCase):
    def test_a_test_that_nothing_builds_is_reported(self):
        result = run("check-tests-listed", {"Tests/A/CMakeLists.txt": "velmora_tests(Tests unit\n  OneTests\n)\n",
                                            "Tests/A/OneTests.cpp": "", "Tests/A/TwoTests.cpp": ""})
        self.assertEqual(result.returncode, 1)
        self.assertIn("Tests/A/TwoTests.cpp", result.stderr)
        self.assertNotIn("OneTests.cpp", result.stderr)


class QmlPackages(unittest.TestCase):
    def result(self, installed):
        return run("check-qml-packages", {"VelmoraMac/AView.qml": "import QtQuick\nimport QtQuick.Layouts as L\n",
                                          "Packaging/Deb.cmake": f'"qml6-module-qtquick, {installed}"\n',
                                          "Packaging/debian-packages.txt":
                                          "qml6-module-qtquick\nqml6-module-qtquick-layouts\n"})

    def test_a_module_that_the_package_does_not_ask_for_is_reported(self):
        result = self.result("ca-certificates")
        self.assertEqual(result.returncode, 1)
        self.assertIn("VelmoraMac/AView.qml:2: Packaging/Deb.cmake", result.stderr)

    def test_modules_that_are_asked_for_are_fine(self):
        self.assertEqual(self.result("qml6-module-qtquick-layouts").returncode, 0)


class Texts(unittest.TestCase):
    def result(self, body):
        return run("check-texts", {"VelmoraMac/AView.qml": "Item {\n" + body + "\n}\n"})

    def broken(self, body):
        result = self.result(body)
        self.assertEqual(result.returncode, 1, body)
        self.assertIn("VelmoraMac/AView.qml", result.stderr)

    def test_a_text_in_one_language_is_reported(self):
        self.broken('Text { }\n    text: "Hello"')

    def test_a_text_of_a_condition_is_reported(self):
        self.broken('    text: on ? root.t("On", "An")\n             : "Off"')

    def test_a_spoken_name_in_one_language_is_reported(self):
        self.broken('    Accessible.name: "Press me"')

    def test_half_a_pair_is_reported(self):
        self.broken('    text: root.t("Hello", "")')

    def test_a_control_without_a_name_is_reported(self):
        self.broken('    T.Button {\n        Accessible.onPressAction: clicked()\n    }')

    def test_a_control_that_cannot_be_pressed_by_assistive_tools_is_reported(self):
        self.broken('    T.Button {\n        Accessible.name: root.name\n    }')

    def test_pairs_names_and_signs_pass(self):
        result = self.result('    text: root.t("Hello", "Hallo")\n    title: "Velmora"\n    label: root.label\n'
                             '    value: "\\u2713"\n    objectName: "anything"')
        self.assertEqual((result.returncode, result.stderr), (0, ""))


class Budgets(unittest.TestCase):
    @staticmethod
    def function(lines):
        return "int grown()\n{\n" + "    work();\n" * lines + "}\n"

    def broken(self, files, expected):
        result = run("check-budgets", files)
        self.assertEqual(result.returncode, 1, expected)
        self.assertIn(expected, result.stderr)

    def test_a_long_function_is_reported(self):
        self.broken({"VelmoraCore/Grown.cpp": "int a;\n\n" + self.function(41)}, "VelmoraCore/Grown.cpp:3: ")

    def test_a_long_member_is_reported(self):
        member = "".join("    " + line + "\n" for line in self.function(41).splitlines())
        self.broken({"VelmoraMac/Grown.h": "class Grown {\npublic:\n" + member + "};\n"}, "VelmoraMac/Grown.h:3: ")

    def test_a_long_function_of_python_is_reported(self):
        text = "#!/usr/bin/env python3\ndef grown():\n" + "    work()\n" * 41
        self.broken({"Tools/dev/grown": text}, "Tools/dev/grown:2: ")

    def test_a_long_file_is_reported(self):
        self.broken({"Tests/Grown.cpp": "int a;\n" * 451}, "Tests/Grown.cpp:1: 451 lines")

    def test_a_long_view_is_reported(self):
        self.broken({"VelmoraMac/Grown.qml": "Item { }\n" * 251}, "VelmoraMac/Grown.qml:1: 251 lines")

    def test_rows_of_a_test_may_be_many(self):
        rows = self.function(60).replace("grown()", "grown_data()")
        self.assertEqual(run("check-budgets", {"Tests/Rows.cpp": rows}).returncode, 0)

    def test_an_exception_that_is_no_longer_needed_is_reported(self):
        self.broken({"VelmoraCore/Detection/LinkPropertyTables.cpp": "int a;\n"}, "no longer needed")
        self.broken({"Tests/VelmoraCoreTests/FastPathTests.cpp": self.function(3)}, "no longer needed")

    def test_what_is_just_within_its_budget_passes(self):
        files = {"VelmoraCore/Full.cpp": self.function(40) + "int a;\n" * 407, "VelmoraMac/Full.qml": "Item { }\n" * 250}
        result = run("check-budgets", files)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_folder_without_sources_is_refused(self):
        self.assertEqual(run("check-budgets", {"README.md": ""}).returncode, 1)


class Headers(unittest.TestCase):
    def result(self, files):
        with tempfile.TemporaryDirectory() as top:
            place = pathlib.Path(top)
            for name, text in {"VelmoraCore/Other.cpp": "int a;\n", **files}.items():
                (place / name).parent.mkdir(parents=True, exist_ok=True)
                (place / name).write_text(text, encoding="utf-8")
            (place / "build").mkdir()
            entries = [{"directory": top, "file": f"{top}/{name}",
                        "command": f"/usr/bin/ccache g++ -std=c++20 -I{top} {library} -o other.o -c {name}"}
                       for name, library in (("VelmoraCore/Other.cpp", ""), ("VelmoraMac/Any.cpp", f"-isystem {top}/library"))]
            (place / "build/compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")
            return subprocess.run([TOOLS / "check-headers", place / "build", top], capture_output=True, text=True, check=False)

    def test_a_header_that_needs_another_before_it_is_reported(self):
        result = self.result({"VelmoraCore/Name.h": "#pragma once\nstd::string name();\n"})
        self.assertEqual(result.returncode, 1)
        self.assertIn("VelmoraCore/Name.h:2", result.stderr)

    def test_a_header_that_its_own_source_includes_late_is_reported(self):
        result = self.result({"VelmoraCore/Name.h": "#pragma once\nstd::string name();\n",
                              "VelmoraCore/Name.cpp": "#include <string>\n#include <VelmoraCore/Name.h>\n"})
        self.assertEqual(result.returncode, 1)

    def test_a_module_without_sources_is_compiled_as_what_uses_it(self):
        result = self.result({"VelmoraPlatform/Any.h": "#pragma once\n#include <Library>\n", "library/Library": ""})
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_header_that_includes_what_it_uses_passes(self):
        result = self.result({"VelmoraCore/Name.h": "#pragma once\n#include <string>\nstd::string name();\n"})
        self.assertEqual((result.returncode, result.stderr), (0, ""))


class DebianChangelog(unittest.TestCase):
    def result(self, text, version="2.0"):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "CHANGELOG.md")
            path.write_text(text, encoding="utf-8")
            return subprocess.run([TOOLS.parent / "release/debian-changelog", path, version], capture_output=True, text=True,
                                  check=False)

    def test_each_version_becomes_an_entry(self):
        result = self.result("# Changes\n\n## 2.0, 2026-11-21\n\n- One\n  more.\n- `Two`.\n\n## 1.0, 2026-01-02\n\n- Old.\n")
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout,
                         "velmora (2.0) unstable; urgency=medium\n\n  * One more.\n  * Two.\n\n"
                         " -- The Velmora developers <packages@velmora.app>  Sat, 21 Nov 2026 12:00:00 +0000\n\n"
                         "velmora (1.0) unstable; urgency=medium\n\n  * Old.\n\n"
                         " -- The Velmora developers <packages@velmora.app>  Fri, 02 Jan 2026 12:00:00 +0000\n")

    def refused(self, text, why):
        result = self.result(text)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn(why, result.stderr)

    def test_a_version_without_an_entry_is_refused(self):
        self.refused("## 1.0, 2026-01-02\n\n- Old.\n", "the newest entry is not about 2.0")

    def test_a_version_that_changes_nothing_is_refused(self):
        self.refused("## 2.0, 2026-01-02\n", "2.0 changes nothing")

    def test_a_heading_without_a_date_is_refused(self):
        self.refused("# Changes\n## 2.0\n\n- New.\n", "CHANGELOG.md:2: ")

    def test_text_outside_a_list_is_refused(self):
        self.refused("## 2.0, 2026-01-02\n\nNew.\n", "CHANGELOG.md:3: ")


if __name__ == "__main__":
    unittest.main()
