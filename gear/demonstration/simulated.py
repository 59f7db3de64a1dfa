"""Simulated time: the same shipped daemon under the tests' rig, as fast as one likes.

A program of the rig's world rather than a faster clock in the sandbox: the daemon's pauses for an
answer are a twentieth of a second, and a machine that has to hold them ten times faster than life
would change the story. Here nothing passes but by the daemon's own sleeps, so that the same story
has the same second of every event on every machine.
"""

import json
import subprocess
import time

from router_sandbox import BUILD
from state import RESTART_PAUSE, Snapshot, Stage

PROGRAM = BUILD / "gear" / "demonstration" / "simulated" / "simulated_router"
SLOWEST, FASTEST = 0.1, 1000  # times life; at the fastest nothing is waited for
STEP = 0.2  # real seconds between two looks
MOST = 0.5  # story seconds between two looks


class SimulatedRouter(Stage):
    """The daemon in simulated time, `speed` times faster than life."""

    def __init__(self, card, speed):
        super().__init__(card)
        self.name = "simulated time" + (f" x {speed:g}" if speed < FASTEST else "")
        self.seconds = min(MOST, STEP * speed)
        self.real_seconds = self.seconds / speed if speed < FASTEST else 0.0
        self.deadline = time.monotonic()
        self.due = 0.0  # story seconds to pass before the next look
        command = [str(PROGRAM), "--pause", str(RESTART_PAUSE), *card.files]
        if card.option:
            command[1:1] = ["--option", card.option]
        # A session of its own: Ctrl-C is for the demo, which then ends it.
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, start_new_session=True)
        self.log = []

    def close(self):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.terminate()
        self.process.wait()

    def start(self):
        """The daemon's life begins with the first step."""

    def step(self, wait):
        self.deadline = max(self.deadline + self.real_seconds, time.monotonic())
        wait(self.deadline - time.monotonic())
        self.due = self.seconds

    def look(self):
        return self._snapshot(f"run {round(self.due * 1e6)}")

    def ctl(self, *words):
        self._tell("tell " + " ".join(f'"{word}"' if " " in word else word for word in words))

    def spool(self, name, number, text):
        self._tell(f"spool {name} {number} {text}")

    def stop(self):
        return self._snapshot("end").exit_status

    def story(self):
        return "\n".join(self.log[-25:])

    def _ask(self, order):
        try:
            self.process.stdin.write(order + "\n")
            self.process.stdin.flush()
        except BrokenPipeError:
            pass
        answer = self.process.stdout.readline()
        if not answer:
            raise RuntimeError("the simulated router ended by itself")
        return json.loads(answer)

    def _tell(self, order):
        answer = self._ask(order)["answer"]
        if answer.startswith("error"):
            raise RuntimeError(f"{order}: {answer}")

    def _snapshot(self, order):
        seen = self._ask(order)
        self.log += seen["log"]
        return Snapshot(
            now=seen["now"] / 1e6, files=seen["files"], written=seen["written"],
            log=seen["log"], heard=seen["heard"],
            address=seen["address"] or "", sent_bytes=seen["bytes"],
            received_bytes=seen["bytes"], plugged=seen["plugged"], running=seen["running"],
            exit_status=None if seen["running"] else seen["exit_status"],
            call_up=seen["call_up"], received=seen["received"], waiting=seen["waiting"])
