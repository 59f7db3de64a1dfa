"""modemctl doctor on a router that is well, on one that is not, and the report for the maker."""

import io
import pathlib
import subprocess
import tarfile
import tempfile
import unittest

from router_sandbox import PROJECT, Router
from text_gateway import MODEMCTL, TextGateway, document_of


def checks(router, words=""):
    text = router.shell(f"{MODEMCTL} doctor --json {words}", check=False)
    return {row["id"]: row for row in document_of(text)["checks"]}


class Doctor(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("E362")
        cls.router.shell("mkdir -p -m 0700 /tmp/sms/send /tmp/sms/recv /tmp/sms/send_fail;"
                         " chmod 0700 /tmp/sms; printf 'CM_APN=internet\\n'"
                         " >/etc/kvt/wireless/cellmodem_ppp.conf")
        cls.router.start_daemon("-E362", "/dev/ttyUSB0")
        cls.router.wait_for(cls.router.addresses, "the link")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def test_1_a_router_that_is_well_has_nothing_bad(self):
        self.router.wait_for(lambda: self.router.statistics().get("CELLMODEM_MODEL"), "the model")
        found = checks(self.router)
        self.assertEqual([row for row in found.values() if row["health"] == "bad"], [])
        for name in ("shell", "helpers", "port", "port-users", "card", "pid-file", "log-daemon",
                     "space", "clock", "ppp-file", "apn", "spool", "silent-port", "sent-bytes",
                     "answers-in-step"):
            self.assertEqual(found[name]["health"], "fine", found[name])

    def test_2_it_changes_nothing(self):
        look = "find / -xdev -newer /run/mark ! -path '/proc/*' ! -path '/run/*' | sort"
        self.router.shell("kill -STOP $(cat /var/run/modemd.pid); touch /run/mark")
        checks(self.router)
        changed = self.router.shell(look)
        self.router.shell("kill -CONT $(cat /var/run/modemd.pid)")
        self.assertEqual([line for line in changed.splitlines()
                          if line not in ("/var/log/messages", "/dev/null", "/dev/ptmx")], [])

    def test_3_somebody_else_at_the_port_is_found(self):
        self.router.shell("(sleep 100000 </dev/ttyUSB0 >/dev/null 2>&1 & echo $! >/run/thief)")
        found = checks(self.router)["port-users"]
        thief = self.router.read("/run/thief").strip()
        self.router.shell(f"kill {thief}")
        self.assertEqual(found["health"], "bad")
        self.assertIn(f"process {thief} ", found["what"])
        self.assertIn(f"kill {thief}", found["mend"])

    def test_4_each_mend_mends(self):
        router = self.router
        router.shell("touch -d '1970-01-01 00:00:00' /etc/kvt/wireless/cellmodem_ppp.conf;"
                     " mkdir /tmp/sms/send/a; chmod 0777 /tmp/sms/send")
        found = checks(router)
        for name in ("ppp-file", "spool-entries", "spool"):
            self.assertEqual(found[name]["health"], "bad", found[name])
            router.shell(found[name]["mend"])
        found = checks(router)
        for name in ("ppp-file", "spool-entries", "spool"):
            self.assertEqual(found[name]["health"], "fine", found[name])

    def test_5_a_shell_that_does_not_wait_is_found(self):
        self.router.shell("cp -L /usr/bin/dash /bin/dash.copy; ln -sf dash.copy /bin/sh.new;"
                          " mv /bin/sh.new /bin/sh")
        found = checks(self.router)["shell"]
        self.router.run("/bin/busybox", "ln", "-sf", "/bin/busybox", "/bin/sh")
        self.assertEqual(found["health"], "bad")
        self.assertEqual(checks(self.router)["shell"]["health"], "fine")

    def test_6_a_log_daemon_that_is_stuck_or_dead_is_found(self):
        process = self.router.shell("pgrep -f 'busybox syslog[d]'").strip()
        self.router.shell(f"kill -STOP {process}")
        self.fill_the_log()
        self.router.wait_for(lambda: checks(self.router)["log-daemon"]["health"] == "bad",
                             "the log's socket to be full")
        self.router.shell(f"kill -CONT {process}")
        self.router.wait_for(lambda: checks(self.router)["log-daemon"]["health"] == "fine",
                             "the log to be read")
        self.router.shell(f"kill {process}")
        self.router.wait_for(lambda: checks(self.router)["log-daemon"]["health"] == "bad",
                             "the log's end to be seen")
        self.router.shell("syslogd -O /var/log/messages")

    def fill_the_log(self):
        """Lines until one is not taken: the socket has room for a few only."""
        self.router.shell("(for i in 0 1 2 3 4 5 6 7 8 9; do for j in 0 1 2 3 4 5 6 7 8 9; do"
                          " for k in 0 1 2 3 4 5 6 7 8 9; do timeout 1 logger x || exit; done;"
                          " done; done) >/dev/null 2>&1 </dev/null &")

    def test_7_a_dead_daemon_is_found(self):
        self.router.shell("kill -KILL $(cat /var/run/modemd.pid)")
        self.router.wait_for_exit()
        self.assertEqual(checks(self.router)["pid-file"]["health"], "bad")


class NoDaemon(unittest.TestCase):
    def test_a_router_that_never_had_one(self):
        with Router() as router:
            found = checks(router)
            self.assertEqual(found["pid-file"]["health"], "note")
            self.assertEqual(found["port"]["health"], "note")


class Report(unittest.TestCase):
    SECRETS = ("001017088100014", "2015550188", "15550123", "5550177", "stadium", "wonderful")

    @classmethod
    def setUpClass(cls):
        cls.router = TextGateway()
        cls.router.start_the_gateway()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def bundle(self, words=""):
        raw = subprocess.run(
            [str(PROJECT / "scripts" / "router"), "enter",
             str(self.router.pid), "--", "/bin/sh", "-c", f"{MODEMCTL} doctor --bundle - {words}"],
            stdin=subprocess.DEVNULL, capture_output=True, check=True).stdout
        return tarfile.open(fileobj=io.BytesIO(raw))

    def test_1_holds_nothing_personal_and_reads_like_the_router(self):
        router = self.router
        router.ctl("sms", "+15550123", "See you at the stadium, 5550177")
        router.wait_for(lambda: list(router.path("/tmp/sms/recv").iterdir()), "the message")
        router.wait_for(lambda: "stadium" in " ".join(router.log()), "the message in the log")
        router.modemctl("sms send +15550123 'What a wonderful message' --wait", check=False)
        router.wait_for(lambda: router.statistics().get("CELLMODEM_SERVING_CELL"), "the cell")
        statistics = router.statistics()
        secrets = {*self.SECRETS, statistics["CELLMODEM_ESN"],
                   statistics["CELLMODEM_SIM_ID"].strip(),
                   statistics["CELLMODEM_SERVING_CELL"].split()[0]} - {""}
        with self.bundle() as tar, tempfile.TemporaryDirectory() as folder:
            tar.extractall(folder)  # made by ourselves, a moment ago
            files = [p for p in pathlib.Path(folder).rglob("*") if p.is_file()]
            text = "\n".join(f"{p}\n{p.read_text(errors='replace')}" for p in files)
            for secret in secrets:
                self.assertNotIn(secret, text)
            self.assertIn("Got SMS from", text)
            status = document_of(subprocess.run(
                [MODEMCTL, "status", "--json", "--root", folder], check=False,
                capture_output=True, text=True).stdout)
            self.assertEqual(status["schema"], "modemctl.status/1")
            received = document_of(subprocess.run(
                [MODEMCTL, "sms", "list", "--json", "--root", folder], check=False,
                capture_output=True, text=True).stdout)
            self.assertEqual(len(received["messages"]), 1)

    def test_2_two_reports_cannot_be_compared(self):
        names = []
        for _ in range(2):
            with self.bundle() as tar:
                names.append(tar.extractfile("var/log/wireless.serialno").read())
        self.assertNotEqual(names[0], names[1])

    def test_3_a_file_is_written_whole_for_its_owner(self):
        out = document_of(self.router.modemctl("doctor --bundle /tmp/report.tar --json"))
        self.assertEqual(out["schema"], "modemctl.bundle/1")
        path = self.router.path("/tmp/report.tar")
        self.assertEqual(path.stat().st_mode & 0o777, 0o600)
        self.assertEqual(path.stat().st_size % 512, 0)
        self.assertEqual(self.router.status_of("doctor --bundle /nowhere/report.tar"), 1)


if __name__ == "__main__":
    unittest.main()
