"""Under SysV init, what takes minutes. scripts/supervision runs it."""

import unittest

from supervised_life import settings
from supervised_router import SupervisedRouter

GAVE_UP = "Failed to open port 5 times, exiting"


class BootWithoutAModem(unittest.TestCase):
    def test_it_is_tried_for_ever_and_found(self):
        with SupervisedRouter("sysv", None, {"default/modemd": settings(PAUSE=1)}) as router:
            router.wait_for(lambda: router.log().count(GAVE_UP) == 3, "three lives", 600)
            self.assertEqual(router.recorded().count("ResetPCMCIA now"), 3)
            router.plug_in_late("881")
            router.wait_for_work()


class StopInACall(unittest.TestCase):
    def test_the_call_is_ended(self):
        with SupervisedRouter("sysv", "E362",
                              {"default/modemd": settings(CARD="E362")}) as router:
            router.wait_for_link()
            router.run("/etc/init.d/modemd", "stop")
            self.assertEqual(router.addresses(), [])
            self.assertFalse(router.link_is_up())
            router.wait_for(lambda: not router.dhcp_client(), "the DHCP client's end")
            self.assertIn("AT$NWQMIDISCONNECT", router.heard()[-1])


if __name__ == "__main__":
    unittest.main()
