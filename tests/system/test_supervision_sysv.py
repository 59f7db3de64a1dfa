"""The daemon's start script under SysV init, booted in the sandbox."""

import unittest

from router_sandbox import PROJECT, Router
from supervised_life import SupervisedLife, settings
from supervised_router import SupervisedRouter


class SysvLife(SupervisedLife, unittest.TestCase):
    supervisor = "sysv"

    def start(self):
        self.router.run("/etc/init.d/modemd", "start")

    def stop(self):
        self.router.run("/etc/init.d/modemd", "stop")
        self.assertIn("not running", self.status())

    def status(self):
        return self.router.run("/etc/init.d/modemd", "status", check=False)

    def has_given_up(self):
        return "wrong settings, not started again" in self.router.read("/var/log/messages")

    def try_again(self):
        self.assertIn("to be started again", self.status())
        self.router.run("/etc/init.d/modemd", "reset-modem")

    def test_7_a_change_of_the_run_level_ends_it_cleanly(self):
        ends = self.ends()
        self.assertIn("is running", self.status())
        self.router.run("/sbin/telinit", "6")
        self.router.wait_for_log("exit", times=ends + 1)
        self.router.wait_for(lambda: not self.router.daemon(), "the end")


class StopInThePause(unittest.TestCase):
    def test_the_keeper_ends_at_once(self):
        with SupervisedRouter("sysv", "881",
                              {"default/modemd": settings(PAUSE=100000)}) as router:
            router.wait_for_work()
            router.shell(f"kill -KILL {router.daemon()}")
            router.wait_for(lambda: "to be started again" in
                            router.run("/etc/init.d/modemd", "status", check=False), "the pause")
            router.run("/etc/init.d/modemd", "stop")
            self.assertEqual(router.shell("pidof sleep modemd || true"), "")
            self.assertFalse(router.exists("/var/run/modemd-keeper.pid"))


class HangupBetweenTwoWaits(unittest.TestCase):
    def test_it_ends_the_next_one(self):
        """The settings are mended, and the keeper is told so, before it has begun to wait."""
        with SupervisedRouter("sysv", "881", {"default/modemd": settings()}) as router:
            router.wait_for_work()
            router.write("/etc/default/mended", settings())
            router.write("/etc/default/modemd", settings(DEVICE=""))
            router.write("/usr/sbin/logger", "#!/bin/sh\n"
                         "cp /etc/default/mended /etc/default/modemd\n"
                         "[ \"$2\" != modemd-keeper ] || kill -HUP $PPID\n")
            killed = router.daemon()
            router.shell(f"chmod 755 /usr/sbin/logger; kill -KILL {killed}")
            router.wait_for_daemon(other_than=killed)


class HangupAtAnyMoment(unittest.TestCase):
    """Also while a child of the keeper is no program of its own yet."""

    HANGUPS = 300
    SCRIPT = f"""
        mkdir /tmp/keeper && cd /tmp/keeper && cp {PROJECT}/packaging/libexec/modemd-keeper .
        printf '#!/bin/sh\\necho >>/tmp/keeper/starts; exit 1\\n' >modemd-run
        chmod +x modemd-run && ./modemd-keeper & keeper=$!
        for i in $(seq {HANGUPS}); do
            until [ $(wc -l 2>/dev/null </tmp/keeper/starts || echo 0) -ge $i ]; do :; done
            for j in $(seq $((i * 37 % 9000))); do :; done
            kill -HUP $keeper
        done
        until [ $(wc -l </tmp/keeper/starts) -gt {HANGUPS} ]; do :; done
        kill -TERM $keeper; wait $keeper
    """

    def test_each_is_heeded(self):
        with Router(None, ("sh", "-c", self.SCRIPT + "sleep 100000")) as router:
            router.wait_for(lambda: not router.exists("/var/run/modemd-keeper.pid")
                            and router.exists("/tmp/keeper/starts"), "the end")
            self.assertEqual(router.read("/tmp/keeper/starts"), "\n" * (self.HANGUPS + 1))


if __name__ == "__main__":
    unittest.main()
