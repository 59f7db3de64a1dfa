"""The program of random worlds: whole worlds, and worlds with less in them."""

import dataclasses
import math
import os
import pathlib
import re
import subprocess

from shrink import smallest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("MODEMD_BUILD", PROJECT / "build" / "release")).resolve()
PROGRAM = BUILD / "tests" / "scenarios" / "scenarios_worlds"
CASE = "Worlds/AnyWorld.KeepsItsPromises/"

LIVED = re.compile(r"^lived (\d+) s$", re.MULTILINE)
HAPPENED = re.compile(r"^happened (\d+)\.(\d+) (\d+) s (.*)$", re.MULTILINE)
FAULT = re.compile(r"^(?:\S+:\d+: Failure\n(?:Failed\n)?)(.*)$", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] " + CASE + r"(\d+)", re.MULTILINE)


@dataclasses.dataclass(frozen=True)
class Happening:
    """One happening: its row in the table, its how-manieth time, when it was, what it was."""

    kind: int
    time: int
    second: int
    what: str

    def __str__(self):
        return f"{self.second // 60:4}:{self.second % 60:02} {self.what} ({self.kind}.{self.time})"


@dataclasses.dataclass
class Outcome:
    """What one run of the program has shown."""

    lived: int  # seconds
    failed: list  # numbers of the worlds that failed
    fault: str  # the first thing that was wrong, "" for nothing
    happened: list  # in the first world that failed

    @property
    def minutes(self):
        return max(1, math.ceil(self.lived / 60))


def settings(seed, only=None, longest=None):
    """The variables of a run, as a person would write them."""
    chosen = {"RIG_SEED": str(seed)}
    if only is not None:
        chosen["WORLD_ONLY"] = " ".join(f"{one.kind}.{one.time}" for one in only)
    if longest is not None:
        chosen["WORLD_LONGEST"] = str(longest)
    return chosen


def live(seed, number="*", only=None, longest=None):
    """Lives one world of this seed, or all."""
    done = subprocess.run([str(PROGRAM), f"--gtest_filter={CASE}{number}"],
                          env={**os.environ, **settings(seed, only, longest), "WORLD_TELLS": "1"},
                          stdin=subprocess.DEVNULL, capture_output=True, check=False, cwd=BUILD)
    text = done.stdout.decode(errors="replace") + done.stderr.decode(errors="replace")
    fault = FAULT.search(text)
    reason = fault[1].strip() if fault else ""
    if done.returncode != 0 and not reason:
        reason = f"the program ended with status {done.returncode}"
    failed = sorted({int(world) for world in FAILED.findall(text)})
    happened = [Happening(int(kind), int(time), int(second), what)
                for kind, time, second, what in HAPPENED.findall(text)]
    return Outcome(sum(map(int, LIVED.findall(text))), failed, reason, happened)


def replay_line(seed, number, only=None, longest=None):
    words = [f"{name}='{value}'" if " " in value or not value else f"{name}={value}"
             for name, value in settings(seed, only, longest).items()]
    return " ".join([*words, str(PROGRAM), f"--gtest_filter={CASE}{number}"])


@dataclasses.dataclass
class Failure:
    """A world that failed, and the least of it that still does."""

    seed: int
    number: int
    fault: str
    all_happenings: int
    needed: list
    minutes: int
    tries: int

    def lines(self):
        return [f"FAIL  world {self.number} of seed {self.seed}: {self.fault}",
                f"      replay: {replay_line(self.seed, self.number)}",
                f"      still fails with {len(self.needed)} of {self.all_happenings} happenings,"
                f" in {self.minutes} min ({self.tries} tries):",
                *(f"      {happening}" for happening in self.needed),
                f"      replay: {replay_line(self.seed, self.number, self.needed, self.minutes)}"]


def make_smaller(seed, number, longest=None):
    """The shortest plan that fails as this world does: whole rows of the table are left out first,
    then single happenings, then the time behind the failure."""
    first = live(seed, number, longest=longest)
    minutes = min(first.minutes, longest) if longest else first.minutes
    tries = 1

    def fails(happenings):
        nonlocal tries
        tries += 1
        return live(seed, number, happenings, minutes).fault == first.fault

    if not fails(first.happened):  # it needs what comes behind it
        minutes = longest
    kinds = sorted({one.kind for one in first.happened})
    kinds = smallest(kinds, lambda chosen: fails([one for one in first.happened
                                                  if one.kind in chosen]))
    needed = smallest([one for one in first.happened if one.kind in kinds], fails)
    last = live(seed, number, needed, minutes)
    return Failure(seed, number, first.fault, len(first.happened), needed, last.minutes, tries + 1)
