"""Which tests are asked about a mutant, in which order, and what they say."""

import dataclasses
import re
import subprocess
import sys

from workshop import PROJECT, Trouble

UNITS = ("support", "state", "modem", "status", "connection", "sms", "core")
# The likeliest first; random worlds take the longest.
SCENARIOS = sorted((path.name for path in (PROJECT / "tests" / "scenarios").iterdir()
                    if any(path.glob("*_test.cpp"))),
                   key=lambda name: (name == "worlds", name not in UNITS, name))
FAILED = re.compile(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", re.MULTILINE)
CASE = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+),", re.MULTILINE)
RESERVE = 20  # seconds that any program may take on a busy machine


@dataclasses.dataclass
class Verdict:
    outcome: str  # killed, lived, same (the compiler sees no difference), broken (no compiler does)
    by: str = ""
    stage: str = ""
    seconds: float = 0


@dataclasses.dataclass(frozen=True)
class Stage:
    title: str
    program: str
    choice: str = ""


def suites_of(path):
    """A filter for the cases that stand in the test file of a room."""
    folder, room = path.split("/")[1:3]
    test = PROJECT / "tests" / "unit" / folder / (room.rsplit(".", 1)[0] + "_test.cpp")
    suites = sorted(set(CASE.findall(test.read_text()))) if test.is_file() else []
    return ":".join(f"{suite}.*:*/{suite}.*" for suite in suites)


def stages_for(path):
    """The nearest tests first."""
    folder = path.split("/")[1]
    stages = []
    if suites_of(path):
        stages.append(Stage("unit of the room", f"unit_{folder}", suites_of(path)))
    stages.append(Stage("units of the folder", f"unit_{folder}"))
    if folder in SCENARIOS:
        stages.append(Stage("scenarios of the folder", f"scenarios_{folder}"))
    stages += [Stage("all units", f"unit_{other}") for other in UNITS if other != folder]
    stages += [Stage("all scenarios", f"scenarios_{other}")
               for other in SCENARIOS if other != folder]
    return stages


def targets():
    return ["modemd", "rig_preload", *(f"unit_{folder}" for folder in UNITS),
            *(f"scenarios_{folder}" for folder in SCENARIOS)]


class Hunt:
    """One workshop's work; `usual` is how many seconds each program takes without a mutant."""

    def __init__(self, workshop, usual, system=False):
        self.workshop = workshop
        self.usual = usual
        self.system = system

    def measure(self):
        for program in targets()[2:]:
            status, output, seconds = self.workshop.test(program, "", 1200)
            if status != 0:
                failed = "\n".join(FAILED.findall(output)) or output[-2000:]
                raise Trouble(f"{program} fails without any change:\n{failed}")
            self.usual[program] = seconds

    def judge(self, mutant):
        original = self.workshop.code(mutant.path)
        before = self.workshop.digest(mutant.path)
        self.workshop.write(mutant.path, mutant.apply(original))
        try:
            verdict = self._ask(mutant, before)
        finally:
            self.workshop.write(mutant.path, original)
            self.workshop.build(["modemd_rooms", "modemd"])
        return verdict

    def _ask(self, mutant, before):
        folder = mutant.path.split("/")[1]
        if self.workshop.build(["modemd", f"unit_{folder}"])[0] != 0:
            return Verdict("broken")
        if self.workshop.digest(mutant.path) == before:
            return Verdict("same")
        spent = 0
        for stage in stages_for(mutant.path):
            needed = [stage.program]
            if stage.program != f"unit_{folder}" and self.workshop.build(needed)[0] != 0:
                return Verdict("killed", stage.program + " does not build", stage.title)
            status, output, seconds = self.workshop.test(
                stage.program, stage.choice, 5 * self.usual[stage.program] + RESERVE)
            spent += seconds
            if status is None:
                return Verdict("killed", f"{stage.program} (hangs)", stage.title, spent)
            if status != 0:
                failed = FAILED.search(output)
                by = failed[1] if failed else f"a crash, {status}"
                return Verdict("killed", f"{stage.program} {by}", stage.title, spent)
        return self._ask_system(spent) if self.system else Verdict("lived", seconds=spent)

    def _ask_system(self, spent):
        """In real time, against the workshop's own build."""
        self.workshop.build(["all"])
        done = subprocess.run(
            [sys.executable, "-m", "pytest", "-q", "-x", "-p", "no:cacheprovider", "tests/system",
             "--deselect", "tests/system/test_mutants.py"], cwd=self.workshop.folder, check=False,
            stdin=subprocess.DEVNULL, capture_output=True, text=True)
        failed = re.search(r"^FAILED (\S+)", done.stdout, re.MULTILINE)
        if done.returncode == 0:
            return Verdict("lived", seconds=spent)
        return Verdict("killed", failed[1] if failed else "pytest", "system tests", spent)
