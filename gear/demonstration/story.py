"""The story that the demo tells, beat by beat, and the same events by hand.

A beat says what happens, what the daemon does about it and where to look; it makes the thing
happen, and it is over when the daemon has done its part, however long that takes.
"""

import dataclasses
from typing import Callable

from state import RESTART_PAUSE, SERIAL_NUMBER, UNKNOWN

WEAK, STRONG = 4, 20  # of 31
NUMBER = "+15550123"


@dataclasses.dataclass(frozen=True)
class Caption:
    """Three lines of plain words; each fits a narrow terminal."""

    title: str
    happens: str
    daemon: str
    look: str


@dataclasses.dataclass(frozen=True)
class Beat:
    word: str  # for the line that shows how far the story is
    caption: Caption
    # Makes it happen, given (stage, state): yields conditions of the state, and goes on when the
    # one yielded holds.
    steps: Callable


def stays(seconds):
    """A condition that holds after so many seconds: time to read."""
    began = []

    def held(state):
        began.append(state.now)
        return state.now - began[0] >= seconds
    return held


def published(key, value):
    return lambda state: state.value(key) == value


def restarts(state):
    return state.count_log("LTE Connected returned")


def client_starts(state):
    return state.count_log("Starting/Signaling udhcpc")


def knows_the_modem(state):
    return (state.value("IMEI") not in UNKNOWN
            and (state.look.files[SERIAL_NUMBER] or "").strip() == state.value("IMEI"))


def power_on(*_):
    yield knows_the_modem
    yield stays(1)


def register(*_):
    yield lambda state: state.activation() == "Reg Home"
    yield lambda state: state.csq() is not None
    yield stays(3)


def hear_network(*_):
    yield lambda state: state.csq() is not None
    yield stays(5)


def call_up(*_):
    yield lambda state: state.look.call_up and client_starts(state) > 0
    yield stays(3)


def get_address(*_):
    yield lambda state: state.look.address != "" and state.checked_at is not None
    yield stays(4)


def weaken(stage, _):
    stage.ctl("signal", str(WEAK))
    yield lambda state: state.csq() == WEAK
    yield published("LOWSPEED_CSQ", str(WEAK))
    yield stays(4)
    stage.ctl("signal", str(STRONG))
    yield lambda state: state.csq() == STRONG


def drop_call(stage, state):
    before = restarts(state), client_starts(state)
    stage.ctl("drop-call")
    yield lambda state: restarts(state) > before[0]
    yield lambda state: (client_starts(state) > before[1] and state.look.call_up
                         and state.look.address != "")
    yield stays(2)


def message_in(stage, state):
    """Over at once: what is put into the spool now leaves in the same round of the daemon."""
    before = len(state.look.received)
    stage.ctl("sms", NUMBER, "Hello router")
    yield lambda state: len(state.look.received) > before


def message_out(stage, state):
    before = state.sms_sent
    stage.spool(f"demo{before + 1}", NUMBER, "Hello from the router")
    yield lambda state: state.sms_sent > before and not state.look.waiting
    yield stays(3)


def unplug(stage, _):
    stage.unplug()
    yield lambda state: not state.look.plugged and not state.look.running
    yield stays(1)


def plug(stage, _):
    stage.plug()
    yield lambda state: (state.look.plugged and state.look.running
                         and state.started_at >= state.ended_at)
    yield knows_the_modem
    yield lambda state: state.csq() is not None
    yield stays(1)


POWER = Caption(
    "Power on",
    "The router gets power: its modem and modemd start.",
    "asks the modem who it is: maker, model, serial number, SIM.",
    "the status files, as they appear one after the other.")
REGISTERED = Caption(
    "Registered",
    "The modem has found its home network.",
    "asks for it every 5 s, and every 30 s once it is there.",
    "Network, and the file wirelessactivation_status.")
HEARD = Caption(
    "A network is heard",
    "The modem hears a network.",
    "reads the signal; of this card it asks no registration.",
    "Signal, and the file lightbar.")
CALL_STANDS = Caption(
    "Call up",
    "This modem dials by itself at power-on: its data call is up.",
    "sees that there is service and starts the DHCP client.",
    "Call, and 'udhcpc' in the system log.")
CALL_DIALLED = Caption(
    "Call up",
    "There is service, but no data call.",
    "finds no call, dials, and starts the DHCP client.",
    "Call, and 'restarting connection' in the system log.")
ADDRESS = Caption(
    "Address",
    "The carrier gives the router an address.",
    "sees after 30 s at most that call and address are there.",
    "Address, and the bytes that went over the link.")
WEAK_STRETCH = Caption(
    "A weak stretch",
    f"A hill hides the mast: the signal falls to {WEAK} of 31, then recovers.",
    "publishes it within seconds; weak is no reason to redial.",
    "the bar, and the figures below it.")
DROPPED = Caption(
    "A dropped call",
    "The network drops the data call; the address is worth nothing.",
    "notices at its next check, hangs up, dials, gets a lease.",
    "Call and Address, and 'restarting connection' in the log.")
MESSAGE_IN = Caption(
    "A message arrives",
    "Somebody sends a text message to the router.",
    "asks for messages every 15 s and makes a file of each.",
    "Messages, and 'Got SMS' in the system log.")
MESSAGE_OUT = Caption(
    "A message leaves",
    "A program on the router puts a message into /tmp/sms/send.",
    "hands it to the modem and removes the file.",
    "Messages, and 'Send Success' in the system log.")
UNPLUGGED = Caption(
    "Unplugged",
    "Somebody pulls the modem out.",
    "counts 25 failed writes, asks for a reset, and ends.",
    "Modem and Daemon. The files are left over and tell nothing.")
RETURN = Caption(
    "The modem's return",
    "The modem is put back.",
    f"is started again by its start script ({RESTART_PAUSE} s here, else 20).",
    "'starting' in the system log, then all figures anew.")
OVER = Caption(
    "The story is over",
    "That was it. The router goes on as it would for years.",
    "brings back by itself what is still missing.",
    "the keys below: now it is your turn.")
OVER_ALONE = dataclasses.replace(
    OVER, look="the verdicts behind this, one a line.")
BY_HAND = Caption(
    "By hand",
    "The router starts; nothing happens to it but what you do.",
    "asks the modem who it is, and gets it going.",
    "the keys below.")


def beats_of(card):
    """What the card can do of the story, in order."""
    beats = [Beat("power", POWER, power_on)]
    if card.lte and not card.dials_itself:  # the daemon dials before it asks for the registration
        beats.append(Beat("call", CALL_DIALLED, call_up))
    if card.registers:
        beats.append(Beat("registered", REGISTERED, register))
    else:
        beats.append(Beat("network", HEARD, hear_network))
    if card.dials_itself:
        beats.append(Beat("call", CALL_STANDS, call_up))
    if card.lte:
        beats.append(Beat("address", ADDRESS, get_address))
    if card.sms:
        beats += [Beat("message in", MESSAGE_IN, message_in),
                  Beat("message out", MESSAGE_OUT, message_out)]
    beats.append(Beat("weak", WEAK_STRETCH, weaken))
    if card.lte:
        beats.append(Beat("drop", DROPPED, drop_call))
    return beats + [Beat("unplug", UNPLUGGED, unplug), Beat("return", RETURN, plug)]


class Story:
    """Where the story is. Call `advance` after every look."""

    def __init__(self, card, stage, by_hand=False, alone=False):
        self.stage = stage
        self.alone = alone
        self.by_hand = by_hand
        self.beats = [] if by_hand else beats_of(card)
        self.place = -1
        self.steps = None
        self.waiting_for = None
        self.began = []  # when each beat did, for those that have begun
        self.closed = False  # no further beat begins
        self.caption = BY_HAND if by_hand else POWER

    @property
    def over(self):
        """All beats are told, or none of the rest will be."""
        return self.steps is None and (self.closed or self.place + 1 >= len(self.beats))

    def lasts(self, state):
        """How long the present beat does."""
        return 0.0 if self.steps is None else state.now - self.began[-1]

    @property
    def keys_work(self):
        return self.by_hand or (self.over and not self.alone)

    def told(self, beat):
        """None before the beat has begun, False while it lasts, True behind it."""
        place = self.beats.index(beat)
        if place > self.place:
            return None
        return place < self.place or self.steps is None

    def advance(self, state):
        while True:
            if self.steps is None and not self._begin(state):
                return
            if self.waiting_for is not None and not self.waiting_for(state):
                return
            self.waiting_for = next(self.steps, None)
            if self.waiting_for is None:
                self._end()

    def _begin(self, state):
        if self.over:
            return False
        self.place += 1
        beat = self.beats[self.place]
        self.caption = beat.caption
        self.began.append(state.now)
        self.steps = beat.steps(self.stage, state)
        return True

    def _end(self):
        self.steps = None
        if self.over and not self.closed:
            self.caption = OVER_ALONE if self.alone else OVER
