"""docs/integration.md as a router maker takes it, with a simulated modem for the one on the desk."""

import re
import unittest

import cards
import papers
from router_sandbox import BUILD, PROJECT, Router

GUIDE = "docs/integration.md"


class FindThePort(unittest.TestCase):
    def test_the_one_that_answers_is_named_with_its_modem(self):
        look = papers.block(GUIDE, "for port in")
        with Router("E362") as router:
            for number in ("1", "2"):  # ports that say nothing
                port, socket = f"/dev/ttyUSB{number}", f"/tmp/{number}.ctl"
                router.shell(f"{BUILD}/modem-sim --link {port} --control {socket} >/dev/null 2>&1"
                             " </dev/null &")
                router.wait_for(lambda port=port: router.exists(port), "the port")
                router.shell(f"modem-sim ctl --control {socket} silence 1d")
            self.assertEqual(router.shell(look, check=False), "/dev/ttyUSB0: E362\n")


class ChooseTheOption(unittest.TestCase):
    def test_the_table_has_the_options_of_the_daemon(self):
        text = (PROJECT / GUIDE).read_text()
        table = text.split("## 2. Choose the option")[1].split("## 3.")[0]
        options = re.findall(r"^\| [^|]+ \| `(-\w+)` \|", table, re.MULTILINE)
        models = [model for model in cards.read_models(PROJECT / "src/state/cards.h")
                  if model.option]
        self.assertEqual(options, [model.option for model in models])
        for model in models:
            self.assertIn(f"`{model.name}`".lower(), table.lower())


class FirstRun(unittest.TestCase):
    def test_the_log_tells_what_is_promised(self):
        with Router("E362") as router:
            router.shell("rm -r /etc/kvt")
            start = papers.block(GUIDE, "mkdir -p /etc/kvt")
            router.shell(start.replace(" &\n", " >/dev/null 2>&1 </dev/null &\n"))
            router.wait_for(router.addresses, "an address on wwan0")
            promised = papers.blocks(GUIDE, "text")[0].text.splitlines()
            router.wait_for(lambda: self.is_within(promised, router.log()), "the promised lines")
            self.assertEqual(router.log().count("LTE Connected returned 0, restarting connection"), 1)

    def is_within(self, lines, log):
        """All of them in this order, with any others between."""
        rest = iter(log)
        return all(line in rest for line in lines)


if __name__ == "__main__":
    unittest.main()
