"""A router with the 881, whose daemon serves text messages, and modemctl beside it."""

import json
import re

import jsonschema
from router_sandbox import BUILD, PROJECT, Router

MODEMCTL = str(BUILD / "modemctl")


def document_of(text):
    """The document, when it fits the schema that it names."""
    document = json.loads(text)
    name = re.fullmatch(r"modemctl\.(\w+)/1", document["schema"])[1]
    schema = json.loads((PROJECT / "docs" / "schema" / f"modemctl-{name}.json").read_text())
    jsonschema.Draft7Validator(schema).validate(document)
    return document


class TextGateway(Router):
    def __init__(self):
        super().__init__("881")
        self.shell("mkdir -p /tmp/sms/send /tmp/sms/recv /tmp/sms/send_fail;"
                   " chmod 0700 /tmp/sms /tmp/sms/*")

    def start_the_gateway(self):
        """The modem is asked once at the start whether it has text messages."""
        words = {"Modem supports CMGF SMS": True, "Modem does not support CMGF SMS": False}
        while True:
            self.start_daemon("-881", "/dev/ttyUSB0")
            self.wait_for(lambda: words.keys() & set(self.log()), "the gateway")
            if words[[line for line in self.log() if line in words][-1]]:
                return
            self.signal_daemon("TERM")
            self.wait_for_exit()
            self.shell(": >/var/log/messages")

    def modemctl(self, words, check=True):
        """What it prints; `words` as for the shell."""
        return self.shell(f"{MODEMCTL} {words}", check=check)

    def document(self, words):
        return document_of(self.modemctl(f"{words} --json", check=False))

    def status_of(self, words):
        """Its exit code."""
        return int(self.shell(f"{MODEMCTL} {words} >/dev/null 2>&1; echo $?"))

    def start(self, words, name):
        """In the background; output, complaints, exit code and process id go to /run/NAME.*"""
        self.shell(f"(({MODEMCTL} {words} >/run/{name}.out 2>/run/{name}.err & echo $! >"
                   f"/run/{name}.pid; wait $!; echo $? >/run/{name}.exit)"
                   " </dev/null >/dev/null 2>&1 &)")
        self.wait_for(lambda: self.read(f"/run/{name}.pid").endswith("\n"), f"{name} to start")

    def end(self, name, signal="TERM"):
        self.shell(f"kill -{signal} $(cat /run/{name}.pid)")
        self.wait_for(lambda: self.read(f"/run/{name}.exit").endswith("\n"), f"{name} to end")
        code = int(self.read(f"/run/{name}.exit"))
        self.shell(f"rm -f /run/{name}.exit /run/{name}.pid")
        return code
