"""kelvro-host as a process, and the databases past it, for tests that start it.

The test is called with the program and the plug-in's file, and has MONGODB_URL and REDIS_URL in its
environment.
"""

import datetime
import json
import os
import pty
import struct
import subprocess
import sys
import termios
import unittest

import fcntl
import pymongo

HOST, PLUGIN = sys.argv[1:3]
# Nobody else's devices.
DEVICE, OTHER, THIRD = 912000001, 912000002, 912000003
DEVICES = (DEVICE, OTHER, THIRD)
START = 1767225600  # 2026-01-01T00:00:00Z


def later():
    """A time until which everything that is stored is kept."""
    return datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=1)


def redis(database, *command):
    result = subprocess.run(
        ["redis-cli", "-u", os.environ["REDIS_URL"], "-n", str(database), *map(str, command)],
        capture_output=True, encoding="utf-8", timeout=30, check=True,
    )
    return result.stdout.rstrip("\n")


class HostTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        client = pymongo.MongoClient(os.environ["MONGODB_URL"])
        cls.addClassCleanup(client.close)
        cls.database = client["kelvrostorage"]
        # A store lays its collections out only if they are not there yet.
        for command in ("uplinks", "values"):
            subprocess.run(
                [HOST, command, "--plugin", PLUGIN, "--device", "1"], check=True, timeout=60,
                capture_output=True,
            )

    def setUp(self):
        self.forget()
        self.addCleanup(self.forget)

    def forget(self):
        for collection in ("ul_messages", "dl_messages", "eav_values", "eav_events"):
            self.database[collection].delete_many({"modem_id": {"$in": DEVICES}})
        for collection in ("states", "dl_queues"):
            self.database[collection].delete_many({"_id": {"$in": DEVICES}})

    def arguments(self, *words):
        command = [str(word) for word in words]
        # After the words of the command, of which "state show" has two.
        return [HOST, *command, "--plugin", PLUGIN]

    def host(self, *words, **environment):
        return subprocess.run(
            self.arguments(*words), capture_output=True, encoding="utf-8", timeout=60,
            stdin=subprocess.DEVNULL, env={**os.environ, **environment},
        )

    def done(self, *words, **environment):
        result = self.host(*words, **environment)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result

    def fails(self, status, *words, **environment):
        """What the program says when it ends with the status; it never prints a result then."""
        result = self.host(*words, **environment)
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        self.assertEqual(result.stdout, "")
        return result.stderr

    def records(self, *words):
        return [json.loads(line) for line in self.done(*words, "--json").stdout.splitlines()]

    def on_terminal(self, columns, *words, typed=""):
        """Its exit status and all that it writes on a terminal of so many columns."""
        terminal, its_side = pty.openpty()
        fcntl.ioctl(its_side, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        program = subprocess.Popen(
            self.arguments(*words), stdin=its_side, stdout=its_side, stderr=its_side
        )
        os.close(its_side)
        os.write(terminal, typed.encode())
        written = b""
        try:
            while piece := os.read(terminal, 65536):
                written += piece
        except OSError:  # how Linux says that the program has let go of the terminal
            pass
        os.close(terminal)
        return program.wait(timeout=60), written.decode().replace("\r\n", "\n")


def main():
    unittest.main(argv=sys.argv[:1], verbosity=2)
