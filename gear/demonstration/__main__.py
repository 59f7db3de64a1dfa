"""What scripts/demo shows: the story, or the router by hand; see --help there."""

import argparse
import pathlib
import signal
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "sandbox"))
from checks import Checks  # noqa: E402  (the path above makes the others' imports known)
from hand import QUIT, Hand  # noqa: E402
from live import LiveRouter  # noqa: E402
from picture import Picture  # noqa: E402
from shown_cards import CARDS  # noqa: E402
from simulated import FASTEST, SLOWEST, SimulatedRouter  # noqa: E402
from state import State  # noqa: E402
from story import Story  # noqa: E402
from views import Keyboard, LinesView, ScreenView  # noqa: E402

GRACE = 150  # seconds that the daemon may take for what it does in 30 on an idle machine
INTERRUPTED = 130
README_SIZE = 80, 24


def make_stage(arguments):
    card = CARDS[arguments.card]
    if arguments.speed or arguments.picture:
        return SimulatedRouter(card, arguments.speed or FASTEST)
    return LiveRouter(card)


class Run:
    """One showing, from power-on to its end."""

    def __init__(self, arguments, stage, alone=True):
        self.card = CARDS[arguments.card]
        self.stage = stage
        self.seconds = arguments.seconds
        self.state = State()
        self.tale = Story(self.card, stage, arguments.by_hand, alone)
        self.picture = Picture(self.card, stage.name, self.tale, self.state)
        self.hand = Hand(self.card, stage, self.tale, self.state)
        self.checks = Checks(self.card, self.tale, self.state)
        self.pressed = []

    def begin(self):
        self.stage.power_on()
        self.stage.start()
        self.state.update(self.stage.look())

    def step(self, keyboard):
        """A moment passes. False when the watcher wants to end."""
        self.stage.step(lambda seconds: self.pressed.extend(keyboard.read(seconds)))
        self.state.update(self.stage.look())
        if self.state.ended_without_reason():
            raise RuntimeError("the daemon ended by itself")
        for key in self.pressed:
            if key in QUIT:
                return False
            if self.tale.keys_work:
                self.hand.press(key)
        self.pressed.clear()
        self.tale.closed = self.tale.closed or bool(0 < self.seconds <= self.state.now)
        self.tale.advance(self.state)
        self.checks.look()
        return True

    def keys(self):
        return self.hand.help() if self.tale.keys_work else []

    def watch(self, view, keyboard):
        """Until the watcher ends it."""
        self.begin()
        view.show(self.keys())
        while self.step(keyboard):
            view.show(self.keys())

    def run_alone(self, view, keyboard):
        """Until the time is over, or the story when there is none; False when ended before.

        What the daemon still owes then has some time left, and so has each part of the story.
        """
        self.begin()
        done_at = None
        while True:
            view.show([])
            if not self.step(keyboard):
                return False
            if self.tale.lasts(self.state) > GRACE:
                return True
            if self.tale.over and self.state.now >= self.seconds:
                done_at = done_at or self.state.now
                if not self.checks.missing() or self.state.now > done_at + GRACE:
                    view.show([])
                    return True


def judge(run):
    failures = run.checks.report(run.stage.stop())
    if failures:
        print(run.stage.story())
    return 1 if failures else 0


def show(arguments, stage):
    terminal = sys.stdout.isatty()
    alone = bool(arguments.seconds) or not (terminal and sys.stdin.isatty())
    run = Run(arguments, stage, alone)
    view = (ScreenView if terminal else LinesView)(run.picture)
    with Keyboard() as keyboard, view:
        if not alone:
            run.watch(view, keyboard)
            return 0
        whole = run.run_alone(view, keyboard)
    return judge(run) if whole else INTERRUPTED


def draw(arguments, stage):
    """The README's picture: the moment at which the story's last trouble but the plug is over."""
    from still import save
    run = Run(arguments, stage)
    beat = next(beat for beat in reversed(run.tale.beats) if beat.word not in ("unplug", "return"))
    run.begin()
    with Keyboard() as keyboard:
        while run.tale.told(beat) is not True:
            rows = run.picture.screen(*README_SIZE, [])
            run.step(keyboard)
    save(rows, README_SIZE, arguments.picture)
    return 0


def speed(text):
    number = float(text)
    if not SLOWEST <= number <= FASTEST:
        raise argparse.ArgumentTypeError(f"from {SLOWEST} to {FASTEST}")
    return number


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("1 or more")
    return number


def read_arguments():
    parser = argparse.ArgumentParser(prog="scripts/demo", add_help=False)
    parser.add_argument("--card", choices=CARDS, default="E362")
    parser.add_argument("--by-hand", action="store_true")
    parser.add_argument("--for", dest="seconds", type=positive, default=0)
    parser.add_argument("--speed", type=speed, default=0)
    parser.add_argument("--picture", metavar="FILE")
    parser.add_argument("--check", action="store_true", help=argparse.SUPPRESS)  # only look
    arguments = parser.parse_args()
    if arguments.by_hand and (arguments.seconds or arguments.picture):
        parser.error("--by-hand goes with neither --for nor --picture")
    if arguments.by_hand and not (sys.stdin.isatty() and sys.stdout.isatty()):
        parser.error("--by-hand needs a terminal")
    return arguments


def main():
    arguments = read_arguments()
    if arguments.check:
        return 0
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda number, _: sys.exit(128 + number))
    signal.signal(signal.SIGTSTP, signal.SIG_IGN)  # a stopped demo would leave its screen behind
    stage = None
    try:
        stage = make_stage(arguments)
        return (draw if arguments.picture else show)(arguments, stage)
    except KeyboardInterrupt:
        return INTERRUPTED if arguments.seconds else 0
    except (AssertionError, RuntimeError) as error:
        print(f"demo: {error}", file=sys.stderr)
        return 1
    finally:
        if stage is not None:
            stage.close()


if __name__ == "__main__":
    sys.exit(main())
