"""Runs `kelvro-host export` and `import` on real servers and compares what is there afterwards, byte
by byte, with what was there before.

usage: transfer_mongotest.py KELVRO-HOST PLUGIN, with MONGODB_URL in the environment
"""

import datetime
import hashlib
import json
import os
import pathlib
import re
import sys

import bson
from bson.codec_options import CodecOptions
from bson.raw_bson import RawBSONDocument

sys.path.append(str(pathlib.Path(__file__).parent.parent))
from host_program import DATABASE, eventually, main, unreachable_url  # noqa: E402
from own_servers import COLLECTIONS, HostTest, Redis  # noqa: E402

RAW = CodecOptions(document_class=RawBSONDocument)
MANY = 20_000

# Every type that FerretDB stores, and what no text would keep.
STRANGE = [
    {"_id": bson.ObjectId("0123456789abcdef01234567"), "empty": {}, "list": [1, [2.5, None], "x"]},
    {"_id": 7, "double": 0.1, "minus zero": -0.0, "infinite": float("inf"), "none": float("nan")},
    {"_id": bson.Int64(2**40), "int32": 1, "int64": bson.Int64(1), "yes": True, "no": False},
    {"_id": "text", "text": "ä\n\"\\\u2028\U0001f600", "zero": "a\0b"},
    {"_id": True, "date": datetime.datetime(2026, 11, 22, 10, 0, 0, 123000)},
    {"_id": datetime.datetime(1969, 1, 1), "binary": b"\0\xff", "uuid": bson.Binary(b"0" * 16, 4)},
    {"_id": {"a": 1}, "regex": bson.Regex("^a/", "im"), "stamp": bson.Timestamp(5, 6)},
    {"_id": b"bytes", "decimal": bson.Decimal128("1.50"), "min": bson.MinKey(), "max": bson.MaxKey()},
    {"_id": 1.5, "data": {"$date": "tomorrow"}, "more": {"$numberInt": "1"}},
    {"_id": "dollar", "data": {"$bson_base64": "BQAAAAA="}, "a.b": {"": 1}},
    {"_id": "code", "code": bson.Code("f()")},
]


class Transfer(HostTest):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.export_folder = self.folder / "export"

    def raw(self, name):
        return self.database.get_collection(name, codec_options=RAW)

    def documents(self):
        """Each collection's documents by their bytes."""
        return {name: sorted(document.raw for document in self.raw(name).find())
                for name in self.database.list_collection_names()}

    def keys(self, redis=None, dbs=(0, 2, 7)):
        return [(redis or self.redis).contents(db) for db in dbs]

    def empty(self):
        self.client.drop_database(DATABASE)
        self.redis("FLUSHALL")

    def store_strange_things(self):
        self.raw("ul_messages").insert_many(RawBSONDocument(bson.encode(each)) for each in STRANGE)
        self.database["strange/name"].insert_one({"_id": 1})
        self.redis("SET", b"\xff:17", b"\0\xfe")
        self.redis("SET", ":18", "ä")
        self.redis("SET", "19", '{"lock":false}', "PX", 10_000_000, db=7)
        self.redis("SADD", "dev:clients:17", "b", "a", b"\xff", db=2)
        self.redis("HSET", "dev:properties:17", "protocol", "p", "hw_type", "", db=2)
        self.redis("RPUSH", "list", "x", "y", "x", db=2)
        self.redis("ZADD", "zset", "1.5", "m", "-1", "n", db=2)
        self.redis("XADD", "stream", "1-1", "field", "value", db=2)

    def transfer(self, command, *arguments, status=0, **options):
        result = self.run_host(command, "--json", *arguments, self.export_folder, **options)
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        return {each["store"]: each for each in self.records(result)}, result

    def exported(self, **options):
        return self.transfer("export", **options)[0]

    def imported(self, *arguments, **options):
        return self.transfer("import", *arguments, **options)[0]

    def expect_failure(self, command, *texts, arguments=()):
        _, result = self.transfer(command, *arguments, status=1)
        for text in texts:
            self.assertIn(text, result.stderr)

    def manifest(self):
        return json.loads((self.export_folder / "manifest.json").read_text(encoding="utf-8"))

    def lines(self, file):
        return (self.export_folder / file).read_bytes().split(b"\n")[:-1]

    def store_many(self, name="eav_values"):
        self.database[name].insert_many({"_id": i, "text": "x" * 100} for i in range(MANY))

    def test_brings_back_all_that_the_plugin_stores(self):
        self.run_demo()
        # Of what it keeps for devices the demo leaves nothing.
        state = {"v": 2.5, "list": [{"a": True}]}
        self.database.states.insert_many({"_id": i, "state": state} for i in range(51))
        self.database.dl_queues.insert_one({"_id": 17, "state": {"dl": {}, "lock": False}})
        for i in range(51):
            self.redis("SET", f"drv:{i}", json.dumps(state))
        self.redis("SET", "17", '{"dl":{},"lock":false,"status":"NONE"}', db=7)
        self.redis("SADD", "dev:clients:17", "a", "b", db=2)
        documents, keys = self.documents(), self.keys()
        exported = self.exported()
        self.assertEqual(set(exported), {*COLLECTIONS, "state", "queue", "client"})
        self.assertEqual(exported["ul_messages"]["records"], 51)
        self.assertEqual(exported["state"]["records"], 51)
        self.assertEqual(sum(each["in_base64"] for each in exported.values()), 0)
        self.empty()

        imported = self.imported()
        self.assertEqual(self.documents(), documents)
        self.assertEqual(self.keys(), keys)
        for name, each in imported.items():
            self.assertEqual(each["added"], exported[name]["records"], name)
            self.assertEqual(each["in_store"], exported[name]["records"], name)
            self.assertEqual(each["missing"], 0, name)
        # The plug-in has laid out the collections: nothing is missing.
        findings = self.records(self.run_host("doctor", "--json"))
        self.assertEqual([each for each in findings if each["severity"] != "ok"], [])

    def test_brings_back_strange_things_byte_by_byte(self):
        self.store_strange_things()
        documents, keys = self.documents(), self.keys()
        exported = self.exported()
        self.assertEqual(exported["ul_messages"]["records"], len(STRANGE))
        self.assertEqual(exported["ul_messages"]["in_base64"], 1)
        self.assertEqual(exported["client"]["in_base64"], 2)
        self.empty()
        self.imported()
        # The plug-in has laid out the collections that were not there.
        self.assertEqual({name: each for name, each in self.documents().items() if each}, documents)
        self.assertEqual(self.keys(), keys)

    def test_writes_what_others_can_read(self):
        self.database.eav_values.insert_one({"_id": 7, "value": 2.5})
        self.redis("SET", "drv:17", '{"a":1}')
        self.exported()
        self.assertEqual([json.loads(line) for line in self.lines("mongodb/eav_values.jsonl")],
                         [{"_id": {"$numberInt": "7"}, "value": {"$numberDouble": "2.5"}}])
        self.assertEqual([json.loads(line) for line in self.lines("redis/state.jsonl")],
                         [{"key": "drv:17", "type": "string", "value": '{"a":1}'}])
        self.assertEqual(self.export_folder.stat().st_mode & 0o777, 0o700)
        self.assertEqual({store["store"]: store["records"] for store in self.manifest()["stores"]},
                         {"eav_values": 1, "client": 0, "queue": 0, "state": 1})

    def test_moves_to_another_redis_and_other_databases(self):
        self.store_strange_things()
        keys = self.keys()
        self.exported()
        other = Redis()
        self.addCleanup(other.end)
        self.client.drop_database(DATABASE)
        settings = self.write_settings("other.json", port=other.port, cleint_db=3, state_db=4,
                                       queue_db=5)
        self.imported(settings=settings)
        self.assertEqual(self.keys(other, (4, 3, 5)), keys)

    def test_keeps_away_from_stores_that_are_not_empty(self):
        self.database.eav_values.insert_one({"_id": 1})
        self.exported()
        self.expect_failure("import", "mongodb eav_values has 1 records already", "--merge")
        self.empty()
        self.redis("SET", "drv:17", "{}")
        self.imported()  # of which the export has nothing
        self.assertEqual(self.redis("GET", "drv:17"), b"{}")

    def test_leaves_what_is_there_when_it_merges(self):
        self.database.eav_values.insert_many({"_id": i, "v": i} for i in range(5))
        for i in range(3):
            self.redis("SET", f"drv:{i}", i)
        self.exported()
        self.database.eav_values.delete_one({"_id": 0})
        self.database.eav_values.update_one({"_id": 1}, {"$set": {"v": 100}})
        self.database.eav_values.insert_one({"_id": 9})
        self.redis("DEL", "drv:0")
        self.redis("SET", "drv:1", "other")

        imported = self.imported("--merge")
        counts = {"added": 1, "there_already": 3, "different": 1, "replaced": 0, "missing": 0}
        self.assertLessEqual(counts.items(), imported["eav_values"].items())
        self.assertEqual(imported["eav_values"]["in_store"], 6)
        self.assertEqual(self.database.eav_values.find_one({"_id": 1})["v"], 100)
        counts = {"added": 1, "there_already": 1, "different": 1, "replaced": 0}
        self.assertLessEqual(counts.items(), imported["state"].items())
        self.assertEqual(self.redis("GET", "drv:1"), b"other")

    def test_replaces_what_is_there_when_it_is_told_to(self):
        self.database.eav_values.insert_many({"_id": i, "v": i} for i in range(3))
        self.redis("SET", "drv:1", "1")
        self.exported()
        documents, keys = self.documents(), self.keys()
        self.database.eav_values.update_one({"_id": 1}, {"$set": {"v": 100}})
        self.redis("SADD", "drv:1x", "a")
        self.redis("RENAME", "drv:1x", "drv:1")

        imported = self.imported("--replace")
        self.assertEqual(imported["eav_values"]["replaced"], 1)
        self.assertEqual(imported["eav_values"]["there_already"], 2)
        self.assertEqual(imported["state"]["replaced"], 1)
        self.assertEqual({name: self.documents()[name] for name in documents}, documents)
        self.assertEqual(self.keys(), keys)

    def test_finds_ids_that_only_the_server_takes_for_the_same(self):
        self.database.eav_values.insert_one({"_id": 1})
        self.exported()
        self.empty()
        self.database.eav_values.insert_one({"_id": 1.0})
        self.assertEqual(self.imported("--merge")["eav_values"]["different"], 1)

    def test_does_not_store_keys_that_are_past_their_time(self):
        self.redis("SET", "drv:17", "{}", "PXAT", 4_000_000_000_000)
        self.redis("SET", "drv:18", "{}", "PXAT", 4_000_000_000_001)
        self.exported()
        self.redis("FLUSHALL")
        # As if the export had been made long ago.
        file = self.export_folder / "redis" / "state.jsonl"
        file.write_bytes(file.read_bytes().replace(b"4000000000000", b"1000000000000"))
        manifest = self.manifest()
        (store,) = [each for each in manifest["stores"] if each["store"] == "state"]
        store["sha256"] = hashlib.sha256(file.read_bytes()).hexdigest()
        (self.export_folder / "manifest.json").write_text(json.dumps(manifest), encoding="utf-8")

        imported = self.imported()["state"]
        self.assertEqual((imported["added"], imported["expired"]), (1, 1))
        self.assertEqual(self.redis("PEXPIRETIME", "drv:18"), 4_000_000_000_001)

    def test_does_not_miss_documents_that_the_server_removes(self):
        self.lay_out()
        past = datetime.datetime(2020, 1, 1)
        self.database.eav_values.drop_index("ttl_1")
        self.database.eav_values.insert_many({"_id": i, "ttl": past} for i in range(3))
        self.exported()
        self.empty()
        imported = self.imported()["eav_values"]
        self.assertEqual((imported["added"], imported["missing"]), (3, 0))

    def unfinish(self, *names):
        """Makes a finished export one that was broken off before these stores."""
        manifest = self.manifest()
        del manifest["finished"]
        for store in list(manifest["stores"]):
            if store["store"] in names:
                manifest["stores"].remove(store)
                (self.export_folder / store["file"]).unlink()
        (self.export_folder / "manifest.json").write_text(json.dumps(manifest), encoding="utf-8")

    def test_goes_on_with_an_export_that_was_broken_off(self):
        self.database.eav_values.insert_one({"_id": 1})
        self.database.eav_events.insert_one({"_id": 2})
        self.exported()
        self.expect_failure("export", "has a finished export")
        self.unfinish("eav_values", "state")
        self.expect_failure("import", "did not come to its end")
        (self.export_folder / "mongodb" / "eav_values.jsonl.part").write_text("rest of a line")
        exported, result = self.transfer("export")
        self.assertEqual(set(exported), {"eav_values", "state"})
        self.assertIn("mongodb eav_events is there already", result.stderr)
        self.assertEqual(len(self.lines("mongodb/eav_values.jsonl")), 1)
        self.empty()
        self.imported()
        self.assertEqual(self.database.eav_events.count_documents({}), 1)

    def test_does_not_mix_exports_of_two_servers(self):
        self.exported()
        self.unfinish("state")
        other = Redis()
        self.addCleanup(other.end)
        _, result = self.transfer("export", status=1,
                                  settings=self.write_settings("other.json", port=other.port))
        self.assertIn("from other servers", result.stderr)

    def test_does_not_write_into_a_folder_of_somebody_elses(self):
        self.export_folder.mkdir()
        (self.export_folder / "letter.txt").write_text("")
        self.expect_failure("export", "is not empty, and no export")

    def stalled_export(self):
        """An export that waits for somebody to read what it writes."""
        self.store_many()
        self.exported()
        self.unfinish("eav_values")
        part = self.export_folder / "mongodb" / "eav_values.jsonl.part"
        os.mkfifo(part)
        process = self.start_host("export", self.export_folder)
        reader = os.open(part, os.O_RDONLY)
        self.assertTrue(os.read(reader, 10))
        return process, reader

    def test_leaves_an_export_to_go_on_with_when_it_is_interrupted(self):
        process, reader = self.stalled_export()
        self.interrupt(process)
        while os.read(reader, 1 << 20):
            pass
        os.close(reader)
        _, remarks = process.communicate()
        self.assertEqual(process.returncode, 1)
        self.assertIn("The same command goes on", remarks)
        self.assertEqual(list(self.export_folder.glob("**/*.part")), [])
        self.assertEqual(set(self.exported()), {"eav_values"})
        self.assertEqual(len(self.lines("mongodb/eav_values.jsonl")), MANY)

    def test_leaves_an_export_to_go_on_with_when_it_is_killed(self):
        process, reader = self.stalled_export()
        process.kill()
        process.wait()
        os.close(reader)
        (self.export_folder / "mongodb" / "eav_values.jsonl.part").unlink()
        self.assertEqual(set(self.exported()), {"eav_values"})
        self.assertEqual(len(self.lines("mongodb/eav_values.jsonl")), MANY)

    def started_import(self):
        """An import that has stored part of its documents."""
        self.store_many()
        self.exported()
        self.empty()
        process = self.start_host("import", self.export_folder)
        eventually(lambda: self.database.eav_values.count_documents({}) > 0, "documents")
        return process

    def expect_whole_after_merge(self):
        stored = self.database.eav_values.count_documents({})
        self.assertLess(stored, MANY)
        imported = self.imported("--merge")["eav_values"]
        # What the server was still storing when its client went may have come on top, at any moment.
        self.assertGreaterEqual(imported["there_already"] + imported["different"], stored)
        self.assertEqual(
            imported["added"] + imported["there_already"] + imported["different"], MANY)
        self.assertEqual(imported["in_store"], MANY)

    def test_goes_on_with_an_import_that_was_killed(self):
        process = self.started_import()
        process.kill()
        process.wait()
        self.expect_whole_after_merge()

    def test_accounts_for_an_import_that_was_interrupted(self):
        process = self.started_import()
        self.interrupt(process)
        _, remarks = process.communicate()
        self.assertEqual(process.returncode, 1)
        self.assertIn("The same command with --merge goes on", remarks)
        self.expect_whole_after_merge()

    def test_misses_documents_that_somebody_deletes_meanwhile(self):
        process = self.started_import()
        deleted = self.database.eav_values.delete_many({"_id": {"$lt": 10}}).deleted_count
        self.assertGreater(deleted, 0)
        results, remarks = process.communicate()
        self.assertEqual(process.returncode, 1)
        self.assertIn("see Missing", remarks)
        self.assertRegex(results, rf"eav_values .* {deleted} .* {MANY - deleted} ")

    def damage(self, file, old, new):
        path = self.export_folder / file
        before = path.read_bytes()
        self.assertIn(old, before)
        path.write_bytes(before.replace(old, new, 1))

    def test_names_the_line_that_is_damaged_and_stores_nothing(self):
        for old, new, texts in (
            (b'"v" : { "$numberInt" : "3" }', b'"v" : { "$numberInt" : "3" ', ("line 3 is damaged",)),
            (b'"text" : "3"', b'"text"  : "3"', ("line 3 is not as it was written",)),
            (b'"text" : "3"', b'"text" : "4"', ("is not as it was written", "other content")),
            (b'"text" : "4" }\n', b'"text" : "4"', ("line 4",)),
        ):
            with self.subTest(new):
                self.setUp()
                self.database.eav_values.insert_many(
                    {"_id": i, "v": i, "text": str(i)} for i in range(1, 5))
                self.redis("SET", "drv:17", "{}")
                self.exported()
                self.empty()
                self.damage("mongodb/eav_values.jsonl", old, new)
                self.expect_failure("import", "mongodb/eav_values.jsonl", *texts)
                self.assertEqual(self.database.list_collection_names(), [])
                self.assertEqual(self.redis("DBSIZE"), 0)

    def test_names_the_redis_line_that_is_damaged(self):
        self.redis("SET", "drv:17", "{}")
        self.exported()
        self.redis("FLUSHALL")
        self.damage("redis/state.jsonl", b'"type":"string"', b'"type":"strong"')
        self.expect_failure("import", "redis/state.jsonl, line 1 is damaged")

    def test_misses_a_file(self):
        self.exported()
        (self.export_folder / "redis" / "state.jsonl").unlink()
        self.expect_failure("import", "cannot read", "redis/state.jsonl")

    def test_says_that_the_disk_is_full(self):
        self.store_many()
        self.exported()
        self.unfinish("eav_values")
        part = self.export_folder / "mongodb" / "eav_values.jsonl.part"
        part.symlink_to("/dev/full")
        self.expect_failure("export", "cannot write", "eav_values.jsonl", "No space left on device")
        self.assertNotIn("finished", self.manifest())
        self.exported()
        self.assertEqual(len(self.lines("mongodb/eav_values.jsonl")), MANY)

    def test_names_the_server_that_is_away(self):
        self.database.eav_values.insert_one({"_id": 1})
        _, result = self.transfer("export", status=1, settings=self.write_settings(url=unreachable_url()))
        self.assertIn("mongodb://127.0.0.1:1/", result.stderr)
        self.assertNotIn("secret", result.stderr)

    def test_shows_how_far_it_is(self):
        self.store_many()
        process = self.start_host("export", self.export_folder)
        _, remarks = process.communicate()
        self.assertEqual(process.returncode, 0)
        self.assertIn(f"{MANY // 1000} of {MANY // 1000}", remarks)
        self.assertTrue(re.search(rf"{MANY} records in [0-9.]+ s, \d+ a second", remarks) or
                        "a second" not in remarks)

    def test_is_wrongly_called_without_a_folder_or_with_both_ways(self):
        self.assertEqual(self.run_host("export").returncode, 2)
        self.assertEqual(
            self.run_host("import", "--merge", "--replace", self.export_folder).returncode, 2)


if __name__ == "__main__":
    main()
