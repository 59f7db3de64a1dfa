"""What a person can do to the router with single keys."""

import dataclasses

import story
from state import FULL_SIGNAL

SIGNAL_STEP = 4


@dataclasses.dataclass(frozen=True)
class Key:
    keys: tuple  # what the terminal sends
    label: str  # as the help line shows it, "" for a key that another one's label names
    action: str  # the method of Hand
    needs: str = ""  # what the card must be able to do


KEYS = (
    Key(("+", "=", "\x1b[A"), "+ - signal", "stronger"),
    Key(("-", "_", "\x1b[B"), "", "weaker"),
    Key(("d",), "d drop call", "drop", "lte"),
    Key(("u",), "u unplug", "unplug"),
    Key(("i",), "i message in", "message_in", "sms"),
    Key(("o",), "o message out", "message_out", "sms"),
)
QUIT = ("q", "Q")


def keys_of(card):
    return [key for key in KEYS if not key.needs or getattr(card, key.needs)]


class Hand:
    """Turns keys into events; each has the words of its beat in the story."""

    def __init__(self, card, stage, tale, state):
        self.stage = stage
        self.tale = tale
        self.state = state
        self.keys = keys_of(card)
        self.signal = None  # as last set
        self.messages = 0

    def press(self, key):
        """True when the key means something now."""
        for row in self.keys:
            if key in row.keys:
                getattr(self, row.action)()
                return True
        return False

    def help(self):
        gone = not self.state.look.plugged
        return [row.label.replace("unplug", "plug in") if gone else row.label
                for row in self.keys if row.label]

    def stronger(self):
        self._set_signal(SIGNAL_STEP)

    def weaker(self):
        self._set_signal(-SIGNAL_STEP)

    def _set_signal(self, change):
        if self.signal is None:
            self.signal = self.state.csq() or story.STRONG
        self.signal = min(FULL_SIGNAL, max(0, self.signal + change))
        self.stage.ctl("signal", str(self.signal))
        self._say(story.WEAK_STRETCH, f"You set the signal to {self.signal} of {FULL_SIGNAL}.")

    def drop(self):
        self.stage.ctl("drop-call")
        self._say(story.DROPPED, "You drop the data call; the address is worth nothing.")

    def unplug(self):
        if self.state.look.plugged:
            self.stage.unplug()
            self._say(story.UNPLUGGED, "You pull the modem out. 'u' puts it back.")
        else:
            self.stage.plug()
            self._say(story.RETURN, "You put the modem back.")

    def message_in(self):
        self.messages += 1
        self.stage.ctl("sms", story.NUMBER, f"Hello router {self.messages}")
        self._say(story.MESSAGE_IN, "You send a text message to the router.")

    def message_out(self):
        self.messages += 1
        self.stage.spool(f"hand{self.messages}", story.NUMBER, f"Hello {self.messages}")
        self._say(story.MESSAGE_OUT, "You put a message into /tmp/sms/send.")

    def _say(self, caption, happens):
        title = {"A weak stretch": "Signal"}.get(caption.title, caption.title)
        self.tale.caption = dataclasses.replace(caption, title=title, happens=happens)
