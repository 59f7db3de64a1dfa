"""The start script, on the router it is made for."""

import unittest

from router_sandbox import BUILD, PROJECT, Router

SCRIPT = PROJECT / "packaging" / "sysv" / "modemd"
LIBEXEC = PROJECT / "packaging" / "libexec"


class StartScript(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("881")
        cls.router.shell(f"ln -sf {BUILD}/modemd /sbin/modemd; mkdir -p /etc/default;"
                         f" ln -s {SCRIPT} /etc/modemd.init")
        cls.router.write("/etc/default/modemd",
                         f"LIBEXEC={LIBEXEC}\nDAEMON=/sbin/modemd\nCARD=881\nPAUSE=1\n")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def wait_for_stop(self):
        for name in ("[m]odemd -881", "[m]odemd-keeper"):
            self.router.wait_for(lambda name=name: self.router.shell(f"ps | grep '{name}' || true")
                                 == "", "the processes to end")

    def starts(self):
        return self.router.log().count("v1.45 starting")

    def daemon(self):
        return self.router.read("/var/run/modemd.pid")

    def test_1_starts_the_daemon_once(self):
        self.assertIn("not running", self.router.shell("/etc/modemd.init status || true"))
        self.router.shell("/etc/modemd.init start")
        self.router.wait_for(lambda: "card type set to Sierra 881" in self.router.log(),
                             "the daemon")
        self.assertIn("already", self.router.shell("/etc/modemd.init start"))
        self.assertEqual(self.starts(), 1)
        self.assertIn("is running", self.router.shell("/etc/modemd.init status"))

    def test_2_a_daemon_that_ended_is_started_again(self):
        first = self.router.wait_for(self.daemon, "the pid file")
        self.router.shell(f"kill -KILL {first}")
        self.router.wait_for(lambda: self.starts() == 2, "the second start")
        self.router.wait_for(lambda: self.daemon() not in ("", first), "its process id")

    def test_3_stop_ends_it_for_good(self):
        self.router.shell("/etc/modemd.init stop")
        self.assertIn("not running", self.router.shell("/etc/modemd.init status || true"))
        self.wait_for_stop()
        self.assertEqual(self.starts(), 2)
        self.assertTrue(self.router.shell("ls -ld /tmp/sms").startswith("drwx------"))


if __name__ == "__main__":
    unittest.main()
