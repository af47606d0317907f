"""What the program tells of a database: every property of tracks, and playlists."""

import csv
import io
import json
import os
import struct
import threading
import unittest

from players import (EXPORTED, FIRST_ID, TRACKS, ProgramTest, compressed, contents_of, database,
                     playlist)

# Of the first track, in the order of the JSON.
WHOLE_TRACK = {
    "index": 0, "id": FIRST_ID, "persistentId": "0A23456789ABCDEF",
    "location": "/iPod_Control/Music/F00/AAAA.m4a", "title": TRACKS[0][2], "artist": "shiosai",
    "album": "The Day Of The Big Tide", "albumArtist": "Various", "genre": "J-Pop",
    "composer": "渚", "comment": "from \"live\",\nremastered", "grouping": "Sea", "description": "A song",
    "fileType": "AAC audio file", "sortTitle": "misaki", "sortArtist": "Shiosai, The",
    "sortAlbum": "Day Of The Big Tide", "podcastUrl": "https://example.org/1.m4a",
    "podcastFeed": "https://example.org/été", "trackNumber": 3, "trackCount": 12, "discNumber": 1,
    "discCount": 2, "year": 2009, "lengthMs": 3723000, "size": 30000, "bitRate": 256,
    "sampleRate": 44100, "bpm": 120, "rating": 80, "playCount": 7, "skipCount": 2, "compilation": True,
    "checked": False, "mediaType": 1, "seasonNumber": 4, "episodeNumber": 5, "bookmarkMs": 61000,
    "added": "2012-09-02T12:39:23", "modified": "1969-12-31T23:59:59", "lastPlayed": "1904-01-01T00:00:01",
    "lastSkipped": "2000-02-29T00:00:00", "released": "2040-02-06T06:28:15"}

STRINGS = {"genre": 5, "fileType": 6, "comment": 8, "composer": 12, "grouping": 13, "description": 14,
           "podcastUrl": 15, "podcastFeed": 16, "albumArtist": 22, "sortArtist": 23, "sortTitle": 27,
           "sortAlbum": 28}
NUMBERS = [(0x1E, "B", 1), (0x1F, "B", 80), (0x20, "I", 2082844799), (0x24, "I", 30000), (0x28, "I", 3723000),
           (0x2C, "I", 3), (0x30, "I", 12), (0x34, "I", 2009), (0x38, "I", 256), (0x3E, "H", 44100), (0x50, "I", 7),
           (0x58, "I", 1), (0x5C, "I", 1), (0x60, "I", 2), (0x68, "I", 3429434363), (0x6C, "I", 61000),
           (0x70, "Q", 0x0A23456789ABCDEF), (0x78, "B", 1), (0x7A, "H", 120), (0x8C, "I", 2**32 - 1),
           (0x9C, "I", 2), (0xA0, "I", 3034627200), (0xD0, "I", 1), (0xD4, "I", 4), (0xD8, "I", 5)]

PROPERTIES = {0: ({number: WHOLE_TRACK[key] for key, number in STRINGS.items()}, NUMBERS),
              1: ({5: "Hard Rock"}, [(0x34, "I", 1980), (0x28, "I", 61000)]),
              2: ({5: "Live Rock"}, [(0x34, "I", 1992), (0x9C, "I", 9)]),
              3: ({5: "Podcast"}, [(0xD0, "I", 6)]),
              4: ({5: "Électronique"}, [(0x34, "I", 1995)])}
PLAYLISTS = (playlist("Mon lecteur", range(FIRST_ID, FIRST_ID + 5), [(0x14, "B", 1), (0x1C, "Q", 0xABC)]),
             playlist("Été", [FIRST_ID + 4, FIRST_ID + 1, FIRST_ID + 4, 7]),
             playlist("Podcasts", [FIRST_ID + 3], [(0x2A, "H", 1)]))


def play_counts(entries):
    """What a player counted: (plays, last played, bookmark, rating, skips, last skipped) for each track."""
    file = (b"mhdp" + struct.pack("<III", 96, 28, len(entries))).ljust(96, b"\0")
    for plays, played, bookmark, rating, skips, skipped in entries:
        file += struct.pack("<7I", plays, played, bookmark, rating, 0, skips, skipped)
    return file


COUNTED = play_counts([(1, 3034627200, 5000, 100, 1, 0), (4, 0, 0, 0, 0, 0)] + [(0,) * 6] * 3)


class Collection(ProgramTest):
    def setUp(self):
        super().setUp()
        self.whole = database(TRACKS, PROPERTIES, PLAYLISTS)
        self.file = self.folder / "copy.iTunesDB"
        self.file.write_bytes(self.whole)

    def listed(self, *arguments, status=0, **options):
        return json.loads(self.run_program("tracks", "--json", *arguments, status=status, **options)[0])

    def test_json_and_csv_tell_every_property(self):
        tracks = self.listed(self.file)
        self.assertEqual(list(tracks[0].items()), list(WHOLE_TRACK.items()))
        nothing = {"title": "", "year": 0, "compilation": False, "checked": True, "added": None,
                   "persistentId": "0" * 16}
        self.assertEqual({key: tracks[3][key] for key in nothing}, nothing)
        text = self.run_program("tracks", self.file, "--csv")[0]
        rows = list(csv.DictReader(io.StringIO(text)))
        self.assertEqual(list(rows[0]), list(WHOLE_TRACK))
        for row, track in zip(rows, tracks, strict=True):
            written = {"True": "true", "False": "false", "None": ""}
            self.assertEqual(row, {key: written.get(str(value), str(value)) for key, value in track.items()})

    def test_table_shows_length_and_the_columns_asked_for(self):
        header, first = self.run_program("tracks", self.file)[0].splitlines()[:2]
        self.assertEqual(header.split(), ["#", "Artist", "Album", "Title", "Length"])
        self.assertTrue(first.endswith(" 1:02:03"), first)
        header, first = self.run_program("tracks", self.file, "--columns", "year,added",
                                         "--columns=persistentId,title")[0].splitlines()[:2]
        self.assertEqual(header.split()[-5:], ["Length", "Year", "Added", "Persistent", "id"])
        self.assertTrue(first.endswith("1:02:03  2009  2012-09-02T12:39:23  0A23456789ABCDEF"), first)

    def test_every_property_can_be_sorted_by(self):
        tracks = self.listed(self.file)
        for key in WHOLE_TRACK:
            values = [track[key] for track in self.listed(self.file, "--sort", key)]
            self.assertCountEqual(values, [track[key] for track in tracks])
            if not isinstance(values[0], str) and values[0] is not None:
                self.assertEqual(values, sorted(values), key)
        self.assertEqual([t["index"] for t in self.listed(self.file, "--sort", "genre")], [4, 1, 0, 2, 3])
        self.assertEqual([t["index"] for t in self.listed(self.file, "--sort", "year", "--reverse")], [0, 4, 2, 1, 3])

    def test_filters_must_all_hold(self):
        for options, indices in [(["--genre", "rock"], [1, 2]), (["--genre", "ROCK", "--genre", "live"], [2]),
                                 (["--genre", "electronique"], [4]), (["--genre", "E\u0301lectro"], [4]),
                                 (["--artist", "bjork"], [4]), (["--match", "bjo\u0308rk"], [4]),
                                 (["--year", "1980"], [1]), (["--year", "1990-1999"], [2, 4]),
                                 (["--year", "1990-1999", "--year", "1980-1992"], [2]),
                                 (["--kind", "audio"], [0, 1, 2, 4]), (["--kind", "podcast"], [3]),
                                 (["--kind", "podcast", "--kind", "video"], [3]), (["--kind", "audiobook"], []),
                                 (["--playlist", "ete"], [1, 4]),
                                 (["--playlist", "ete", "--playlist", "mon lecteur"], [1, 4]),
                                 (["--playlist", "ete", "--year", "1980"], [1]),
                                 (["--playlist", "podcasts", "--playlist", "ete"], [])]:
            self.assertEqual([track["index"] for track in self.listed(self.file, *options)], indices, options)

    def test_playlists_are_listed_in_the_order_of_the_file(self):
        lists = json.loads(self.run_program("playlists", self.file, "--json")[0])
        self.assertEqual([list(entry.items()) for entry in lists],
                         [list({"name": name, "kind": kind, "persistentId": number, "tracks": tracks}.items())
                          for name, kind, number, tracks in [
                              ("Mon lecteur", "master", "0000000000000ABC", [0, 1, 2, 3, 4]),
                              ("Été", "ordinary", "0" * 16, [4, 1, 4]), ("Podcasts", "podcasts", "0" * 16, [3])]])
        table = self.run_program("playlists", self.file)[0].splitlines()
        self.assertEqual(table[0].split(), ["Name", "Kind", "Tracks", "Length"])
        self.assertEqual(table[2].split(), ["Été", "ordinary", "3", "1:01"])
        self.assertEqual(table[-1], "3 playlists")

    def test_database_comes_through_a_pipe(self):
        expected = self.listed(self.file)
        with self.file.open("rb") as file:
            self.assertEqual(self.listed("-", stdin=file), expected)
        reader, writer = os.pipe()
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)

        def feed(name):
            # Piece by piece, so that it cannot be there as a whole.
            with open(name, "wb", buffering=0) as stream:
                for begin in range(0, len(self.whole), 700):
                    stream.write(self.whole[begin:begin + 700])
        for name, options in ((pipe, {}), ("-", {"stdin": reader})):
            thread = threading.Thread(target=feed, args=(pipe if name == pipe else writer,))
            thread.start()
            self.assertEqual(self.listed(name, **options), expected)
            thread.join()
        os.close(reader)

    def test_play_counts_beside_a_database_are_taken_in(self):
        (self.folder / "Play Counts").write_bytes(COUNTED)
        first, second = self.listed(self.file)[:2]
        self.assertEqual([first[key] for key in ("playCount", "lastPlayed", "bookmarkMs", "rating", "skipCount")],
                         [8, "2000-02-29T00:00:00", 5000, 100, 3])
        self.assertEqual(second["playCount"], 4)
        (self.folder / "Play Counts").write_bytes(play_counts([(1,) * 6]))
        output, errors = self.run_program("tracks", self.file, "--json")
        self.assertEqual(json.loads(output)[1]["playCount"], 0)
        self.assertIn("the play counts beside it are broken or belong to another database", errors)

    def test_cut_database_gives_the_tracks_before_the_cut(self):
        tracks = self.listed(self.file)
        last = 0
        for end in range(400, len(self.whole), 300):
            self.file.write_bytes(self.whole[:end])
            output, errors = self.run_program("tracks", self.file, "--json", status=1)
            some = json.loads(output)
            self.assertEqual(some, tracks[:len(some)])
            self.assertGreaterEqual(len(some), last)
            last = len(some)
            self.assertEqual(errors, f"quaylink: {self.file}: is damaged, or was not copied whole; "
                                     f"{last} of its tracks could be read\n")
        self.assertEqual(last, len(TRACKS))
        self.assertIn("byte", self.run_program("tracks", self.file, "-v", status=1)[1])


class Devices(ProgramTest):
    """The same on devices, whose files are fetched."""

    def database_folder(self, road):
        getattr(self.machine, "attach_" + road)()
        root = self.machine.drive if road == "player" else self.machine.phone
        return root / "iPod_Control" / "iTunes"

    def check_play_counts(self, road):
        (self.database_folder(road) / "Play Counts").write_bytes(COUNTED)
        tracks = json.loads(self.run_program("tracks", "--json")[0])
        self.assertEqual([(track["playCount"], track["rating"]) for track in tracks[:3]], [(1, 100), (4, 0), (0, 0)])

    def test_play_counts_of_a_player(self):
        self.check_play_counts("player")

    def test_play_counts_of_a_phone(self):
        self.check_play_counts("phone")

    def check_compressed(self, road):
        folder = self.database_folder(road)
        (folder / "iTunesDB").write_bytes(b"")
        (folder / "iTunesCDB").write_bytes(compressed(database(TRACKS, PROPERTIES, PLAYLISTS)))
        self.run_program("export", self.out)
        # Here the first track has an album artist, and numbers of its own and of its disc.
        first = "Various/The Day Of The Big Tide/1-03 岬の灯へ向かう小さな舟歌.m4a"
        self.check_export(names=[first, *EXPORTED[1:]], others=["Playlists/Podcasts.m3u8", "Playlists/Été.m3u8"])
        self.assertIn("3 playlists", self.run_program("playlists")[0])

    def test_compressed_database_of_a_player(self):
        self.check_compressed("player")

    def test_compressed_database_of_a_phone(self):
        self.check_compressed("phone")

    def check_damaged(self, road):
        folder = self.database_folder(road)
        whole = (folder / "iTunesDB").read_bytes()
        # In the midst of the fourth track.
        (folder / "iTunesDB").write_bytes(whole[:whole.rindex(b"mhit", 0, whole.rindex(b"mhit")) + 50])
        output, errors = self.run_program("export", self.out, status=1)
        self.assertIn("3 copied", output)
        self.assertEqual(errors, "quaylink: the device's music database: is damaged, or was not copied whole; "
                                 "3 of its tracks could be read\n"
                                 "2 music files are not in the database; --rescue exports them, too.\n")
        self.assertEqual(self.exported_files(), sorted(EXPORTED[:3]))
        for number in range(3):
            self.assertEqual((self.out / EXPORTED[number]).read_bytes(), contents_of(number))
        location = r"F:\iPod_Control\Music\F00\BBBB.mp3" if road == "player" else "/iPod_Control/Music/F00/BBBB.mp3"
        tracks = json.loads(self.run_program("tracks", "--json", status=1)[0])
        self.assertEqual(tracks[1]["location"], location)

    def test_damaged_database_of_a_player(self):
        self.check_damaged("player")

    def test_damaged_database_of_a_phone(self):
        self.check_damaged("phone")

    def test_export_takes_the_filters(self):
        folder = self.database_folder("player")
        (folder / "iTunesDB").write_bytes(database(TRACKS, PROPERTIES, PLAYLISTS))
        self.run_program("export", self.out, "--playlist", "ete", "--genre", "electronique")
        self.assertEqual(self.exported_files(), sorted(EXPORTED[4:] + ["Playlists/Été.m3u8"]))


if __name__ == "__main__":
    unittest.main()
