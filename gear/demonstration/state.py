"""What can be seen of the router and its daemon, and when each thing changed."""

import dataclasses
import re

STATISTICS = "/var/log/wireless.cardstats"
SERIAL_NUMBER = "/var/log/wireless.serialno"
ACTIVATION = "/var/log/wirelessactivation_status"
LIGHTBAR = "/var/log/lightbar"
FULL_SIGNAL = 31  # of +CSQ
UNKNOWN = ("-", "Unknown")
RESTART_PAUSE = 3  # seconds from the daemon's end to its next start; 20 on a router


@dataclasses.dataclass
class Snapshot:
    """One look at the router. The log and the commands are those since the look before."""

    now: float  # seconds since the daemon's first start
    files: dict  # path: text, None for a file that is not there
    written: dict  # path: differs after each write
    log: list
    heard: list  # command lines that reached the modem
    address: str  # of wwan0, "" for none
    sent_bytes: int
    received_bytes: int
    plugged: bool
    running: bool  # the daemon
    exit_status: int  # of the daemon's life before; None while it runs
    call_up: bool  # as the modem itself knows
    received: list  # texts of the messages in the spool
    waiting: list  # names of message files not yet sent


class State:
    """All looks together."""

    def __init__(self):
        self.look = None
        self.changed = {}  # path: when its text last changed
        self.written = {}  # path: when it was last written, perhaps with the same text
        self.log = []  # (when, line)
        self.statistics = {}
        self.started_at = 0.0  # the daemon's last start
        self.ended_at = 0.0
        self.unplugged_at = 0.0
        self.checked_at = None  # the daemon's last question for the call
        self.sms_sent = 0
        self.modem_was_gone = False  # in this life of the daemon

    def update(self, look):
        before, self.look = self.look, look
        for path, text in look.files.items():
            if before is not None and before.files[path] != text:
                self.changed[path] = look.now
            if before is not None and before.written[path] != look.written[path]:
                self.written[path] = look.now
        self._follow_daemon(before, look)
        for command in look.heard:
            if command == "AT$NWQMISTATUS":
                self.checked_at = look.now
            elif command.startswith("AT+CMGS="):
                self.sms_sent += 1
        text = look.files[STATISTICS] or ""
        self.statistics = dict(line.split("=", 1) for line in text.splitlines() if "=" in line)

    def _follow_daemon(self, before, look):
        for line in look.log:
            self.log.append((look.now, line))
            if line.endswith(" starting"):
                self.started_at = look.now
                self.checked_at = None
                self.modem_was_gone = False
        if before is not None and before.running and not look.running:
            self.ended_at = look.now
        if before is not None and before.plugged and not look.plugged:
            self.unplugged_at = look.now
        self.modem_was_gone = self.modem_was_gone or not look.plugged

    @property
    def now(self):
        return self.look.now

    def _tells_of_now(self, path):
        """The daemon that runs now has written it, and its modem is still there."""
        return (self.look.plugged and self.look.running
                and self.written.get(path, -1.0) >= self.started_at)

    def value(self, key):
        """What the daemon tells of this modem, "-" for nothing."""
        if not self._tells_of_now(STATISTICS):
            return "-"
        return self.statistics.get("CELLMODEM_" + key, "") or "-"

    def activation(self):
        """The registration in short, "-" for nothing."""
        text = self.look.files.get(ACTIVATION)
        return (text or "").strip() or "-" if self._tells_of_now(ACTIVATION) else "-"

    def csq(self):
        """The signal as the modem tells it, 0 to 31; None while nothing is known."""
        if not self._tells_of_now(LIGHTBAR):
            return None
        found = re.search(r"\+CSQ: ?(\d+)", self.look.files[LIGHTBAR] or "")
        return int(found[1]) if found and int(found[1]) <= FULL_SIGNAL else None

    def count_log(self, start):
        return sum(line.startswith(start) for _, line in self.log)

    def ended_without_reason(self):
        """The daemon may end when its modem is gone, and else never."""
        return not self.look.running and not self.modem_was_gone


class Stage:
    """Where the daemon plays. What is below needs of one: `ctl(*words)` for its modem."""

    def __init__(self, card):
        self.card = card

    def power_on(self):
        """What this card's modem does by itself when it gets power."""
        if self.card.dials_itself:
            self.ctl("call", "up")

    def unplug(self):
        self.ctl("unplug")

    def plug(self):
        self.ctl("plug")
        self.power_on()
