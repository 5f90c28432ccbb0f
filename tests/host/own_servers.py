"""For tests of kelvro-host that want the plug-in's database empty, and a Redis server of their own.

MONGODB_URL has to be in the environment. The plug-in's database has a fixed name, and is dropped;
KELVRO_ALLOW_DROP=1 says that the server is ours.
"""

import json
import os
import signal
import socket
import subprocess
import tempfile

from host_program import DATABASE, HOST, PLUGIN, ProgramTest, eventually

COLLECTIONS = ("ul_messages", "dl_messages", "eav_values", "eav_events", "states", "dl_queues")


class Redis:
    """A Redis server of the test's own, which ends with the test process too."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.user = None
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            self.port = taken.getsockname()[1]
        self.process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", "--", "redis-server", "--port", str(self.port),
             "--bind", "127.0.0.1", "--dir", self.folder.name, "--save", "", "--appendonly", "yes"],
            stdout=subprocess.DEVNULL,
        )
        eventually(self.listens, "Redis")

    def listens(self):
        if self.process.poll() is not None:
            raise AssertionError("redis-server ended")
        try:
            return self("PING") == b"PONG"
        except (OSError, RuntimeError):
            return False

    def end(self):
        self.process.kill()
        self.process.wait()
        self.folder.cleanup()

    def __call__(self, *command, db=0):
        """Runs one command: bytes, integers, None and lists of them come back."""
        parts = [part if isinstance(part, bytes) else str(part).encode() for part in command]
        with socket.create_connection(("127.0.0.1", self.port)) as connection:
            stream = connection.makefile("rwb")
            login = [[b"AUTH", self.user.encode(), b"any"]] if self.user else []
            for each in (*login, [b"SELECT", str(db).encode()], parts):
                stream.write(b"*%d\r\n" % len(each))
                for part in each:
                    stream.write(b"$%d\r\n%s\r\n" % (len(part), part))
                stream.flush()
                answer = self.read(stream)
            return answer

    def read(self, stream):
        kind, rest = (line := stream.readline()[:-2])[:1], line[1:]
        if kind == b"-":
            raise RuntimeError(rest.decode())
        if kind == b":":
            return int(rest)
        if kind == b"$":
            return None if rest == b"-1" else stream.read(int(rest) + 2)[:-2]
        if kind == b"*":
            return [self.read(stream) for _ in range(int(rest))]
        return rest

    def contents(self, db):
        """Every key with its bytes in Redis' own form and when it goes."""
        return {
            key: (self("DUMP", key, db=db), self("PEXPIRETIME", key, db=db))
            for key in self("KEYS", "*", db=db)
        }


class HostTest(ProgramTest):
    """The program with an empty database and an empty Redis."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.redis = Redis()
        cls.addClassCleanup(cls.redis.end)

    def setUp(self):
        super().setUp()
        if os.environ.get("KELVRO_ALLOW_DROP") != "1" and self.database.list_collection_names():
            self.fail(f"this test would drop the database {DATABASE}; KELVRO_ALLOW_DROP=1 allows it")
        self.client.drop_database(DATABASE)
        self.addCleanup(self.client.drop_database, DATABASE)
        self.redis("FLUSHALL")
        self.settings = self.write_settings()

    def url(self, options=""):
        url = os.environ["MONGODB_URL"]
        return url + (("&" if "?" in url else "?") + options if options else "")

    def write_settings(self, name="settings.json", mode=0o600, url=None, **redis):
        timeouts = ("serverSelectionTryOnce=false&serverSelectionTimeoutMS=10000&"
                    "connectTimeoutMS=3000&socketTimeoutMS=30000")
        redis = {"host": "127.0.0.1", "port": self.redis.port, **redis}
        settings = {"url": url or self.url(timeouts), "redis": redis}
        return self.write(name, json.dumps(settings), mode)

    def command(self, *arguments, settings=None, plugin=PLUGIN):
        name, *rest = arguments
        return [HOST, name, "--plugin", plugin, "--settings", settings or self.settings, *rest]

    def run_host(self, *arguments, **options):
        return self.run_program(self.command(*arguments, **options))

    def start_host(self, *arguments, **options):
        return self.start_program(self.command(*arguments, **options))

    def interrupt(self, process):
        process.send_signal(signal.SIGINT)

    def records(self, result):
        return [json.loads(line) for line in result.stdout.split("\n") if line]

    def run_demo(self, *arguments):
        result = self.run_host("demo", "--decoder=shipped", *arguments)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def lay_out(self):
        """A demo that deletes nothing opens every store all the same."""
        self.run_demo("--clear")
