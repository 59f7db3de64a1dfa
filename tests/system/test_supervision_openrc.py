"""The daemon's service under OpenRC, booted in the sandbox."""

import unittest

from supervised_life import PAUSE, SupervisedLife


class OpenrcLife(SupervisedLife, unittest.TestCase):
    supervisor = "openrc"
    more_settings = {"conf.d/modemd": f"respawn_delay={PAUSE}\n"}

    def service(self, action):
        return self.router.run("/sbin/rc-service", "modemd", action, check=False)

    def start(self):
        self.service("start")

    def stop(self):
        self.service("stop")
        self.assertIn("stopped", self.service("status"))

    def resets(self):
        return self.router.recorded().count("ResetPCMCIA now")

    def has_given_up(self):
        return "stopped" in self.service("status")

    def test_7_a_reset_by_the_service_is_followed_by_a_start(self):
        daemon, resets = self.router.daemon(), self.resets()
        self.service("reset_modem")
        self.router.wait_for_daemon(other_than=daemon)
        self.assertEqual(self.resets(), resets + 1)

    def test_8_a_shutdown_ends_it_cleanly(self):
        self.router.wait_for_work()
        ends = self.ends()
        self.router.run("/sbin/openrc-shutdown", "--reboot", "now", check=False)
        self.router.wait_for_log("exit", times=ends + 1)
        self.router.wait_for(lambda: not self.router.daemon(), "the end")


if __name__ == "__main__":
    unittest.main()
