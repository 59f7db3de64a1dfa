"""The daemon's service under runit, booted in the sandbox."""

import unittest

from supervised_life import SupervisedLife


class RunitLife(SupervisedLife, unittest.TestCase):
    supervisor = "runit"

    def sv(self, *words):
        return self.router.run("/usr/bin/sv", *words, "/etc/service/modemd", check=False)

    def start(self):
        self.sv("up")

    def stop(self):
        self.assertIn("ok: down", self.sv("-w", "75", "stop"))

    def has_given_up(self):
        return self.sv("status").startswith("down:")

    def test_7_the_last_stage_ends_it_cleanly(self):
        ends = self.ends()
        self.router.shell("chmod 100 /run/runit.stopit /run/runit.reboot; kill -CONT 1")
        self.router.wait_for_log("exit", times=ends + 1)
        self.router.wait_for(lambda: not self.router.daemon(), "the end")


if __name__ == "__main__":
    unittest.main()
