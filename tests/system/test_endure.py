"""scripts/endure: a sample of random worlds, and what it makes of one that fails.

The worlds that fail here do so because a judge is told to reject an event that is all right.
"""

import os
import re
import subprocess
import sys
import unittest

from router_sandbox import BUILD, PROJECT

sys.path.insert(0, str(PROJECT / "gear" / "endurance"))

from shrink import smallest  # pylint: disable=wrong-import-position

SEED = "7"
KINDS = re.compile(r"^ +\d+:\d\d (.*) \(\d+\.\d+\)$", re.MULTILINE)
REPLAY = re.compile(r"^ +replay: (.*)$", re.MULTILINE)


def endure(*options, rejects=None):
    environment = {**os.environ, "MODEMD_BUILD": str(BUILD)}
    if rejects:
        environment["WORLD_REJECTS"] = rejects
    return subprocess.run([str(PROJECT / "scripts" / "endure"), "--first", SEED, "--seeds", "1",
                           *options], env=environment, stdin=subprocess.DEVNULL, check=False,
                          capture_output=True, text=True)


class Shrinking(unittest.TestCase):
    def test_what_is_needed_together_is_found_wherever_it_lies(self):
        items = list(range(200))
        for needed in ({0}, {199}, {3, 150}, {0, 99, 100, 199}, set(range(40, 47))):
            with self.subTest(needed=needed):
                found = smallest(items, needed.issubset)
                self.assertEqual(set(found), needed)
                self.assertEqual(found, sorted(found), "the order is kept")

    def test_nothing_is_left_of_what_always_fails(self):
        self.assertEqual(smallest([1, 2, 3], lambda _: True), [])

    def test_either_of_two_is_enough(self):
        found = smallest(list(range(50)), lambda some: bool({7, 30} & set(some)))
        self.assertEqual(len(found), 1)
        self.assertIn(found[0], (7, 30))

    def test_it_asks_far_less_often_than_there_are_ways(self):
        asked = []

        def fails(some):
            asked.append(some)
            return {100, 700} <= set(some)

        self.assertEqual(smallest(list(range(800)), fails), [100, 700])
        self.assertLess(len(asked), 120)


class Worlds(unittest.TestCase):
    def test_a_sample_is_lived_and_told(self):
        done = endure("--longest", "10")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        last = done.stdout.splitlines()[-1]
        self.assertRegex(last, r"^1 seeds, 0\.1 simulated days, .* h a second, 0 s left, 0 failures$")

    def test_a_world_that_fails_is_made_smaller_and_can_be_replayed(self):
        """One message that waits is enough for a command that sends it."""
        done = endure("--longest", "60", rejects="AT+CMGS")
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        failures = done.stdout.count("\nFAIL  world ")
        self.assertEqual(KINDS.findall(done.stdout), failures * ["a message waits in the spool"])
        whole, least = REPLAY.findall(done.stdout)[:2]
        self.assertNotIn("WORLD_ONLY", whole)
        self.assertIn("WORLD_ONLY", least)
        for rejects, fails in (("AT+CMGS", True), ("no event begins so", False)):
            again = subprocess.run(["/bin/bash", "-c", least], check=False, capture_output=True,
                                   env={**os.environ, "WORLD_REJECTS": rejects}, cwd=BUILD)
            self.assertEqual(again.returncode != 0, fails, rejects)

    def test_what_fails_by_itself_needs_no_happening(self):
        done = endure("--longest", "10", "--world", "0", rejects="v1.45 starting")
        self.assertEqual(done.returncode, 1)
        self.assertIn("still fails with 0 of ", done.stdout)


if __name__ == "__main__":
    unittest.main()
