"""Runs kelvro-host watch on terminals of tmux, with the real plug-in and real servers.

usage: watch_mongotest.py KELVRO-HOST PLUGIN, with MONGODB_URL and REDIS_URL in the environment
"""

import contextlib
import datetime
import os
import pathlib
import shlex
import signal
import socket
import subprocess
import sys
import threading
import time

import bson
import pymongo.uri_parser

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent))
from host_program import HOST, PLUGIN, ProgramTest, eventually, main  # noqa: E402

DEVICE = 91_002_001


class Relay:
    """A way to the MongoDB server that can be cut and mended."""

    def __init__(self, host, port):
        self.server = (host, port)
        self.connections = []
        self.listener = None
        self.port = 0
        self.mend()

    def mend(self):
        self.listener = socket.create_server(("127.0.0.1", self.port), reuse_port=False)
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, args=(self.listener,), daemon=True).start()

    def cut(self):
        with contextlib.suppress(OSError):  # Cut before.
            self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        for each in self.connections:
            with contextlib.suppress(OSError):
                each.shutdown(socket.SHUT_RDWR)
            each.close()
        self.connections = []

    def accept(self, listener):
        with contextlib.suppress(OSError):
            while True:
                near, _ = listener.accept()
                far = socket.create_connection(self.server)
                self.connections += [near, far]
                for source, target in ((near, far), (far, near)):
                    threading.Thread(target=self.copy, args=(source, target), daemon=True).start()

    @staticmethod
    def copy(source, target):
        with contextlib.suppress(OSError):
            while block := source.recv(65536):
                target.sendall(block)
        with contextlib.suppress(OSError):
            target.shutdown(socket.SHUT_RDWR)


class Watch(ProgramTest):
    def setUp(self):
        super().setUp()
        self.socket = self.folder / "tmux"
        self.clear()
        self.addCleanup(self.clear)

    def clear(self):
        for name in ("ul_messages", "eav_values", "eav_events"):
            self.database[name].delete_many({"modem_id": DEVICE})

    def tmux(self, *arguments):
        return subprocess.run(
            ["tmux", "-S", self.socket, "-f", "/dev/null", *map(str, arguments)],
            capture_output=True, encoding="utf-8", timeout=60, check=True,
        ).stdout

    def start(self, columns=80, lines=24, every="1s", url=None):
        """A shell with the program in it, whose process is returned."""
        environment = {**os.environ, "PS1": "$ ", "LC_ALL": "C.UTF-8", "ENV": ""}
        if url:
            environment["MONGODB_URL"] = url
        subprocess.run(
            ["tmux", "-S", self.socket, "-f", "/dev/null", "new-session", "-d", "-x", str(columns),
             "-y", str(lines), "sh"], env=environment, timeout=60, check=True,
        )
        self.addCleanup(self.tmux, "kill-server")
        self.settings = self.settings_of_terminal("before")
        command = shlex.join(
            [HOST, "watch", "--plugin", PLUGIN, "--device", str(DEVICE), "--every", every]
        )
        pid = self.folder / "pid"
        self.type(f"sh -c 'echo $$ >{pid}; exec {command}'; echo status=$?", "Enter")
        self.await_text("1 Uplinks")
        return int(pid.read_text(encoding="utf-8"))

    def settings_of_terminal(self, name):
        file = self.folder / name
        self.type(f"stty -a >{file}.new; mv {file}.new {file}", "Enter")
        self.eventually(file.exists, file)
        return file.read_text(encoding="utf-8")

    def type(self, *keys):
        self.tmux("send-keys", *keys)

    def screen(self):
        return self.tmux("capture-pane", "-p")

    def eventually(self, condition, what):
        eventually(condition, lambda: f"{what}:\n{self.screen()}")

    def await_text(self, text):
        self.eventually(lambda: text in self.screen(), f"{text!r} on the screen")

    def await_no_text(self, text):
        self.eventually(lambda: text not in self.screen(), f"a screen without {text!r}")

    def expect_restored(self, status):
        """The shell is there again as it was."""
        self.await_text(f"status={status}")
        self.assertNotIn("1 Uplinks", self.screen())
        self.assertEqual(self.tmux("display", "-p", "#{alternate_on} #{cursor_flag}"), "0 1\n")
        self.assertEqual(self.settings_of_terminal("after"), self.settings)

    def store(self, text, secs=0):
        """A record of each kind, so many seconds old."""
        ttl = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(hours=1)
        common = {
            "modem_id": DEVICE, "timestamp": bson.Int64(time.time() - secs), "extended_data": {},
            "ttl": ttl,
        }
        self.database["ul_messages"].insert_one({
            **common, "_id": os.urandom(8).hex(), "station_id": 1, "phy": "", "rssi": 0, "snr": 0,
            "time_detected": common["timestamp"], "bs_timezone_offset": 0, "tag": text,
            "hw_type": "make", "protocol": "", "data": {"total_m3": 21.93}, "payload": "",
            "parse_status": "ok",
        })
        self.database["eav_values"].insert_one({
            **common, "message_id": "", "tag": "", "obis_code": f"code-{text}", "val_type": 6,
            "value": 2.5, "extended_data": {"unit": "kW"},
        })
        self.database["eav_events"].insert_one({
            **common, "message_id": "", "event_code": 2, "message": f"event-{text}", "parameter": 0,
        })

    def test_shows_new_records_of_each_kind_and_their_rate(self):
        self.store("old", secs=7200)
        self.start()
        self.await_text("old  total: 21.93 m³  make")
        self.await_text("1 Uplinks 0 a minute")
        self.store("new")
        self.await_text("1 Uplinks 1 a minute")
        lines = [line for line in self.screen().splitlines() if "make" in line]
        self.assertRegex(lines[0], rf"^\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d  {DEVICE}  new  total")
        self.assertIn("old", lines[1])
        self.type("2")
        self.await_text("code-new  2.5 kW")
        self.type("3")
        self.await_text("2  event-new")
        self.type("Tab")
        self.await_text("new  total")

    def test_filters_by_what_is_typed(self):
        self.store("blue")
        self.store("red")
        self.start()
        self.await_text("blue  total")
        self.type("/", "R", "E", "D", "Enter")
        self.await_no_text("blue  total")
        self.assertIn("red  total", self.screen())
        self.assertIn("/ RED", self.screen())
        self.type("Escape")
        self.await_text("blue  total")

    def test_asks_nothing_while_it_is_paused(self):
        self.start()
        self.await_text("none yet")
        self.type("p")
        self.await_text("paused")
        self.store("meanwhile")
        time.sleep(2)  # Twice as long as it would take to ask.
        self.assertNotIn("meanwhile", self.screen())
        self.type("p")
        self.await_text("meanwhile")

    def test_fits_into_forty_columns_and_follows_the_size(self):
        self.store("water")
        self.start(columns=40, lines=12)
        self.await_text("water  total")
        screen = self.screen()
        for text in ("1 Uplinks 1", "2 Values 1", "3 Events 1", "q quit", "every 1 s"):
            self.assertIn(text, screen)
        self.tmux("resize-window", "-x", 80, "-y", 24)
        self.await_text("1 Uplinks 1 a minute")
        self.assertEqual(len(self.screen().rstrip("\n").splitlines()), 24)
        self.tmux("resize-window", "-x", 40, "-y", 8)
        self.await_no_text("a minute")
        self.await_text("q quit")

    def test_leaves_the_terminal_as_it_was_when_it_is_quit(self):
        self.start()
        self.type("q")
        self.expect_restored(0)

    def expect_restored_after(self, number):
        os.kill(self.start(), number)
        self.expect_restored(0)

    def test_leaves_the_terminal_as_it_was_when_it_is_terminated(self):
        self.expect_restored_after(signal.SIGTERM)

    def test_leaves_the_terminal_as_it_was_when_it_is_interrupted(self):
        self.expect_restored_after(signal.SIGINT)

    def test_leaves_the_terminal_as_it_was_when_ctrl_c_is_typed(self):
        self.start()
        self.type("C-c")
        self.expect_restored(0)

    def test_goes_on_trying_while_the_server_is_away(self):
        address = pymongo.uri_parser.parse_uri(os.environ["MONGODB_URL"])["nodelist"][0]
        relay = Relay(*address)
        self.addCleanup(relay.cut)
        self.store("before")
        self.start(url=f"mongodb://127.0.0.1:{relay.port}/?serverSelectionTimeoutMS=500"
                   "&heartbeatFrequencyMS=500")
        self.await_text("before  total")
        relay.cut()
        self.await_text("trying again: ")
        self.assertIn("before  total", self.screen())
        # It does not hold the keys up.
        self.type("3")
        self.await_text("event-before")
        self.type("1")
        relay.mend()
        self.store("afterwards")
        self.await_text("afterwards  total")
        self.await_no_text("trying again: ")
        relay.cut()
        self.await_text("trying again: ")
        self.type("q")
        self.expect_restored(0)

    def test_begins_without_a_server_and_quits_though_it_waits_for_one(self):
        with socket.create_server(("127.0.0.1", 0)) as silent:
            # Somebody listens who never answers.
            self.start(url=f"mongodb://127.0.0.1:{silent.getsockname()[1]}/"
                       "?serverSelectionTimeoutMS=60000&connectTimeoutMS=60000")
            self.await_text("asking …")
            self.type("q")
            began = time.monotonic()
            self.expect_restored(0)
            self.assertLess(time.monotonic() - began, 30)

    def test_wants_a_terminal(self):
        result = self.run_program([HOST, "watch", "--plugin", PLUGIN, "--device", DEVICE])
        self.assertEqual(result.returncode, 2)
        self.assertIn("watch fills a terminal", result.stderr)
        self.assertEqual(result.stdout, "")

    def test_wants_a_device(self):
        self.assertEqual(self.run_program([HOST, "watch"]).returncode, 2)


if __name__ == "__main__":
    main()
