"""Runs `kelvro-host doctor` on real servers with one thing wrong with them at a time.

usage: doctor_mongotest.py KELVRO-HOST PLUGIN, with MONGODB_URL in the environment
"""

import datetime
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).parent.parent))
from host_program import eventually, main, unreachable_url  # noqa: E402
from own_servers import COLLECTIONS, HostTest  # noqa: E402


class Doctor(HostTest):
    def doctor(self, **options):
        result = self.run_host("doctor", "--json", **options)
        self.assertIn(result.returncode, (0, 1), result.stderr)
        findings = self.records(result)
        worse = [each for each in findings if each["severity"] in ("warning", "error")]
        self.assertEqual(result.returncode, 1 if worse else 0, result.stdout)
        self.assertNotIn("secret", result.stdout + result.stderr)
        return findings, worse

    def only_worse(self, **options):
        """The one finding that is a warning or an error."""
        _, worse = self.doctor(**options)
        self.assertEqual(len(worse), 1, worse)
        return worse[0]

    def about(self, findings, subject):
        found = [each for each in findings if each["subject"] == subject]
        self.assertTrue(found, f"nothing about {subject} in {findings}")
        return found

    def test_finds_nothing_wrong_with_what_the_plugin_lays_out(self):
        self.lay_out()
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        for name in COLLECTIONS:
            (indexes,) = self.about(findings, f"indexes of {name}")
            self.assertEqual(indexes["severity"], "ok", indexes)
        for subject in ("MongoDB", "Redis", "clock of MongoDB", "clock of Redis",
                        "round trip to MongoDB", "round trip to Redis", "memory of Redis",
                        "persistence of Redis", "plug-in file"):
            self.assertEqual(self.about(findings, subject)[0]["severity"], "ok", subject)
        self.assertEqual([each for each in findings if each["severity"] == "note"], [])

    def test_changes_nothing(self):
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        self.assertIn("not made yet", self.about(findings, "collections")[0]["found"])
        self.assertEqual(self.database.list_collection_names(), [])
        self.assertEqual(self.redis("INFO", "keyspace").strip(), b"# Keyspace")

    def test_shows_the_same_to_people(self):
        self.lay_out()
        self.database.eav_events.drop_index("modem_id_hashed")
        self.redis("SET", b"\x1b[2J", "x")
        result = self.run_host("doctor")
        self.assertEqual(result.returncode, 1)
        self.assertIn('\nwarning  indexes of eav_events: {modem_id: "hashed"} is missing'.replace(
            '"', ""), result.stdout)
        self.assertIn("\n         -> in mongosh", result.stdout)
        self.assertIn(r'the key "\x1b[2J" of a form', result.stdout)
        self.assertRegex(result.stdout, r"\nerrors: 0, warnings: 1, notes: 1, ok: \d+\n")

    def test_counts_and_measures_what_is_stored(self):
        self.run_demo()
        self.redis("SET", "drv:17", "{}")
        self.redis("SET", "drv:18", "{}")
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        sizes = {each["details"]["collection"]: each["details"] for each in findings
                 if each["subject"].startswith("size of ")}
        self.assertEqual(sizes["ul_messages"]["documents"], 51)
        self.assertGreater(sizes["ul_messages"]["bytes"], 0)
        self.assertGreater(sizes["ul_messages"]["index_bytes"], 0)
        (newest,) = self.about(findings, "newest of eav_values")
        self.assertLess(newest["details"]["age_secs"], 600)
        (keys,) = self.about(findings, "keys in Redis database 0")
        self.assertEqual(keys["details"]["state_keys"], 2)

    def test_finds_an_index_that_is_missing(self):
        self.lay_out()
        self.database.ul_messages.drop_index("ttl_1")
        finding = self.only_worse()
        self.assertEqual(finding["found"], "{ttl: 1} is missing: documents stay for ever")
        self.assertIn("createIndex({ttl: 1}, {expireAfterSeconds: 60})", finding["advice"])

    def test_finds_an_index_more(self):
        self.lay_out()
        self.database.eav_values.create_index("message_id")
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        (finding,) = self.about(findings, "indexes of eav_values")
        self.assertEqual(finding["severity"], "note")
        self.assertIn("{message_id: 1} is not one of the plug-in's", finding["found"])

    def test_finds_another_expiry(self):
        self.lay_out()
        self.database.eav_events.drop_index("ttl_1")
        self.database.eav_events.create_index("ttl", expireAfterSeconds=3600)
        self.assertEqual(self.only_worse()["found"],
                         "{ttl: 1} removes documents 3600 s after the date; it should be: 60 s")

    def test_finds_a_collection_that_nobody_will_lay_out(self):
        self.lay_out()
        self.database.dl_messages.drop()
        _, worse = self.doctor()
        self.assertEqual({each["subject"] for each in worse}, {"indexes of dl_messages"})
        self.assertEqual(len(worse), 5)

    def test_notes_a_collection_of_somebody_elses(self):
        self.lay_out()
        self.database.other.insert_one({})
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        self.assertIn("other is not one of the plug-in's",
                      [each["found"] for each in self.about(findings, "collections")])

    def test_finds_documents_that_are_past_their_time(self):
        self.lay_out()
        # Without this index they stay, for the server removes those of the others at any moment.
        self.database.eav_values.drop_index("ttl_1")
        now = datetime.datetime.now(datetime.timezone.utc)
        self.database.eav_values.insert_many(
            {"ttl": now - datetime.timedelta(minutes=minutes)} for minutes in (1, 60, 600)
        )
        findings, _ = self.doctor()
        (finding,) = self.about(findings, "expiry of eav_values")
        self.assertEqual(finding["severity"], "warning")
        self.assertEqual(finding["details"]["expired"], 2)

    def test_finds_keys_in_the_wrong_database(self):
        self.redis("SET", "17", "{}", db=0)
        self.redis("SET", "drv:17", "{}", db=7)
        self.redis("SADD", "dev:clients:17", "a", db=0)
        _, worse = self.doctor()
        found = [each["found"] for each in worse]
        self.assertEqual(len(found), 3, found)
        for text in ('"17" of downlink queues, which the plug-in looks for in database 7',
                     '"drv:17" of driver states, which the plug-in looks for in database 0',
                     '"dev:clients:17" of client registry, which the plug-in looks for in database 2'):
            self.assertTrue(any(text in each for each in found), found)

    def test_finds_a_registry_where_no_setting_points(self):
        self.redis("HSET", "dev:properties:17", "protocol", "a", db=5)
        finding = self.only_worse()
        self.assertEqual(finding["subject"], "keys in Redis database 5")
        self.assertIn("cleint_db", finding["advice"])

    def test_knows_the_databases_of_the_settings(self):
        self.redis("SET", "17", "{}", db=4)
        self.redis("SET", "drv:17", "{}", db=4)
        settings = self.write_settings(state_db=4, queue_db=4, cleint_db=5)
        self.redis("SADD", "dev:clients:17", "a", db=5)
        _, worse = self.doctor(settings=settings)
        self.assertEqual(worse, [])

    def test_finds_keys_that_expire(self):
        self.redis("SET", "drv:17", "{}", "EX", 1000)
        self.assertIn('"drv:17" will expire', self.only_worse()["found"])

    def test_finds_keys_of_another_type(self):
        self.redis("SADD", "drv:17", "a")
        self.assertIn('"drv:17" of another type', self.only_worse()["found"])

    def test_notes_keys_of_somebody_elses(self):
        self.redis("SET", "session", "x")
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        self.assertIn("note", [each["severity"]
                               for each in self.about(findings, "keys in Redis database 0")])

    def config(self, **values):
        for name, value in values.items():
            name = name.replace("_", "-")
            before = self.redis("CONFIG", "GET", name)[1]
            self.addCleanup(self.redis, "CONFIG", "SET", name, before)
            self.redis("CONFIG", "SET", name, value)

    def test_finds_that_redis_may_drop_keys(self):
        self.config(maxmemory="100mb", maxmemory_policy="allkeys-lru")
        finding = self.only_worse()
        self.assertEqual(finding["subject"], "memory of Redis")
        self.assertEqual(finding["advice"], "maxmemory-policy noeviction")

    def test_finds_that_redis_keeps_nothing(self):
        self.config(appendonly="no")
        finding = self.only_worse()
        self.assertEqual(finding["subject"], "persistence of Redis")
        self.assertEqual(finding["advice"], "appendonly yes")

    def test_finds_that_redis_cannot_save(self):
        # The place of the file is taken. Such a server refuses every write, and PING.
        file = pathlib.Path(self.redis.folder.name) / "dump.rdb"

        def save(status):
            self.redis("BGSAVE")
            eventually(lambda: f"rdb_last_bgsave_status:{status}".encode() in self.redis("INFO"),
                       f"a save with the result {status}")

        file.mkdir()
        self.addCleanup(save, "ok")
        self.addCleanup(file.rmdir)
        self.config(save="3600 1")
        save("err")
        finding = self.only_worse()
        self.assertEqual((finding["severity"], finding["subject"]),
                         ("error", "persistence of Redis"))
        self.assertIn("a full disk", finding["advice"])

    def test_does_not_need_the_right_to_ping(self):
        self.addCleanup(self.redis, "ACL", "SETUSER", "default", "+@all")
        self.redis("ACL", "SETUSER", "default", "-ping")
        self.assertEqual(self.doctor()[1], [])

    def test_finds_that_redis_is_a_replica(self):
        self.addCleanup(self.redis, "REPLICAOF", "NO", "ONE")
        self.redis("REPLICAOF", "127.0.0.1", "1")
        self.assertEqual(self.only_worse()["subject"], "role of Redis")

    def test_says_where_it_is_not_allowed_to_look(self):
        self.addCleanup(self.redis, "ACL", "SETUSER", "default", "+@all")
        self.redis("ACL", "SETUSER", "default", "-config", "-time")
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        for subject in ("configuration of Redis", "clock of Redis"):
            (finding,) = self.about(findings, subject)
            self.assertEqual(finding["severity"], "note")
            self.assertIn("not allowed to look", finding["found"])
        self.redis("ACL", "SETUSER", "default", "-info")
        findings, worse = self.doctor()
        self.assertEqual(worse, [])
        self.assertIn("not allowed to look",
                      self.about(findings, "memory and persistence of Redis")[0]["found"])

    def test_finds_a_database_that_redis_does_not_have(self):
        finding = self.only_worse(settings=self.write_settings(queue_db=99))
        self.assertEqual((finding["severity"], finding["subject"]), ("error", "Redis"))
        self.assertIn("99", finding["found"])

    def test_says_how_the_registrys_key_is_spelled(self):
        finding = self.only_worse(settings=self.write_settings(client_db=5))
        self.assertEqual(finding["subject"], 'redis: "client_db"')
        self.assertEqual(finding["advice"], 'write "cleint_db": the key is spelled so')

    def require_password(self, password):
        # The test goes on as a user of its own.
        self.redis("ACL", "SETUSER", "admin", "on", "nopass", "~*", "+@all")
        self.redis("ACL", "SETUSER", "default", "resetpass", f">{password}")
        self.redis.user = "admin"
        self.addCleanup(setattr, self.redis, "user", None)
        self.addCleanup(self.redis, "ACL", "SETUSER", "default", "nopass")

    def test_finds_a_password_that_all_may_read(self):
        self.require_password("secret")
        settings = self.write_settings(auth="secret", mode=0o644)
        finding = self.only_worse(settings=settings)
        self.assertEqual(finding["advice"], f"chmod 600 {settings}")

    def test_tells_a_wrong_password(self):
        self.require_password("right")
        finding = self.only_worse(settings=self.write_settings(auth="secret wrong"))
        self.assertEqual((finding["severity"], finding["subject"]), ("error", "Redis"))

    def test_examines_redis_when_mongodb_is_away(self):
        findings, worse = self.doctor(settings=self.write_settings(url=unreachable_url()))
        self.assertEqual([each["subject"] for each in worse], ["MongoDB"])
        self.assertIn("mongodb://127.0.0.1:1/ cannot be asked", worse[0]["found"])
        self.about(findings, "persistence of Redis")

    def test_examines_mongodb_when_redis_is_away(self):
        self.lay_out()
        findings, worse = self.doctor(settings=self.write_settings(port=1, auth="secret"))
        self.assertEqual([each["subject"] for each in worse], ["Redis"])
        self.assertIn("127.0.0.1:1 cannot be asked", worse[0]["found"])
        self.about(findings, "indexes of ul_messages")

    def test_examines_redis_without_a_url(self):
        settings = self.write("no_url.json", '{"redis": {"port": %d}}' % self.redis.port)
        findings, worse = self.doctor(settings=settings)
        self.assertEqual([each["subject"] for each in worse], ['"url"'])
        self.about(findings, "persistence of Redis")

    def test_finds_settings_that_cannot_be_read(self):
        for name, text in (("none.json", None), ("broken.json", "{")):
            file = self.folder / name if text is None else self.write(name, text)
            finding = self.only_worse(settings=file)
            self.assertEqual(finding["severity"], "error")
            self.assertIn(str(file), finding["found"])

    def test_finds_a_plugin_that_cannot_be_loaded(self):
        finding = self.only_worse(plugin=self.settings)
        self.assertEqual(finding["subject"], "plug-in file")
        self.assertIn(str(self.settings), finding["found"])


if __name__ == "__main__":
    main()
