#!/usr/bin/python3
"""What is measured side by side does the same, and what is printed of it is right. Usage: bench_test.py BUILD_FOLDER."""

import contextlib
import pathlib
import shutil
import sys
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(SOURCE / "bench"))

# pylint: disable=wrong-import-position
import compare
import contestants
import device
import report

device.enter_namespace()
BUILD = pathlib.Path(sys.argv.pop())
PROGRAM = contestants.program("8000")
DOCUMENT = "/usr/kelp/etc/wifi/radio.json"


def needs(*tools):
    missing = [tool for tool in tools if not shutil.which(tool)]
    return unittest.skipIf(missing, f"{' '.join(missing)} missing (scripts/setup bench installs them)")


def sample(name="tri-band-mesh-router"):
    return device.device(SOURCE / "devices" / name, contestants.programs(BUILD))


class Documents(unittest.TestCase):
    def differ(self, program, peer):
        files = [{} if text is None else {DOCUMENT: text} for text in (program, peer)]
        return contestants.differing_documents(*files) == [DOCUMENT]

    def test_order_layout_secrets_and_broken_utf8_do_not_count(self):
        self.assertFalse(self.differ(b'{"a": 1, "b": [true]}', b'{"b":[true],\n"a":1}'))
        self.assertFalse(self.differ(b'[{"password": "x"}]', b'[{"password": ""}]'))
        self.assertFalse(self.differ(b'["Caf\xe9\xff"]', '["Caf\ufffd"]'.encode()))

    def test_values_kinds_members_and_documents_count(self):
        for program, peer in ((b'{"a": "x"}', b'{"a": "y"}'), (b'{"a": 1}', b'{"a": true}'), (b'{"a": 1}', b'{"a": "1"}'),
                              (b'{"a": [1]}', b'{"a": [1, 2]}'), (b'{"a": 1}', b"{}"), (b"{}", None), (None, b"{}")):
            self.assertTrue(self.differ(program, peer), (program, peer))


@needs("dash", "jq")
class ShellScript(unittest.TestCase):
    def expect_same(self, on, program_status=0, peer_status=0):
        written = [on.change(one._replace(status=status))[1]
                   for one, status in ((PROGRAM, program_status), (contestants.PEER, peer_status))]
        self.assertIn(device.WIFI + "wps.json", written[0])
        self.assertEqual(contestants.differing_documents(*written), [])

    def test_writes_what_the_program_writes(self):
        for name in ("dual-band-standalone", "tri-band-mesh-router", "tri-band-repeater", "dual-band-bridge"):
            with self.subTest(name), sample(name) as on:
                self.expect_same(on)

    def test_also_where_the_archive_fails(self):
        with sample("failing-archive") as on:
            self.expect_same(on, 1, 1)

    def test_also_where_access_point_files_are_empty_or_missing(self):
        with sample() as on:
            files = list((on.image / device.WIFI.lstrip("/")).glob("wifi_ap_*"))
            for file in files:
                file.write_text("")
            self.expect_same(on)
            for file in files:
                file.unlink()
            self.expect_same(on, 1, 1)


@needs("strace")
class Floor(unittest.TestCase):
    def test_reads_flushes_and_leaves_the_device_as_the_program_does(self):
        with sample() as on:
            before, after = on.change(PROGRAM)
            opens, libraries = on.opens(PROGRAM)
            floor = contestants.floor(on, opens, before, after)
            self.assertEqual(on.change(floor)[1], after)
            self.assertEqual([on.system_calls(one).get("fsync", 0) for one in (PROGRAM, floor)], [6, 6])
            self.assertEqual(on.opens(floor)[0], {"/bench/steps": 1, **dict.fromkeys(opens, 1)})
        self.assertEqual(list(opens)[0], "/usr/kelp/etc/info.conf")
        self.assertIn("/etc/hostapd/mac_filter/mf_deny.conf", opens)
        # Read again behind the first document, as the program writes meanwhile; all else of a household once.
        self.assertEqual({path: count for path, count in opens.items() if report.is_legacy_file(path) and count != 1},
                         {"/usr/kelp/etc/info.conf": 2})
        self.assertTrue(any("libjsoncpp.so" in path for path in libraries))


class Runs(unittest.TestCase):
    def test_a_failure_says_what_was_printed(self):
        with sample("failing-archive") as on, self.assertRaisesRegex(RuntimeError, "lbd.guest.conf"):
            on.change(PROGRAM)

    def test_nothing_is_left(self):
        with contextlib.suppress(KeyboardInterrupt), sample() as on:
            folder = on.folder
            raise KeyboardInterrupt
        self.assertFalse(folder.exists())

    @needs("hyperfine")
    def test_times_are_of_each(self):
        with sample() as on:
            times = on.times([PROGRAM, contestants.EMPTY], 2)
            self.assertEqual([sorted(one) for one in times], [["cpu_ms", "wall_ms"]] * 2)
            self.assertTrue(all(value > 0 for one in times for value in one.values()))
            self.assertTrue(1024 < on.peak_kib(PROGRAM) < 1024 * 1024)

    @needs("valgrind")
    def test_growth_is_held_against_the_step_before(self):
        with sample() as on:
            steps = compare.growth(on, PROGRAM, 1000)
        self.assertEqual([step["stations"] for step in steps], [0, 100, 1000])
        self.assertEqual(["ratio" in step for step in steps], [False, False, True])
        self.assertTrue(9 <= steps[2]["ratio"] <= 10.5, steps)


def figures(instructions, **more):
    return {"instructions": instructions, "peak_kib": 4096, "system_calls": {"fsync": 11}, "flushes": 11, **more}


RESULTS = {
    "device": "attic", "runs": 21,
    "program": figures(3_000_000, in_memory={"cpu_ms": 2, "wall_ms": 3}, stripped_bytes=204_800,
                       opens={"/usr/kelp/etc/info.conf": 2, "/usr/kelp/etc/secret.key": 8, "/boot/uboot.env": 9}),
    "shell script": figures(900_000_000, in_memory={"cpu_ms": 100, "wall_ms": 300}),
    "floor": figures(100_000, in_memory={"cpu_ms": 1, "wall_ms": 1}),
    "empty": figures(2_000_000, in_memory={"cpu_ms": 1, "wall_ms": 1}),
    "other_devices": [{"device": "no files", "instructions": 9_000_000, "system_calls": 1_234}],
    "growth": [{"stations": 0, "instructions": 100, "peak_kib": 10}, {"stations": 100, "instructions": 200, "peak_kib": 20},
               {"stations": 1000, "instructions": 1_200, "peak_kib": 30, "ratio": 11.0}],
}


class Report(unittest.TestCase):
    def setUp(self):
        self.results = {**RESULTS, "targets": report.targets(RESULTS)}

    def test_targets_are_met_missed_or_not_measured(self):
        self.assertEqual([(target["value"], target["met"]) for target in self.results["targets"]],
                         [(50, True), (None, False), (1.5, True), (11, True), (2, True), (4, True), (200, True), (11, False)])

    def test_table(self):
        table = report.table(self.results)
        for line in ("attic, 21 runs of each", "at least 15.0: met", "at most 10.50: MISSED", "at least 8.0: not measured"):
            self.assertIn(line, table)
        self.assertRegex(table, "instructions +3,000,000 +900,000,000 +100,000 +2,000,000\n")
        self.assertRegex(table, "no files +9,000,000 +4.50 +1,234\n")
        self.assertRegex(table, "stripped size, KiB +200.0 +- +- +-\n")
        self.assertNotIn("on disk, ms", table)

    def test_chart_leaves_out_what_was_not_measured(self):
        chart = report.chart(self.results)
        self.assertIn("files in memory", chart)
        self.assertNotIn("files on disk", chart)
        self.assertIn('<rect class="program" x="120" y="68" width="9.6"', chart)  # 2 ms of 100


if __name__ == "__main__":
    unittest.main()
