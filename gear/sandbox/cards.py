#!/usr/bin/env python3
"""The daemon's table of cards for scripts, read from src/state/cards.h: nothing needs to be built.

As a program it prints the table, one card a line: number, name, abilities, title.
"""

import dataclasses
import pathlib
import re

HEADER = pathlib.Path(__file__).resolve().parents[2] / "src" / "state" / "cards.h"
NUMBER = re.compile(r"^ +(kCard\w+) = (\d+),", re.MULTILINE)
ROWS = re.compile(r"kModels\[\] = \{\n(.*?)^\};", re.MULTILINE | re.DOTALL)
TEXT = r'"([^"]*)",\s*'
ROW = re.compile(rf"\{{(kCard\w+),\s*{TEXT}{TEXT}{TEXT}([\w |]+?)(?:,\s*Mark::\w+)?\}},")


@dataclasses.dataclass(frozen=True)
class Model:
    number: int
    name: str
    title: str
    logged_as: str
    abilities: frozenset  # of "kRegistration", "kLteCall", "kMessages"

    @property
    def option(self):
        """The daemon's option, none for a modem of no particular make."""
        return "" if self.number == 0 else "-" + self.name


def read_models(header=HEADER):
    text = header.read_text(encoding="utf-8")
    numbers = {name: int(number) for name, number in NUMBER.findall(text)}
    rows = ROWS.search(text)[1]
    models = [Model(numbers[kind], name, title, logged_as, frozenset(abilities.split(" | ")))
              for kind, name, title, logged_as, abilities in ROW.findall(rows)]
    if len(models) != rows.count("{"):
        raise ValueError(f"{header}: a row that is not understood")
    return models


MODELS = read_models()

if __name__ == "__main__":
    for model in MODELS:
        print(model.number, model.name, "+".join(sorted(model.abilities)), model.title)
