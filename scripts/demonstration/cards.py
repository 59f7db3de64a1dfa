"""The cards that the demo can show, and what each of them can do."""

import dataclasses

LOG = "/var/log/"
COMMON_FILES = ("wireless.cardstats", "wireless.serialno", "wireless.mdn", "lightbar")
COMMON_KEYS = ("IMEI", "MDN", "MANU", "MODEL", "FIRMWARE_V")


@dataclasses.dataclass(frozen=True)
class Card:
    name: str
    title: str
    # The statistics that the daemon must fill; it asks each card for other things.
    keys: tuple
    more_files: tuple = ()  # below /var/log, beside those that every card has
    registers: bool = False  # the daemon asks it for its registration
    lte: bool = False  # it has a data call of its own on wwan0
    dials_itself: bool = False  # its call is up from power-on
    sms: bool = False  # it has a text mode for messages

    @property
    def option(self):
        """The daemon's option, none for a modem of no particular make."""
        return "" if self.name == "generic" else "-" + self.name

    @property
    def files(self):
        return tuple(LOG + name for name in COMMON_FILES + self.more_files)

    @property
    def skipped(self):
        """What the story leaves out with this card, and who shows it; "" for nothing."""
        missing = []
        if not self.lte:
            missing.append("data call (--card E362)")
        if not self.sms:
            missing.append("messages (--card 881)")
        return ", ".join(missing)


ACTIVATION = "wirelessactivation_status"
LTE_FILES = (ACTIVATION, "lightbar_ecio_in", "wirelessdial_dialing", "wirelessdial_notdialing")

CARDS = {card.name: card for card in (
    Card("881", "Sierra 881", (*COMMON_KEYS, "HARDWARE_V", "BAND", "CARRIER"),
         (ACTIVATION, "lightbar_ecio_in", "lightbar_chan_in"), registers=True, sms=True),
    Card("E362", "Novatel E362", (*COMMON_KEYS, "SIM_ID", "CARRIER"), LTE_FILES, registers=True,
         lte=True, dials_itself=True),
    Card("E371", "Novatel E371", (*COMMON_KEYS, "SIM_ID"), LTE_FILES, registers=True, lte=True),
    Card("USB305", "Sierra USB 305", COMMON_KEYS, (ACTIVATION,), registers=True),
    Card("mc75i", "Cinterion MC75i", ("IMEI", "MDN")),
    Card("generic", "modem of no make", ("IMEI",)),
)}
