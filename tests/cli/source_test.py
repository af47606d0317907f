"""Music out of a folder that holds what a player holds: no device is attached."""

import json
import os
import shutil
import time
import unittest

from collection_test import COUNTED, PLAYLISTS, PROPERTIES
from players import TRACKS, Machine, ProgramTest, compressed, contents_of, database, obey_permissions

TITLES = sorted(title for _, _, title, _ in TRACKS)


class FolderTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.player = self.folder / "player"
        self.machine.fill(self.player, TRACKS)
        self.database_folder = self.player / "iPod_Control" / "iTunes"
        self.database = self.database_folder / "iTunesDB"

    def titles(self, folder, **options):
        output, errors = self.run_program("tracks", "--from", folder, "--json", **options)
        self.assertEqual(errors, "")
        return sorted(track["title"] for track in json.loads(output))


class FolderSource(FolderTest):
    def test_lists_tracks_and_playlists_without_any_device(self):
        self.database.write_bytes(database(TRACKS, PROPERTIES, PLAYLISTS))
        self.assertEqual(self.titles(self.player), TITLES)
        self.assertIn("3 playlists", self.run_program("playlists", "--from", self.player)[0])
        # Its own place is the user's to choose: a link, too, or the folder where the program runs.
        (self.folder / "link").symlink_to(self.player)
        self.assertEqual(self.titles(self.folder / "link"), TITLES)
        self.assertEqual(self.titles(".", cwd=self.player), TITLES)

    def test_letter_case_of_folders_and_files_makes_no_difference(self):
        for control, itunes, name in [("IPOD_CONTROL", "ITUNES", "ITUNESDB"), ("ipod_control", "iTunes", "itunesdb"),
                                      ("iTunes_Control", "iTunes", "iTunesDB"), ("ITUNES_CONTROL", "itunes", "ItunesDb")]:
            folder = self.folder / name
            shutil.copytree(self.database_folder, folder / control / itunes)
            (folder / control / itunes / "iTunesDB").rename(folder / control / itunes / name)
            (folder / control / itunes / "PLAY COUNTS").write_bytes(COUNTED)
            output, errors = self.run_program("tracks", "--from", folder, "--json")
            self.assertEqual([track["rating"] for track in json.loads(output)][:2], [100, 0], control)

    def test_spelling_of_the_player_comes_before_any_other(self):
        other = self.player / "iPod_Control" / "ITUNES"
        other.mkdir()
        (other / "iTunesDB").write_bytes(b"something else")
        (self.database_folder / "ITUNESDB").write_bytes(b"something else")
        self.assertEqual(self.titles(self.player), TITLES)

    def test_compressed_database_beside_a_missing_or_an_empty_one(self):
        (self.database_folder / "iTunesCDB").write_bytes(compressed(database(TRACKS, PROPERTIES, PLAYLISTS)))
        self.database.write_bytes(b"")
        self.assertEqual(self.titles(self.player), TITLES)
        self.database.unlink()
        self.assertIn("3 playlists", self.run_program("playlists", "--from", self.player)[0])

    def test_play_counts_beside_the_database_are_taken_in(self):
        (self.database_folder / "Play Counts").write_bytes(COUNTED)
        tracks = json.loads(self.run_program("tracks", "--from", self.player, "--json")[0])
        self.assertEqual([(track["playCount"], track["rating"]) for track in tracks[:3]], [(1, 100), (4, 0), (0, 0)])

    def test_play_counts_that_are_a_link_are_left_out(self):
        (self.folder / "elsewhere").write_bytes(COUNTED)
        (self.database_folder / "Play Counts").symlink_to(self.folder / "elsewhere")
        tracks = json.loads(self.run_program("tracks", "--from", self.player, "--json")[0])
        self.assertEqual([track["playCount"] for track in tracks], [0] * len(TRACKS))

    def test_damaged_database_gives_what_is_whole_and_is_told(self):
        self.database.write_bytes(self.database.read_bytes()[:-60])
        errors = self.run_program("tracks", "--from", self.player, status=1)[1]
        self.assertEqual(errors, f"quaylink: {self.database}: is damaged, or was not copied whole; "
                                 "5 of its tracks could be read\n")


class SourceFailures(FolderTest):
    def check_refused(self, folder, message):
        for command in ("tracks", "playlists"):
            self.assertEqual(self.failure(command, "--from", folder), f"quaylink: {message}\n")

    def test_folders_that_hold_nothing_of_a_player(self):
        missing = self.folder / "missing"
        self.check_refused(missing, f"{missing}: the folder cannot be opened: No such file or directory")
        self.check_refused(self.database, f"{self.database}: the folder cannot be opened: Not a directory")
        lacking = "holds no folder iPod_Control or iTunes_Control (links are not followed)"
        self.out.mkdir()
        self.check_refused(self.out, f"{self.out}: {lacking}")
        (self.out / "iPod_Control").write_bytes(b"a file")
        self.check_refused(self.out, f"{self.out}: {lacking}")
        self.check_refused(self.player / "iPod_Control", f"{self.player / 'iPod_Control'}: {lacking}")

    def test_folder_without_a_database_leads_to_rescue(self):
        message = f"{self.player}: holds no music database; 'quaylink export --rescue' still gets its music files"
        self.database.write_bytes(b"")
        self.check_refused(self.player, message)
        self.database.unlink()
        self.check_refused(self.player, message)
        shutil.rmtree(self.database_folder)
        self.check_refused(self.player, message)

    def test_no_link_in_the_folder_is_followed(self):
        self.out.mkdir()
        (self.out / "iPod_Control").symlink_to(self.player / "iPod_Control")
        self.check_refused(self.out, f"{self.out}: holds no folder iPod_Control or iTunes_Control "
                                     "(links are not followed)")
        elsewhere = self.folder / "elsewhere"
        refused = f"{self.database}: is no ordinary file, and links are not followed"
        self.database.rename(elsewhere)
        self.database.symlink_to(elsewhere)
        self.check_refused(self.player, refused)
        self.database_folder.rename(self.folder / "iTunes")
        self.database_folder.symlink_to(self.folder / "iTunes")
        self.check_refused(self.player, refused)

    def test_pipes_and_folders_are_no_databases(self):
        refused = f"{self.database}: is no ordinary file, and links are not followed"
        self.database.unlink()
        os.mkfifo(self.database)
        self.check_refused(self.player, refused)
        self.database.unlink()
        self.database.mkdir()
        self.check_refused(self.player, refused)

    def test_database_that_may_not_be_read(self):
        self.database.chmod(0)
        errors = self.failure("tracks", "--from", self.player, preexec_fn=obey_permissions)
        self.assertEqual(errors, f"quaylink: {self.database}: the database cannot be read: Permission denied\n")

    def test_track_that_may_not_be_read(self):
        self.machine.attach_player()
        (self.machine.drive / "iPod_Control/Music/F00/BBBB.mp3").chmod(0)
        (self.player / "iPod_Control/Music/F00/BBBB.mp3").chmod(0)
        for number, source in enumerate([[], ["--from", self.player]]):
            errors = self.run_program("export", *source, self.folder / f"out {number}", status=1,
                                      preexec_fn=obey_permissions)[1]
            self.assertIn("quaylink: AC/DC - What?: /iPod_Control/Music/F00/BBBB.mp3: cannot be read: "
                          "Permission denied\n", errors)

    def test_pull_takes_nothing_but_the_players_own_files(self):
        self.machine.attach_player()
        secret = self.folder / "secret"
        secret.write_bytes(b"secret")
        (self.machine.folder / "drives" / "C" / "secret").write_bytes(b"secret")
        (self.machine.drive / "Notes").mkdir()
        (self.machine.drive / "Notes" / "a.txt").write_bytes(b"a note")
        (self.machine.drive / "Notes" / "link").symlink_to(secret)
        copy = self.folder / "copy"
        for path in ("/Notes/a.txt", r"F:\Notes\a.txt", r"\Notes\a.txt", "f:/notes/A.TXT", "/Notes/../Notes/a.txt"):
            self.run_program("pull", path, copy)
            self.assertEqual(copy.read_bytes(), b"a note", path)
            copy.unlink()
        for path in (r"C:\secret", "C:secret", "F:Notes", "secret", "../secret", "//server/share/a", r"\\?\C:\secret"):
            self.assertEqual(self.failure("pull", path, copy),
                             f"quaylink: {path}: is not on the player's drive, which is F:\n")
        for path in ("/etc/passwd", secret, "/Notes/link", "/Notes", "/../../secret", "/missing"):
            self.assertEqual(self.failure("pull", path, copy), f"quaylink: {path}: there is no such file on the "
                             "player's drive, or it cannot be read\n")
        self.assertFalse(copy.exists())

    def test_folder_of_a_phone_without_files(self):
        self.machine.attach_phone()
        self.assertEqual(self.failure("pull", "/Nothing/", self.out),
                         "quaylink: /Nothing/: the phone has no files there\n")
        self.assertFalse(self.out.exists())

    def test_file_that_is_no_database(self):
        self.database.write_bytes(b"something else")
        self.check_refused(self.player, f"{self.database}: this is no music database")

    def test_file_and_folder_exclude_each_other(self):
        errors = self.failure("tracks", "--from", self.player, self.database, status=2)
        self.assertIn("--from excludes FILE", errors)


class DeviceSource(ProgramTest):
    """Files of attached devices: what shows of them, and how they come over."""

    def exported(self, number):
        """The copy of a track, wherever it has been put."""
        found = [file for file in self.out.rglob("*") if file.is_file() and file.read_bytes() == contents_of(number)]
        self.assertEqual(len(found), 1)
        return found[0]

    def files(self, root):
        return [root.joinpath(*location.split(":")[1:]) for *_, location in TRACKS]

    def test_copies_from_a_player_keep_their_times(self):
        self.machine.attach_player()
        times = [1346589563123456789 + number for number in range(len(TRACKS))]
        for file, nanoseconds in zip(self.files(self.machine.drive), times):
            os.utime(file, ns=(0, nanoseconds))
        self.run_program("export", self.out)
        self.assertEqual([self.exported(number).stat().st_mtime_ns for number in range(len(TRACKS))], times)

    def test_copies_from_a_phone_have_the_times_that_the_database_tells(self):
        self.machine.attach_phone()
        # Noon of 2012-09-02 and of 2012-12-02 by the phone's clock, on a computer in Paris.
        told = {0: 3429432000, 1: 3437294400}
        (self.machine.phone / "iPod_Control" / "iTunes" / "iTunesDB").write_bytes(
            database(TRACKS, {number: ({}, [(0x20, "I", time)]) for number, time in told.items()}))
        before = time.time() - 2
        self.run_program("export", self.out, env=dict(self.environment(), TZ="CET-1CEST,M3.5.0,M10.5.0/3"))
        self.assertEqual([self.exported(number).stat().st_mtime for number in told],
                         [1346580000.0, 1354446000.0])
        self.assertGreater(self.exported(2).stat().st_mtime, before)

    def test_missing_file_is_told_with_its_path_on_the_device(self):
        for attach, root in (("attach_player", "drive"), ("attach_phone", "phone")):
            with self.subTest(attach):
                self.machine = Machine(self.folder / attach)
                getattr(self.machine, attach)()
                self.files(getattr(self.machine, root))[1].unlink()
                errors = self.run_program("export", self.folder / f"out of {attach}", status=1)[1]
                self.assertIn("quaylink: AC/DC - What?: /iPod_Control/Music/F00/BBBB.mp3: there is no such file\n",
                              errors)
                self.assertNotIn("again", errors)

    def test_files_whose_names_windows_does_not_take_come_over_too(self):
        self.machine.attach_player()
        odd = self.files(self.machine.drive)[1].with_name("what?.mp3")
        odd.write_bytes(contents_of(9))
        self.run_program("export", "--rescue", self.out)
        self.exported(9)


if __name__ == "__main__":
    unittest.main()
