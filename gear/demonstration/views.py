"""Where a run is shown: a screen of its own on a terminal, one line for each change elsewhere."""

import contextlib
import os
import select
import sys
import termios
import time
import tty

from rich.console import Console, Group
from rich.live import Live

from hand import QUIT
from picture import LABEL

LONGEST_KEY = 8  # bytes that one key sends at most


class Keyboard:
    """Single keys, while the terminal is ours; nothing where there is none."""

    def __init__(self):
        self.terminal = sys.stdin.fileno() if sys.stdin.isatty() else None
        self.saved = None

    def __enter__(self):
        if self.terminal is not None:
            self.saved = termios.tcgetattr(self.terminal)
            tty.setcbreak(self.terminal)
        return self

    def __exit__(self, *_):
        if self.saved is not None:
            termios.tcsetattr(self.terminal, termios.TCSAFLUSH, self.saved)

    def read(self, seconds):
        """The keys of the next `seconds`, at once when there is one."""
        if self.terminal is None:
            time.sleep(max(0.0, seconds))
            return []
        if not select.select([self.terminal], [], [], max(0.0, seconds))[0]:
            return []
        try:
            sent = os.read(self.terminal, LONGEST_KEY).decode("ascii", "replace")
        except OSError:
            sent = ""
        if not sent:  # the terminal is gone
            return [QUIT[0]]
        return [sent] if sent.startswith("\x1b") else list(sent)


class ScreenView:
    """The picture, drawn over itself."""

    def __init__(self, picture):
        self.console = Console()
        self.picture = picture
        picture.unicode = self.console.encoding.startswith("utf")
        self.live = Live(console=self.console, screen=True, auto_refresh=False)
        self.shown = None

    def __enter__(self):
        self.live.__enter__()
        return self

    def __exit__(self, *what):
        return self.live.__exit__(*what)

    def show(self, keys):
        size = self.console.size
        rows = self.picture.screen(size.width, size.height, keys)
        content = size, [(line.plain, line.spans) for line in rows]
        if content == self.shown:  # nothing to send over a slow line
            return
        self.shown = content
        self.live.update(Group(*rows), refresh=True)


class LinesView(contextlib.AbstractContextManager):
    """For a file or a pipe: one line for each change."""

    def __init__(self, picture):
        self.picture = picture
        self.log_lines = 0
        self.caption = None
        self.last = {}
        print(f"modemd with a simulated {picture.card.title}, {picture.stage_name}", flush=True)
        if picture.card.skipped:
            print(f"Not with this card: {picture.card.skipped}", flush=True)

    def __exit__(self, *_):
        return None

    def show(self, _):
        state = self.picture.state
        news = []
        caption = self.picture.tale.caption
        if caption != self.caption:
            self.caption = caption
            news += [f"story    {caption.title}: {caption.happens}",
                     f"         modemd {caption.daemon}",
                     f"         Look at {caption.look}"]
        news += [f"log      {line}" for _, line in state.log[self.log_lines:]]
        self.log_lines = len(state.log)
        current = self._current()
        news += [f"{name:8} {value}" for name, value in current.items()
                 if self.last.get(name) != value]
        self.last = current
        for line in news:
            print(f"{state.now:6.1f} s  {line}", flush=True)

    def _current(self):
        picture, state = self.picture, self.picture.state
        csq = state.csq()
        current = {"modem": "plugged in" if state.look.plugged else "unplugged",
                   "daemon": "runs" if state.look.running
                   else f"ended with status {state.look.exit_status}",
                   "signal": "not known" if csq is None else f"{csq} of 31",
                   "network": picture.network().plain[LABEL:].rstrip()}
        if picture.card.lte:
            current["call"] = "up" if state.look.call_up else "down"
            current["address"] = state.look.address or "none"
        if picture.card.sms:
            current["messages"] = picture.messages().plain[LABEL:]
        return current
