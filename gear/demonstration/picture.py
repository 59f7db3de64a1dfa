"""The picture of a run on a terminal, drawn with python3-rich: one screen, always in its place."""

from itertools import zip_longest

from rich.text import Text

from shown_cards import LOG
from state import FULL_SIGNAL, LIGHTBAR, RESTART_PAUSE

FRESH = 3  # seconds for which what changed is marked
NARROWEST, LOWEST = 60, 20
TALL = 32  # rows from which files have a line each and the story's times are shown
LABEL = 13  # columns of the names at the left
BAR = FULL_SIGNAL  # one column for each step of the signal

TITLE = "bold white on blue"
HEAD = "bold cyan"
GOOD, BAD, FAINT, NEW = "green", "bold red", "dim", "bold yellow"


def seconds(time):
    return f"{int(time) // 60}:{int(time) % 60:02}"


# What a modem or a message says must not move the terminal's cursor.
HARMLESS = {byte: " " if byte < 0x20 else "?" for byte in (*range(0x20), *range(0x7f, 0xa0))}


def row(*parts):
    """Parts are texts, or (text, style)."""
    pairs = [(part, "") if isinstance(part, str) else part for part in parts]
    pairs = [(text.translate(HARMLESS), style) for text, style in pairs]
    return Text.assemble(*pairs, no_wrap=True, overflow="crop")


def labelled(label, *parts):
    return row((f"  {label:{LABEL - 3}} ", FAINT), *parts)


class Picture:
    """Makes the rows of a screen of any size from what is known."""

    def __init__(self, card, stage_name, tale, state):
        self.card = card
        self.stage_name = stage_name
        self.tale = tale
        self.state = state
        self.unicode = True

    def screen(self, width, height, keys):
        """Exactly `height` rows, the title first and the help last."""
        if width < NARROWEST or height < LOWEST:
            rows = [Text(f"Please make this window {NARROWEST} x {LOWEST} or larger.")]
            return self._fitted(rows, width, height)
        tall = height >= TALL
        above = [self.title(width), *self.story(width, tall), *self.router(width),
                 *self.files(width, tall)]
        below = [self.help(keys)]
        room = height - len(above) - len(below)
        log = self.log(width, max(room, 2))
        return self._fitted([*above, *log], width, height - len(below)) + below

    @staticmethod
    def _fitted(rows, width, height):
        rows = [*rows[:height], *[Text("")] * (height - len(rows))]
        for one in rows:
            one.truncate(width)
        return rows

    def _head(self, text, width):
        line = "─" if self.unicode else "-"
        return row((f"{line * 2} {text} ", HEAD), (line * max(0, width - len(text) - 4), FAINT))

    def title(self, width):
        left = f" modemd  with a simulated {self.card.title}"
        right = f"{self.stage_name}   {seconds(self.state.now)} "
        return row((left + right.rjust(max(0, width - len(left))), TITLE))

    # The story

    def story(self, width, tall):
        tale, caption = self.tale, self.tale.caption
        number = ""
        if tale.beats and not tale.over:
            number = f"{tale.place + 1} of {len(tale.beats)}: "
        rows = [] if not tale.beats else [self.course()]
        rows += [self._head(number + caption.title, width),
                 labelled("happens", (caption.happens, "bold")),
                 labelled("modemd", caption.daemon),
                 labelled("look at", caption.look)]
        if tall and tale.beats:
            rows += [self._head("So far", width), *self.times()]
        return rows

    def _mark(self, beat):
        marks = "✓▶·" if self.unicode else "x>."
        told = self.tale.told(beat)
        if told is None:
            return marks[2], FAINT
        return (marks[0], GOOD) if told else (marks[1], NEW)

    def course(self):
        parts = [" "]
        for beat in self.tale.beats:
            mark, style = self._mark(beat)
            parts += [(f" {mark} {beat.word}", style)]
        return row(*parts)

    def times(self):
        rows = []
        for place, beat in enumerate(self.tale.beats):
            mark, style = self._mark(beat)
            began = self.tale.began
            when = seconds(began[place]) if place < len(began) else ""
            rows.append(row((f"  {mark} {when:>5}  ", style),
                            (beat.caption.title, style if when else FAINT)))
        return rows

    # The router

    def router(self, width):
        rows = [self._head("The router", width), self.modem_and_daemon(), self.signal(),
                self.figures(), self.network()]
        if self.card.lte:
            rows += [self.call(), self.address()]
        if self.card.sms:
            rows.append(self.messages())
        return rows

    def modem_and_daemon(self):
        look = self.state.look
        modem = ("plugged in at /dev/ttyUSB0", GOOD) if look.plugged else ("UNPLUGGED", BAD)
        if look.running:
            daemon = (f"runs for {seconds(self.state.now - self.state.started_at)}", GOOD)
        else:
            left = self.state.ended_at + RESTART_PAUSE - self.state.now
            daemon = (f"ENDED, status {look.exit_status}; starts in {max(0, left):.0f} s", BAD)
        return labelled("Modem", (f"{modem[0]:29}", modem[1]), ("Daemon  ", FAINT), daemon)

    def _absent(self):
        """What to say in the place of a value that nobody knows now; None when it is known."""
        if not self.state.look.plugged:
            return "no modem", BAD
        if not self.state.look.running:
            return "no daemon", BAD
        return None

    def signal(self):
        csq = self.state.csq()
        full, empty = ("█", "·") if self.unicode else ("#", ".")
        lit = csq or 0
        bar = [(full * lit, GOOD if lit > 9 else BAD), (empty * (BAR - lit), FAINT)]
        known = (f"{csq} of {FULL_SIGNAL}", "bold"), (f"   ({LIGHTBAR})", FAINT)
        return labelled("Signal", *bar, "  ",
                        *(known if csq is not None else [self._absent() or ("not known", FAINT)]))

    def figures(self):
        """The daemon's other figures of the signal, which differ from the bar by design."""
        value = self.state.value
        if value("CURRENT_RSSI") in ("-", "0"):
            return labelled("also told", ("-", FAINT))
        of_rssi = value("CURRENT_CSQ") == value("HIGHSPEED_CSQ")
        told = f"RSSI {value('CURRENT_RSSI')} dBm; CURRENT_CSQ {value('CURRENT_CSQ')}," \
               f" {'made of the RSSI' if of_rssi else 'as the bar'}"
        if value("CURRENT_ECIO") not in ("-", "Unknown"):
            told += f"; Ec/Io {value('CURRENT_ECIO')} dB"
        return labelled("also told", (told, FAINT))

    def network(self):
        absent = self._absent()
        if absent:
            return labelled("Network", absent)
        value = self.state.value
        if not self.card.registers:
            return labelled("Network", ("this card is not asked for it", FAINT))
        parts = [text for text in (value("CARRIER"), value("SERVICE_TYPE"))
                 if text not in ("-", "Unknown")]
        status = self.state.activation()
        if status == "-":
            style, status = FAINT, "not asked"
        else:
            style = GOOD if status in ("Reg Home", "Reg Roam") else BAD
        return labelled("Network", (f"{status:12}", style), "  ".join(parts))

    def call(self):
        absent = self._absent()
        if absent:
            return labelled("Call", absent)
        look = self.state.look
        word = (f"{'up' if look.call_up else 'DOWN':12}", GOOD if look.call_up else BAD)
        checked = self.state.checked_at
        asked = "not asked yet"
        if checked is not None:
            asked = f"asked {self.state.now - checked:.0f} s ago"
        told = f"the daemon publishes {self.state.value('QMI_STATE')}, {asked}"
        return labelled("Call", word, (told, FAINT))

    def address(self):
        look = self.state.look
        traffic = f"sent {look.sent_bytes} bytes, received {look.received_bytes}"
        if not look.address:
            return labelled("Address", (f"{'none':17}", BAD), (traffic, FAINT))
        if not look.call_up:
            return labelled("Address", (f"{look.address:17}", BAD), ("left over, the link is dead",
                                                                     BAD))
        return labelled("Address", (f"{look.address:17}", GOOD), (traffic, FAINT))

    def messages(self):
        look = self.state.look
        waiting = f", {len(look.waiting)} waiting" if look.waiting else ""
        return labelled("Messages", f"received {len(look.received)}",
                        (f"  in /tmp/sms/recv    sent {self.state.sms_sent}{waiting}", ""))

    # Files and log

    def files(self, width, tall):
        head = self._head("Status files in /var/log (* just changed)", width)
        if tall:
            return [head, *self._column(self.card.files, width)]
        half = (len(self.card.files) + 1) // 2
        left = self._column(self.card.files[:half], width // 2)
        right = self._column(self.card.files[half:], width // 2)
        return [head, *(a + b for a, b in zip_longest(left, right, fillvalue=Text("")))]

    def _column(self, paths, width):
        longest = max(len(path) for path in paths) - len(LOG)
        cells = [self._file(path, longest) for path in paths]
        for cell in cells:
            cell.truncate(width, pad=True)
        return cells

    def _file(self, path, name_width):
        text = self.state.look.files[path]
        changed = self.state.changed.get(path)
        fresh = changed is not None and self.state.now - changed < FRESH
        lines = (text or "").splitlines()
        shown = "-" if text is None else "(empty)" if not lines else lines[0]
        if len(lines) > 1:
            shown = f"{len(lines)} lines"
        style = NEW if fresh else FAINT if text is None or self._absent() else ""
        return row((f"  {'*' if fresh else ' '} {path[len(LOG):]:{name_width}}  {shown}", style))

    def log(self, width, room):
        rows = [self._head("System log", width)]
        for when, line in self.state.log[-(room - 1):]:
            style = NEW if self.state.now - when < FRESH else ""
            rows.append(row((f"  {seconds(when):>5}  ", FAINT), (line, style)))
        return rows

    def help(self, keys):
        """The keys that do something now, and what the card cannot show."""
        parts = [" ", ("q ends", "bold")]
        if keys:
            parts += [(f"   {label}", "bold") for label in keys]
        elif self.card.skipped:
            parts += [(f"   Not with this card: {self.card.skipped}", FAINT)]
        return row(*parts)
