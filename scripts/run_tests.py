#!/usr/bin/env python3
"""Runs CTest and pytest beside each other, shows how far they are, and sums up their reports.

CTest runs the units and scenarios, which keep the processors busy; pytest runs the system tests,
which mostly wait. On a terminal one line shows the count and the time; elsewhere only what failed
and the sum are printed. The reports stay in BUILD/test-results as JUnit files.
"""

import argparse
import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import threading
import time
import xml.etree.ElementTree

PROJECT = pathlib.Path(__file__).resolve().parent.parent
SYSTEM = PROJECT / "tests" / "system"
SLOWEST = 5  # how many are named

CTEST_LINE = re.compile(r"^ *\d+/(\d+) Test +#\d+: (.+?) \.+ *(\*\*\*)?(Passed|Skipped)?")
PYTEST_LINE = re.compile(r"^\[gw\d+\] \[ *\d+%\] (PASSED|FAILED|SKIPPED|ERROR) (\S+)")
# What no XML may hold, though a test program may print it.
CONTROL = re.compile(r"[\x00-\x08\x0b\x0c\x0e-\x1f]")
PYTEST_TOTAL = re.compile(r"^(?:gw\d+ \[|collected )(\d+)")


@dataclasses.dataclass
class Case:
    name: str
    seconds: float
    outcome: str  # "passed", "failed" or "skipped"
    words: str = ""  # why it failed or was skipped
    output: str = ""


class Progress:
    """One line that is written over again and again; nothing where the output is no terminal."""

    def __init__(self):
        self.started = time.monotonic()
        self.shows = sys.stdout.isatty()
        self.lock = threading.Lock()
        self.totals = {}
        self.done = self.failed = 0

    def expect(self, runner, total):
        self.totals[runner] = total

    def add(self, name, outcome):
        with self.lock:
            self.done += 1
            self.failed += outcome == "failed"
            if outcome == "failed":
                self.write_line(f"FAIL {name}")
            self.show(name)

    def show(self, name):
        if not self.shows:
            return
        line = (f"[{self.done}/{sum(self.totals.values())}]"
                f" {time.monotonic() - self.started:.0f} s, {self.failed} failed: {name}")
        width = os.get_terminal_size(sys.stdout.fileno()).columns or 80
        print(f"\r\033[K{line[:width - 1]}", end="", flush=True)

    def write_line(self, line):
        print(("\r\033[K" if self.shows else "") + line, flush=True)

    def end(self):
        if self.shows:
            print("\r\033[K", end="", flush=True)


class Runner:
    """One of the two, as a child whose lines are followed."""

    def __init__(self, command, report, log, environment=None):
        self.command = command
        self.report = report
        self.log = log
        self.environment = {**os.environ, **(environment or {})}

    def run(self, progress):
        self.report.unlink(missing_ok=True)
        with open(self.log, "w", encoding="utf-8") as log:
            child = subprocess.Popen(self.command, stdin=subprocess.DEVNULL, cwd=PROJECT,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                     errors="replace", env=self.environment)
            for line in child.stdout:
                log.write(line)
                self.follow(line, progress)
        self.status = child.wait()

    def cases(self):
        """What the report says; a runner that has trouble of its own counts as a failed case."""
        try:
            text = self.report.read_text(encoding="utf-8", errors="replace")
            root = xml.etree.ElementTree.fromstring(CONTROL.sub("?", text).encode())
            cases = [self.read(case) for case in root.iter("testcase")]
        except (OSError, xml.etree.ElementTree.ParseError) as error:
            return [self.trouble(f"no report: {error}")]
        if self.status in self.GOOD or any(case.outcome == "failed" for case in cases):
            return cases
        return [*cases, self.trouble(f"exit status {self.status} although nothing failed")]

    def trouble(self, words):
        end = self.log.read_text(encoding="utf-8", errors="replace")[-4000:]
        return Case(type(self).__name__, 0.0, "failed", words, end)

    def read(self, case):
        outcome, words = "passed", ""
        for child in case:
            if child.tag in ("failure", "error"):
                outcome, words = "failed", child.text or child.get("message", "")
            elif child.tag == "skipped":
                outcome, words = "skipped", child.get("message", "")
        return Case(self.name_of(case), float(case.get("time", 0)), outcome, words,
                    "".join(case.findtext(tag) or "" for tag in ("system-out", "system-err")))


class Ctest(Runner):
    GOOD = (0,)

    def follow(self, line, progress):
        found = CTEST_LINE.match(line)
        if found:
            progress.expect("ctest", int(found[1]))
            outcome = {"Passed": "passed", "Skipped": "skipped"}.get(found[4], "failed")
            progress.add(found[2], outcome)

    @staticmethod
    def name_of(case):
        return case.get("name")

    def read(self, case):
        read = super().read(case)
        if read.outcome == "skipped":  # CTest tells the status only; the program told why
            read.words = read.output
        return read


class Pytest(Runner):
    GOOD = (0, 5)  # 5: no test was chosen

    def follow(self, line, progress):
        total = PYTEST_TOTAL.match(line)
        if total:
            progress.expect("pytest", int(total[1]))
        found = PYTEST_LINE.match(line)
        if found:
            outcome = {"PASSED": "passed", "SKIPPED": "skipped"}.get(found[1], "failed")
            progress.add(found[2], outcome)

    @staticmethod
    def name_of(case):
        return f"{case.get('classname')}.{case.get('name')}"


def make_ctest(arguments, build, results):
    report = results / "ctest.xml"
    command = ["ctest", "--test-dir", str(build), "--parallel", str(arguments.jobs),
               "--output-on-failure", "--no-tests=ignore", "--output-junit", str(report)]
    if not {"unit", "scenarios"} <= set(arguments.kinds):  # else also what has no label
        command += ["--label-regex", "^(" + "|".join(arguments.kinds) + ")$"]
    if arguments.match:
        command += ["--tests-regex", "|".join(re.escape(word) for word in arguments.match)]
    if arguments.failed:
        command += ["--rerun-failed"]
    return Ctest(command, report, results / "ctest.log")


def make_pytest(arguments, build, results):
    report = results / "pytest.xml"
    files = [SYSTEM] if "system" in arguments.kinds else [SYSTEM / "test_style.py"]
    stories = sum(len(re.findall(r"^class ", path.read_text(), re.MULTILINE))
                  for path in SYSTEM.glob("test_*.py"))
    # All stories at once, as they mostly wait; but a process for each costs a second at the start.
    few = arguments.match or arguments.failed or "system" not in arguments.kinds
    workers = min(stories, 4) if few else stories
    command = ["/usr/bin/python3", "-m", "pytest", "--verbose", "--numprocesses", str(workers),
               "--junitxml", str(report), *map(str, files)]
    if arguments.match:
        command += ["-k", " or ".join(arguments.match)]
    if arguments.failed:
        command += ["--last-failed", "--last-failed-no-failures", "none"]
    return Pytest(command, report, results / "pytest.log",
                  {"MODEMD_BUILD": str(build), "PYTHONUNBUFFERED": "1"})


def run_all(runners):
    progress = Progress()
    threads = [threading.Thread(target=runner.run, args=(progress,)) for runner in runners]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    progress.end()
    return [case for runner in runners for case in runner.cases()], progress


def show_failed(cases):
    for case in cases:
        if case.outcome == "failed":
            text = "\n".join(f"{case.words}\n{case.output}".strip().splitlines()[-80:])
            print(f"---- FAIL {case.name}\n{text}\n----")


def show_skipped(cases):
    """How many of each program or file, and why: a machine without namespaces cannot run them."""
    reasons = {}
    for case in cases:
        if case.outcome == "skipped":
            group = case.name.rsplit(".", 2)[0]
            counts = reasons.setdefault(case.words.strip(), {})
            counts[group] = counts.get(group, 0) + 1
    for reason, counts in reasons.items():
        print(f"SKIPPED, {sum(counts.values())} tests: "
              + ", ".join(f"{group} ({count})" for group, count in counts.items()))
        print("\n".join(f"    {line}" for line in reason.splitlines()))


def show_sum(cases, seconds):
    for case in cases:
        for line in case.output.splitlines():
            if line.startswith("figure:"):
                print(line)
    slowest = sorted(cases, key=lambda case: -case.seconds)[:SLOWEST]
    print(f"{len(cases)} tests in {seconds:.0f} s; the slowest: "
          + ", ".join(f"{case.name} {case.seconds:.1f} s" for case in slowest))
    show_skipped(cases)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=PROJECT / "build" / "release")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2, help="for CTest")
    parser.add_argument("--match", action="append", default=[], help="part of a test's name")
    parser.add_argument("--failed", action="store_true", help="only what failed last time")
    parser.add_argument("--tally", type=pathlib.Path, help='gets "PASSED FAILED SKIPPED"')
    parser.add_argument("kinds", nargs="+", choices=("unit", "scenarios", "system", "style"))
    arguments = parser.parse_args()

    build = arguments.build.resolve()
    results = build / "test-results"
    results.mkdir(parents=True, exist_ok=True)
    runners = []
    if {"unit", "scenarios"} & set(arguments.kinds):
        runners.append(make_ctest(arguments, build, results))
    if {"system", "style"} & set(arguments.kinds):
        runners.append(make_pytest(arguments, build, results))

    cases, progress = run_all(runners)
    show_failed(cases)
    show_sum(cases, time.monotonic() - progress.started)
    counts = [sum(case.outcome == outcome for case in cases)
              for outcome in ("passed", "failed", "skipped")]
    if not cases:
        print("nothing had failed" if arguments.failed else "no test has such a name")
    if arguments.tally:
        arguments.tally.write_text(" ".join(map(str, counts)) + "\n")
    else:
        print(f"{counts[0]} passed, {counts[1]} failed"
              + (f", {counts[2]} skipped" if counts[2] else ""))
    return 1 if counts[1] or not (cases or arguments.failed) else 0


if __name__ == "__main__":
    sys.exit(main())
