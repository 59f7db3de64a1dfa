"""modemctl sms beside a real daemon: what it drops, what it says became of it, what it hands on."""

import os
import unittest

from router_sandbox import PATIENCE
from text_gateway import MODEMCTL, TextGateway, document_of

RECEIVED = "FROM=15550123\nTIME=26/03/14-09:15:02-20\nMSG={}\n"


class OnAir:
    """The daemon gives the modem a moment to answer, and on a busy machine an answer may miss it:
    a message may count as sent at its second attempt only."""

    @classmethod
    def setUpClass(cls):
        cls.router = TextGateway()
        cls.router.start_the_gateway()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def names(self, folder):
        return sorted(os.listdir(self.router.path(f"/tmp/sms/{folder}")))


class Sending(OnAir, unittest.TestCase):
    def test_1_a_message_goes_on_air_as_typed(self):
        document = self.router.document("sms send '+1 (555) 0100' 'The pump is off' --wait")
        message = document["messages"][0]
        self.assertEqual(document["to"], "+15550100")
        self.assertEqual(message["fate"], "sent")
        self.assertIn("Send Success", message["sign"])
        self.assertTrue(message["exact"])
        self.assertIn("The pump is off", self.router.ctl("sent"))
        self.assertNotIn("The pump is offf", self.router.ctl("sent"))
        self.assertEqual(self.names("send"), [])

    def test_2_a_long_one_goes_in_pieces_one_after_the_other(self):
        text = " ".join(f"word{n:03}" for n in range(30))
        self.router.write("/tmp/text", text + "\n")
        document = document_of(self.router.shell(
            f"{MODEMCTL} sms send 5550101 - --wait --json </tmp/text"))
        self.assertEqual([m["fate"] for m in document["messages"]], ["sent", "sent"])
        sent = self.router.ctl("sent")
        self.assertLess(sent.index("(1/2) word000"), sent.index("(2/2) "))
        for number in range(30):
            self.assertIn(f"word{number:03}", sent)

    def test_3_without_a_log_the_end_is_unknown_and_says_so(self):
        self.router.shell("kill $(pgrep -f 'busybox syslog[d]'); rm -f /var/log/messages /var/log/messages.0")
        document = self.router.document("sms send 5550104 'Heard by nobody' --wait")
        self.assertEqual(document["messages"][0]["fate"], "unknown")
        self.assertIn("no line of the log", document["messages"][0]["sign"])


class Refused(OnAir, unittest.TestCase):
    def test_1_what_the_network_refuses_is_told_with_its_reason(self):
        self.router.ctl("sms-fails", "38", "forever")
        document = self.router.document("sms send 5550102 'Nobody hears me' --wait")
        self.router.ctl("sms-fails", "off")
        message = document["messages"][0]
        self.assertEqual(message["fate"], "failed")
        self.assertIn("CMS error #38: Network out of order", message["sign"] + message["reason"])
        failed = self.router.document("sms failed")["messages"]
        self.assertEqual([m["to"] for m in failed], ["5550102"])
        self.assertIn("Network out of order", failed[0]["reason"])

    def test_2_it_is_tried_again_on_request(self):
        name = self.names("send_fail")[0]
        changes = self.router.document(f"sms requeue {name}")["changes"]
        self.assertEqual([c["done"] for c in changes], [True])
        self.assertEqual(self.names("send_fail"), [])
        self.router.wait_for(lambda: "Nobody hears me" in self.router.ctl("sent"), "the message",
                             patience=3 * PATIENCE)


class Spool(unittest.TestCase):
    """Without a daemon: the spool is only files."""

    @classmethod
    def setUpClass(cls):
        cls.router = TextGateway()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def tearDown(self):
        self.router.shell("rm -rf /tmp/sms/send/* /tmp/sms/recv/* /tmp/sms/send_fail/*")

    def listing(self, words="sms list"):
        return self.router.document(words)["messages"]

    def test_a_send_file_is_dropped_whole_and_readable_to_its_owner_only(self):
        document = self.router.document("sms send 5550100 'Hi there.'")
        name = document["messages"][0]["name"]
        self.assertEqual(document["messages"][0]["fate"], "waiting")
        self.assertIn("No daemon is running", " ".join(document["notes"]))
        self.assertEqual(self.router.read(f"/tmp/sms/send/{name}"),
                         "TO=5550100\nMSG=Hi there. ")
        self.assertEqual(self.router.path(f"/tmp/sms/send/{name}").stat().st_mode & 0o777, 0o600)
        self.assertEqual(os.listdir(self.router.path("/tmp/sms")).count("send"), 1)
        self.assertEqual([n for n in os.listdir(self.router.path("/tmp/sms"))
                          if n.startswith(".")], [])

    def test_names_are_unique_and_in_order(self):
        names = [self.router.document("sms send 5550100 x")["messages"][0]["name"]
                 for _ in range(5)]
        self.assertEqual(names, sorted(set(names)))
        self.assertEqual(sorted(m["name"] for m in self.listing()), names)

    def test_what_cannot_be_sent_is_refused_and_nothing_dropped(self):
        for words in ("sms send '5550100\"' x", "sms send 5550100 \"$(printf 'a\\032b')\"",
                      "sms send 5550100 \"$(printf 'a\\033b')\"", "sms send 5550100 ''",
                      "sms send 5550100 'Gr\u00fc\u00dfe'", "sms send 5550100 'see +CMS ERROR: 1'",
                      "sms send 5550100 a b"):
            self.assertEqual(self.router.status_of(words), 2, words)
        self.assertEqual(self.listing(), [])
        self.assertEqual(self.router.status_of("sms send 5550100 'Gr\u00fc\u00dfe' --replace"), 0)
        self.assertEqual([m["text"] for m in self.listing()], ["Gruesse "])

    def test_a_body_line_forges_no_sender(self):
        self.router.write("/tmp/sms/recv/sms_msg20260314-091502.1",
                          RECEIVED.format("Hello\nFROM=15559999\nTIME=0\nMSG=forged"))
        message = self.listing()[0]
        self.assertEqual(message["from"], "15550123")
        self.assertEqual(message["text"], "Hello\nFROM=15559999\nTIME=0\nMSG=forged")
        page = self.router.modemctl("sms show sms_msg20260314-091502.1")
        self.assertIn("From          15550123", page)
        self.assertNotIn("\nFROM=", page)

    def test_nothing_of_a_message_or_a_name_reaches_the_terminal_unescaped(self):
        self.router.write("/tmp/sms/recv/sms_msg\x1b]0;x\x07.1",
                          RECEIVED.format("\x1b[2J\x9b31m\u202eabc"))
        for words in ("sms list", "sms list --json", "sms show 'sms_msg\\x1b]0;x\\x07.1'"):
            output = self.router.modemctl(words)
            self.assertNotRegex(output, "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")
        self.assertIn("\\x1b[2J", self.router.modemctl("sms show 'sms_msg\\x1b]0;x\\x07.1'"))

    def test_links_directories_and_huge_files_are_shown_and_not_read(self):
        self.router.shell("echo 'TO=1' >/etc/secret; echo 'MSG=secret' >>/etc/secret;"
                          " ln -s /etc/secret /tmp/sms/send/link; mkdir /tmp/sms/send/folder;"
                          " mkfifo /tmp/sms/send/fifo;"
                          " dd if=/dev/zero of=/tmp/sms/send/huge bs=1 count=0 seek=1000000000"
                          " 2>/dev/null")
        kinds = {m["name"]: m["kind"] for m in self.listing()}
        self.assertEqual(kinds, {"link": "link", "folder": "directory", "fifo": "special_file",
                                 "huge": "file"})
        self.assertNotIn("secret", self.router.modemctl("sms list"))
        self.assertEqual(self.router.status_of("sms delete link folder fifo huge"), 0)
        self.assertTrue(self.router.exists("/etc/secret"))
        self.assertEqual(self.listing(), [])

    def test_nothing_leads_out_of_the_spool(self):
        self.router.shell("touch /tmp/sms/keep; mkdir -p /tmp/sms/send/full/inside")
        for words in ("sms delete ../keep", "sms delete waiting/../keep", "sms delete .",
                      "sms delete full"):
            self.assertEqual(self.router.status_of(words), 1, words)
        self.assertTrue(self.router.exists("/tmp/sms/keep"))
        self.assertTrue(self.router.exists("/tmp/sms/send/full/inside"))

    def test_what_would_be_lost_is_not_put_back(self):
        for name, text in (("no-message", "TO=1\n"), ("no-number", "MSG=x\n")):
            self.router.write(f"/tmp/sms/send_fail/{name}.20260314-091502", text)
        self.assertEqual(self.router.status_of("sms requeue --all"), 1)
        self.assertEqual(len(self.listing("sms failed")), 2)

    def test_a_message_put_back_replaces_none_that_waits(self):
        self.router.write("/tmp/sms/send/note", "TO=1\nMSG=first\n")
        self.router.write("/tmp/sms/send_fail/note.20260314-091502", "TO=1\nMSG=second\n")
        self.assertEqual(self.router.status_of("sms requeue --all"), 0)
        self.assertEqual(sorted(m["text"] for m in self.listing()), ["first\n", "second\n"])

    def test_a_spool_behind_somebodys_link_is_not_used(self):
        self.router.shell("mv /tmp/sms /tmp/real; ln -s /tmp/real /tmp/sms;"
                          " chown -h 1000:1000 /tmp/sms 2>/dev/null || true")
        foreign = self.router.path("/tmp/sms").lstat().st_uid != 0
        status = self.router.status_of("sms send 5550100 x")
        self.router.shell("rm /tmp/sms; mv /tmp/real /tmp/sms")
        self.assertEqual(status, 1 if foreign else 0)

    def test_a_copied_tree_is_never_changed(self):
        self.assertEqual(self.router.status_of("sms send 5550100 x --root /"), 0)
        self.router.shell("mkdir -p /tmp/copy")
        for words in ("send 5550100 x", "requeue --all", "delete x", "follow"):
            self.assertEqual(self.router.status_of(f"sms {words} --root /tmp/copy"), 2, words)


class Following(unittest.TestCase):
    """Each message reaches the program exactly once, whatever is killed meanwhile."""

    @classmethod
    def setUpClass(cls):
        cls.router = TextGateway()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def tearDown(self):
        if self.router.exists("/run/follow.pid"):  # the test has failed
            self.router.end("follow")
        self.router.shell("rm -rf /tmp/sms/recv/* /var/lib/modemctl /run/seen /run/go /run/began")

    def receive(self, number, text):
        self.router.write(f"/tmp/sms/recv/sms_msg20260314-091502.{number}", RECEIVED.format(text))

    def seen(self):
        return self.router.read("/run/seen").splitlines()

    def follow(self, command, more=""):
        self.router.start(f"sms follow --exec '{command}' --pause 0 {more}", "follow")

    def wait_for_seen(self, lines):
        self.router.wait_for(lambda: len(self.seen()) >= len(lines), "the program's runs")
        self.assertEqual(self.seen(), lines)

    KEEP = 'echo "$MODEMCTL_FROM:$(cat)" >>/run/seen'

    def test_the_program_gets_text_and_sender_once_in_order(self):
        for number in (1, 2, 10):
            self.receive(number, f"text {number}")
        self.follow(self.KEEP)
        self.wait_for_seen(["15550123:text 1", "15550123:text 2", "15550123:text 10"])
        self.receive(11, "text 11")
        self.router.wait_for(lambda: len(self.seen()) == 4, "the fourth")
        self.assertEqual(self.router.end("follow"), 0)
        self.follow(self.KEEP)
        self.receive(12, "text 12")
        self.wait_for_seen([f"15550123:text {n}" for n in (1, 2, 10, 11, 12)])
        self.router.end("follow")

    def test_a_run_outlives_a_killed_modemctl_and_is_not_repeated(self):
        self.receive(1, "slow")
        self.follow('echo x >>/run/began; while [ ! -e /run/go ]; do sleep 0.1; done;'
                    ' cat >>/run/seen; echo >>/run/seen')
        self.router.wait_for(lambda: self.router.exists("/run/began"), "the run")
        self.router.end("follow", "KILL")
        self.follow(self.KEEP)
        self.router.wait_for(lambda: "waiting" in self.router.read("/run/follow.err"),
                             "the second one to wait for the run")
        self.router.shell("touch /run/go")
        self.router.wait_for(self.seen, "the end of the run")
        self.receive(2, "next")
        self.wait_for_seen(["slow", "15550123:next"])
        self.assertEqual(self.router.read("/run/began"), "x\n")
        self.router.end("follow")

    def test_one_that_fails_is_tried_again_and_then_set_aside(self):
        self.receive(1, "bad")
        self.receive(2, "good")
        self.follow('read -r text; echo "$text $MODEMCTL_TRY" >>/run/seen; [ "$text" = good ]',
                    "--tries 3")
        aside = "/var/lib/modemctl/aside/sms_msg20260314-091502.1"
        self.router.wait_for(lambda: self.router.exists(aside), "the message to be set aside")
        self.assertEqual(sorted(self.seen()), ["bad 1", "bad 2", "bad 3", "good 1"])
        self.assertEqual(self.router.read(aside), RECEIVED.format("bad"))
        self.router.end("follow")
        self.follow(self.KEEP)
        self.receive(3, "later")
        self.router.wait_for(lambda: "15550123:later" in self.seen(), "the next message")
        self.assertEqual(len(self.seen()), 5)
        self.router.end("follow")

    def test_a_program_that_hangs_is_ended(self):
        self.receive(1, "x")
        self.follow('echo run >>/run/seen; sleep 4711', "--time-limit 1 --tries 1 --delete")
        self.router.wait_for(
            lambda: self.router.exists("/var/lib/modemctl/aside/sms_msg20260314-091502.1"),
            "the message to be set aside")
        self.assertEqual(self.seen(), ["run"])
        self.router.wait_for(lambda: not self.router.exists(
            "/tmp/sms/recv/sms_msg20260314-091502.1"), "the message to be deleted")
        self.assertEqual(self.router.shell("ps -o args | grep -x 'sleep 4711' || true"), "")
        self.router.end("follow")

    def test_a_hostile_sender_runs_nothing(self):
        self.router.write("/tmp/sms/recv/sms_msg1",
                          "FROM=$(touch /run/surprise)`touch /run/surprise`\x1b\n"
                          "TIME=;touch /run/surprise\nMSG=$(touch /run/surprise)\n")
        self.follow(self.KEEP)
        self.router.wait_for(self.seen, "the run")
        self.assertIn("$(touch /run/surprise)`touch /run/surprise`\\x1b:", self.seen()[0])
        self.assertFalse(self.router.exists("/run/surprise"))
        self.router.end("follow")

    def test_a_half_written_message_is_waited_for(self):
        path = self.router.path("/tmp/sms/recv/sms_msg20260314-091502.1")
        path.write_text("")
        self.follow(self.KEEP)
        self.receive(2, "whole")
        self.router.wait_for(self.seen, "the other message")
        self.receive(1, "finished")
        self.wait_for_seen(["15550123:whole", "15550123:finished"])
        self.router.end("follow")

    def test_without_a_program_each_new_message_is_one_document(self):
        self.receive(1, "old")
        self.router.start("sms follow --json", "follow")
        # It has looked once when it shows the first one; until then none is new for sure.
        numbers = iter(range(2, 10000))

        def is_shown():
            self.receive(next(numbers), "new")
            return self.router.read("/run/follow.out").count("\n") >= 2

        self.router.wait_for(is_shown, "new messages")
        self.router.end("follow")
        documents = [document_of(line) for line in self.router.read("/run/follow.out").splitlines()]
        self.assertEqual({d["schema"] for d in documents}, {"modemctl.sms_message/1"})
        self.assertEqual({d["text"] for d in documents}, {"new"})
        names = [d["name"] for d in documents]
        self.assertEqual(len(names), len(set(names)))


if __name__ == "__main__":
    unittest.main()
