"""scripts/mutants: what it changes, what it makes of the tests' answers, and the list of survivors
that change nothing."""

import contextlib
import io
import pathlib
import tempfile
import unittest

from hunt import Hunt, stages_for
from operators import OPERATORS, mutants_of
from report import Report, read_harmless
from router_sandbox import PROJECT
from taking_apart import Source

HARMLESS = PROJECT / "tests" / "mutants.txt"
ROOM = """#include <fcntl.h>

namespace {

constexpr int kFlags = O_RDONLY | O_CLOEXEC;  // never O_RDWR
constexpr Row kRows[] = {{1, "a; b"}, {2, "c"}};

}  // namespace

bool Has(std::vector<int>& all, int n) {
    if (n < 3) return false;
    all.clear();
    Look(all);
    Log("found < %d", n);
    return true;
}
"""


def changes(code, operator):
    """The lines that the operator makes of the lines of a file."""
    return {(one.before, one.after) for one in mutants_of("src/core/room.cpp", Source(code))
            if one.operator == operator}


class Operators(unittest.TestCase):
    def test_each_finds_its_places_and_no_others(self):
        last = 'constexpr Row kRows[] = {{1, "a; b"}, {2, "c"}};'
        expected = {
            "compare": {("if (n < 3) return false;", "if (n <= 3) return false;"),
                        ("if (n < 3) return false;", "if (n > 3) return false;")},
            "negate": {("if (n < 3) return false;", "if (!(n < 3)) return false;")},
            "value": {("if (n < 3) return false;", "if (n < 3) return true;"),
                      ("return true;", "return false;")},
            "flag": {("constexpr int kFlags = O_RDONLY | O_CLOEXEC;",
                      "constexpr int kFlags = O_CLOEXEC;"),
                     ("constexpr int kFlags = O_RDONLY | O_CLOEXEC;",
                      "constexpr int kFlags = O_RDONLY ;")},
            "row": {(last, 'constexpr Row kRows[] = { {2, "c"}};'),
                    (last, 'constexpr Row kRows[] = {{1, "a; b"}, };')},
            "reset": {("all.clear();", ";")},
            "drop": {("Look(all);", ";"), ('Log("found < %d", n);', ";"),
                     ("if (n < 3) return false;", ";")},
            "mode": set(),
        }
        for operator, lines in expected.items():
            with self.subTest(operator):
                self.assertEqual(changes(ROOM, operator), lines)

    def test_a_constant_is_one_more_or_one_less(self):
        self.assertIn(("if (n < 3) return false;", "if (n < 4) return false;"),
                      changes(ROOM, "constant"))
        self.assertIn(("if (n < 3) return false;", "if (n < 2) return false;"),
                      changes(ROOM, "constant"))

    def test_neighbours_change_places(self):
        swapped = {before: after for before, after in changes(ROOM, "swap")}
        self.assertEqual(swapped["all.clear(); Look(all);"], "Look(all); all.clear();")

    def test_a_mode_is_one_of_the_usual_others(self):
        code = "void Make() { open(kPath, 0644); }\n"
        self.assertIn(("void Make() { open(kPath, 0644); }", "void Make() { open(kPath, 0600); }"),
                      changes(code, "mode"))

    def test_a_pause_brings_its_header_along(self):
        pause = next(one for one in mutants_of("src/core/room.cpp", Source(ROOM))
                     if one.operator == "pause")
        self.assertTrue(pause.apply(ROOM).startswith("#include <unistd.h>\n#include <fcntl.h>\n"))

    def test_each_applies_to_the_daemon(self):
        found = set()
        for path in sorted((PROJECT / "src").rglob("*.cpp")):
            source = Source(path.read_text(encoding="latin-1"))
            found |= {one.operator for one in mutants_of(str(path.relative_to(PROJECT)), source)}
        self.assertEqual(found, set(OPERATORS))

    def test_a_name_outlives_changes_elsewhere_and_is_the_only_one(self):
        before = [one.name for one in mutants_of("src/core/room.cpp", Source(ROOM))]
        moved = ROOM.replace("bool Has", "void Other() {\n    Run(1);\n}\n\nbool Has")
        after = [one.name for one in mutants_of("src/core/room.cpp", Source(moved))]
        self.assertEqual(len(set(before)), len(before))
        self.assertEqual(set(before) - set(after), set())


class FakeWorkshop:
    """Builds and tests by a script: program to exit status, None for one that hangs."""

    def __init__(self, statuses, builds=True, changes_code=True):
        self.statuses, self.builds, self.changes_code = statuses, builds, changes_code
        self.code_now, self.written = ROOM, []

    def code(self, _):
        return self.code_now

    def write(self, _, code):
        self.code_now = code
        self.written.append(code)

    def build(self, _):
        return (0 if self.builds else 1), ""

    def digest(self, _):
        return hash(self.code_now) if self.changes_code else 0

    def test(self, name, choice, _):
        status = self.statuses.get(name, 0)
        output = "[  FAILED  ] Has.Threes (1 ms)\n" if status == 1 else ""
        return status, output, 1.0


class Judging(unittest.TestCase):
    def judge(self, statuses, **options):
        workshop = FakeWorkshop(statuses, **options)
        mutant = next(mutants_of("src/core/room.cpp", Source(ROOM)))
        usual = {stage.program: 1 for stage in stages_for(mutant.path)}
        verdict = Hunt(workshop, usual).judge(mutant)
        self.assertEqual(workshop.code_now, ROOM, "the file is put back")
        return verdict.outcome, verdict.by, verdict.stage

    def test_the_nearest_tests_are_asked_first(self):
        programs = [stage.program for stage in stages_for("src/core/shutdown.cpp")]
        self.assertEqual(programs[:3], ["unit_core", "unit_core", "scenarios_core"])
        self.assertIn("scenarios_worlds", programs)

    def test_a_failed_test_kills(self):
        self.assertEqual(self.judge({"scenarios_core": 1}),
                         ("killed", "scenarios_core Has.Threes", "scenarios of the folder"))

    def test_so_does_a_crash_and_so_does_one_that_hangs(self):
        self.assertEqual(self.judge({"unit_core": -11})[:2],
                         ("killed", "unit_core a crash, -11"))
        self.assertEqual(self.judge({"unit_status": None})[:2], ("killed", "unit_status (hangs)"))

    def test_what_no_test_notices_has_lived(self):
        self.assertEqual(self.judge({})[0], "lived")

    def test_what_no_compiler_takes_or_tells_apart_is_no_mutant(self):
        self.assertEqual(self.judge({}, builds=False)[0], "broken")
        self.assertEqual(self.judge({}, changes_code=False)[0], "same")


class Reporting(unittest.TestCase):
    def report(self, outcome, harmless):
        mutant = next(mutants_of("src/core/room.cpp", Source(ROOM)))
        verdict = Hunt(FakeWorkshop({"unit_core": 1} if outcome == "killed" else {}),
                       {stage.program: 1 for stage in stages_for(mutant.path)}).judge(mutant)
        with tempfile.TemporaryDirectory() as folder, \
                contextlib.redirect_stdout(io.StringIO()) as output:
            report = Report({mutant.name: "why"} if harmless else {},
                            pathlib.Path(folder) / "results")
            report.take(mutant, verdict)
            report.close(60)
            report.results.close()
        return report, mutant, output.getvalue()

    def test_a_survivor_is_told_with_the_line_that_replays_it(self):
        report, mutant, text = self.report("lived", harmless=False)
        self.assertEqual(report.survivors, [mutant])
        self.assertIn(f"scripts/mutants --mutant {mutant.name}", text)

    def test_one_that_is_listed_as_harmless_does_not_count(self):
        report, _, text = self.report("lived", harmless=True)
        self.assertEqual(report.survivors, [])
        self.assertIn("lived: why", text)

    def test_the_killer_is_named(self):
        _, _, text = self.report("killed", harmless=False)
        self.assertIn("killed by unit_core Has.Threes", text)

    def test_the_list_names_mutants_that_exist_and_says_why(self):
        known = set()
        for path in sorted(p for p in (PROJECT / "src").rglob("*") if p.suffix in (".cpp", ".h")):
            source = Source(path.read_text(encoding="latin-1"))
            known |= {one.name for one in mutants_of(str(path.relative_to(PROJECT)), source)}
        listed = read_harmless(HARMLESS)
        self.assertTrue(listed)
        self.assertEqual(set(listed) - known, set())
        self.assertEqual([name for name, reason in listed.items() if len(reason) < 20], [])


if __name__ == "__main__":
    unittest.main()
