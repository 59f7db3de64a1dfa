"""The udev rules, held against a modem that stands in a tree made for the test."""

import pathlib
import re
import subprocess
import tempfile
import unittest

from router_sandbox import PROJECT

RULES = PROJECT / "packaging" / "udev"
UDEVADM = PROJECT / "build" / "supervisors" / "udev" / "bin" / "udevadm"
# A modem with its third interface on ttyUSB2, as sysfs shows it: file, then content.
PORT = "devices/usb1/1-1/1-1:1.2/ttyUSB2/tty/ttyUSB2"
TREE = {
    "devices/usb1/1-1/uevent": "DEVTYPE=usb_device\nBUSNUM=001\nDEVNUM=002\n",
    "devices/usb1/1-1/idVendor": "{vendor}\n",
    "devices/usb1/1-1/idProduct": "9010\n",
    "devices/usb1/1-1/serial": "353\n",
    "devices/usb1/1-1/1-1:1.2/uevent": "DEVTYPE=usb_interface\n",
    "devices/usb1/1-1/1-1:1.2/bInterfaceNumber": "{interface}\n",
    "devices/usb1/1-1/1-1:1.2/bInterfaceClass": "ff\n",
    "devices/usb1/1-1/1-1:1.2/bInterfaceSubClass": "00\n",
    "devices/usb1/1-1/1-1:1.2/bInterfaceProtocol": "00\n",
    "devices/usb1/1-1/1-1:1.2/ttyUSB2/uevent": "DRIVER=option1\n",
    f"{PORT}/uevent": "MAJOR=188\nMINOR=2\nDEVNAME=ttyUSB2\n",
    f"{PORT}/dev": "188:2\n",
}
SUBSYSTEMS = {"devices/usb1/1-1": "bus/usb", "devices/usb1/1-1/1-1:1.2": "bus/usb",
              "devices/usb1/1-1/1-1:1.2/ttyUSB2": "bus/usb-serial", PORT: "class/tty"}
# Mounts of its own hide the machine's. Of Debian's rules, the one that reads the ids of a port.
LOOK = """
mount --bind "$1/sys" /sys
mount -t tmpfs rules /run
mount -t tmpfs nodes /dev
mknod -m 0666 /dev/null c 1 3
mkdir -p /run/udev/rules.d
cp "$2"/*.rules "$(dirname "$3")"/../lib/udev/rules.d/60-serial.rules /run/udev/rules.d/
SYSTEMD_DEVICE_VERIFY_SYSFS=0 exec "$3" test --action="$5" "$4" 2>&1
"""


class UdevRules(unittest.TestCase):
    def properties(self, device, action="add", vendor="1410", interface="02"):
        """What "udevadm test" finds out about the device, as a dictionary."""
        with tempfile.TemporaryDirectory() as directory:
            sys = pathlib.Path(directory) / "sys"
            for name, text in TREE.items():
                path = sys / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text.format(vendor=vendor, interface=interface))
            for name, subsystem in SUBSYSTEMS.items():
                (sys / subsystem).mkdir(parents=True, exist_ok=True)
                up = "../" * len(pathlib.Path(name).parts)
                (sys / name / "subsystem").symlink_to(up + subsystem)
            done = subprocess.run(
                ["unshare", "--mount", "--net", "bash", "-ec", LOOK, "look", directory, RULES,
                 UDEVADM, f"/sys/{device}", action], check=True, capture_output=True, text=True)
        return dict(re.findall(r"^(\w+)=(.*)$", done.stdout, re.MULTILINE))

    def test_the_port_gets_its_name_and_starts_its_service(self):
        port = self.properties(PORT)
        self.assertIn("/dev/modem_at", port["DEVLINKS"].split())
        self.assertEqual(port["SYSTEMD_WANTS"], "modemd@modem_at.service")
        self.assertEqual(port["ID_MM_PORT_IGNORE"], "1")

    def test_another_interface_of_the_modem_is_left_without_a_name_but_not_to_others(self):
        port = self.properties(PORT, interface="03")
        self.assertNotIn("modem_at", port["DEVLINKS"])
        self.assertNotIn("SYSTEMD_WANTS", port)
        self.assertEqual(port["ID_MM_PORT_IGNORE"], "1")

    def test_the_whole_modem_is_kept_from_other_managers(self):
        for action in ("add", "change", "bind"):
            modem = self.properties("devices/usb1/1-1", action)
            self.assertEqual(modem["ID_MM_DEVICE_IGNORE"], "1", action)

    def test_devices_of_other_makers_are_left_alone(self):
        for device in (PORT, "devices/usb1/1-1"):
            found = self.properties(device, vendor="0403")
            self.assertTrue({name for name in found if name.startswith("ID_MM_")} == set(), device)
            self.assertNotIn("SYSTEMD_WANTS", found)


if __name__ == "__main__":
    unittest.main()
