"""The house rules that a program can check, so that people need not."""

import ast
import pathlib
import re
import subprocess
import unittest

from router_sandbox import BUILD, PROJECT
from tracked_files import tracked_files

SOURCE = PROJECT / "src"
CODE = (".h", ".cpp")
TEXT = (*CODE, ".c", ".md", ".py", ".sh", ".txt", ".cmake", ".json", ".profile", ".8", ".1", "")

# A folder may include from itself and from these.
ARROWS = {
    "support": set(),
    "state": {"support"},
    "modem": {"support", "state"},
    "status": {"support", "state", "modem"},
    "connection": {"support", "state", "modem"},
    "sms": {"support", "state", "modem"},
    "core": {"support", "state", "modem", "status", "connection", "sms"},
}
# The same within the simulated modem.
SIMULATOR_ARROWS = {
    "modem": set(),
    "control": {"modem"},
    "program": {"modem", "control"},
}
# Rooms whose test has another name than they have.
TESTED_ELSEWHERE = {
    "core/main_loop.cpp": ["scenarios/core/schedule_test.cpp"],
    "status/identity_rules.cpp": ["unit/status/identity_test.cpp"],
}
# Work left open, and words about papers that a reader of this tree does not have.
FORBIDDEN = re.compile(r"\bspec(?:ification)?s?\b|\bpart [0-9]\.[0-9]|\bissue #?[0-9]+"
                       r"|\b(?:TO-?DO|FIX-?ME|X{3}|HAC[K])\b", re.IGNORECASE)
# A test as the documents name it; `Suite.*` stands for all of a suite.
NAMED_TEST = re.compile(r"`([A-Z]\w+\.(?:[A-Z]\w*|test_\w+|\*))`")
# The definition of a variable with the prefix of the globals, wherever in a file it stands.
DEFINED_GLOBAL = re.compile(r"^\s*(?!return\b)(?:[\w:<>]+[\s*&]+)+(g_\w+)(?:\[.*\])?(?: = .*|\{.*)?;$",
                            re.MULTILINE)
LIBRARIES = {"libc.so.6", "libstdc++.so.6", "libm.so.6", "libgcc_s.so.1"}
SANITIZERS = {"libasan.so.8", "libubsan.so.1"}


def code_files(folder):
    return sorted(p for p in folder.rglob("*") if p.suffix in CODE)


def text_files():
    """Every text file that belongs to the project."""
    return [PROJECT / n for n in tracked_files() if pathlib.Path(n).suffix in TEXT]


def includes(path):
    return re.findall(r'^\s*#include "([^"]+)"', path.read_text(), re.MULTILINE)


def cases_below(folder):
    """Suite.Case of every test of GoogleTest and of unittest below the folder."""
    names = set()
    for path in code_files(folder):
        found = re.findall(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", path.read_text(), re.MULTILINE)
        names |= {f"{suite}.{case}" for suite, case in found}
    for path in folder.rglob("test_*.py"):
        for story in (n for n in ast.parse(path.read_text()).body if isinstance(n, ast.ClassDef)):
            names |= {f"{story.name}.{f.name}" for f in story.body
                      if isinstance(f, ast.FunctionDef) and f.name.startswith("test_")}
    return names


def hazards():
    """The entries of docs/hazards.md: their titles and their texts."""
    entries = (PROJECT / "docs" / "hazards.md").read_text().split("\n### ")[1:]
    return {title: text for title, text in (entry.split("\n", 1) for entry in entries)}


class Includes(unittest.TestCase):
    def test_arrows_point_the_right_way(self):
        wrong = []
        for path in code_files(SOURCE):
            folder = path.relative_to(SOURCE).parts[0]
            for header in includes(path):
                target = header.split("/")[0]
                if target != folder and target not in ARROWS[folder]:
                    wrong.append(f"{path.relative_to(PROJECT)} includes {header}")
        self.assertEqual(wrong, [])

    def test_arrows_in_the_simulated_modem_point_the_right_way(self):
        simulator = PROJECT / "gear" / "sim"
        rooms = {path.relative_to(simulator).parts[0] for path in code_files(simulator)}
        self.assertEqual(rooms, set(SIMULATOR_ARROWS))
        wrong = []
        for path in code_files(simulator):
            room = path.relative_to(simulator).parts[0]
            for header in (h for h in includes(path) if h.startswith("sim/")):
                if header.split("/")[1] not in {room, *SIMULATOR_ARROWS[room]}:
                    wrong.append(f"{path.relative_to(PROJECT)} includes {header}")
        self.assertEqual(wrong, [])

    def test_gear_includes_nothing_of_the_tests(self):
        gear = PROJECT / "gear"
        wrong = []
        for path in code_files(gear):
            homes = [SOURCE, PROJECT / "tools", gear, path.parent, path.parent.parent]
            wrong += [f"{path.relative_to(PROJECT)} includes {header}" for header in includes(path)
                      if not any((home / header).is_file() for home in homes)]
        self.assertEqual(wrong, [])

    def test_an_include_names_a_file_that_exists(self):
        wrong = [f"{p.relative_to(PROJECT)}: {h}" for p in code_files(SOURCE)
                 for h in includes(p) if not (SOURCE / h).is_file()]
        self.assertEqual(wrong, [])

    def test_tools_share_the_texts_and_the_names_with_the_daemon_and_nothing_else(self):
        wrong = [f"{p.relative_to(PROJECT)} includes {h}"
                 for p in code_files(PROJECT / "tools" / "modemctl") for h in includes(p)
                 if not h.startswith(("modemctl/", "support/"))
                 and h not in ("state/cards.h", "state/published.h")]
        self.assertEqual(wrong, [])

    def test_no_circles(self):
        graph = {str(p.relative_to(SOURCE)): includes(p) for p in code_files(SOURCE)}
        done, path = set(), []

        def visit(name):
            self.assertNotIn(name, path, "a circle of includes: " + " -> ".join(path))
            if name in done:
                return
            path.append(name)
            for header in graph.get(name, []):
                visit(header)
            path.pop()
            done.add(name)

        for name in graph:
            visit(name)


class Files(unittest.TestCase):
    def test_lines_fit_100_columns(self):
        wrong = []
        folders = ("src", "tools", "gear", "tests")
        for path in (p for folder in folders for p in code_files(PROJECT / folder)):
            for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
                if len(line) > 100:
                    wrong.append(f"{path.relative_to(PROJECT)}:{number}")
        self.assertEqual(wrong, [])

    def test_files_stay_readable(self):
        wrong = {}
        for path in code_files(SOURCE) + code_files(PROJECT / "tools") + code_files(PROJECT / "gear"):
            lines = len(path.read_text().splitlines())
            if lines > 400:
                wrong[str(path.relative_to(PROJECT))] = lines
        self.assertEqual(wrong, {})

    def test_every_room_has_a_header_and_a_test(self):
        wrong = []
        for path in SOURCE.rglob("*.cpp"):
            if path.name == "main.cpp":
                continue
            folder = path.relative_to(SOURCE).parts[0]
            if not path.with_suffix(".h").is_file():
                wrong.append(f"{path.relative_to(PROJECT)} has no header")
            tests = [PROJECT / "tests" / kind / folder / f"{path.stem}_test.cpp"
                     for kind in ("unit", "scenarios")]
            tests += [PROJECT / "tests" / name for name
                      in TESTED_ELSEWHERE.get(str(path.relative_to(SOURCE)), [])]
            if not any(test.is_file() for test in tests):
                wrong.append(f"{path.relative_to(PROJECT)} has no test")
        self.assertEqual(sorted(wrong), [])

    def test_only_globals_wear_the_prefix_of_globals(self):
        """g_ tells a reader that others write it, too: such a name stands in the room's header."""
        wrong = []
        for path in SOURCE.rglob("*.cpp"):
            header = path.with_suffix(".h")
            declared = header.read_text() if header.is_file() else ""
            for name in DEFINED_GLOBAL.findall(path.read_text()):
                if not re.search(rf"^extern .*\b{name}\b", declared, re.MULTILINE):
                    wrong.append(f"{path.relative_to(PROJECT)}: {name}")
        self.assertEqual(wrong, [])

    def test_no_forbidden_words(self):
        wrong = []
        for path in text_files():
            if path == pathlib.Path(__file__).resolve():
                continue
            text = path.read_text(errors="replace")
            for number, line in enumerate(text.splitlines(), 1):
                if FORBIDDEN.search(line):
                    wrong.append(f"{path.relative_to(PROJECT)}:{number}: {line.strip()}")
        self.assertEqual(wrong, [])


class Documents(unittest.TestCase):
    def test_every_hazard_tells_all_and_has_a_guard(self):
        self.assertTrue(hazards())
        for title, text in hazards().items():
            with self.subTest(title):
                marks = re.findall(r"^- \*\*(\w+):\*\*", text, re.MULTILINE)
                self.assertEqual(marks, ["Seen", "When", "Why", "Helps", "Guard"])
                self.assertTrue(NAMED_TEST.findall(text.split("**Guard:**")[1]), "no test")

    def test_every_story_of_a_hazard_is_told(self):
        told = {name for text in hazards().values() for name in NAMED_TEST.findall(text)}
        self.assertEqual(cases_below(PROJECT / "tests" / "scenarios" / "hazards") - told, set())

    def test_the_register_of_oddities_is_whole(self):
        """No mark without a test, no test without a mark, and the page as the marks have it."""
        register = subprocess.run([str(PROJECT / "scripts" / "oddities"), "--check"], check=False,
                                  capture_output=True, text=True)
        self.assertEqual((register.returncode, register.stderr), (0, ""))


class Program(unittest.TestCase):
    def test_links_only_the_language_libraries(self):
        dynamic = subprocess.run(["readelf", "-d", str(BUILD / "modemd")], check=True,
                                 capture_output=True, text=True).stdout
        needed = set(re.findall(r"\(NEEDED\).*\[(.+)\]", dynamic))
        self.assertTrue(needed)
        self.assertLessEqual(needed - SANITIZERS, LIBRARIES)


if __name__ == "__main__":
    unittest.main()
