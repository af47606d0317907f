"""What an export tells programs, as docs/events.md promises it."""

import fcntl
import json
import os
import re
import socket
import subprocess
import unittest

from export_test import ExportTest
from players import EXPORTED, MANUAL, TRACKS, Machine, contents_of, playlist


def documented_events():
    """Each event of the page with its properties and all other words of its tables."""
    page = MANUAL.with_name("events.md").read_text(encoding="utf-8")
    sections = re.findall(r"^## (start|progress|track|playlist|end)$(.*?)(?=^## )", page, re.MULTILINE | re.DOTALL)
    return {event: set(re.findall(r"`(\w+)`", text)) for event, text in sections}


class Events(ExportTest):
    DOCUMENTED = documented_events()

    def events(self, *options, status=0):
        events = super().events(*options, status=status)
        self.assertEqual([event["event"] for event in (events[0], events[-1])], ["start", "end"])
        for event in events:
            values = [event[key] for key in ("result", "action", "command", "stoppedBy") if key in event]
            unknown = {*event, *values} - self.DOCUMENTED[event["event"]] - {"event"}
            self.assertFalse(unknown, event)
        return events

    def test_command_that_fails_before_it_begins_ends_in_an_event(self):
        (self.folder / "file").touch()
        full = self.folder / "full"
        self.machine.fill(full, TRACKS)
        with (full / "iPod_Control/Music/F00/BBBB.mp3").open("r+b") as file:
            file.truncate(1 << 43)
        self.addCleanup(lambda: (full / "iPod_Control/Music/F00/BBBB.mp3").write_bytes(b""))
        (self.folder / "held").mkdir()
        held = os.open(self.folder / "held", os.O_RDONLY)
        self.addCleanup(os.close, held)
        fcntl.flock(held, fcntl.LOCK_EX)
        for arguments, status, words in [
                ([self.out], 1, "no Apple device is attached"),
                ([self.out, "--from", self.folder / "missing"], 1, "the folder cannot be opened"),
                ([self.folder / "file", "--from", self.player], 1, "is in the way"),
                ([self.folder / "held", "--from", self.player], 1, "another export"),
                ([self.out, "--from", full], 1, "has not enough room"),
                ([self.out, "--from", self.player, "--playlist", "none"], 1, "has no playlist"),
                ([self.out, "--from", self.player, "--name", "{titel}"], 2, "is no property")]:
            with self.subTest(words=words):
                output, errors = self.run_program("export", "--json", *arguments, status=status)
                self.assertIn(words, errors)
                self.assertEqual(json.loads(output), {"event": "end", "format": 1, "status": status,
                                                      "error": errors.removeprefix("quaylink: ").rstrip("\n")})

    def test_progress_names_the_track_under_way_and_reaches_the_total(self):
        self.export()
        (self.out / EXPORTED[1]).unlink()
        (self.out / EXPORTED[4]).unlink()
        for options, fetched in (([], [1, 4]), (["--verify"], [0, 1, 2, 3, 4])):
            start, *events, end = self.events(*options)
            under_way = None
            bytes_before = 0
            for event in events:
                if event["event"] == "progress":
                    under_way = event["index"]
                    self.assertGreaterEqual(event["bytes"], bytes_before)
                    self.assertEqual(event["total"], start["bytes"])
                    bytes_before = event["bytes"]
                elif event["index"] in fetched:
                    self.assertEqual(under_way, event["index"])
            begun = {event["index"]: event["bytes"] for event in reversed(events) if event["event"] == "progress"}
            sizes = [len(contents_of(number)) for number in fetched]
            self.assertEqual(begun, {index: sum(sizes[:i]) for i, index in enumerate(fetched)})
            self.assertEqual(start["bytes"], sum(sizes))
            self.assertEqual(end["status"], 0)
            # Each track has one fate.
            self.assertEqual(sum(end.get(fate, 0) for fate in (
                "copied", "replaced", "moved", "skipped", "verified", "failed", "notReached")), len(TRACKS))

    def test_lines_are_ascii_and_say_every_title(self):
        # The middle characters end a line for many readers of lines.
        titles = ["港の朝", "a\u2028b\u2029c\u0085d", "e\n\r\"\\", "🎵"]
        tracks = [("", "", title, f":iPod_Control:Music:F00:L{i}.mp3") for i, title in enumerate(titles)]
        self.player = self.folder / "named"
        self.machine.fill(self.player, tracks)
        output = self.export("--json")[0]
        self.assertTrue(output.isascii())
        events = [json.loads(line) for line in output.splitlines()]
        self.assertEqual([event["title"] for event in events if event["event"] == "track"], titles)

    def test_what_is_not_of_a_track_is_told(self):
        (self.player / "iPod_Control/Music/F00/ORPH.mp3").touch()
        start = self.events("--dry-run")[0]
        self.assertEqual((start["dryRun"], start["unnamed"], "problem" in start), (True, 1, False))
        database = self.player / "iPod_Control/iTunes/iTunesDB"
        database.write_bytes(database.read_bytes()[:-60])
        for options in ([], ["--verify"], ["--dry-run"]):
            start, *_, end = self.events(*options, status=1)
            self.assertIn("5 of its tracks could be read", start["problem"])
            self.assertEqual(end["status"], 1)

    def test_files_are_named_where_there_are_any(self):
        self.export()
        tracks = list(TRACKS)
        tracks[4] = ("Björk", "Debut", "Human Behaviour", TRACKS[4][3])
        self.write(tracks)
        self.music(3).unlink()
        for options in (["--dry-run"], []):
            status = 0 if options else 1
            told = {event["index"]: event for event in self.events(*options, status=status)
                    if event["event"] == "track"}
            self.assertNotIn("file", told[3])
            self.assertIn("there is no such file", told[3]["error"])
            self.assertEqual(told[4]["movesFrom"], str(self.out / EXPORTED[4]))
            self.assertEqual(told[4]["file"], str(self.out / "Björk/Debut/Human Behaviour.mp3"))

    def test_playlists_that_were_written_are_told(self):
        mine = playlist("Mine/ours", [100])
        self.write(playlists=(mine,))
        told = [event for event in self.events() if event["event"] == "playlist"]
        self.assertEqual(told, [{"event": "playlist", "file": str(self.out / "Playlists/Mine_ours.m3u8"),
                                 "result": "written"}])
        self.assertNotIn("playlist", {event["event"] for event in self.events()})

    def test_source_that_goes_away_is_told(self):
        script = ["fail-from AFCFileRefRead 6", "fail-from AMDeviceConnect 3"]
        for name, options in {"exported": [], "verified": ["--verify"]}.items():
            with self.subTest(name):
                self.machine = Machine(self.folder / name).attach_phone(script=script)
                output, _ = self.run_program("export", self.out, "--json", *options, status=1)
                end = json.loads(output.splitlines()[-1])
                self.assertEqual((end["event"], end["stoppedBy"]), ("end", "source"))
                self.assertGreater(end["notReached"], 0)

    def test_input_that_ends_cancels(self):
        for number in range(300):
            (self.player / f"iPod_Control/Music/F00/N{number}.mp3").write_bytes(bytes(300000))
        self.write([("A", "B", f"{i}", f":iPod_Control:Music:F00:N{i}.mp3") for i in range(300)])
        # Some hosts give a program a socket for a pipe.
        for name, make in {"pipe": os.pipe, "socket": lambda: [end.detach() for end in socket.socketpair()]}.items():
            with self.subTest(name):
                self.out = self.folder / name
                theirs, ours = make()
                process = self.start("export", "--json", "--from", self.player, self.out, stdin=theirs)
                os.close(theirs)
                process.stdout.readline()
                os.close(ours)
                output, _ = process.communicate(timeout=60)
                *events, end = [json.loads(line) for line in output.splitlines()]
                self.assertEqual((process.returncode, end["event"]), (130, "end"))
                self.assertEqual((end["stoppedBy"], end["status"]), ("interrupt", 130))
                self.assertEqual(self.exported_files(), sorted(f"A/B/{event['title']}.mp3" for event in events
                                                               if event.get("result") == "copied"))


if __name__ == "__main__":
    unittest.main()
