"""What an unattended run must have seen at its end."""

from state import ACTIVATION, LIGHTBAR, SERIAL_NUMBER, UNKNOWN


class Checks:
    """The daemon's files, and every beat of the story that has begun."""

    def __init__(self, card, tale, state):
        self.card = card
        self.tale = tale
        self.state = state
        self.seen = {}

    def look(self):
        state, card = self.state, self.card
        serial = (state.look.files[SERIAL_NUMBER] or "").strip()
        now = {
            "every device key of the statistics":
                all(state.value(key) not in UNKNOWN for key in card.keys),
            "the serial number's own file": serial not in ("", "Unknown")
                and serial == state.value("IMEI"),
            "the lightbar": bool(state.look.files[LIGHTBAR]) and state.csq() is not None,
        }
        if card.registers:
            now["the activation status"] = (state.look.files[ACTIVATION] or "") == "Reg Home\n"
        if card.lte:
            now["an address on wwan0"] = state.look.address != ""
            now["the call as connected in the statistics"] = \
                state.value("QMI_STATE") == "CONNECTED"
            now["bytes sent over wwan0"] = state.look.sent_bytes > 0
        for what, holds in now.items():
            self.seen[what] = self.seen.get(what, False) or holds
        for beat in self.tale.beats:
            if self.tale.told(beat) is not None:
                self.seen[f"story: {beat.word}"] = bool(self.tale.told(beat))

    def missing(self):
        return [what for what, was_seen in self.seen.items() if not was_seen]

    def report(self, exit_status):
        """Prints the verdicts; the number of failures."""
        verdicts = dict(self.seen)
        verdicts[f"clean end on SIGTERM (exit status {exit_status})"] = exit_status == 0
        for what, holds in verdicts.items():
            print(f"{'ok  ' if holds else 'FAIL'} {what}")
        return sum(not holds for holds in verdicts.values())
