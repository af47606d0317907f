"""What the program shows people: nothing that would steer their terminal, wherever it comes from."""

import csv
import io
import json
import unittest

from players import EXPORTED, TRACKS, ProgramTest, database, playlist

# Clears the screen, three times; sets the window's title; turns the direction of writing.
EVIL = "\x1b[2J\x9b2J\x7f\x85\x1b]0;gone\x07\u202egpj\u2028"
CONTROLS = set(EVIL) - set("[2J]0;gonegpj")


class Terminal(ProgramTest):
    def check_harmless(self, text, *about):
        found = CONTROLS & set(text.replace("\x1b[1;31mquaylink:\x1b[0m ", "quaylink: "))
        self.assertEqual(found, set(), (about, text))

    def test_arguments_are_not_said_raw(self):
        self.machine.attach_player()
        file = self.folder / "copy"
        file.write_bytes(database(TRACKS))
        (self.folder / f"no {EVIL}").mkdir()
        for arguments, status in [
                (["export", self.out, "--name", EVIL + "{titel}"], 2), (["export", self.out, "--name", f"{{{EVIL}}}"], 2),
                (["tracks", file, "--playlist", EVIL], 1), (["tracks", file, "--sort", EVIL], 2),
                (["tracks", file, "--columns", EVIL], 2), (["tracks", file, "--year", EVIL], 2),
                (["tracks", file, "--kind", EVIL], 2), (["tracks", "--" + EVIL], 2), ([EVIL], 2), (["status", EVIL], 2),
                (["tracks", EVIL], 1), (["tracks", self.folder / f"no {EVIL}"], 1), (["tracks", "--from", EVIL], 1),
                (["export", "--from", EVIL, self.out], 1), (["export", file / EVIL], 1),
                (["copy-track", EVIL, "x"], 2), (["copy-track", 9, EVIL], 1), (["pull", EVIL, "x"], 1),
                (["pull", "/" + EVIL, "x"], 1), (["copy-database", self.folder / EVIL / "x"], 1)]:
            self.check_harmless(self.failure(*arguments, status=status), *arguments)
            self.check_harmless(self.run_on_terminal(*arguments, status=status), *arguments)

    def test_strings_of_a_device_are_shown_harmless_and_piped_whole(self):
        tracks = [(EVIL, EVIL, EVIL, ":iPod_Control:Music:F00:AAAA.mp3")]
        file = self.folder / "copy"
        file.write_bytes(database(tracks, playlists=(playlist("", [], [(20, "B", 1)]), playlist(EVIL, [100]))))
        for arguments in (["tracks", file, "--csv"], ["tracks", file, "--json"], ["tracks", file],
                          ["playlists", file], ["playlists", file, "--json"]):
            shown = self.run_on_terminal(*arguments)
            self.assertIn("gone", shown)
            self.check_harmless(shown, *arguments)
        rows = csv.DictReader(io.StringIO(self.run_program("tracks", file, "--csv")[0], newline=""))
        self.assertEqual([row["title"] for row in rows], [EVIL])
        self.assertEqual(json.loads(self.run_program("tracks", file, "--json")[0])[0]["title"], EVIL)
        self.assertEqual(json.loads(self.run_program("playlists", file, "--json")[0])[1]["name"], EVIL)

    def test_names_on_a_phone_are_shown_harmless(self):
        self.machine.attach_phone()
        (self.machine.phone / EVIL).write_bytes(b"picture")
        for options in ([], ["--json"]):
            shown = self.run_on_terminal("files", *options)
            self.assertIn("gone", shown)
            # The notice of the connection under way is drawn over.
            self.check_harmless(shown, *options)
        self.assertIn(f"/{EVIL}\n", self.run_program("files")[0])

    def test_names_in_a_journal_are_not_shown_raw(self):
        player = self.folder / "player"
        self.machine.fill(player, TRACKS)
        self.run_program("export", "--from", player, self.out)
        journal = self.out / ".quaylink-journal"
        name = f'"name":"{EXPORTED[4]}'
        journal.write_text(journal.read_text(encoding="utf-8").replace(name, name + json.dumps(EVIL)[1:-1]), encoding="utf-8")
        for options in (["--dry-run"], []):
            output = self.run_program("export", "-v", "--from", player, self.out, *options)[0]
            self.assertIn("gone", output)
            self.check_harmless(output, *options)


if __name__ == "__main__":
    unittest.main()
