"""Programs that nobody here wrote take the simulated modem for one: gammu and smsd.

They speak PDU mode, which the daemon does not, and ask for what the daemon does not ask. What the
simulated modem knows beyond the daemon's commands, it knows for them or for a story.
"""

import os
import re
import unittest

from router_sandbox import BUILD, PROJECT, Router

SIMULATOR = PROJECT / "gear" / "sim"
GAMMU_SETTINGS = "[gammu]\ndevice = /dev/ttyUSB0\nconnection = at\n"
SPOOL = "/var/spool/sms"
SMSD_SETTINGS = f"""devices = modem
outgoing = {SPOOL}/outgoing
checked = {SPOOL}/checked
sent = {SPOOL}/sent
failed = {SPOOL}/failed
incoming = {SPOOL}/incoming
logfile = /var/log/smsd.log
infofile = /run/smsd.working
pidfile = /run/smsd.pid
delaytime = 1
[modem]
device = /dev/ttyUSB0
incoming = yes
baudrate = 115200
"""


def asked_by_the_daemon():
    """All texts of the daemon, small; a command is somewhere among them."""
    return "\n".join(path.read_text() for path in (PROJECT / "src").rglob("*.cpp")).lower()


def asked_by_stories():
    stories = PROJECT / "tests" / "scenarios"
    return "\n".join(path.read_text() for path in stories.rglob("*.cpp")).lower()


def known_commands():
    """What the table of commands and the profiles answer to."""
    table = (SIMULATOR / "modem" / "commands.cpp").read_text()
    known = {f"AT{head}" for head in re.findall(r'\{"([+$][A-Z]+)", \{Handle', table)}
    for profile in (SIMULATOR / "profiles").glob("*.profile"):
        known |= set(re.findall(r"^> (.+)$", profile.read_text(), re.MULTILINE))
    return known


class ThirdParty(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("generic")
        cls.router.write("/etc/gammurc", GAMMU_SETTINGS)
        cls.router.write("/etc/smsd.conf", SMSD_SETTINGS)

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def gammu(self, *lines):
        """What gammu prints for these lines of its own language, all in one conversation."""
        self.router.write("/tmp/batch", "".join(f"{line}\n" for line in lines))
        return self.router.run("/usr/bin/env", "LC_ALL=C.UTF-8", "/usr/bin/gammu", "-c",
                               "/etc/gammurc", "batch", "/tmp/batch")

    def test_1_gammu_knows_modem_and_network(self):
        told = self.gammu("identify", "networkinfo")
        for line in ("Manufacturer : Example Modems", "Firmware : 1.0.0", "IMEI : 001017000000003",
                     "SIM IMSI : 001010123456789", "Network state : home network",
                     'Name in phone : "Example Net"', "GPRS : attached"):
            self.assertIn(line, re.sub(" +", " ", told))
        self.assertRegex(told, r"Network +: 001010 .*LAC 1A2B, CID 01C3D400")

    def test_2_gammu_reads_both_alphabets_and_sends(self):
        self.router.ctl("sms", "+15550123", "Level of tank {4}?")
        self.router.ctl("sms", "Bank", "Счёт: 5 €")
        told = self.gammu("getallsms", 'sendsms TEXT +15550100 -text "The pump is dry"',
                          'sendsms TEXT +15550100 -unicode -text "Насос сух"')
        parts = told.split("Location ")
        self.assertRegex(parts[1], r'(?s)"\+12015550100".*Default GSM.*"\+15550123".*UnRead')
        self.assertIn("\nLevel of tank {4}?\n", parts[1])
        self.assertRegex(parts[2], r'(?s)Unicode.*"Bank"')
        self.assertIn("\nСчёт: 5 €\n", parts[2])
        self.assertEqual(self.router.ctl("sent").splitlines(),
                         ["+15550100 The pump is dry", "+15550100 Насос сух"])

    def test_3_smsd_sends_and_receives(self):
        router = self.router
        folders = " ".join(f"{SPOOL}/{name}" for name in
                           ("outgoing", "checked", "sent", "failed", "incoming"))
        router.shell(f"mkdir -p {folders}")
        router.shell("smsd -t -c/etc/smsd.conf >/run/smsd.output 2>&1 </dev/null &")
        router.write(f"{SPOOL}/outgoing/note", "To: 15550100\n\nHello from the spool\n")
        router.wait_for(lambda: router.exists(f"{SPOOL}/sent/note"), "the message to be sent")
        self.assertIn("+15550100 Hello from the spool", router.ctl("sent"))
        router.ctl("sms", "+15550123", "Anybody there?")

        def received():
            folder = router.path(f"{SPOOL}/incoming")
            texts = [router.read(f"{SPOOL}/incoming/{name}") for name in os.listdir(folder)]
            return [text for text in texts if text.endswith("Anybody there?")]

        text = router.wait_for(received, "the received message")[0]
        self.assertRegex(text, r"(?s)^From: 15550123\n.*\nSent: \d\d-\d\d-\d\d \d\d:\d\d:\d\d\n")

    def test_4_the_modem_knows_no_command_that_nobody_sends(self):
        heard = "\n".join(self.router.heard()).lower()
        asked = heard + asked_by_the_daemon() + asked_by_stories()
        never = {command for command in known_commands()
                 if not re.search(re.escape(command.lower().rstrip("*")) + r"(?![a-z0-9])", asked)}
        self.assertEqual(never, set())


if __name__ == "__main__":
    unittest.main()
