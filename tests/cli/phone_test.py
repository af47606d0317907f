"""The program with a phone."""

import json
import os
import signal
import unittest

from players import EXPORTED, TRACKS, HeldFile, ProgramTest, contents_of, database, limit_file_size, playlist


class Phone(ProgramTest):
    def attach(self, *script):
        self.machine.attach_phone(script=(*script, "log log"))

    def calls(self, name):
        log = (self.machine.folder / "log").read_text().splitlines()
        return [line for line in log if name in line]

    def test_status_tells_whether_it_answers(self):
        self.attach()
        self.assertIn("A phone is attached and answers", self.run_program("status")[0])
        self.assertEqual(json.loads(self.run_program("status", "--json")[0])["kind"], "phone")
        self.machine.script.write_text("announce never\n")
        self.assertIn("the phone does not answer", self.failure("status"))
        self.assertEqual(json.loads(self.run_program("status", "--json", status=1)[0]),
                         {"attached": True, "reachable": False, "kind": "phone"})

    def test_files_are_listed_and_pulled(self):
        self.attach()
        strange = self.machine.phone / "DCIM" / "naïve \u202e name.jpg"
        strange.parent.mkdir()
        strange.write_bytes(b"picture")
        lines = self.run_program("files")[0].splitlines()
        self.assertIn("/DCIM/" + strange.name, lines)
        self.assertIn("/iPod_Control/iTunes/iTunesDB", lines)
        self.assertEqual(len(lines), 7)
        self.assertEqual(sorted(json.loads(self.run_program("files", "--json")[0])), sorted(lines))
        self.out.mkdir()
        self.run_program("pull", "/DCIM/" + strange.name, self.out)
        self.run_program("pull", "/iPod_Control/Music/F00/BBBB.mp3", self.out / "b.mp3")
        self.assertEqual((self.out / "b.mp3").read_bytes(), contents_of(1))
        self.assertEqual((self.out / "naïve _ name.jpg").read_bytes(), b"picture")

    def pictures(self, *names):
        for number, name in enumerate(names):
            file = self.machine.phone / "DCIM" / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(contents_of(10 + number))
        return {"DCIM/" + name: contents_of(10 + number) for number, name in enumerate(names)}

    def pulled(self):
        return {name: (self.out / name).read_bytes() for name in self.exported_files()}

    def test_folder_is_pulled_with_its_tree(self):
        self.attach()
        pictures = self.pictures("100APPLE/IMG_0001.JPG", "101APPLE/IMG_0001.JPG", "b.jpg", "deep/er/c.mov")
        (self.machine.phone / "DCIM2").mkdir()
        (self.machine.phone / "DCIM2" / "other.jpg").write_bytes(b"not below it")
        self.assertIn("4 copied", self.run_program("pull", "/DCIM", self.out)[0])
        self.assertEqual(self.pulled(), pictures)
        # A part of the tree has the same place.
        for path in ("/DCIM/100APPLE", "/DCIM/100APPLE/", "/DCIM/"):
            self.assertIn("0 copied", self.run_program("pull", path, self.out)[0], path)
        self.assertEqual(self.pulled(), pictures)
        self.assertIn("1 copied", self.run_program("pull", "/DCIM2", self.folder / "other")[0])

    def test_folder_that_was_pulled_in_part_is_finished(self):
        self.attach()
        self.identify("Phone", 0xABC)
        pictures = self.pictures("a.jpg", "b.jpg", "c.jpg")
        self.run_program("pull", "/DCIM", self.out)
        (self.out / "DCIM/b.jpg").unlink()
        (self.machine.folder / "log").unlink()
        self.assertIn("1 copied (30.0 kB), 2 already there", self.run_program("pull", "/DCIM", self.out)[0])
        self.assertEqual(self.pulled(), pictures)
        fetched = [line for line in self.calls("AFCFileRefOpen") if "/DCIM/" in line]
        self.assertEqual(len(fetched), 1, fetched)

    def identify(self, name, persistent_id):
        (self.machine.phone / "iPod_Control/iTunes/iTunesDB").write_bytes(
            database(TRACKS, playlists=(playlist(name, [], [(0x14, "B", 1), (0x1C, "Q", persistent_id)]),)))

    def test_pictures_of_another_phone_are_not_taken_for_those_that_are_there(self):
        self.attach()
        for persistent_ids in ((1, 2), (0, 0)):
            with self.subTest(persistent_ids):
                self.out = self.folder / f"out {persistent_ids}"
                self.identify("Phone", persistent_ids[0])
                first = self.pictures("IMG_0001.JPG")
                self.run_program("pull", "/DCIM", self.out)
                self.identify("Phone", persistent_ids[1])
                (self.machine.phone / "DCIM/IMG_0001.JPG").write_bytes(contents_of(20))
                self.assertIn("1 copied", self.run_program("pull", "/DCIM", self.out)[0])
                self.assertEqual(sorted(self.pulled().values()), sorted([*first.values(), contents_of(20)]))

    def test_export_copies_everything_over_one_connection(self):
        self.attach()
        listed = json.loads(self.run_program("tracks", "--json")[0])
        self.assertEqual(listed[1]["location"], "/iPod_Control/Music/F00/BBBB.mp3")
        (self.machine.folder / "log").unlink()
        self.run_program("export", self.out)
        self.check_export()
        # One for the database, one for all tracks.
        self.assertEqual(len(self.calls("AFCConnectionOpen")), 2)
        self.assertEqual(len(self.calls("AFCConnectionClose")), 2)
        self.assertIn("5 already there", self.run_program("export", self.out)[0])

    def test_pulls_to_the_same_file_do_not_meet(self):
        self.attach()
        self.pictures("a.jpg", "b.jpg")
        self.out.mkdir()
        held = HeldFile(self.machine.phone / "DCIM/a.jpg")
        process = self.start("pull", "/DCIM/a.jpg", self.out / "picture")
        held.wait_for_reader()
        self.run_program("pull", "/DCIM/b.jpg", self.out / "picture")
        self.assertEqual((self.out / "picture").read_bytes(), contents_of(11))
        held.let_go()
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(self.pulled(), {"picture": contents_of(10)})

    def test_failed_copy_is_told_and_the_rest_goes_on(self):
        self.machine.attach_phone(script=["fail AFCFileRefRead 3"])
        (self.machine.phone / "iPod_Control/Music/F01/DDDD.wav").write_bytes(b"")
        output, errors = self.run_program("export", self.out, status=1)
        self.assertIn("3 copied", output)
        self.assertIn("2 failed", output)
        self.assertEqual(errors.count("could not be read"), 2)
        self.assertEqual(len(self.exported_files()), 3)
        (self.machine.phone / "iPod_Control/Music/F01/DDDD.wav").write_bytes(contents_of(3))
        self.machine.script.write_text("folder phone\n")
        self.run_program("export", self.out)
        self.check_export()

    def test_copy_that_the_disk_cut_short_is_not_called_good(self):
        self.attach()
        # The database fits, a track does not; the library itself notices nothing.
        output, errors = self.run_program("export", self.out, status=1, restore_signals=False,
                                          preexec_fn=lambda: limit_file_size(29000))
        self.assertIn("0 copied", output)
        self.assertIn("5 failed", output)
        self.assertIn("File too large", errors)
        self.assertEqual(self.exported_files(), [])

    def test_first_interrupt_finishes_the_copy_under_way(self):
        self.attach()
        held = HeldFile(self.machine.phone / "iPod_Control/Music/F00/BBBB.mp3")
        process = self.start("export", self.out)
        held.wait_for_reader()
        process.send_signal(signal.SIGINT)
        held.let_go()
        output, errors = (text.decode() for text in process.communicate(timeout=60))
        self.assertEqual(process.returncode, 130)
        self.assertIn("2 copied (60.0 kB), 0 already there, 0 failed, 3 not reached", output)
        self.assertEqual(errors, "Finishing what is under way; press Ctrl-C again to stop at once.\n"
                         "Interrupted. Run the same command again to copy the rest.\n")
        self.assertEqual(self.exported_files(), sorted(EXPORTED[:2]))
        self.assertIn("3 copied", self.run_program("export", self.out)[0])
        self.check_export()


@unittest.skipIf("thread" in os.environ["QUAYLINK_SANITIZE"],
                 "the thread sanitizer holds signals back while a copy is blocked")
class InterruptAtOnce(ProgramTest):
    def test_second_ends_an_export_at_once_and_the_next_run_cleans_up(self):
        self.machine.attach_phone()
        held = HeldFile(self.machine.phone / "iPod_Control/Music/F00/BBBB.mp3")
        process = self.start("export", self.out)
        held.wait_for_reader()
        process.send_signal(signal.SIGINT)
        # The two signals must not become one.
        process.stderr.readline()
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        held.let_go()
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual([file for file in self.exported_files() if "/part-" not in file], EXPORTED[:1])
        self.run_program("export", self.out)
        self.check_export()

    def test_pull_of_a_file_ends_at_the_first_and_leaves_nothing(self):
        self.machine.attach_phone()
        self.out.mkdir()
        (self.out / "song").write_bytes(b"mine")
        held = HeldFile(self.machine.phone / "iPod_Control/Music/F00/BBBB.mp3")
        process = self.start("pull", "/iPod_Control/Music/F00/BBBB.mp3", self.out / "song")
        held.wait_for_reader()
        self.assertEqual(len(self.exported_files()), 2)
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        held.let_go()
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual(self.exported_files(), ["song"])
        self.assertEqual((self.out / "song").read_bytes(), b"mine")


if __name__ == "__main__":
    unittest.main()
