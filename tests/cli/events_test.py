"""What an export and a pull tell programs, as docs/events.md promises it."""

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
        return self.as_documented(super().events(*options, status=status))

    def as_documented(self, events):
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

    def test_progress_names_the_tracks_under_way_and_counts_what_came(self):
        self.export()
        (self.out / EXPORTED[1]).unlink()
        (self.out / EXPORTED[4]).unlink()
        for options, fetched in (([], [1, 4]), (["--verify"], [0, 1, 2, 3, 4])):
            start, *events, end = self.events(*options)
            begun, fates = {}, {}
            bytes_before = 0
            for event in events:
                if event["event"] == "progress":
                    # Several may be under way.
                    begun.setdefault(event["index"], event["bytes"])
                    self.assertNotIn(event["index"], fates)
                    self.assertGreaterEqual(event["bytes"], bytes_before)
                    self.assertEqual(event["total"], start["bytes"])
                    bytes_before = event["bytes"]
                else:
                    fates[event["index"]] = event["result"]
            self.assertEqual(list(begun), fetched)
            self.assertEqual(list(fates), list(range(len(TRACKS))))
            sizes = [len(contents_of(number)) for number in fetched]
            self.assertEqual(start["bytes"], sum(sizes))
            self.assertLessEqual(bytes_before, sum(sizes))
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
                # What a buffer would read ahead, communicate would not see.
                process = self.start("export", "--json", "--from", self.player, self.out, stdin=theirs, bufsize=0)
                os.close(theirs)
                process.stdout.readline()
                os.close(ours)
                output, _ = process.communicate(timeout=60)
                *events, end = [json.loads(line) for line in output.splitlines()]
                self.assertEqual((process.returncode, end["event"]), (130, "end"))
                self.assertEqual((end["stoppedBy"], end["status"]), ("interrupt", 130))
                self.assertEqual(self.exported_files(), sorted(f"A/B/{event['title']}.mp3" for event in events
                                                               if event.get("result") == "copied"))

    def pulled(self, *arguments, status=0):
        output = self.run_program("pull", "--json", *arguments, status=status)[0]
        return self.as_documented([json.loads(line) for line in output.splitlines()])

    def attach_phone_with_pictures(self, count, script=()):
        self.machine.attach_phone(script=script)
        pictures = {f"/DCIM/{number:03}.jpg": contents_of(number) for number in range(count)}
        (self.machine.phone / "DCIM").mkdir()
        for path, contents in pictures.items():
            (self.machine.phone / path[1:]).write_bytes(contents)
        return pictures

    def test_pull_of_a_folder_is_told_file_by_file(self):
        pictures = self.attach_phone_with_pictures(3)
        # This phone has no name: its files are fetched again, and compared.
        for path, result in {"/DCIM": "copied", "/DCIM/": "skipped"}.items():
            start, *events, end = self.pulled(path, self.out)
            self.assertEqual([start[key] for key in ("format", "command", "dryRun", "folder", "tracks", "bytes")],
                             [1, "pull", False, str(self.out), 3, 0])
            told = [event for event in events if event["event"] == "track"]
            self.assertEqual([(event["index"], event["location"], event["result"], event["file"]) for event in told],
                             [(number, path, result, str(self.out) + path) for number, path in enumerate(pictures)])
            sizes = [len(contents) if result == "copied" else 0 for contents in pictures.values()]
            self.assertEqual([event["size"] for event in told], sizes)
            self.assertEqual((end[result], end["bytes"], end["status"]), (3, sum(sizes), 0))
            self.assertEqual({event["index"] for event in events if event["event"] == "progress"}, {0, 1, 2})
        self.assertEqual({"/" + name: (self.out / name).read_bytes() for name in self.exported_files()}, pictures)

    def test_pull_of_one_file_is_told(self):
        contents = self.attach_phone_with_pictures(1)["/DCIM/000.jpg"]
        phone, self.machine = self.machine, Machine(self.folder / "second").attach_player()
        (self.machine.drive / "note").write_bytes(contents)
        self.out.mkdir()
        # Of a player's file the size is known before.
        for machine, path, location, size in ((phone, "/DCIM/000.jpg", "/DCIM/000.jpg", 0),
                                              (self.machine, "/x/../note", r"F:\x\..\note", len(contents))):
            self.machine = machine
            target = self.out / path.rsplit("/", 1)[1]
            for destination, result in ((self.out, "copied"), (target, "replaced")):
                start, progress, track, end = self.pulled(path, destination)
                self.assertEqual([start[key] for key in ("command", "tracks", "bytes", "folder")],
                                 ["pull", 1, size, str(self.out)])
                self.assertEqual((progress["event"], progress["bytes"], progress["total"]), ("progress", 0, size))
                self.assertEqual([track[key] for key in ("index", "name", "location", "result", "file", "size")],
                                 [0, location, location, result, str(target), len(contents)])
                self.assertEqual((end[result], end["bytes"], end["status"]), (1, len(contents), 0))
                self.assertEqual(target.read_bytes(), contents)
            target.write_bytes(b"mine")
        self.assertEqual(self.exported_files(), ["000.jpg", "note"])

    def test_pull_that_fails_is_told(self):
        self.attach_phone_with_pictures(2, script=["fail AFCFileRefRead 3"])
        self.out.mkdir()
        (self.out / "mine").write_bytes(b"mine")
        # A name with a dot is taken for a file's, whatever it is.
        for path in ("/DCIM/missing.jpg", "/DCIM/missing.folder"):
            *_, track, end = self.pulled(path, self.out / "mine", status=1)
            self.assertEqual((track["result"], end["failed"], "stoppedBy" in end), ("failed", 1, False))
            self.assertIn("could not be read", track["error"])
            self.assertEqual((self.out / "mine").read_bytes(), b"mine")
        self.machine.script.write_text("folder phone\nfail-from AFCFileRefRead 1\nfail-from AMDeviceConnect 2\n")
        *_, track, end = self.pulled("/DCIM/000.jpg", self.out, status=1)
        self.assertEqual((track["result"], end["stoppedBy"]), ("failed", "source"))
        self.assertEqual(self.exported_files(), ["mine"])

    def test_pull_that_cannot_begin_ends_in_an_event(self):
        self.attach_phone_with_pictures(1)
        self.out.mkdir()
        (self.out / "000.jpg").touch()
        for arguments, words in [(["/DCIM/000.jpg", self.out], "is there already"),
                                 (["/DCIM/000.jpg", self.folder / "no" / "x"], "No such file or directory"),
                                 (["/Nothing", self.out], "has no files there"),
                                 (["/DCIM/none.jpg", self.folder / "x", "--dry-run"], "has no files there")]:
            output, errors = self.run_program("pull", "--json", *arguments, status=1)
            self.assertIn(words, errors)
            self.assertEqual(json.loads(output), {"event": "end", "format": 1, "status": 1,
                                                  "error": errors.removeprefix("quaylink: ").rstrip("\n")})

    def test_dry_run_of_a_pull_makes_nothing(self):
        self.attach_phone_with_pictures(2)
        (self.folder / "mine").write_bytes(b"mine")
        for path, destination, actions in (("/DCIM", self.out, ["copy", "copy"]),
                                           ("/DCIM/001.jpg", self.out, ["copy"]),
                                           ("/DCIM/001.jpg", self.folder / "mine", ["replace"])):
            start, *tracks, end = self.pulled(path, destination, "--dry-run")
            self.assertTrue(start["dryRun"])
            self.assertEqual([track["action"] for track in tracks], actions)
            self.assertEqual((end["planned"], end["status"], "fits" in end), (len(actions), 0, False))
        self.assertRegex(self.run_program("pull", "-n", "/DCIM", self.out)[0],
                         r"\Awould copy     DCIM/000.jpg\nwould copy     DCIM/001.jpg\n"
                         r"2 to copy, 0 already there\n[^\n]+ free in the folder\n\Z")
        self.machine = Machine(self.folder / "second").attach_player()
        end = self.pulled("/iPod_Control/Music/F00/BBBB.mp3", self.out, "--dry-run")[-1]
        self.assertEqual((end["bytes"], end["fits"]), (len(contents_of(1)), True))
        self.assertIn("there is no such file", self.failure("pull", "-n", "/missing", self.out))
        self.assertEqual((self.folder / "mine").read_bytes(), b"mine")
        self.assertFalse(self.out.exists())

    def test_input_that_ends_cancels_a_pull(self):
        self.attach_phone_with_pictures(400)
        process = self.start("pull", "--json", "/DCIM", self.out, stdin=subprocess.PIPE, bufsize=0)
        process.stdout.readline()
        process.stdin.close()
        process.stdin = None
        events = [json.loads(line) for line in process.communicate(timeout=60)[0].splitlines()]
        end = events.pop()
        self.assertEqual((process.returncode, end["stoppedBy"], end["status"]), (130, "interrupt", 130))
        self.assertEqual(end["copied"] + end["notReached"], 400)
        self.assertEqual(["/" + name for name in self.exported_files()],
                         [event["location"] for event in events if event["event"] == "track"])


if __name__ == "__main__":
    unittest.main()
