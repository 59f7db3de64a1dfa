"""The sandbox keeps its promises: nothing of the machine is in reach, and the shell is right."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

from fair_clock import FairClock, slowness
from router_sandbox import PATIENCE, PROJECT, Router

ROUTER = str(PROJECT / "scripts" / "router")


class Walls(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def test_only_wwan0_and_the_loopback_exist(self):
        names = self.router.shell("ls /sys/class/net").split()
        self.assertEqual(sorted(names), ["lo", "wwan0"])

    def test_the_private_directories_start_empty_and_stay_private(self):
        name = f"/tmp/modemd-walls-{os.getpid()}"
        self.router.shell(f"touch {name} /var/log/walls /etc/walls")
        self.assertTrue(self.router.exists(name))
        for path in (name, "/var/log/walls", "/etc/walls"):
            self.assertFalse(os.path.lexists(path), path)

    def test_the_project_and_the_programs_cannot_be_written(self):
        self.assertIn("Read-only", self.router.shell(f"touch {PROJECT}/walls 2>&1 || true"))
        self.assertIn("Read-only", self.router.shell("touch /usr/walls 2>&1 || true"))
        self.assertIn("Read-only",
                      self.router.shell("(echo 1 >/proc/sys/vm/swappiness) 2>&1 || true"))

    def test_the_clock_cannot_be_set(self):
        self.router.shell("/bin/date -s '1:2:3 4/5/2030' &> /dev/null;"
                          " /bin/hwclock --systohc &> /dev/null")
        self.assertEqual(self.router.recorded(),
                         ["date -s 1:2:3 4/5/2030", "hwclock --systohc"])
        # The tool behind the recorder has no right to do it either.
        answer = self.router.shell("/bin/busybox date -s '2030-04-05 01:02:03' 2>&1 || true")
        self.assertIn("Operation not permitted", answer)
        self.assertNotIn(time.gmtime().tm_year, (2030, 1970))

    def test_date_still_tells_the_time(self):
        before = int(time.time())
        told = int(self.router.shell("/bin/date +%s"))
        self.assertTrue(before <= told <= time.time())

    def test_the_shell_reads_ampersand_greater_as_both_outputs(self):
        self.router.shell("(echo out; echo err >&2; sleep 0.2; echo late) &> /tmp/both")
        self.assertEqual(self.router.read("/tmp/both"), "out\nerr\nlate\n")

    def test_processes_of_the_machine_cannot_be_seen(self):
        self.assertEqual(self.router.shell("cat /proc/1/cmdline | tr '\\0' ' '").split()[1],
                         str(PROJECT / "gear/sandbox/init"))


class Carrier(unittest.TestCase):
    def setUp(self):
        self.router = Router()

    def tearDown(self):
        self.router.close()

    def lease(self, *options):
        self.router.shell(f"udhcpc -T 3 -S -b -i wwan0 {' '.join(options)} &> /dev/null")
        return self.router.wait_for(self.router.addresses, "an address")

    def client(self):
        return self.router.wait_for(self.router.dhcp_client, "the client in the background")

    def test_a_lease_comes_with_the_default_route_and_reaches_the_world(self):
        self.router.shell("carrier up")
        self.assertTrue(self.lease()[0].startswith("10.64.0."))
        routes = self.router.wait_for(self.router.default_routes, "the default route")
        self.assertEqual(routes[0]["gateway"], "10.64.0.1")
        self.router.wait_for(lambda: self.router.reaches("8.8.8.8"), "an answer from far away")

    def test_the_switch_leaves_the_default_route_alone(self):
        self.router.shell("carrier up")
        self.lease("-G")
        self.client()
        self.assertEqual(self.router.default_routes(), [])

    def test_a_second_start_signals_the_running_client(self):
        self.router.shell("carrier up")
        self.lease()
        client = self.client()
        leases = self.router.dhcp("DHCPACK")
        self.router.shell("udhcpc -T 3 -S -b -i wwan0 &> /dev/null")
        self.router.wait_for(lambda: self.router.dhcp("DHCPACK") > leases, "the renewal")
        self.assertEqual(self.client(), client)

    def test_a_release_reaches_the_server(self):
        self.router.shell("carrier up")
        self.lease()
        self.client()
        self.router.shell("kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null")
        self.router.wait_for(lambda: self.router.dhcp("DHCPRELEASE") == 1, "the release")
        self.router.shell("ifconfig wwan0 0.0.0.0 up")
        self.assertEqual(self.router.addresses(), [])

    def test_a_dead_link_sends_the_client_to_the_background_until_it_comes_up(self):
        self.router.shell("udhcpc -T 1 -S -b -i wwan0 &> /dev/null")
        self.assertEqual(self.router.addresses(), [])
        self.assertRegex(self.router.read("/tmp/udhcpc.wwan0.lfc"), r"^LEASE_FAIL_COUNTER=[1-9]")
        self.client()
        self.router.shell("carrier up")
        self.router.shell("udhcpc -T 1 -S -b -i wwan0 &> /dev/null")
        self.router.wait_for(self.router.addresses, "an address")

    def test_a_silent_server_gives_no_address(self):
        self.router.shell("carrier up; carrier no-answer")
        self.router.shell("udhcpc -T 1 -S -b -i wwan0 &> /dev/null")
        self.assertEqual(self.router.addresses(), [])
        self.assertIn("silent", self.router.shell("carrier status"))


class Command(unittest.TestCase):
    def run_router(self, *words, **options):
        return subprocess.run([ROUTER, "--quiet", *words], stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False, **options)

    def test_hands_on_the_exit_status(self):
        self.assertEqual(self.run_router("--", "sh", "-c", "exit 7").returncode, 7)
        self.assertEqual(self.run_router("--", "true").returncode, 0)

    def test_explains_itself(self):
        wrong = self.run_router("--no-such-option")
        self.assertEqual(wrong.returncode, 2)
        self.assertIn("Usage:", wrong.stderr)
        self.assertIn("Usage:", self.run_router("--help").stdout)

    def test_leaves_nothing_behind(self):
        router = Router()
        router.shell("(sleep 1000 &) &> /dev/null")
        outside = router.pid
        router.close()
        clock = FairClock()
        while pathlib.Path(f"/proc/{outside}").exists() and clock.seconds() < PATIENCE:
            time.sleep(0.05)
        self.assertFalse(pathlib.Path(f"/proc/{outside}").exists())
        self.assertNotIn("modemd-system", pathlib.Path("/proc/mounts").read_text())

    def test_works_for_a_plain_user(self):
        as_user = []
        if os.geteuid() == 0:
            as_user = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups"]
        # The tree may lie in a folder that is closed to others, root's home for one.
        folder = tempfile.mkdtemp(prefix="modemd-system-")
        self.addCleanup(shutil.rmtree, folder)
        os.chmod(folder, 0o755)
        for part in ("scripts", "gear/sandbox"):
            shutil.copytree(PROJECT / part, f"{folder}/{part}")
        done = subprocess.run([*as_user, f"{folder}/scripts/router", "--quiet", "--", "sh", "-c",
                               "id -u; carrier up; udhcpc -T 3 -S -b -i wwan0 &> /dev/null;"
                               " until ifconfig wwan0 | grep 'inet addr'; do usleep 50000; done"],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              check=False, cwd="/", timeout=PATIENCE * slowness())
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.split()[0], "0")
        self.assertIn("inet addr:10.64.0.", done.stdout)


if __name__ == "__main__":
    unittest.main()
