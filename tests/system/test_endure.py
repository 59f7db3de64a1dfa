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

import years  # pylint: disable=wrong-import-position
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


class SteadyLife(unittest.TestCase):
    """What bench_year measures, and the page that is made of it."""

    @classmethod
    def setUpClass(cls):
        cls.lives = years.measure(3, ["881"], 1)

    def test_nothing_grows_from_day_to_day(self):
        for life in self.lives.values():
            for key in ("memory_kib", "descriptors"):
                self.assertGreater(life[f"first.{key}"], 0)
                self.assertEqual(life[f"last.{key}"], life[f"first.{key}"], key)
            # A long text has a block of its own, a short one none.
            self.assertLess(life["last.blocks"], life["first.blocks"] + 8)

    def test_the_tables_hold_what_was_measured(self):
        tables = years.tables(self.lives)
        idle = self.lives["881", "idle"]
        writes, size = (idle[f"/var/log/wireless.cardstats.{what}"] for what in ("writes", "bytes"))
        self.assertGreater(writes, 86400 / 20)
        self.assertIn(f"| `/var/log/wireless.cardstats` | {writes:,}, {size / 1000:,.1f} |", tables)
        self.assertIn("At the end of day 1 and of day 3:", tables)

    def test_the_page_has_a_row_for_each_card(self):
        page = years.DOCUMENT.read_text()
        self.assertEqual(page.count(years.BEGIN) + page.count(years.END), 2)
        for card in (model.name for model in years.cards.MODELS):
            for load in years.LOADS:
                self.assertIn(f"\n| {card} | {load} | ", page)


class Worlds(unittest.TestCase):
    def test_a_sample_is_lived_and_told(self):
        done = endure("--longest", "10")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        *_, last, cost = done.stdout.splitlines()
        self.assertRegex(cost, r"simulated h for each second of a processor: a year in \d+ minutes")
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
