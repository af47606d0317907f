"""The program on Windows, under Wine: what owners type there, and what they get to see."""

import os
import pty
import select
import subprocess
import tty
import unittest

from players import PROGRAM, TRACKS, ProgramTest

WINE = os.environ["QUAYLINK_WINE_RUN"]
HOME = r"C:\users\root"


class WindowsTest(ProgramTest):
    """Runs the program in the folder `out`, on a Windows with this test's machine, of code page 1252."""

    def setUp(self):
        super().setUp()
        if subprocess.run([WINE, "--prepare"], check=False).returncode == 77:
            self.skipTest("no Wine runs here")
        self.out.mkdir()

    def command(self, *arguments, program=PROGRAM):
        return [WINE, "--folder", str(self.folder), "--machine", str(self.machine.folder), program,
                *map(str, arguments)]

    def environment(self):
        phone = {"STAND_IN_PHONE": str(self.machine.script)} if hasattr(self.machine, "script") else {}
        return dict(os.environ, **phone)

    def start(self, *arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("env", self.environment())
        return subprocess.Popen(self.command(*arguments), stderr=subprocess.PIPE, cwd=self.folder / "out", **options)

    def refusal(self, *arguments):
        line = self.failure(*arguments, status=2)
        return line.removeprefix("quaylink: the command line is wrong: ").split(";")[0].strip()


class Typed(WindowsTest):
    def test_paths_that_cannot_be_are_explained_before_anything_is_done(self):
        for arguments, words in [
                (["export", r"Q:\Music"], "DEST: there is no drive Q:"),
                (["tracks", r"q:iTunesDB"], "FILE: there is no drive q:"),
                (["export", 'C:\\My Music" --dry-run'], "DEST: the backslash before the quotation mark behind "
                 "C:\\My Music makes the mark a part of the path"),
                (["pull", 'F:\\Notes" x'], "DEVICE_PATH: the backslash before the quotation mark behind F:\\Notes "
                 "makes the mark a part of the path"),
                (["copy-track", "0", r"sub\con"], "DEST: con is the name of a device in Windows"),
                (["export", r"aux\music"], "DEST: aux is the name of a device in Windows"),
                (["tracks", "*.iTunesDB"], "FILE: *.iTunesDB cannot be a path: in none may there be < > | ? * or a "
                 "second colon")]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.refusal(*arguments), words)
        self.assertEqual(self.exported_files(), [])

    def test_paths_of_windows_own_kinds_are_what_they_mean(self):
        self.machine.attach_player()
        self.run_program("copy-database", "trailing. .")
        self.assertEqual(self.exported_files(), ["trailing"])
        output, _ = self.run_program("tracks", "Z:trailing")
        self.assertIn("5 tracks", output)
        output, _ = self.run_program("copy-track", "4", "~\\Music")
        self.assertEqual(output, f"copied  {HOME}\\Music\\Hyper-ballad.mp3\n")
        output, _ = self.run_program("copy-track", "4", "C:song.mp3")
        self.assertEqual(output, "copied  C:\\song.mp3\n")

    def test_destinations_beyond_what_the_library_reaches_are_refused_before_anything_is_copied(self):
        self.machine.attach_phone()
        deep = "\\".join("a" * 130)
        for arguments in (["export", deep], ["copy-track", "4", deep + "\\song.mp3"], ["pull", "/x", deep]):
            with self.subTest(arguments=arguments[0]):
                self.assertIn(": the path is too long", self.failure(*arguments))
        self.assertEqual(list(self.out.iterdir()), [])

    def test_destinations_beyond_the_usual_length_are_filled_from_a_player(self):
        self.machine.attach_player()
        deep = "/".join(["folder"] * 40)
        self.run_program("export", "--name", "{index}", deep.replace("/", "\\"))
        self.out = self.out / deep
        self.check_export(names=["0.m4a", "1.mp3", "2.mp3", "3.wav", "4.mp3"])

    def test_a_slash_and_question_mark_ask_for_help(self):
        self.assertEqual(self.run_program("/?"), self.run_program("--help"))
        self.assertEqual(self.run_program("export", "/?"), self.run_program("export", "--help"))


class Shown(WindowsTest):
    def test_names_of_every_script(self):
        self.machine.attach_player()
        self.out = self.out / "音楽 и ещё"
        self.run_program("export", self.out.name)
        self.check_export()

    def test_comma_separated_values_are_marked_as_utf_8(self):
        self.machine.attach_player()
        output, _ = self.run_program("tracks", "--csv")
        self.assertTrue(output.startswith("\ufeffindex,"))
        self.assertIn(TRACKS[0][2], output)

    def test_a_console_shows_every_script_and_what_to_type_after_a_double_click(self):
        self.machine.attach_player()
        shown = self.on_console("tracks", "--csv")
        self.assertIn(TRACKS[0][2], shown)
        self.assertNotIn("\ufeff", shown)
        shown = self.on_console(keys=b"\r")
        self.assertIn("Press Enter to close this window.", shown)
        # Another program, which started this one, still has the console when it ends.
        shown = self.on_console("/c", "Z:" + PROGRAM.replace("/", "\\"), program="cmd", status=2)
        self.assertIn("a command is missing", shown)

    def on_console(self, *arguments, keys=b"", status=0, **program):
        """What is shown on a console of the program's own, where these keys are pressed when it asks for Enter."""
        controller, terminal = pty.openpty()
        tty.setraw(terminal)
        process = subprocess.Popen(self.command(*arguments, **program), stdin=terminal, stdout=terminal, stderr=terminal,
                                   cwd=self.folder / "out", start_new_session=True)
        self.addCleanup(process.wait)
        os.close(terminal)
        shown = b""
        while select.select([controller], [], [], 30)[0]:
            try:
                piece = os.read(controller, 65536)
            except OSError:  # nobody has it open any more
                break
            shown += piece
            if keys and b"Press Enter" in shown:
                self.assertIsNone(process.poll())
                os.write(controller, keys)
                keys = b""
        os.close(controller)
        self.assertEqual(process.wait(timeout=30), status, shown)
        return shown.decode()


if __name__ == "__main__":
    unittest.main()
