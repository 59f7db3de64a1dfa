"""What the start script of OpenWrt tells procd, and how it stops the daemon."""

import unittest

from router_sandbox import BUILD, PROJECT, Router

FILES = PROJECT / "packaging" / "openwrt" / "files"
STUB = PROJECT / "gear" / "sandbox" / "stubs" / "rc.common"
# What procd must not be told, each for a reason in the script's head.
NEVER = ("set pidfile", "set reload_signal", "set user", "set stdout")


class Procd(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("E362")
        cls.router.path("/etc/config").mkdir()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def script(self, action, **options):
        """The words to procd, with some options changed."""
        config = (FILES / "modemd.config").read_text()
        for name, value in options.items():
            lines = [line if f"option {name} " not in line else f"\toption {name} '{value}'"
                     for line in config.splitlines()]
            config = "\n".join(lines) + "\n"
        self.router.write("/etc/config/modemd", config)
        return self.router.shell(f"busybox ash {STUB} {FILES}/modemd.init {action}",
                                 check=False).splitlines()

    def test_an_instance_that_is_started_again_for_ever(self):
        words = self.script("start")
        self.assertEqual(words[:3], ["open modem", "set command /usr/sbin/modemd -E362",
                                     "append command /dev/ttyUSB0"])
        self.assertIn("set respawn 3600 20 0", words)
        self.assertIn("set term_timeout 75", words)
        self.assertEqual(words[-1], "close")
        for word in words:
            self.assertFalse(word.startswith(NEVER), word)

    def test_settings_reach_the_command_line_in_their_order(self):
        config = (FILES / "modemd.config").read_text().replace("# list", "list")
        self.router.write("/etc/config/modemd",
                          config.replace("'-d'", "'-cind1'") + "\tlist option '-d'\n")
        words = self.router.shell(
            f"busybox ash {STUB} {FILES}/modemd.init start").splitlines()
        self.assertEqual([w for w in words if " command " in w],
                         ["set command /usr/sbin/modemd -E362", "append command -cind1",
                          "append command -d", "append command /dev/ttyUSB0"])

    def test_a_wrong_command_line_never_gets_to_procd(self):
        for options in ({"card": "E999"}, {"device": ""}, {"device": "ttyUSB0"},
                        {"pause": "soon"}):
            self.assertEqual(self.script("start", **options), [], options)
            self.router.wait_for(
                lambda value=list(options.values())[0]:
                f"is '{value}'" in self.router.read("/var/log/messages"), "the reason in the log")
        self.assertEqual(self.script("start", enabled="0"), [])

    def test_a_change_of_the_settings_is_noticed_and_a_reset_is_no_reload(self):
        self.assertEqual(self.script("triggers"), ["trigger modemd"])
        self.assertEqual(self.script("reset_modem"), ["signal modemd * HUP"])

    def test_stop_waits_until_the_call_has_ended(self):
        self.router.shell(f"sed 's,^PROG=.*,PROG={BUILD}/modemd,' {FILES}/modemd.init"
                          " >/etc/modemd.init")
        self.router.start_daemon("-E362", "/dev/ttyUSB0")
        self.router.wait_for(self.router.addresses, "an address")
        self.router.shell(f"busybox ash {STUB} /etc/modemd.init stop")
        self.assertEqual(self.router.wait_for_exit(), 0)
        self.assertEqual(self.router.addresses(), [])
        # Nothing runs any more: this must not wait for anybody.
        self.router.shell(f"busybox ash {STUB} /etc/modemd.init stop")


if __name__ == "__main__":
    unittest.main()
