#!/usr/bin/env python3
"""Runs the project's tests side by side, keeps one log for each, and counts the cases.

The units and scenarios are the GoogleTest programs that CTest knows; the system tests are the
test_*.py files beside this one. A program that crashes or hangs counts as one failed case.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
LIMIT = 900  # seconds that one test program may take

# Alone at the end of a story's output; run_story() writes it, count_python() reads it.
COUNT_MARK = "counted:"


def test_programs(build):
    """The GoogleTest programs, each once, with the environment CTest would give them."""
    listing = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"],
                             check=True, capture_output=True, text=True).stdout
    programs = {}
    for test in json.loads(listing)["tests"]:
        if not test.get("command"):
            continue
        properties = {p["name"]: p["value"] for p in test.get("properties", [])}
        environment = dict(v.split("=", 1) for v in properties.get("ENVIRONMENT", []))
        directory = properties.get("WORKING_DIRECTORY", str(build))
        programs.setdefault(test["command"][0], (environment, directory))
    return programs


def count_gtest(report):
    """(passed, failed, skipped) of a GoogleTest report file."""
    passed = failed = skipped = 0
    for suite in json.loads(report.read_text())["testsuites"]:
        for case in suite["testsuite"]:
            if case.get("failures"):
                failed += 1
            elif case["result"] == "COMPLETED":
                passed += 1
            else:
                skipped += 1
    return passed, failed, skipped


def count_python(log):
    for line in reversed(log.read_text(errors="replace").splitlines()):
        if line.startswith(COUNT_MARK):
            return tuple(int(word) for word in line[len(COUNT_MARK):].split())
    raise ValueError("no count")


class Job:
    """One test program or one story."""

    def __init__(self, name, command, logs, environment=None, directory=PROJECT):
        self.name = name
        self.command = command
        self.log = logs / f"{name}.log"
        self.report = logs / f"{name}.json"
        self.environment = environment or {}
        self.directory = directory
        self.seconds = 0.0
        self.counts = (0, 1, 0)
        self.note = ""

    def run(self):
        started = time.monotonic()
        self.report.unlink(missing_ok=True)
        with open(self.log, "wb") as log:
            try:
                code = subprocess.run(self.command, stdin=subprocess.DEVNULL, stdout=log,
                                      stderr=subprocess.STDOUT, timeout=LIMIT,
                                      cwd=self.directory,
                                      env={**os.environ, **self.environment}).returncode
            except subprocess.TimeoutExpired:
                code = None
        self.seconds = time.monotonic() - started
        self.judge(code)
        return self

    def judge(self, code):
        if code is None:
            self.note = f"did not end within {LIMIT} s"
            return
        try:
            counts = count_gtest(self.report) if self.report.exists() else count_python(self.log)
        except (ValueError, KeyError, OSError):
            self.note = f"ended without a report, exit status {code}"
            return
        passed, failed, skipped = counts
        if skipped:
            self.note = f"{skipped} skipped, which counts as failed"
        if code != 0 and failed + skipped == 0:
            self.note = f"exit status {code} although every case passed"
            failed = 1
        self.counts = (passed, failed + skipped, 0)

    def failed(self):
        return self.counts[1] > 0

    def show(self):
        verdict = "FAIL" if self.failed() else "ok  "
        passed, failed, _ = self.counts
        print(f"{verdict} {self.name:34} {passed + failed:5} cases {self.seconds:7.1f} s"
              f"  {self.note}", flush=True)
        text = self.log.read_text(errors="replace")
        for line in text.splitlines():
            if line.startswith("figure:"):
                print(f"       {line}", flush=True)
        if self.failed():
            print(f"---- end of {self.log}", flush=True)
            print("\n".join(text.splitlines()[-60:]), flush=True)
            print("----", flush=True)


def collect(build, kinds, logs):
    jobs = []
    for path, (environment, directory) in test_programs(build).items():
        name = pathlib.Path(path).name
        kind = "scenarios" if name.startswith(("scenario", "rig")) else "unit"
        if kind in kinds:
            report = logs / f"{name}.json"
            jobs.append(Job(name, [path, f"--gtest_output=json:{report}"], logs, environment,
                            directory))
    for path in sorted(HERE.glob("test_*.py")):
        name = path.stem.removeprefix("test_")
        if "system" not in kinds and name not in kinds:
            continue
        # Each class is a story of its own, with a sandbox of its own.
        for story in re.findall(r"^class (\w+)\(.*TestCase\)", path.read_text(), re.MULTILINE):
            command = [sys.executable, str(HERE / "run_tests.py"), "--story",
                       f"{path.stem}.{story}"]
            jobs.append(Job(f"system_{name}.{story}", command, logs,
                            {"MODEMD_BUILD": str(build)}))
    return jobs


def run_all(jobs):
    """The stories mostly wait, so all of them run beside the busy programs."""
    waiting = [job for job in jobs if job.name.startswith("system_")]
    busy = [job for job in jobs if job not in waiting]
    with concurrent.futures.ThreadPoolExecutor(max(1, len(waiting))) as idle_pool, \
            concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 2) as busy_pool:
        futures = [idle_pool.submit(job.run) for job in waiting]
        futures += [busy_pool.submit(job.run) for job in busy]
        for future in concurrent.futures.as_completed(futures):
            future.result().show()


def run_story(name):
    sys.path[:0] = [str(HERE), str(PROJECT / "scripts" / "sandbox")]
    suite = unittest.defaultTestLoader.loadTestsFromName(name)
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    failed = len(result.failures) + len(result.errors) + len(result.unexpectedSuccesses)
    passed = max(0, result.testsRun - failed - len(result.skipped))
    print(f"{COUNT_MARK} {passed} {failed} {len(result.skipped)}")
    return 1 if failed or result.skipped or result.testsRun == 0 else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=PROJECT / "build" / "release")
    parser.add_argument("--tally", type=pathlib.Path)
    parser.add_argument("--story", help="run one class of system tests in this process")
    parser.add_argument("kinds", nargs="*", help="unit, scenarios, system, or a file's name")
    arguments = parser.parse_args()
    if arguments.story:
        return run_story(arguments.story)

    build = arguments.build.resolve()
    logs = build / "test-logs"
    logs.mkdir(parents=True, exist_ok=True)
    jobs = collect(build, arguments.kinds or ["unit", "scenarios", "system"], logs)
    if not jobs:
        print("no tests found", file=sys.stderr)
        return 1
    run_all(jobs)
    passed = sum(job.counts[0] for job in jobs)
    failed = sum(job.counts[1] for job in jobs)
    if arguments.tally:
        arguments.tally.write_text(f"{passed} {failed}\n")
    else:
        print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
