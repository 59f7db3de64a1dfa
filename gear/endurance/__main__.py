"""Random worlds for as long as is asked; the command line is told by scripts/endure."""

import argparse
import concurrent.futures
import itertools
import os
import resource
import sys
import time

import worlds
import years

DAY = 86400
LINE_EVERY = 10  # seconds between two lines of progress where there is no terminal


def read_options():
    parser = argparse.ArgumentParser(prog="scripts/endure", add_help=False)
    parser.add_argument("--days", type=float)
    parser.add_argument("--seeds", type=int)
    parser.add_argument("--first", type=int, default=int(time.time() // DAY) * 1000)
    parser.add_argument("--world", default="*")
    parser.add_argument("--longest", type=int)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--steady", type=int)
    parser.add_argument("--card")
    parser.add_argument("--write", action="store_true")
    options = parser.parse_args()
    if options.days is None and options.seeds is None:
        options.days = 10.0
    return options


class Progress:
    """What has been lived so far, as one line."""

    def __init__(self, options):
        self.options = options
        self.begun = self.shown = time.monotonic()
        self.seeds = self.lived = self.failures = 0

    def take(self, outcome):
        self.seeds += 1
        self.lived += outcome.lived
        self.failures += len(outcome.failed)

    def share(self):
        """How much of what was asked for is done, 0 to 1."""
        shares = []
        if self.options.days is not None:
            shares.append(self.lived / DAY / self.options.days)
        if self.options.seeds is not None:
            shares.append(self.seeds / self.options.seeds)
        return min(1.0, max(shares))

    def is_done(self):
        return self.share() >= 1.0

    def text(self):
        taken = time.monotonic() - self.begun
        share = self.share()
        left = f"{taken / share - taken:.0f} s left" if share else "just begun"
        return (f"{self.seeds} seeds, {self.lived / DAY:.1f} simulated days, "
                f"{self.lived / 3600 / taken:.1f} h a second, {left}, {self.failures} failures")

    def show(self, finished=False):
        terminal = sys.stdout.isatty()
        now = time.monotonic()
        if not finished and now - self.shown < (0.5 if terminal else LINE_EVERY):
            return
        self.shown = now
        print(("\r\033[K" if terminal else "") + self.text(),
              end="" if terminal and not finished else "\n", flush=True)


def tell_the_cost(progress):
    """What a year would take on a machine that has nothing else to do."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    rate = progress.lived / (used.ru_utime + used.ru_stime)
    print(f"{rate / 3600:.1f} simulated h for each second of a processor: a year in"
          f" {365 * DAY / rate / 60:.0f} minutes of one")


def tell_of_steady_life(options):
    chosen = [options.card] if options.card else [model.name for model in years.cards.MODELS]
    text = years.tables(years.measure(options.steady, chosen, options.jobs))
    if options.write:
        years.renew(text)
    else:
        print(text, end="")


def live_through(options, progress):
    """Yields (seed, number of the world) of each failure."""
    seeds = itertools.count(options.first)
    if options.seeds is not None:
        seeds = range(options.first, options.first + options.seeds)
    seeds = iter(seeds)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = {}

        def begin():
            seed = next(seeds, None)
            if seed is not None and not progress.is_done():
                running[pool.submit(worlds.live, seed, options.world, None, options.longest)] = seed

        for _ in range(options.jobs):
            begin()
        while running:
            done, _ = concurrent.futures.wait(running, timeout=0.5, return_when="FIRST_COMPLETED")
            for future in done:
                seed, outcome = running.pop(future), future.result()
                if outcome.fault and not outcome.failed:
                    sys.exit(f"seed {seed}: {outcome.fault}")
                progress.take(outcome)
                begin()
                yield from ((seed, number) for number in outcome.failed)
            progress.show()


def main():
    options = read_options()
    if options.steady:
        return tell_of_steady_life(options)
    progress = Progress(options)
    print(f"worlds of the seeds from {options.first} on, {options.jobs} at a time", flush=True)
    failures = list(live_through(options, progress))
    progress.show(finished=True)
    tell_the_cost(progress)
    for seed, number in failures:
        print("\n".join(worlds.make_smaller(seed, number, options.longest).lines()), flush=True)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
