"""docs/interface.md has every published name, for the right cards, and no other."""

import re
import unittest

from router_sandbox import PROJECT

PAGE = (PROJECT / "docs" / "interface.md").read_text()
NAMES = (PROJECT / "src" / "state" / "published.h").read_text()
KEY = re.compile(r"CELLMODEM_[A-Z0-9_]+")


def constants(start):
    """The texts of published.h that begin so, by the names of their constants."""
    found = re.findall(r'constexpr char (k\w+)\[\] = "([^"]+)"', NAMES)
    return {name: text for name, text in found if text.startswith(start)}


def rows(heading):
    table = PAGE.split(f"## {heading}")[1].split("\n## ")[0]
    lines = [line for line in table.splitlines() if line.startswith("| `")]
    return [[cell.strip() for cell in line.strip("|").split(" | ")] for line in lines]


def keys_by_card():
    """What the tables and calls of the publishing room add: for every card, the LTE cards, the 881."""
    source = (PROJECT / "src" / "status" / "card_statistics.cpp").read_text()
    keys = constants("CELLMODEM_")
    parts = {"all": "", "LTE": "", "881": ""}
    for name, body in re.findall(r"constexpr PublishedText (\w+)\[\] = \{\n(.*?)^\};", source,
                                 re.MULTILINE | re.DOTALL):
        parts["LTE" if "Lte" in name else "881" if "881" in name else "all"] += body
    for name, body in re.findall(r"^\w[\w:]* (\w+)\([^\n]*\{\n(.*?)^\}", source,
                                 re.MULTILINE | re.DOTALL):
        only = r" if \(g_i_CardType == kCardSierra881\) \{\n(.*?)\n    \}"
        parts["881"] += "".join(re.findall(only, body, re.DOTALL))
        parts["881" if "881" in name else "all"] += re.sub(only, "", body, flags=re.DOTALL)
    return {card: {keys[name] for name in re.findall(r"key::(k\w+)", text)}
            for card, text in parts.items()}


class Page(unittest.TestCase):
    def test_has_every_file_of_the_source(self):
        told = {re.search(r"`([^`]+)`", row[0])[1] for row in rows("Files")}
        wanted = {text.replace("%s", "modemd") for text in constants("/").values()}
        self.assertEqual(told, wanted)

    def test_has_every_key_once_and_no_other(self):
        told = [key for row in rows("Keys of wireless.cardstats") for key in KEY.findall(row[0])]
        told = [key.removesuffix("0") if "CONT_APN" in key else key for key in told]
        self.assertEqual(len(told), len(set(told)), "a key stands there twice")
        self.assertEqual(set(told), set(constants("CELLMODEM_").values()))

    def test_names_the_cards_that_have_a_key(self):
        published = keys_by_card()
        self.assertTrue(all(len(keys) > 5 for keys in published.values()), published)
        for names, _, cards in rows("Keys of wireless.cardstats"):
            for key in KEY.findall(names):
                key = key.removesuffix("0") if "CONT_APN" in key else key
                wanted = "all" if key in published["all"] else ", ".join(
                    card for card in ("881", "LTE") if key in published[card])
                self.assertEqual(cards.split(";")[0], wanted, key)

    def test_has_the_keys_that_others_write(self):
        text = "\n".join(line for row in rows("Files") for line in row)
        for constant in re.findall(r'"((?:CM|DEBUG|SYNC|PPP)_\w+)"', NAMES):
            self.assertIn(f"`{constant}`", text)


if __name__ == "__main__":
    unittest.main()
