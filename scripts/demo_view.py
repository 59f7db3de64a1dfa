#!/usr/bin/env python3
"""What scripts/demo shows: the daemon's log and status files as they change.

On a terminal it is one picture, drawn anew; elsewhere it is lines, one for each change.
"""

import argparse
import pathlib
import shutil
import signal
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "sandbox"))
from router_sandbox import Router  # noqa: E402  (the path above makes it known)

OPTIONS = {"881": "-881", "E362": "-E362", "E371": "-E371", "USB305": "-USB305",
           "mc75i": "-mc75i"}
LTE_CARDS = ("E362", "E371")
SMS_CARDS = ("881",)
STATUS_FILES = ("/var/log/wireless.cardstats", "/var/log/wireless.serialno",
                "/var/log/wireless.mdn", "/var/log/wirelessactivation_status",
                "/var/log/lightbar", "/var/log/lightbar_ecio_in", "/var/log/lightbar_chan_in",
                "/var/log/wirelessdial_dialing", "/var/log/wirelessdial_notdialing")
# The statistics that a run must have filled; the daemon asks each card for other things.
COMMON_KEYS = ("IMEI", "MDN", "MANU", "MODEL", "FIRMWARE_V")
DEVICE_KEYS = {"881": (*COMMON_KEYS, "HARDWARE_V", "BAND", "CARRIER"),
               "E362": (*COMMON_KEYS, "SIM_ID", "CARRIER"), "E371": (*COMMON_KEYS, "SIM_ID"),
               "USB305": COMMON_KEYS, "mc75i": ("IMEI", "MDN")}
ACTIVATION_CARDS = ("881", "E362", "E371", "USB305")
RECOVERY_FROM = 90  # seconds; a shorter run cannot see a dropped call come back
GRACE = 60  # seconds more that a busy machine may take


class State:
    """All that the picture shows, read from outside the sandbox."""

    def __init__(self, router):
        self.router = router
        self.files = {}
        self.changed = {}
        self.read()

    def read(self):
        router = self.router
        now = time.monotonic()
        for path in STATUS_FILES:
            text = router.read(path) if router.exists(path) else None
            if path not in self.files or self.files[path] != text:
                self.files[path] = text
                self.changed[path] = now
        self.statistics = router.statistics()
        self.log = router.log()
        self.addresses = router.addresses()
        counters = "/sys/class/net/wwan0/statistics/"
        self.sent_bytes = int(router.read(counters + "tx_bytes") or 0)
        self.received_bytes = int(router.read(counters + "rx_bytes") or 0)
        self.sms_sent = sum(line.strip().startswith("AT+CMGS=") for line in router.heard())
        folder = router.path("/tmp/sms/recv")
        self.sms_received = len(list(folder.glob("sms_msg*"))) if folder.is_dir() else 0

    def value(self, key):
        return self.statistics.get("CELLMODEM_" + key, "-") or "-"

    def activation(self):
        return (self.files["/var/log/wirelessactivation_status"] or "-").strip()

    def csq(self):
        text = self.value("CURRENT_CSQ")
        return int(text) if text.isdigit() and int(text) <= 31 else None

    def signal_bar(self, width=31):
        csq = self.csq()
        if csq is None:
            return "no signal known".ljust(width)
        return ("█" * round(csq * width / 31)).ljust(width, "·")


class Picture:
    """A terminal's view, drawn over itself."""

    BOLD, DIM, GREEN, RED, PLAIN = "\x1b[1m", "\x1b[2m", "\x1b[32m", "\x1b[31m", "\x1b[0m"

    def __init__(self, card, router):
        self.card = card
        self.router = router
        sys.stdout.write("\x1b[?1049h\x1b[?25l")  # a page of its own, no cursor

    def close(self):
        sys.stdout.write("\x1b[?25h\x1b[?1049l")
        sys.stdout.flush()

    def link_lines(self, state):
        address = ", ".join(state.addresses) or "none"
        colour = self.GREEN if state.addresses else self.RED
        return [f"  Call     {state.value('QMI_STATE'):14} result {state.value('QMI_RESULT')},"
                f" last end: {state.value('QMI_END_REASON')}",
                f"  Address  {colour}{address:18}{self.PLAIN}"
                f" sent {state.sent_bytes} bytes, received {state.received_bytes}"]

    def file_lines(self, state):
        now = time.monotonic()
        lines = []
        for path, text in state.files.items():
            if text is None:
                continue
            lines_in_file = text.splitlines()
            shown = lines_in_file[0] if len(lines_in_file) == 1 else f"{len(lines_in_file)} lines"
            fresh = now - state.changed[path] < 3
            mark = self.BOLD + "*" if fresh else self.DIM + " "
            lines.append(f"  {mark} {path:36} {shown[:40]}{self.PLAIN}")
        return lines

    def draw(self, state, elapsed):
        size = shutil.get_terminal_size()
        enter = f"scripts/router enter {self.router.pid} -- modem-sim ctl"
        lines = [f"{self.BOLD}modemd{self.PLAIN} with a simulated {self.card}"
                 f"   {elapsed:4.0f} s   Ctrl-C ends it", "",
                 f"  Signal   {self.GREEN}{state.signal_bar()}{self.PLAIN}"
                 f" CSQ {state.value('CURRENT_CSQ')}, {state.value('CURRENT_RSSI')} dBm,"
                 f" Ec/Io {state.value('CURRENT_ECIO')}",
                 f"  Network  {state.activation():14} {state.value('CARRIER')},"
                 f" service {state.value('SERVICE_TYPE')}"]
        if self.card in LTE_CARDS:
            lines += self.link_lines(state)
        else:
            lines.append(f"  SMS      sent {state.sms_sent}, received {state.sms_received}")
        lines += ["", f"{self.BOLD}Status files{self.PLAIN} (* just changed)",
                  *self.file_lines(state), "", f"{self.BOLD}System log{self.PLAIN}"]
        hints = ["", f"At a second terminal: {enter} signal 5 | deregister | drop-call | help"]
        room = max(3, size.lines - len(lines) - len(hints) - 1)
        lines += [f"  {line[:size.columns - 3]}" for line in state.log[-room:]]
        text = "".join(f"{line}\x1b[K\r\n" for line in lines + hints)
        sys.stdout.write("\x1b[H" + text + "\x1b[J")
        sys.stdout.flush()


class Lines:
    """The view for a file or a pipe: one line for each change."""

    def __init__(self, card, _):
        print(f"modemd with a simulated {card}", flush=True)
        self.log_lines = 0
        self.last = {}

    def close(self):
        pass

    def draw(self, state, elapsed):
        news = [f"log      {line}" for line in state.log[self.log_lines:]]
        self.log_lines = len(state.log)
        current = {"signal": f"{state.signal_bar(20)} CSQ {state.value('CURRENT_CSQ')}",
                   "network": f"{state.activation()}, {state.value('CARRIER')},"
                              f" {state.value('SERVICE_TYPE')}",
                   "call": state.value("QMI_STATE"),
                   "address": ", ".join(state.addresses) or "none",
                   "sms": f"sent {state.sms_sent}, received {state.sms_received}"}
        for name, value in current.items():
            if self.last.get(name) != value:
                news.append(f"{name:8} {value}")
        self.last = current
        for line in news:
            print(f"{elapsed:6.1f} s  {line}", flush=True)


class Checks:
    """What an unattended run makes happen, and what it must have seen at its end."""

    def __init__(self, card, router, seconds):
        self.router = router
        self.keys = DEVICE_KEYS[card]
        self.lte = card in LTE_CARDS
        self.sms = card in SMS_CARDS
        self.recovery = self.lte and seconds >= RECOVERY_FROM
        self.leases_before_drop = None
        self.seen = {}
        self.events = [(8, lambda: router.ctl("signal", "9"))]
        self.expect("every device key of the statistics")
        self.expect("the serial number's own file")
        self.expect("the lightbar")
        if card in ACTIVATION_CARDS:
            self.expect("the activation status")
        self.expect("the changed signal in the statistics")
        if self.lte:
            self.expect("an address on wwan0")
            self.expect("the call as connected in the statistics")
            self.expect("bytes sent over wwan0")
        if self.recovery:
            self.expect("the dropped call back with a new lease")
        if self.sms:
            self.expect("the spooled message sent")
            self.expect("the arrived message in a file")
            self.events += [(4, self.spool), (6, self.arrive)]

    def expect(self, what):
        self.seen[what] = False

    def spool(self):
        self.router.shell("mkdir -p /tmp/sms/send")
        self.router.write("/tmp/sms/send/demo", "TO=+15550100\nMSG=Hello from the router\n")

    def arrive(self):
        self.router.ctl("sms", "+15550123", "Hello router")

    def make_happen(self, elapsed):
        while self.events and self.events[0][0] <= elapsed:
            self.events.pop(0)[1]()

    def drop_once_connected(self, state):
        if self.recovery and self.leases_before_drop is None and state.addresses:
            self.leases_before_drop = self.router.dhcp("DHCPACK")
            self.router.ctl("drop-call")

    def recovered(self, state):
        return (self.leases_before_drop is not None and bool(state.addresses)
                and self.router.dhcp("DHCPACK") > self.leases_before_drop)

    def look(self, state):
        known = all(state.value(key) not in ("-", "Unknown") for key in self.keys)
        serial = (state.files["/var/log/wireless.serialno"] or "").strip()
        now = {
            "every device key of the statistics": known,
            "the serial number's own file": serial != "" and serial == state.value("IMEI"),
            "the lightbar": bool(state.files["/var/log/lightbar"]),
            "the activation status": state.activation() == "Reg Home",
            "the changed signal in the statistics": state.value("LOWSPEED_CSQ") == "9",
            "an address on wwan0": bool(state.addresses),
            "the call as connected in the statistics": state.value("QMI_STATE") == "CONNECTED",
            "bytes sent over wwan0": state.sent_bytes > 0,
            "the dropped call back with a new lease": self.recovered(state),
            "the spooled message sent":
                state.sms_sent > 0 and not self.router.exists("/tmp/sms/send/demo"),
            "the arrived message in a file": state.sms_received > 0,
        }
        for what in self.seen:
            self.seen[what] = self.seen[what] or now[what]

    def missing(self):
        return [what for what, was_seen in self.seen.items() if not was_seen]


def watch(router, card, seconds):
    """Shows the run; returns the checks of an unattended one."""
    checks = Checks(card, router, seconds) if seconds else None
    if checks and checks.lte and not checks.recovery:
        router.ctl("call", "up")  # as after a restart of the daemon: a cold start takes longer
    if not checks and card in LTE_CARDS:
        router.ctl("drive", "on")
    router.start_daemon(OPTIONS[card], "/dev/ttyUSB0")
    view = (Picture if sys.stdout.isatty() else Lines)(card, router)
    try:
        state = State(router)
        while True:
            elapsed = time.monotonic() - router.started_at
            state.read()
            view.draw(state, elapsed)
            if router.read("/run/exit"):
                raise RuntimeError("the daemon ended by itself")
            if checks:
                checks.make_happen(elapsed)
                checks.drop_once_connected(state)
                checks.look(state)
                over = elapsed - seconds
                if over > GRACE or (over >= 0 and not checks.missing()):
                    return checks
            time.sleep(0.4)
    finally:
        view.close()


def judge(router, checks):
    router.signal_daemon("TERM")
    status = router.wait_for_exit()
    for what, was_seen in checks.seen.items():
        print(f"{'ok  ' if was_seen else 'FAIL'} {what}")
    print(f"{'ok  ' if status == 0 else 'FAIL'} clean end on SIGTERM (exit status {status})")
    if checks.missing():
        print(router.story())
    return 1 if checks.missing() or status != 0 else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--card", choices=sorted(OPTIONS), default="E362")
    parser.add_argument("--for", dest="seconds", type=int, default=0)
    arguments = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    try:
        with Router(arguments.card) as router:
            checks = watch(router, arguments.card, arguments.seconds)
            return judge(router, checks)
    except KeyboardInterrupt:
        return 0
    except (AssertionError, RuntimeError) as error:
        print(f"demo: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
