"""What can be judged of the start files without starting anything."""

import pathlib
import re
import subprocess
import tempfile
import unittest

from router_sandbox import BUILD, PROJECT

PACKAGING = PROJECT / "packaging"
DOCUMENT = PROJECT / "docs" / "supervision.md"
FOLDERS = ("systemd", "udev", "sysv", "default", "libexec", "openwrt/files", "busybox",
           "runit", "openrc")
COMPONENTS = ("systemd", "sysv", "busybox", "runit", "openrc")
# What the template unit says for itself.
OF_ITS_OWN = re.compile(r"Description=|After=|BindsTo=|Conflicts=|ExecStart=|Environment=CARD|#|$"
                        r"|\[Install\]|WantedBy=")


def files():
    return [path for folder in FOLDERS for path in sorted((PACKAGING / folder).rglob("*"))
            if path.is_file()]


def installed():
    """The files that the components bring."""
    with tempfile.TemporaryDirectory() as prefix:
        for component in COMPONENTS:
            subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix,
                            "--component", component], check=True, capture_output=True)
        return {path.relative_to(prefix): path.read_bytes()
                for path in pathlib.Path(prefix).rglob("*") if path.is_file()}


class StartFiles(unittest.TestCase):
    def test_each_is_installed_or_named_in_the_document(self):
        contents = set(installed().values())
        document = DOCUMENT.read_text()
        for path in files():
            name = str(path.relative_to(PROJECT))
            self.assertTrue(path.read_bytes() in contents or f"`{name}`" in document, name)

    def test_the_scripts_pass_shellcheck(self):
        scripts = [path for path in files() if path.read_text().startswith("#!")]
        self.assertGreater(len(scripts), 4)
        # rc.common uses the variables of a procd script and calls its functions; ash knows local.
        subprocess.run(["shellcheck", "-s", "dash", "-e", "SC2034,SC3043,SC2317,SC1008", *scripts],
                       check=True)

    def test_the_template_differs_from_the_unit_in_its_port_only(self):
        ours, theirs = ([line for line in (PACKAGING / "systemd" / name).read_text().splitlines()
                         if not OF_ITS_OWN.match(line)]
                        for name in ("modemd.service", "modemd@.service"))
        self.assertIn("KillMode=process", ours)
        self.assertEqual(ours, theirs)

    def test_the_sandbox_is_as_tight_as_the_document_says(self):
        told = re.search(r"overall exposure level of ([0-9.]+)", DOCUMENT.read_text())[1]
        for unit in ("modemd.service", "modemd@.service"):
            verdict = subprocess.run(
                ["systemd-analyze", "security", "--no-pager", "--offline=yes",
                 f"--threshold={int(float(told) * 10)}", PACKAGING / "systemd" / unit],
                check=False, capture_output=True, text=True)
            self.assertEqual(verdict.returncode, 0, verdict.stdout[-200:])
            self.assertRegex(verdict.stdout, rf"Overall exposure level for \S+: {told} ")


if __name__ == "__main__":
    unittest.main()
