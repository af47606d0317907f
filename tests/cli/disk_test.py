"""The program with a player in disk mode."""

import csv
import fcntl
import io
import json
import os
import pty
import shutil
import subprocess
import unittest

from players import EXPORTED, TRACKS, FullPipe, ProgramTest, contents_of, database, wait_for


class Tracks(ProgramTest):
    def test_database_file_is_listed_in_every_form(self):
        file = self.folder / "copy.iTunesDB"
        file.write_bytes(database(TRACKS))
        listed = json.loads(self.run_program("tracks", file, "--json")[0])
        self.assertEqual([(t["artist"], t["album"], t["title"]) for t in listed],
                         [track[:3] for track in TRACKS])
        self.assertEqual(listed[4]["location"], "/iPod_Control/Music/F01/EEEE.mp3")
        rows = list(csv.DictReader(io.StringIO(self.run_program("tracks", file, "--csv")[0])))
        self.assertEqual([row["title"] for row in rows], [track[2] for track in TRACKS])
        table, errors = self.run_program("tracks", file)
        self.assertEqual((table.splitlines()[-1], errors), ("5 tracks", ""))
        self.assertEqual(len(table.splitlines()), 7)

    def test_filters_and_order(self):
        file = self.folder / "copy.iTunesDB"
        file.write_bytes(database(TRACKS))
        for options, indices in [(["--artist", "ac/dc"], [1, 2]),
                                 (["--match", "BJÖRK"], [4]),
                                 (["--match", "IN BLACK"], [1, 2]),
                                 (["--match", "向かう"], [0]),
                                 (["--album", "post", "--artist", "sai"], []),
                                 (["--sort", "artist"], [3, 1, 2, 4, 0]),
                                 (["--sort", "title", "--reverse"], [0, 2, 1, 4, 3]),
                                 (["--sort", "album"], [3, 1, 2, 4, 0]),
                                 (["--sort", "location", "--reverse"], [4, 3, 2, 1, 0]),
                                 (["--sort", "index", "--reverse"], [4, 3, 2, 1, 0])]:
            output = self.run_program("tracks", file, "--json", *options)[0]
            self.assertEqual([track["index"] for track in json.loads(output)], indices, options)
        self.assertIn("2 of 5 tracks", self.run_program("tracks", file, "--artist", "ac/dc")[0])

    def test_device_is_listed_by_way_of_its_database(self):
        self.machine.attach_player()
        listed = json.loads(self.run_program("tracks", "--json")[0])
        self.assertEqual(listed[0]["location"], r"F:\iPod_Control\Music\F00\AAAA.m4a")
        self.assertEqual(len(listed), len(TRACKS))

    def test_player_without_tracks_is_no_failure(self):
        self.machine.attach_player(tracks=[])
        self.assertEqual(self.run_program("tracks")[0], "0 tracks\n")
        self.assertEqual(self.run_program("tracks", "--json")[0], "[]\n")

    def test_table_fits_the_terminal(self):
        self.machine.attach_player()
        output = self.run_on_terminal("tracks", columns=50)
        lines = output.splitlines()
        self.assertEqual(lines[-1], "5 tracks")
        self.assertTrue(all(len(line) <= 50 for line in lines), lines)
        self.assertIn("…", output)


class Copies(ProgramTest):
    def test_status_tells_what_is_attached(self):
        self.assertIn("no Apple device is attached", self.failure("status"))
        self.machine.attach_player()
        self.assertIn("player in disk mode", self.run_program("status")[0])
        self.assertEqual(json.loads(self.run_program("status", "--json")[0]),
                         {"attached": True, "reachable": True, "kind": "disk"})

    def test_database_track_and_file_are_copied(self):
        self.machine.attach_player()
        self.out.mkdir()
        source = self.machine.drive / "iPod_Control" / "iTunes" / "iTunesDB"
        self.run_program("copy-database", self.out)
        self.assertEqual((self.out / "iTunesDB").read_bytes(), source.read_bytes())
        self.run_program("copy-track", 1, self.out)
        self.assertEqual((self.out / "What_.mp3").read_bytes(), contents_of(1))
        self.run_program("copy-track", 4, self.out / "named.mp3")
        self.assertEqual((self.out / "named.mp3").read_bytes(), contents_of(4))
        self.run_program("pull", r"F:\iPod_Control\Music\F00\AAAA.m4a", self.out)
        self.assertEqual((self.out / "AAAA.m4a").read_bytes(), contents_of(0))
        self.assertEqual(self.exported_files(), ["AAAA.m4a", "What_.mp3", "iTunesDB", "named.mp3"])

    def test_temporary_file_of_a_killed_run_is_removed(self):
        self.machine.attach_player()
        names = ["quaylink-abcdef.quaylink-part", "quaylink-ghijkl.quaylink-part", "quaylink-notes"]
        forsaken, held, other = files = [self.temporary / name for name in names]
        for file in files:
            file.touch()
        with held.open() as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.run_program("tracks")
        self.assertEqual(sorted(self.temporary.iterdir()), [held, other])
        held.unlink()
        other.unlink()

    def test_files_says_where_to_look_instead(self):
        self.machine.attach_player()
        output, errors = self.run_program("files", "--json")
        self.assertEqual(output, "[]\n")
        self.assertIn("ordinary drive", errors)

    def test_failed_copy_keeps_what_was_there(self):
        self.machine.attach_player()
        self.out.mkdir()
        old = self.out / "song.mp3"
        old.write_text("old")
        (self.machine.drive / "iPod_Control" / "Music" / "F00" / "BBBB.mp3").unlink()
        self.assertIn("AC/DC - What?: it could not be read", self.failure("copy-track", 1, old))
        self.assertEqual(old.read_text(), "old")
        self.assertEqual(self.exported_files(), ["song.mp3"])


class Export(ProgramTest):
    def setUp(self):
        super().setUp()
        self.machine.attach_player()

    def music(self, name):
        return self.machine.drive / "iPod_Control" / "Music" / name

    def test_every_track_is_copied_once(self):
        output, errors = self.run_program("export", self.out)
        self.check_export()
        self.assertEqual(errors, "")
        self.assertIn("copied    " + EXPORTED[2], output)
        self.assertIn("5 copied (150.0 kB), 0 already there, 0 failed\n", output)
        times = [(self.out / name).stat().st_mtime_ns for name in EXPORTED]
        output, _ = self.run_program("export", self.out)
        self.assertEqual(output, "0 copied (0 bytes), 5 already there, 0 failed\n")
        self.assertEqual(times, [(self.out / name).stat().st_mtime_ns for name in EXPORTED])

    def test_missing_copies_are_made_again(self):
        self.run_program("export", self.out)
        (self.out / EXPORTED[1]).unlink()
        (self.out / EXPORTED[3]).unlink()
        output, _ = self.run_program("export", self.out)
        self.assertIn("2 copied", output)
        self.check_export()

    def test_dry_run_touches_nothing(self):
        output, _ = self.run_program("export", self.out, "--dry-run")
        self.assertIn("would copy     " + EXPORTED[0], output)
        self.assertIn("5 to copy (150.0 kB), 0 already there", output)
        self.assertFalse(self.out.exists())

    def test_filters_do_not_change_names(self):
        self.run_program("export", self.out, "--match", "what")
        self.assertEqual(self.exported_files(), sorted(EXPORTED[1:3]))
        (self.out / EXPORTED[1]).unlink()
        self.run_program("export", self.out, "--artist", "AC/DC")
        self.assertEqual((self.out / EXPORTED[1]).read_bytes(), contents_of(1))
        self.assertEqual((self.out / EXPORTED[2]).read_bytes(), contents_of(2))

    def test_pattern_names_the_copies(self):
        self.run_program("export", self.out, "--name", "{index} {file}")
        self.check_export(names=["0 AAAA.m4a", "1 BBBB.mp3", "2 CCCC.mp3", "3 DDDD.wav",
                                 "4 EEEE.mp3"])

    def test_json_tells_the_fate_of_each_track(self):
        self.music("F01/CCCC.mp3").unlink()
        self.run_program("export", self.out, "--artist", "shiosai")
        output, errors = self.run_program("export", self.out, "--json", status=1)
        start, *tracks, end = [event for event in map(json.loads, output.splitlines())
                               if event["event"] != "progress"]
        self.assertEqual((start["event"], start["format"], start["tracks"]), ("start", 1, 5))
        self.assertEqual([end[key] for key in ("copied", "skipped", "failed", "notReached", "status")],
                         [3, 1, 1, 0, 1])
        self.assertEqual([track["result"] for track in tracks],
                         ["skipped", "copied", "failed", "copied", "copied"])
        self.assertIn("there is no such file", tracks[2]["error"])
        self.assertEqual(tracks[0]["file"], str(self.out / EXPORTED[0]))
        self.assertIn("AC/DC - What?", errors)

    def test_quiet_says_nothing_and_verbose_more(self):
        self.assertEqual(self.run_program("export", self.out, "-q"), ("", ""))
        self.assertIn("skipped   " + EXPORTED[0], self.run_program("-v", "export", self.out)[0])

    def test_read_only_source_gives_an_ordinary_copy(self):
        for name in ("F00/AAAA.m4a", "F00/BBBB.mp3"):
            self.music(name).chmod(0o444)
        self.run_program("export", self.out, umask=0o027)
        self.check_export()
        self.assertEqual({(self.out / name).stat().st_mode & 0o777 for name in EXPORTED}, {0o640})

    def test_player_that_goes_away_ends_the_export(self):
        # The program waits for its output to be read when the first copy is finished. All others would be there by
        # then if they were small.
        for _, _, _, location in TRACKS[1:]:
            os.truncate(self.machine.drive.joinpath(*location.split(":")[1:]), 64 << 20)
        pipe = FullPipe()
        process = self.start("export", self.out, stdout=pipe.writer)
        wait_for(self.out / EXPORTED[0])
        shutil.copytree(self.machine.drive, self.folder / "unplugged")
        shutil.rmtree(self.machine.drive)
        output = pipe.read()
        errors = process.communicate(timeout=60)[1].decode()
        self.assertEqual(process.returncode, 1)
        # Some of them may have been read before.
        copied = self.exported_files()
        self.assertIn(EXPORTED[0], copied)
        self.assertIn(f"{len(copied)} copied", output)
        self.assertIn(f" 0 already there, 1 failed, {4 - len(copied)} not reached", output)
        self.assertRegex(errors, "^quaylink: .*: the device has gone away, or does not answer any more\n"
                         "Attach the device again, and run the same command again.\n$")
        (self.folder / "unplugged").rename(self.machine.drive)
        self.run_program("export", self.out)
        for number, name in enumerate(EXPORTED):
            self.assertEqual((self.out / name).read_bytes().rstrip(b"\0"), contents_of(number).rstrip(b"\0"), name)

    def test_nothing_that_leads_off_the_player_is_copied(self):
        secret = self.folder / "secret"
        secret.mkdir(mode=0o700)
        for name in ("AAAA.m4a", "CCCC.mp3", "DDDD.wav", "EEEE.mp3", "iTunesDB"):
            (secret / name).write_bytes(database(TRACKS))
        shutil.rmtree(self.music("F01"))
        self.music("F01").symlink_to(secret)
        for name in ("AAAA.m4a", "BBBB.mp3"):
            self.music("F00/" + name).unlink()
        self.music("F00/AAAA.m4a").symlink_to(secret / "AAAA.m4a")
        os.mkfifo(self.music("F00/BBBB.mp3"))
        output, errors = self.run_program("export", self.out, status=1)
        self.assertIn("0 copied (0 bytes), 0 already there, 5 failed\n", output)
        self.assertEqual(errors.count("there is no such file"), 5)
        for name in ("F00\\AAAA.m4a", "F00\\BBBB.mp3", "F01\\CCCC.mp3"):
            self.failure("pull", "F:\\iPod_Control\\Music\\" + name, self.out)
        file = self.machine.drive / "iPod_Control" / "iTunes" / "iTunesDB"
        file.unlink()
        file.symlink_to(secret / "iTunesDB")
        self.failure("copy-database", self.out)
        self.failure("tracks")
        self.assertEqual(self.exported_files(), [])

    def test_bar_is_shown_on_a_terminal_only(self):
        main, terminal = pty.openpty()
        self.addCleanup(os.close, main)
        process = subprocess.Popen([os.environ["QUAYLINK_PROGRAM"], "export", str(self.out)],
                                   stdout=subprocess.PIPE, stderr=terminal,
                                   env=self.environment())
        output, _ = process.communicate(timeout=60)
        os.close(terminal)
        bar = os.read(main, 65536).decode()
        self.assertIn("[", bar)
        self.assertIn("of 150.0 kB", bar)
        self.assertEqual(len(output.splitlines()), 6)


if __name__ == "__main__":
    unittest.main()
