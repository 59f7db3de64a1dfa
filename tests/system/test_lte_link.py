"""The LTE link in real time, over a real interface with a real DHCP client and server.

Every step is judged from outside the daemon: the kernel's addresses and routes, the carrier's
DHCP log, the modem's command log. The steps of a class tell one story and run in order.
"""

import time
import unittest

from router_sandbox import Router, figure

PPP_FILE = "/etc/kvt/wireless/cellmodem_ppp.conf"
DIALING = "/var/log/wirelessdial_dialing"
NOT_DIALING = "/var/log/wirelessdial_notdialing"
CONNECT = "AT$NWQMICONNECT=,,"
RESTARTING = "LTE Connected returned 0, restarting connection"


class Story:
    card = "E362"
    configuration = None

    @classmethod
    def setUpClass(cls):
        cls.router = Router(cls.card)
        if cls.configuration:
            cls.router.write(PPP_FILE, cls.configuration)
        cls.router.start_daemon(f"-{cls.card}", "/dev/ttyUSB0")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def wait_for_address(self):
        addresses = self.router.wait_for(self.router.addresses, "an address on wwan0")
        self.assertEqual(len(addresses), 1)
        self.assertTrue(addresses[0].startswith("10.64.0."), addresses)

    def wait_for_lease_after(self, leases):
        """A client that is in a hurry may ask twice for one lease, so nobody counts them."""
        self.router.wait_for(lambda: self.router.dhcp("DHCPACK") > leases, "another lease")
        self.wait_for_address()


class DroppedCall(Story, unittest.TestCase):
    """Cold start, a call that the carrier drops, another APN, the end by SIGTERM."""

    def test_1_cold_start_to_an_address(self):
        router = self.router
        self.wait_for_address()
        figure(f"{self.card}: {time.monotonic() - router.started_at:.1f} s"
               " from process start to the first address")
        self.assertGreater(router.dhcp("DHCPACK"), 0)
        router.wait_for(router.default_routes, "the default route")
        router.wait_for(lambda: router.exists(DIALING), "the marker")
        self.assertFalse(router.exists(NOT_DIALING))
        self.assertIn(CONNECT, router.heard())
        router.wait_for(lambda: router.reaches("8.8.8.8"), "an answer from far away")

    def test_2_a_dropped_call_is_restarted_with_a_new_lease(self):
        router = self.router
        leases = router.dhcp("DHCPACK")
        connects = router.heard().count(CONNECT)
        restarts = router.log().count(RESTARTING)
        router.ctl("drop-call")
        dropped = time.monotonic()
        self.wait_for_lease_after(leases)
        figure(f"{self.card}: {time.monotonic() - dropped:.1f} s from a dropped call to a lease")
        self.assertGreater(router.heard().count(CONNECT), connects)
        router.wait_for_log(RESTARTING, restarts + 1)

    def test_3_another_apn_reaches_the_modem_and_the_call_comes_back(self):
        router = self.router
        before = len(router.heard())
        leases = router.dhcp("DHCPACK")
        router.write(PPP_FILE, "CM_APN=Field.Test\nCM_ENABLE_INTERFACE=yes\n")
        expected = ['AT+NWAPNE=3,"Field.Test",True,1439,V4,0.0.0.0,0.0.0.0,'
                    '0:0:0:0:0:0:0:0,0:0:0:0:0:0:0:0,HRPD_EHRPD',
                    'AT+CGDCONT=3,"ipv4v6","Field.Test"', "AT$NWQMIDISCONNECT", CONNECT]

        def come_in_order():
            heard = iter(router.heard()[before:])
            return all(command in heard for command in expected)

        router.wait_for(come_in_order, "the new APN and a new call")
        self.wait_for_lease_after(leases)
        router.wait_for(lambda: any("Field.Test" in value for key, value
                                    in router.statistics().items()
                                    if key.startswith("CELLMODEM_SIM_CONT_APN")),
                        "the APN in the statistics")

    def test_4_sigterm_gives_the_lease_back(self):
        router = self.router
        self.assertEqual(router.dhcp("DHCPRELEASE"), 0)
        router.signal_daemon("TERM")
        self.assertEqual(router.wait_for_exit(), 0)
        router.wait_for(lambda: router.dhcp("DHCPRELEASE") == 1, "the release at the server")
        self.assertEqual(router.addresses(), [])
        self.assertFalse(router.link_is_up())
        router.wait_for(lambda: router.heard()[-1] == "AT$NWQMIDISCONNECT", "the last command")
        self.assertEqual(router.read("/tmp/udhcpc.wwan0.lfc"), "LEASE_FAIL_COUNTER=0\n")
        router.wait_for(lambda: router.shell("ps | grep '[u]dhcpc -T' || true") == "",
                        "the client to end")


class DisabledInterface(Story, unittest.TestCase):
    """A router without a default route; its interface is disabled; the end by SIGHUP."""

    configuration = "CM_DEFAULTROUTE=no\n"

    def test_1_no_default_route_when_it_is_off(self):
        router = self.router
        self.wait_for_address()
        self.assertEqual(router.default_routes(), [])

    def test_2_disabling_the_interface_brings_the_call_down(self):
        router = self.router
        router.write(PPP_FILE, "CM_DEFAULTROUTE=no\nCM_ENABLE_INTERFACE=no\n")
        router.wait_for(lambda: router.exists(NOT_DIALING), "the marker")
        router.wait_for(lambda: not router.exists(DIALING), "the other marker to go")
        router.wait_for(lambda: not router.addresses(), "the address to go")
        router.wait_for(lambda: "CONNECTED" not in router.ctl("status").split("call: ")[1]
                        .splitlines()[0].replace("DISCONNECTED", ""), "the call to end")
        router.wait_for_log("LTE is connected, but Enable Wan interface in config is disabled."
                            "  Bringing down LTE connection.")

    def test_3_nothing_is_restarted_while_it_is_disabled(self):
        router = self.router
        connects = router.heard().count(CONNECT)
        checks = router.heard().count("AT$NWQMISTATUS")
        router.wait_for(lambda: router.heard().count("AT$NWQMISTATUS") >= checks + 3,
                        "three more looks at the call")
        self.assertEqual(router.heard().count(CONNECT), connects)
        self.assertEqual(router.addresses(), [])

    def test_4_sighup_starts_the_reset_tool(self):
        router = self.router
        router.signal_daemon("HUP")
        self.assertEqual(router.wait_for_exit(), 0)
        router.wait_for(lambda: "ResetPCMCIA now" in router.recorded(), "the reset tool")
        router.wait_for_log("Resetting device")
        log = router.log()
        self.assertLess(log.index("recieved SIGHUP, resetting device"),
                        log.index("Resetting device"))
        self.assertFalse(router.link_is_up())


class OtherCard(Story, unittest.TestCase):
    """The second LTE card, whose service and clock are asked for in other words."""

    card = "E371"

    def test_1_cold_start_to_an_address(self):
        self.wait_for_address()
        figure(f"{self.card}: {time.monotonic() - self.router.started_at:.1f} s"
               " from process start to the first address")

    def test_2_the_clock_is_only_set_through_the_tool(self):
        router = self.router
        router.wait_for(lambda: len(router.recorded()) >= 2, "the recorded calls")
        calls = router.recorded()
        self.assertRegex(calls[0], r"^date -s \d+:\d+:\d+ \d+/\d+/20\d\d$")
        self.assertEqual(calls[1], "hwclock --systohc")

    def test_3_the_transmit_counter_is_the_kernels(self):
        counter = int(self.router.read("/sys/class/net/wwan0/statistics/tx_bytes"))
        self.router.wait_for(lambda: self.router.reaches("8.8.8.8"), "an answer from far away")
        self.assertGreater(int(self.router.read("/sys/class/net/wwan0/statistics/tx_bytes")),
                           counter)


if __name__ == "__main__":
    unittest.main()
