"""The daemon's keeper under busybox init, booted in the sandbox."""

import unittest

from supervised_life import SupervisedLife


class BusyboxLife(SupervisedLife, unittest.TestCase):
    supervisor = "busybox"

    def start(self):
        self.router.shell("kill -CONT 1")

    def stop(self):
        # init would start it again in a second; it is held, as it holds itself at a halt.
        self.router.shell("kill -TSTP 1")
        self.router.run("/usr/libexec/modemd/modemd-keeper", "stop")

    def has_given_up(self):
        return "wrong settings, not started again" in self.router.read("/var/log/messages")

    def try_again(self):
        self.router.shell("kill -HUP $(cat /var/run/modemd-keeper.pid)")

    def test_7_a_reboot_ends_it_cleanly(self):
        ends = self.ends()
        self.router.shell("kill -TERM 1")
        self.router.wait_for_log("exit", times=ends + 1)
        self.router.wait_for(lambda: not self.router.daemon(), "the end")


if __name__ == "__main__":
    unittest.main()
