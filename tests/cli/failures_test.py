"""What the program says when something is wrong: every message of the manual page's table."""

import ctypes
import json
import os
import re
import subprocess
import unittest

import export_test
import source_test
from players import (DOCUMENTED, EXPORTED, HAVE_RUN, JOURNAL, SAID, TRACKS, ProgramTest, compressed, contents_of,
                     database, obey_permissions)

CLONE_NEWNS = 0x20000


class Failures(ProgramTest):
    def test_files_that_are_no_database_are_named(self):
        for name, contents, words in [
                ("missing", None, "the database cannot be opened: No such file or directory"),
                ("text.txt", b"no database at all", "this is no music database"),
                ("empty", b"", "this is no music database"),
                ("bomb", compressed(database(TRACKS) + bytes(2**20)), "the compressed database is too large")]:
            file = self.folder / name
            if contents is not None:
                file.write_bytes(contents)
            self.assertEqual(self.failure("tracks", file), f"quaylink: {file}: {words}\n")
            self.assertEqual(self.failure("playlists", file), f"quaylink: {file}: {words}\n")
        self.assertIn("is a folder", self.failure("tracks", self.folder))
        for command in ("tracks", "playlists"):
            self.assertEqual(self.failure(command, "-", stdin=subprocess.DEVNULL),
                             "quaylink: the standard input: this is no music database\n")
        self.assertIn("cannot be read to its end", self.failure("tracks", "/proc/self/mem"))
        # This one has no end.
        self.assertIn("this is no music database", self.failure("tracks", "/dev/zero"))

    def test_playlist_that_does_not_exist(self):
        self.machine.attach_player()
        for command in (["tracks"], ["export", self.out]):
            self.assertEqual(self.failure(*command, "--playlist", "été 2"), "quaylink: the device's music database: "
                             "has no playlist \"été 2\" (see 'quaylink playlists')\n")

    def test_machine_that_is_no_folder_is_told(self):
        self.machine.attach_player()
        environment = dict(self.environment(), QUAYLINK_MACHINE=str(self.folder / "missing"))
        for command in (["status"], ["export", self.out]):
            self.assertEqual(self.failure(*command, env=environment), "quaylink: QUAYLINK_MACHINE "
                             f"names no folder: {self.folder}/missing\n")
        self.assertFalse(self.out.exists())

    def test_database_without_its_end_gives_what_it_has_and_is_told(self):
        self.machine.attach_player()
        source = self.machine.drive / "iPod_Control" / "iTunes" / "iTunesDB"
        whole = source.read_bytes()
        for cut in (0, 1, 60):
            # The cut is in the list of playlists, behind the tracks.
            source.write_bytes(whole[:len(whole) - cut])
            told = ("quaylink: .+ is damaged, or was not copied whole; "
                    "5 of its tracks could be read\n" if cut else "")
            for command in (["tracks", source], ["tracks"], ["export", self.out]):
                output, errors = self.run_program(*command, status=1 if cut else 0)
                self.assertRegex(errors, rf"\A{told}\Z")
                self.assertIn("5 ", output)
            self.check_export()

    def test_without_a_device_every_command_gives_advice(self):
        for command in (["tracks"], ["playlists"], ["export", self.out], ["copy-track", 0, self.out], ["files"],
                        ["copy-database", self.out], ["pull", "/x", self.out], ["status"]):
            self.assertIn("Is the player in disk mode and mounted", self.failure(*command))
        output, errors = self.run_program("status", "--json", status=1)
        self.assertIn("no Apple device is attached", errors)
        self.assertEqual(json.loads(output), {"attached": False, "reachable": False, "kind": None})
        self.assertFalse(self.out.exists())

    def test_phone_without_the_vendors_software_gives_advice(self):
        self.machine.attach_phone()
        for library in (self.machine.folder / "drives/C").rglob("*.dll"):
            library.unlink()
        self.assertIn("on Windows only, with its vendor's device software", self.failure("tracks"))

    def test_temporary_folder_that_is_missing(self):
        self.machine.attach_player()
        environment = dict(self.environment(), TMPDIR=str(self.folder / "missing"))
        self.assertIn("no temporary file can be made", self.failure("tracks", env=environment))

    def test_device_without_a_database(self):
        self.machine.attach_player()
        file = self.machine.drive / "iPod_Control" / "iTunes" / "iTunesDB"
        file.unlink()
        self.assertIn("Has music been put on the player", self.failure("export", self.out))
        file.write_bytes(b"something else")
        self.assertIn("the device's music database: this is no", self.failure("tracks"))

    def test_phone_without_a_database(self):
        self.machine.attach_phone()
        (self.machine.phone / "iPod_Control" / "iTunes" / "iTunesDB").unlink()
        self.assertIn("the phone's music database could not be copied", self.failure("tracks"))

    def test_phone_that_cannot_be_listed(self):
        self.machine.attach_phone(script=["fail-from AFCDirectoryOpen 2"])
        self.assertIn("files could not be listed", self.failure("files"))
        self.assertIn("could not be read", self.failure("pull", "/no/such/file", self.out))

    def test_phone_that_does_not_answer_any_more_ends_the_export(self):
        self.machine.attach_phone(script=["fail-from AFCFileRefRead 6", "log log",
                                          "fail-from AMDeviceConnect 3"])
        output, errors = self.run_program("export", self.out, "--json", status=1)
        self.assertEqual(errors.count("has gone away"), 1)
        self.assertEqual(errors.count("\n"), 1)
        report = json.loads(output.splitlines()[-1])
        self.assertEqual(report["failed"], 1)
        self.assertEqual(report["copied"] + report["notReached"], 4)
        self.assertGreater(report["notReached"], 0)
        log = (self.machine.folder / "log").read_text()
        self.assertEqual(log.count("AMDeviceConnect"), 3)

    def test_track_that_does_not_exist(self):
        self.machine.attach_player()
        self.assertIn("no track 5: its tracks are 0 to 4", self.failure("copy-track", 5, self.out))

    def test_track_without_a_file(self):
        self.machine.attach_phone(tracks=[("A", "B", "C", ""), *TRACKS])
        _, errors = self.run_program("export", self.out, status=1)
        self.assertEqual(errors.splitlines()[0],
                         "quaylink: A - C: the music database names no file for this track")
        self.assertEqual(len(self.exported_files()), len(TRACKS))

    def test_destination_that_cannot_be_written(self):
        self.machine.attach_player()
        missing = self.folder / "missing" / "song.mp3"
        for command in (["copy-track", 0], ["copy-database"], ["pull", r"F:\x"]):
            self.assertEqual(self.failure(*command, missing),
                             f"quaylink: {missing}: cannot be written: No such file or directory\n")
        # Not one of the system's own: a program that is at fault would replace it.
        os.mkfifo(self.folder / "pipe")
        self.assertIn("is no ordinary file", self.failure("copy-database", self.folder / "pipe"))
        self.out.write_text("a file where the folder should be")
        self.assertIn("is in the way", self.failure("export", self.out))

    def test_only_a_file_that_is_named_is_replaced(self):
        self.machine.attach_player()
        self.out.mkdir()
        for name, command in {"iTunesDB": ["copy-database"], "What_.mp3": ["copy-track", 1],
                              "AAAA.m4a": ["pull", r"F:\iPod_Control\Music\F00\AAAA.m4a"]}.items():
            file = self.out / name
            file.write_text("mine")
            self.assertEqual(self.failure(*command, self.out),
                             f"quaylink: {file}: is there already; "
                             "name the file itself to replace it\n")
            self.assertEqual(file.read_text(), "mine")
            self.run_program(*command, file)
            self.assertNotEqual(file.read_bytes(), b"mine")

    def test_folder_where_a_copy_should_be(self):
        self.machine.attach_player()
        (self.out / EXPORTED[4]).mkdir(parents=True)
        self.run_program("export", self.out)
        self.assertEqual((self.out / "Björk/Post/Hyper-ballad (2).mp3").read_bytes(), contents_of(4))

    def test_files_and_folders_without_permission(self):
        self.machine.attach_player()
        self.out.mkdir(mode=0o555)
        file = self.folder / "secret"
        file.touch(mode=0o000)
        for command, words in [(["copy-database", self.out / "x"], "cannot be written"),
                               (["tracks", file], "the database cannot be opened")]:
            errors = self.failure(*command, preexec_fn=obey_permissions)
            self.assertTrue(errors.endswith(words + ": Permission denied\n"), errors)
        errors = self.failure("export", self.out, preexec_fn=obey_permissions)
        self.assertIn("the folder cannot be used: Permission denied", errors)

    def test_output_that_cannot_be_written(self):
        file = self.folder / "copy.iTunesDB"
        file.write_bytes(database(TRACKS))
        for command in (["tracks", file], ["--help"]):
            with open("/dev/full", "wb") as full:
                errors = self.failure(*command, stdout=full)
            self.assertIn("the output could not be written", errors)

    def test_wrong_usage_has_its_own_status(self):
        for arguments in ([], ["play"], ["tracks", "--sort", "length"], ["tracks", "--columns", "title,length"],
                          ["tracks", "--year", "199x"], ["tracks", "--kind", "song"], ["playlists", ""],
                          ["copy-track", "", "x"], ["copy-track", "010", "x"], ["copy-track", "1x", "x"],
                          ["copy-track", "4294967296", "x"], ["copy-track", "one", "x"], ["export"],
                          ["export", self.out, "--name", "{titel}"],
                          ["tracks", "--json", "--csv"], ["tracks", ""], ["export", ""],
                          ["pull", "", "x"], ["copy-track", 0, ""]):
            self.failure(*arguments, status=2)

    def test_help_is_there_for_every_command_with_examples(self):
        commands = re.findall(r"^  ([a-z][a-z-]+) +[A-Z]", self.run_program("--help")[0], re.MULTILINE)
        self.assertEqual(len(commands), 8)
        for command in commands:
            self.assertIn("Example", self.run_program(command, "--help")[0])


class ManualPage(unittest.TestCase):
    """Looks at what the tests of failures make the program say, and runs those that have not run."""

    # Of Windows alone; of a disk that takes nothing, see tests/cli_file_copy_test.cpp; of play counts, see
    # collection_test.py; of no memory; of a moment that no test can be sure to meet; of a disk, see
    # FullDisk below.
    NOT_SAID = ("the phone does not answer. Unlock it", "FILE: the path is too long",
                "FOLDER: this system's code page", "FILE: the copy came out empty",
                "FILE: the play counts beside it", "there is not enough memory",
                "interrupted before anything", "FILE: may not have reached the disk",
                "FOLDER: is on the player itself")

    @classmethod
    def setUpClass(cls):
        load = unittest.defaultTestLoader.loadTestsFromTestCase
        classes = (Failures, source_test.SourceFailures, export_test.Identity, export_test.Destinations,
                   export_test.Sources)
        tests = [test for each in classes for test in load(each)]
        missing = unittest.TestSuite(test for test in tests if test.id() not in HAVE_RUN)
        missing.run(unittest.TestResult())

    def test_every_message_of_its_table_is_one_that_the_program_says(self):
        self.assertEqual([message for message in DOCUMENTED
                          if message not in SAID and not message.startswith(self.NOT_SAID)], [])


class FullDisk(ProgramTest):
    @classmethod
    def setUpClass(cls):
        # What is mounted from here on is seen by this process and its children alone, and goes away
        # with them even when they are killed.
        private = ["mount", "--make-rprivate", "/"]
        if (ctypes.CDLL(None).unshare(CLONE_NEWNS) != 0 or
                subprocess.run(private, capture_output=True, check=False).returncode != 0):
            raise unittest.SkipTest("no small disk can be mounted here")

    def setUp(self):
        super().setUp()
        self.out.mkdir()
        mount = ["mount", "-t", "tmpfs", "-o", "size=100k", "tmpfs", str(self.out)]
        if subprocess.run(mount, capture_output=True, check=False).returncode != 0:
            self.skipTest("no small disk can be mounted here")
        self.addCleanup(subprocess.run, ["umount", str(self.out)], check=True)

    def test_full_disk_ends_the_export_of_a_phone(self):
        # How large its files are shows when they come.
        self.machine.attach_phone()
        output, errors = self.run_program("export", self.out, status=1)
        self.assertIn("2 copied", output)
        self.assertIn("1 failed, 2 not reached", output)
        self.assertIn("AC/DC - What?", errors)
        self.assertIn("cannot be written: No space left on device; free some space", errors)
        self.assertEqual(self.exported_files(), sorted(EXPORTED[:2]))
        for number in (0, 1):
            self.assertEqual((self.out / EXPORTED[number]).read_bytes(), contents_of(number))

    def test_what_is_there_already_takes_no_room(self):
        self.machine.attach_player(TRACKS[:2])
        self.run_program("export", self.out)
        (self.out / JOURNAL).unlink()
        self.assertIn("2 already there", self.run_program("export", self.out)[0])
        (self.out / "filler").write_bytes(bytes(16384))
        output, errors = self.run_program("export", self.out, "--verify", status=1)
        self.assertIn("1 failed, 1 not reached", output)
        self.assertIn("cannot be written: No space left on device; free some space", errors)

    def test_full_disk_ends_the_export_of_a_player(self):
        self.machine.attach_player()
        self.assertIn("has not enough room", self.failure("export", self.out))
        self.assertEqual(list(self.out.iterdir()), [])

    def test_player_is_no_destination(self):
        player = self.out
        self.machine.fill(player, TRACKS[:1])
        for options in ([], ["--dry-run"]):
            self.assertIn("is on the player itself",
                          self.failure("export", "--from", player, player / "Saved" / "here", *options))
        self.assertFalse((player / "Saved").exists())

    def test_full_disk_is_told_to_programs(self):
        self.machine.attach_phone()
        end = json.loads(self.run_program("export", self.out, "--json", status=1)[0].splitlines()[-1])
        self.assertEqual((end["event"], end["stoppedBy"], end["copied"], end["notReached"]),
                         ("end", "destination", 2, 2))


if __name__ == "__main__":
    unittest.main()
