"""The cards that the demo can show: the daemon's table of them, and what each must publish."""

import dataclasses

import cards

LOG = "/var/log/"
COMMON_FILES = ("wireless.cardstats", "wireless.serialno", "wireless.mdn", "lightbar")
ACTIVATION = "wirelessactivation_status"
ECIO = "lightbar_ecio_in"
LTE_FILES = (ECIO, "wirelessdial_dialing", "wirelessdial_notdialing")

SERIAL = ("IMEI",)
NUMBER = (*SERIAL, "MDN")
COMMON_KEYS = (*NUMBER, "MANU", "MODEL", "FIRMWARE_V")

# The statistics that the daemon must fill; it asks each card for other things. One that is not
# named here must at least give its serial number, as all do.
KEYS = {
    "881": (*COMMON_KEYS, "HARDWARE_V", "BAND", "CARRIER"),
    "E362": (*COMMON_KEYS, "SIM_ID", "CARRIER"),
    "E371": (*COMMON_KEYS, "SIM_ID"),
    "USB305": COMMON_KEYS,
    "mc75i": NUMBER,
}
# Files that only this card has.
MORE_FILES = {"881": (ECIO, "lightbar_chan_in")}
DIALS_ITSELF = {"E362"}  # its call is up from power-on


def first_with(ability):
    return next(model.name for model in cards.MODELS if ability in model.abilities)


@dataclasses.dataclass(frozen=True)
class Card:
    name: str
    title: str
    option: str
    registers: bool  # the daemon asks it for its registration
    lte: bool  # it has a data call of its own on wwan0
    sms: bool  # it has a text mode for messages

    @property
    def keys(self):
        return KEYS.get(self.name, SERIAL)

    @property
    def dials_itself(self):
        return self.name in DIALS_ITSELF

    @property
    def more_files(self):
        return ((ACTIVATION,) * self.registers + LTE_FILES * self.lte
                + MORE_FILES.get(self.name, ()))

    @property
    def files(self):
        return tuple(LOG + name for name in COMMON_FILES + self.more_files)

    @property
    def skipped(self):
        """What the story leaves out with this card, and who shows it; "" for nothing."""
        missing = []
        if not self.lte:
            missing.append(f"data call (--card {first_with('kLteCall')})")
        if not self.sms:
            missing.append(f"messages (--card {first_with('kMessages')})")
        return ", ".join(missing)


CARDS = {model.name: Card(model.name, model.title, model.option,
                          registers="kRegistration" in model.abilities,
                          lte="kLteCall" in model.abilities, sms="kMessages" in model.abilities)
         for model in cards.MODELS}
