"""What an export promises: after it, somebody may wipe the player."""

import fcntl
import json
import os
import pathlib
import resource
import shutil
import subprocess
import unittest

from players import (EXPORTED, JOURNAL, TRACKS, ProgramTest, contents_of, database, limit_file_size, playlist)

PERSISTENT_ID, SIZE, TRACK_NUMBER, DISC_NUMBER, COMPILATION = 0x70, 0x24, 0x2C, 0x5C, 0x1E


def numbered(count=len(TRACKS)):
    """Persistent ids for the first tracks."""
    return {index: ({}, [(PERSISTENT_ID, "Q", 0x1000 + index)]) for index in range(count)}


def location_of(name):
    return f":iPod_Control:Music:F00:{name}.mp3"


def master(number):
    return playlist("A player", [], [(20, "B", 1), (28, "Q", number)])


class ExportTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.player = self.folder / "player"
        self.machine.fill(self.player, TRACKS)
        self.write()

    def write(self, tracks=TRACKS, properties=None, playlists=(master(7),)):
        """Writes the player's database."""
        properties = numbered(len(tracks)) if properties is None else properties
        file = self.player / "iPod_Control" / "iTunes" / "iTunesDB"
        file.write_bytes(database(tracks, properties, playlists))

    def music(self, index, tracks=TRACKS):
        return self.player.joinpath(*tracks[index][3].split(":")[1:])

    def export(self, *options, status=0):
        return self.run_program("export", "--from", self.player, self.out, *options, status=status)

    def events(self, *options, status=0):
        output = self.export("--json", *options, status=status)[0]
        return [json.loads(line) for line in output.splitlines()]

    def results(self, *options, status=0):
        """What became of each track, in the order of the player."""
        return [event["result"] for event in self.events(*options, status=status) if event["event"] == "track"]


class Identity(ExportTest):
    def test_copies_are_made_once_and_damaged_ones_anew(self):
        self.assertEqual(self.results(), ["copied"] * 5)
        self.check_export()
        self.assertEqual(self.results(), ["skipped"] * 5)
        with open(self.out / EXPORTED[0], "r+b") as cut:
            cut.truncate(1000)
        (self.out / EXPORTED[1]).write_bytes(b"")
        (self.out / EXPORTED[2]).unlink()
        zeros = contents_of(3)[:20000] + bytes(10003)
        (self.out / EXPORTED[3]).write_bytes(zeros)
        self.assertEqual(self.results(), ["replaced", "replaced", "copied", "replaced", "skipped"])
        self.check_export()

    def test_track_that_changed_on_the_player_replaces_its_copy(self):
        self.export()
        self.music(1).write_bytes(b"remastered")
        os.utime(self.music(2), (1000000000, 1000000000))
        self.assertEqual(self.results(), ["skipped", "replaced", "replaced", "skipped", "skipped"])
        self.assertEqual((self.out / EXPORTED[1]).read_bytes(), b"remastered")
        self.assertEqual((self.out / EXPORTED[2]).read_bytes(), contents_of(2))

    def test_track_exchanged_for_another_of_the_same_tags_is_copied(self):
        for with_ids in (True, False):
            with self.subTest(with_ids=with_ids):
                self.write(properties=numbered() if with_ids else {})
                self.export()
                tracks = list(TRACKS)
                tracks[4] = tracks[4][:3] + (":iPod_Control:Music:F00:ZZZZ.mp3",)
                self.music(4, tracks).write_bytes(b"another recording")
                properties = numbered() if with_ids else {}
                if with_ids:
                    properties[4] = ({}, [(PERSISTENT_ID, "Q", 0x9999)])
                self.write(tracks, properties)
                self.export()
                copies = {path.read_bytes() for path in (self.out / "Björk" / "Post").iterdir()}
                self.assertEqual(copies, {contents_of(4), b"another recording"})

    def test_names_stay_with_their_tracks_whatever_goes(self):
        same = [("Artist", "Album", "Same", f":iPod_Control:Music:F00:S{i}.mp3") for i in range(4)]
        self.machine.fill(self.folder / "other", same)
        self.player = self.folder / "other"
        self.write(same)
        self.export()
        names = [f"Artist/Album/Same{number}.mp3" for number in ("", " (2)", " (3)", " (4)")]
        self.check_export(same, names)
        self.write(same[1:], {index: ({}, [(PERSISTENT_ID, "Q", 0x1001 + index)]) for index in range(3)})
        (self.out / names[3]).unlink()
        self.assertEqual(self.results(), ["skipped", "skipped", "copied"])
        self.check_export(same, names)

    def test_foreign_file_is_never_overwritten_nor_counted(self):
        foreign = self.out / EXPORTED[4]
        foreign.parent.mkdir(parents=True)
        foreign.write_bytes(bytes(len(contents_of(4))))
        same = self.out / EXPORTED[0]
        same.parent.mkdir(parents=True)
        same.write_bytes(contents_of(0))
        empty = self.out / EXPORTED[3]
        empty.parent.mkdir(parents=True)
        empty.touch()
        self.assertEqual(self.results(), ["skipped", "copied", "copied", "copied", "copied"])
        self.assertEqual((foreign.read_bytes(), empty.read_bytes()), (bytes(len(contents_of(4))), b""))
        self.assertEqual((self.out / "Björk/Post/Hyper-ballad (2).mp3").read_bytes(), contents_of(4))
        self.assertEqual(self.results(), ["skipped"] * 5)

    def test_copy_that_somebody_worked_on_is_left_alone(self):
        self.export()
        for index, work in ((0, b"new tags" + contents_of(0)), (4, b"shorter")):
            (self.out / EXPORTED[index]).write_bytes(work)
        self.assertEqual(self.results(), ["copied", "skipped", "skipped", "skipped", "copied"])
        self.assertEqual((self.out / EXPORTED[4]).read_bytes(), b"shorter")
        self.assertEqual((self.out / "Björk/Post/Hyper-ballad (2).mp3").read_bytes(), contents_of(4))
        self.assertEqual(self.results(), ["skipped"] * 5)

    def test_retagged_track_takes_its_copy_along(self):
        self.export()
        tracks = list(TRACKS)
        tracks[4] = ("Björk", "Debut", "Human Behaviour", TRACKS[4][3])
        before = (self.out / EXPORTED[4]).stat().st_ino
        self.write(tracks)
        self.assertEqual(self.results(), ["skipped"] * 4 + ["moved"])
        names = EXPORTED[:4] + ["Björk/Debut/Human Behaviour.mp3"]
        self.check_export(names=names)
        self.assertEqual((self.out / names[4]).stat().st_ino, before)
        self.assertFalse((self.out / "Björk/Post").exists())

    def test_work_on_a_copy_stays_where_it_is_when_the_track_is_retagged(self):
        self.export()
        (self.out / EXPORTED[4]).write_bytes(bytes(reversed(contents_of(4))))
        (self.out / EXPORTED[0]).write_bytes(contents_of(0)[:1000])
        tracks = [(artist, album, title and title + "!", location) for artist, album, title, location in TRACKS]
        self.write(tracks)
        self.assertEqual(self.results(), ["replaced", "moved", "moved", "skipped", "copied"])
        names = ["!.".join(name.rsplit(".", 1)) if number != 3 else name for number, name in enumerate(EXPORTED)]
        names[2] = EXPORTED[2].replace(" (2)", "! (2)")
        self.check_export(tracks, names, others=[EXPORTED[4]])
        self.assertEqual((self.out / EXPORTED[4]).read_bytes(), bytes(reversed(contents_of(4))))

    def test_tracks_that_share_what_they_are_known_by_are_told_apart(self):
        tracks = [("A", "Al", "One", location_of("AAAA")), ("B", "Al", "Two", location_of("BBBB")),
                  ("C", "Al", "Three", location_of("AAAA"))]
        same = [(PERSISTENT_ID, "Q", 5)]
        contents = {"A/Al/One.mp3": b"first", "B/Al/Two.mp3": b"second", "C/Al/Three.mp3": b"first"}
        for name, data in (("AAAA", b"first"), ("BBBB", b"second")):
            (self.player / "iPod_Control/Music/F00" / (name + ".mp3")).write_bytes(data)
        for properties in ({}, {0: ({}, same), 1: ({}, same)}, {index: ({}, same) for index in range(3)}):
            with self.subTest(properties=properties):
                self.out = self.folder / f"out{len(properties)}"
                self.write(tracks, properties)
                for artist in "ABC":
                    self.assertEqual(self.results("--artist", artist), ["copied"])
                self.assertEqual(self.results(), ["skipped"] * 3)
                self.assertEqual({name: (self.out / name).read_bytes() for name in self.exported_files()}, contents)

    def test_file_name_that_a_player_uses_again_is_another_track(self):
        self.write(properties={})
        self.export()
        self.music(4).write_bytes(b"another track")
        self.write(TRACKS[:4] + [("Other", "Album", "Song", TRACKS[4][3])], {})
        self.assertEqual(self.results(), ["skipped"] * 4 + ["copied"])
        self.check_export(others=["Other/Album/Song.mp3"])

    def test_players_are_kept_apart(self):
        self.export()
        self.music(4).write_bytes(b"of another player")
        self.write(playlists=(master(8),))
        self.export()
        self.assertEqual((self.out / EXPORTED[4]).read_bytes(), contents_of(4))
        self.assertEqual((self.out / "Björk/Post/Hyper-ballad (2).mp3").read_bytes(), b"of another player")

    def test_track_that_left_the_player_keeps_its_copy(self):
        self.export()
        self.write(TRACKS[:4])
        self.export()
        self.check_export()

    def test_journal_of_a_killed_run_is_believed_as_far_as_it_goes(self):
        self.export()
        journal = self.out / JOURNAL
        lines = journal.read_bytes().splitlines(keepends=True)
        # The last copy stands there cut, and nothing says that any has reached the disk.
        journal.write_bytes(b"".join(line for line in lines[:-2] if b"durable" not in line) + lines[-2][:50])
        (self.out / EXPORTED[1]).write_bytes(contents_of(1)[:-5] + bytes(5))
        self.assertEqual(self.results(), ["skipped", "replaced", "skipped", "skipped", "skipped"])
        self.check_export()

    def test_journal_that_cannot_be_understood_is_kept(self):
        self.export()
        journal = self.out / JOURNAL
        newer = journal.read_bytes().replace(b'"format":1', b'"format":2')
        journal.write_bytes(newer)
        for option in ([], ["--verify"], ["--dry-run"]):
            self.assertIn("newer edition", self.failure("export", "--from", self.player, self.out, *option))
        self.assertEqual(journal.read_bytes(), newer)

    def test_journal_that_takes_no_more_ends_the_run_with_its_summary(self):
        for number in range(5):
            self.music(number).write_bytes(contents_of(number)[:100])
        output, errors = self.run_program("export", "--from", self.player, self.out, status=1,
                                          preexec_fn=lambda: limit_file_size(800))
        self.assertRegex(output, r"[12] copied \(.*\), 0 already there, 1 failed, [23] not reached\n$")
        self.assertIn("quaylink-journal: cannot be written", errors)
        self.assertEqual(self.results("--no-playlists").count("failed"), 0)

    def test_copy_that_had_just_got_its_name_when_the_run_was_killed_is_known(self):
        self.export()
        tracks = list(TRACKS)
        tracks[4] = ("Björk", "Debut", "Human Behaviour", TRACKS[4][3])
        names = EXPORTED[:4] + ["Björk/Debut/Human Behaviour.mp3"]

        def forget_from_the_last_name_on():
            journal = self.out / JOURNAL
            line = journal.read_bytes().rindex(b'{"player"')
            journal.write_bytes(journal.read_bytes()[:journal.read_bytes().index(b"\n", line) + 1])

        for change, result in ((lambda: self.write(tracks), "moved"),
                               (lambda: self.music(4).write_bytes(b"longer" + contents_of(4)), "replaced")):
            change()
            self.assertEqual(self.results(), ["skipped"] * 4 + [result])
            forget_from_the_last_name_on()
        self.music(4).write_bytes(contents_of(4))
        self.assertEqual(self.results(), ["skipped"] * 4 + ["replaced"])
        self.check_export(names=names)

    def test_journal_leads_nowhere_else(self):
        self.export()
        outside = self.folder / "outside.mp3"
        outside.write_bytes(contents_of(4))
        journal = self.out / JOURNAL
        journal.write_text(journal.read_text().replace('"name":"' + EXPORTED[4], '"name":"../outside.mp3'))
        self.music(4).write_bytes(b"changed")
        self.export()
        self.assertEqual(outside.read_bytes(), contents_of(4))

    def test_verification_tells_what_differs(self):
        self.assertRegex(self.export("--verify", status=1)[1], "Hyper-ballad: has not been copied")
        self.assertFalse(self.out.exists())
        self.export()
        self.assertIn("5 verified, 0 failed", self.export("--verify")[0])
        copy = self.out / EXPORTED[4]
        times = copy.stat()
        copy.write_bytes(contents_of(4)[:-1] + b"x")
        os.utime(copy, ns=(times.st_atime_ns, times.st_mtime_ns))
        (self.out / EXPORTED[1]).unlink()
        output, errors = self.export("--verify", status=1)
        self.assertIn("3 verified, 2 failed", output)
        self.assertRegex(errors, "Hyper-ballad.mp3: the copy differs")
        self.assertEqual(self.results("--verify", status=1), ["verified", "failed", "verified", "verified", "failed"])

    def test_dry_run_says_what_a_real_one_would_do(self):
        self.export()
        self.music(1).write_bytes(b"remastered")
        (self.out / EXPORTED[2]).unlink()
        self.music(3).unlink()
        tracks = list(TRACKS)
        tracks[4] = ("Björk", "Debut", "Human Behaviour", TRACKS[4][3])
        self.write(tracks)
        before = sorted(str(path) for path in self.out.rglob("*"))
        output, errors = self.export("--dry-run")
        self.assertIn("would replace  " + EXPORTED[1], output)
        self.assertIn("would copy     " + EXPORTED[2], output)
        self.assertIn("would move     " + EXPORTED[4], output)
        self.assertIn("F01/DDDD.wav", errors)
        self.assertRegex(output, r"1 to copy, 1 to replace, 1 to move \(30\.0 kB\), 1 already there, 1 without a file")
        self.assertRegex(output, "free in the folder: enough")
        self.assertEqual(sorted(str(path) for path in self.out.rglob("*")), before)
        actions = [event.get("action") for event in self.events("--dry-run")[1:-1]]
        self.assertEqual(actions, ["keep", "replace", "copy", "none", "keep"])


class Destinations(ExportTest):
    def test_second_export_ends_with_a_message(self):
        self.out.mkdir()
        with_lock = os.open(self.out, os.O_RDONLY)
        self.addCleanup(os.close, with_lock)
        fcntl.flock(with_lock, fcntl.LOCK_EX)
        self.assertIn("another export", self.failure("export", "--from", self.player, self.out))
        fcntl.flock(with_lock, fcntl.LOCK_UN)
        self.assertEqual(self.results(), ["copied"] * 5)

    def test_nothing_planted_is_followed_written_or_emptied(self):
        victim = self.folder / "victim"
        victim.write_text("precious")
        self.out.mkdir()
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        (self.out / "Björk").symlink_to(elsewhere)
        (self.out / "AC_DC" / "Back_ In Black").mkdir(parents=True)
        (self.out / "AC_DC" / "Back_ In Black" / "What_.mp3").symlink_to(victim)
        os.mkfifo(self.out / "AC_DC" / "Back_ In Black" / "What_ (2).mp3")
        (self.out / JOURNAL).symlink_to(victim)
        (self.folder / "huge").mkdir()
        with (self.folder / "huge" / JOURNAL).open("wb") as journal:
            journal.truncate(1 << 40)
        self.run_program("export", "--from", self.player, self.folder / "huge")
        (self.out / ".quaylink-part").symlink_to(victim)
        (self.out / ".quaylink-parts-0").symlink_to(elsewhere)
        (elsewhere / "kept").touch()
        self.assertEqual(self.results(status=1), ["copied"] * 4 + ["failed"])
        self.assertEqual(victim.read_text(), "precious")
        self.assertEqual(os.listdir(elsewhere), ["kept"])
        self.assertEqual((self.out / "AC_DC/Back_ In Black/What_ (3).mp3").read_bytes(), contents_of(1))

    def test_parts_are_private_and_leave_nothing(self):
        os.makedirs(self.out / ".quaylink-parts-00FF")
        (self.out / ".quaylink-parts-00FF" / "part-1").write_text("of a killed run")
        process = self.start("export", "--from", self.player, self.out, stdout=subprocess.DEVNULL)
        modes = set()
        while process.poll() is None:
            for folder in self.out.glob(".quaylink-parts-*"):
                try:
                    modes.add((folder.name, folder.stat().st_mode & 0o777))
                except FileNotFoundError:
                    pass
        process.communicate()
        self.assertLessEqual({mode for name, mode in modes if name != ".quaylink-parts-00FF"}, {0o700})
        self.check_export()

    def test_bad_destination_is_told_once_and_leaves_nothing(self):
        (self.folder / "file").touch()
        for destination in ("file", "file/below", "new/" + "n" * 300 + "/below"):
            with self.subTest(destination=destination):
                self.failure("export", "--from", self.player, self.folder / destination)
        self.assertFalse((self.folder / "new").exists())

    def test_player_is_no_destination_for_its_own_files(self):
        self.write([("A", "Al", "BBBB", location_of("BBBB"))])
        (self.folder / "link").symlink_to(self.player / "iPod_Control")
        for destination in ("player/iPod_Control/Music", "link/Music", "player/IPOD_CONTROL/new"):
            for option in ("--dry-run", "--verify", "--no-playlists"):
                with self.subTest(destination=destination, option=option):
                    self.failure("export", "--from", self.player, self.folder / destination, "--name", "F00/{title}",
                                 option)

    def test_destination_may_be_named_in_any_way(self):
        (self.folder / "real" / "deep").mkdir(parents=True)
        (self.folder / "link").symlink_to(self.folder / "real" / "deep")
        for destination, out in (("plain/", "plain"), ("new/../other", "other"), ("link/../beside", "real/beside"),
                                 ("link", "real/deep"), ("./a//b/.", "a/b")):
            with self.subTest(destination=destination):
                self.run_program("export", "--from", self.player, destination, cwd=self.folder)
                self.out = self.folder / out
                self.check_export()
        self.assertFalse((self.folder / "new").exists())

    def test_room_is_checked_first(self):
        sparse = self.music(0)
        with sparse.open("r+b") as file:
            file.truncate(1 << 43)
        self.addCleanup(lambda: sparse.write_bytes(b""))
        message = self.failure("export", "--from", self.player, self.out)
        self.assertIn("has not enough room", message)
        self.assertFalse(self.out.exists())
        self.assertIn("not enough", self.export("--dry-run")[0])

    def test_refused_bytes_are_no_copy(self):
        self.run_program("export", "--from", self.player, self.out, status=1,
                         preexec_fn=lambda: limit_file_size(30001))
        self.assertEqual(self.exported_files(), sorted(EXPORTED[:2]))


class Names(ExportTest):
    def names_of(self, tracks, properties, *options):
        self.player = self.folder / "named"
        self.machine.fill(self.player, tracks)
        self.write(tracks, properties)
        self.export(*options)
        return self.exported_files()

    def test_default_names(self):
        track = ("Artist", "Album", "Title", ":iPod_Control:Music:F00:T{}.mp3")
        tracks = [track[:3] + (track[3].format(number),) for number in range(5)]
        properties = {0: ({}, [(TRACK_NUMBER, "I", 3)]),
                      1: ({22: "The Group"}, [(TRACK_NUMBER, "I", 12)]),
                      2: ({}, [(COMPILATION, "B", 1), (TRACK_NUMBER, "I", 1)]),
                      3: ({3: "Discs"}, [(TRACK_NUMBER, "I", 4), (DISC_NUMBER, "I", 2)])}
        self.assertEqual(self.names_of(tracks, properties),
                         ["Artist/Album/03 Title.mp3", "Artist/Album/Title.mp3", "Artist/Discs/2-04 Title.mp3",
                          "The Group/Album/12 Title.mp3", "Various Artists/Album/01 Title.mp3"])

    def test_movements_of_a_concerto_keep_their_names(self):
        work = "Concerto for Two Violins, Strings and Basso continuo in D minor " * 5
        ends = ["I. Vivace", "II. Largo ma non tanto", "III. Allegro"]
        tracks = [("Bach", "Concertos", work + end, f":iPod_Control:Music:F00:M{i}.mp3") for i, end in enumerate(ends)]
        names = self.names_of(tracks, {})
        self.assertEqual(len(names), 3)
        for end in ends:
            self.assertTrue(any(name.endswith(end + ".mp3") for name in names), names)
        self.assertTrue(all(200 < len(pathlib.Path(name).name.encode()) <= 255 for name in names), names)

    def test_device_chooses_no_dangerous_kind_of_file(self):
        tracks = [("A", "B", title, f":iPod_Control:Music:F00:{file}") for title, file in
                  (("Photos", "P.scf"), ("desktop", "D.ini"), ("song", "S.exe"), ("film", "F.M4V"), ("plain", "N"))]
        self.assertEqual(self.names_of(tracks, {}),
                         ["A/B/Photos.scf_", "A/B/desktop.ini_", "A/B/film.M4V", "A/B/plain", "A/B/song.exe_"])

    def test_patterns_know_every_property(self):
        tracks = [("Artist", "Album", "Title", ":iPod_Control:Music:F00:T.mp3")]
        properties = {0: ({5: "Jazz"}, [(0x34, "I", 1959)])}
        name = self.names_of(tracks, properties, "--name", "{genre}/{year} {album}[ ({composer})]/[{trackNumber} ]{title}")
        self.assertEqual(name, ["Jazz/1959 Album/Title.mp3"])


class Playlists(ExportTest):
    def lists(self, *playlists):
        self.write(playlists=(master(7), *playlists))

    def test_playlists_come_along(self):
        properties = numbered()
        properties[4][1].append((0x28, "I", 239400))
        lists = (master(7), playlist("Fav/ourites", [104, 100, 104], [(28, "Q", 21)]),
                 playlist("Same", [101], [(28, "Q", 22)]), playlist("Same", [102], [(28, "Q", 23)]))
        self.write(properties=properties, playlists=lists)
        self.export()
        folder = self.out / "Playlists"
        self.assertEqual(sorted(path.name for path in folder.iterdir()),
                         ["Fav_ourites.m3u8", "Same (2).m3u8", "Same.m3u8"])
        self.assertEqual((folder / "Fav_ourites.m3u8").read_text(encoding="utf-8").splitlines(),
                         ["#EXTM3U", "#EXTINF:239,Björk - Hyper-ballad", "../" + EXPORTED[4],
                          "#EXTINF:0,shiosai - 岬の灯へ向かう小さな舟歌", "../" + EXPORTED[0],
                          "#EXTINF:239,Björk - Hyper-ballad", "../" + EXPORTED[4]])
        self.assertIn("../" + EXPORTED[2], (folder / "Same (2).m3u8").read_text(encoding="utf-8"))

    def test_playlists_follow_the_player_and_spare_what_others_wrote(self):
        (self.out / "Playlists").mkdir(parents=True)
        (self.out / "Playlists" / "Mine.m3u8").write_text("by hand")
        self.lists(playlist("Mine", [100], [(28, "Q", 21)]), playlist("Other", [100], [(28, "Q", 22)]))
        self.export()
        self.lists(playlist("Mine", [101], [(28, "Q", 21)]), playlist("Other", [100], [(28, "Q", 22)]))
        events = self.events()
        self.assertEqual([event["file"] for event in events if event["event"] == "playlist"],
                         [str(self.out / "Playlists/Mine (2).m3u8")])
        self.assertEqual((self.out / "Playlists/Mine.m3u8").read_text(), "by hand")
        self.assertIn(EXPORTED[1], (self.out / "Playlists/Mine (2).m3u8").read_text(encoding="utf-8"))

    def test_file_of_a_renamed_playlist_goes_unless_somebody_worked_on_it(self):
        self.lists(playlist("Old", [100], [(28, "Q", 21)]), playlist("Edited", [100], [(28, "Q", 22)]))
        self.export()
        (self.out / "Playlists/Edited.m3u8").write_text("by hand")
        self.lists(playlist("New", [100], [(28, "Q", 21)]), playlist("Else", [100], [(28, "Q", 22)]))
        self.export()
        self.assertCountEqual(os.listdir(self.out / "Playlists"), ["New.m3u8", "Edited.m3u8", "Else.m3u8"])

    def test_playlists_can_be_chosen(self):
        self.lists(playlist("One", [100]), playlist("Two", [101]))
        self.export("--no-playlists")
        self.assertFalse((self.out / "Playlists").exists())
        self.export("--playlist", "two")
        self.assertEqual(os.listdir(self.out / "Playlists"), ["Two.m3u8"])

    def test_playlists_that_have_nothing_of_their_own_get_two_files(self):
        for lists in ((playlist("Same", [100]), playlist("Same", [101])),
                      (playlist("Same", [100], [(28, "Q", 9)]), playlist("Same", [101], [(28, "Q", 9)]))):
            self.lists(*lists)
            for _ in range(2):
                self.export()
                for name, index in (("Same", 0), ("Same (2)", 1)):
                    contents = (self.out / "Playlists" / (name + ".m3u8")).read_text(encoding="utf-8")
                    self.assertIn(EXPORTED[index], contents)
            shutil.rmtree(self.out)


class Sources(ExportTest):
    def test_files_that_the_database_does_not_name_are_told_and_rescued(self):
        orphan = self.player / "iPod_Control/Music/F07/ORPH.mp3"
        orphan.parent.mkdir()
        orphan.write_bytes(b"nobody knows me")
        (orphan.parent / "notes.txt").touch()
        self.assertIn("1 music file is not in the database", self.export()[1])
        self.export("--rescue")
        self.check_export_with("Rescued/F07/ORPH.mp3", b"nobody knows me")
        self.assertEqual(self.results("--rescue"), ["skipped"] * 6)

    def test_rescued_names_that_are_no_text_are_known_again(self):
        for name in (b"\xff.mp3", b"\xfe.mp3", b"new\nline.mp3", b"x" * 251 + b".mp3"):
            pathlib.Path(os.fsdecode(bytes(self.player / "iPod_Control/Music/F00") + b"/" + name)).write_bytes(name)
        self.assertEqual(self.results("--rescue"), ["copied"] * 9)
        self.assertEqual(self.results("--rescue"), ["skipped"] * 9)
        self.assertEqual(self.results("--rescue", "--verify"), ["verified"] * 9)

    def test_few_files_may_be_open(self):
        tracks = [(f"Artist {i}", "Album", "Title", f":iPod_Control:Music:F{i}:AAAA.mp3") for i in range(60)]
        self.player = self.folder / "large"
        self.machine.fill(self.player, tracks)
        names = [f"Artist {i}/Album/Title.mp3" for i in range(60)]

        def limit():
            resource.setrlimit(resource.RLIMIT_NOFILE, (64, 64))
        for result in ("60 copied", "60 already there"):
            output, _ = self.run_program("export", "--from", self.player, self.out, preexec_fn=limit)
            self.assertIn(result, output)
            self.check_export(tracks, names)

    def check_export_with(self, name, contents):
        self.assertEqual((self.out / name).read_bytes(), contents)
        self.assertEqual(self.exported_files(), sorted(EXPORTED + [name]))

    def test_without_a_database_every_music_file_is_rescued(self):
        file = self.player / "iPod_Control/iTunes/iTunesDB"
        for broken in (b"no database at all", None):
            with self.subTest(broken=broken):
                file.write_bytes(broken) if broken else file.unlink()
                self.export(status=1)
                self.export("--rescue", status=1)
                rescued = {path.read_bytes() for path in (self.out / "Rescued").rglob("*.*")}
                self.assertEqual(rescued, {contents_of(number) for number in range(5)})

    def test_players_without_a_database_replace_nothing_of_each_other(self):
        both = []
        for number in (0, 1):
            player = self.folder / f"bare {number}"
            file = player / "iPod_Control/Music/F00/SAME.mp3"
            file.parent.mkdir(parents=True)
            file.write_bytes(contents_of(number))
            os.utime(file, ns=(0, 10 ** 18))
            both.append(player)
        for player in (*both, both[0]):
            self.run_program("export", "--from", player, self.out, "--rescue", status=1)
        rescued = [path.read_bytes() for path in (self.out / "Rescued").rglob("*.mp3")]
        self.assertCountEqual(rescued, [contents_of(0), contents_of(1)])

    def test_copy_keeps_the_time_of_the_file(self):
        os.utime(self.music(0), ns=(0, 1234567890123456789))
        self.export()
        self.assertEqual((self.out / EXPORTED[0]).stat().st_mtime_ns, 1234567890123456789)

    def test_missing_and_empty_files_are_told(self):
        self.music(1).unlink()
        self.music(4).write_bytes(b"")
        errors = self.export(status=1)[1]
        self.assertRegex(errors, "AC/DC - What\\?: .*/iPod_Control/Music/F00/BBBB.mp3")
        self.assertRegex(errors, "Hyper-ballad: its file on the device is empty")
        self.assertNotIn("again", errors)


if __name__ == "__main__":
    unittest.main()
