"""Sample players and phones for the tests of the command-line program, and the running of it."""

import ctypes
import fcntl
import os
import pathlib
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

PROGRAM = os.environ["QUAYLINK_PROGRAM"]
PHONE_LIBRARIES = os.environ["QUAYLINK_PHONE_LIBRARIES"]
MANUAL = pathlib.Path(os.environ["QUAYLINK_MANUAL"])


def documented_messages():
    """The messages of the manual page's table, each with a pattern of the lines that it stands for."""
    section = MANUAL.read_text(encoding="utf-8").split(".SH MESSAGES")[1].split("\n.SH")[0]
    patterns = {}
    for message in re.findall(r"^\.TP\n\.B (.*)$", section, re.MULTILINE):
        message = message.replace("\\-", "-")
        words = r"\b(COMMAND|FILE|FOLDER|NAME|NUMBER|PATTERN|REASON|TRACK)\b"
        pattern = re.sub(words, ".+", re.escape(message))
        little_space = r"( \(only .+ left on the disk of the copy\))?"
        patterns[message] = re.compile(f"quaylink: (.+: )?{pattern}{little_space}")
    return patterns


DOCUMENTED = documented_messages()
# The messages of the table that the program has printed in this run of the tests, and the tests that have run.
SAID = set()
HAVE_RUN = set()


def chunk(tag, header_length, fields, body):
    header = tag + struct.pack("<II", header_length, header_length + len(body)) + fields
    return header.ljust(header_length, b"\0") + body


def string_object(kind, string):
    if kind in (15, 16):
        return chunk(b"mhod", 24, struct.pack("<III", kind, 0, 0), string.encode())
    units = string.encode("utf-16-le")
    body = struct.pack("<IIII", 1, len(units), 1, 0) + units
    return chunk(b"mhod", 24, struct.pack("<III", kind, 0, 0), body)


def with_fields(item, fields):
    """An item with (offset, format, value) fields of its header set."""
    item = bytearray(item)
    for offset, form, value in fields:
        struct.pack_into("<" + form, item, offset, value)
    return bytes(item)


def track_item(track_id, strings, fields=()):
    objects = b"".join(string_object(kind, string) for kind, string in strings.items())
    return with_fields(chunk(b"mhit", 388, struct.pack("<II", len(strings), track_id), objects), fields)


def playlist(name, track_ids, fields=()):
    objects = string_object(1, name) if name else b""
    items = b"".join(with_fields(chunk(b"mhip", 76, b"", b""), [(24, "I", track_id)]) for track_id in track_ids)
    counts = struct.pack("<II", 1 if name else 0, len(track_ids))
    return with_fields(chunk(b"mhyp", 108, counts, objects + items), fields)


FIRST_ID = 100


MASTER = playlist("", [], [(20, "B", 1)])
JOURNAL = ".quaylink-journal"


def database(tracks, properties=None, playlists=(MASTER,)):
    """A music database of (artist, album, title, location) tuples; an empty string is left out.

    Properties may give tracks, by index, more strings and fields."""
    items = b""
    for index, (artist, album, title, location) in enumerate(tracks):
        strings = {1: title, 2: location, 3: album, 4: artist}
        more, fields = (properties or {}).get(index, ({}, ()))
        strings.update(more)
        items += track_item(FIRST_ID + index, {kind: s for kind, s in strings.items() if s}, fields)
    track_list = (b"mhlt" + struct.pack("<II", 92, len(tracks))).ljust(92, b"\0") + items
    lists = (b"mhlp" + struct.pack("<II", 92, len(playlists))).ljust(92, b"\0") + b"".join(playlists)
    data_sets = chunk(b"mhsd", 96, struct.pack("<I", 1), track_list)
    data_sets += chunk(b"mhsd", 96, struct.pack("<I", 2), lists)
    return chunk(b"mhbd", 104, struct.pack("<III", 1, 25, 2), data_sets)


def compressed(whole):
    """The form in which newer players keep a database."""
    length = struct.unpack_from("<I", whole, 4)[0]
    header = bytearray(whole[:length].ljust(244, b"\0"))
    body = zlib.compress(whole[length:])
    struct.pack_into("<II", header, 4, len(header), len(header) + len(body))
    header[0xA8] = 1
    return bytes(header) + body


TRACKS = [
    ("shiosai", "The Day Of The Big Tide", "岬の灯へ向かう小さな舟歌", ":iPod_Control:Music:F00:AAAA.m4a"),
    ("AC/DC", "Back: In Black", "What?", ":iPod_Control:Music:F00:BBBB.mp3"),
    ("AC/DC", "Back: In Black", "What?", ":iPod_Control:Music:F01:CCCC.mp3"),
    ("", "", "", ":iPod_Control:Music:F01:DDDD.wav"),
    ("Björk", "Post", "Hyper-ballad", ":iPod_Control:Music:F01:EEEE.mp3"),
]
EXPORTED = [
    "shiosai/The Day Of The Big Tide/岬の灯へ向かう小さな舟歌.m4a",
    "AC_DC/Back_ In Black/What_.mp3",
    "AC_DC/Back_ In Black/What_ (2).mp3",
    "Unknown Artist/Unknown Album/DDDD.wav",
    "Björk/Post/Hyper-ballad.mp3",
]


def contents_of(number):
    """Audio data that differs from track to track."""
    return bytes((number * 31 + i * i) % 251 for i in range(30000 + number))


class Machine:
    """A machine folder with, at first, nothing but a fixed drive."""

    def __init__(self, folder):
        self.folder = folder
        (folder / "drives" / "C").mkdir(parents=True)

    def attach_player(self, tracks=None, letter="F"):
        tracks = TRACKS if tracks is None else tracks
        (self.folder / "usb" / "VID_05AC&PID_1261" / "000A27001A2B3C4D").mkdir(parents=True)
        self.drive = self.folder / "drives" / letter
        (self.folder / "drives" / "D").mkdir()
        self.fill(self.drive, tracks)
        return self

    def attach_phone(self, tracks=None, script=()):
        (self.folder / "usb" / "VID_05AC&PID_1290" / "0011223344").mkdir(parents=True)
        program_files = self.folder / "drives" / "C" / "Program Files"
        libraries = program_files / "Common Files/Apple/Mobile Device Support/bin"
        libraries.mkdir(parents=True)
        for name in ("CoreFoundation.dll", "iTunesMobileDevice.dll"):
            shutil.copy(pathlib.Path(PHONE_LIBRARIES) / name, libraries)
        self.phone = self.folder / "phone"
        self.fill(self.phone, TRACKS if tracks is None else tracks)
        self.script = self.folder / "phone.script"
        self.script.write_text("\n".join(["folder phone", *script]) + "\n")
        return self

    def fill(self, root, tracks):
        (root / "iPod_Control" / "iTunes").mkdir(parents=True)
        (root / "iPod_Control" / "Music").mkdir()
        (root / "iPod_Control" / "iTunes" / "iTunesDB").write_bytes(database(tracks))
        for number, (_, _, _, location) in enumerate(tracks):
            if location:
                file = root.joinpath(*location.split(":")[1:])
                file.parent.mkdir(exist_ok=True)
                file.write_bytes(contents_of(number))


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="quaylink-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.machine = Machine(self.folder / "machine")
        self.out = self.folder / "out"
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir()

    def tearDown(self):
        HAVE_RUN.add(self.id())
        self.assertEqual(list(self.temporary.iterdir()), [], "a temporary file was left behind")

    def environment(self):
        environment = dict(os.environ, QUAYLINK_MACHINE=str(self.machine.folder),
                           TMPDIR=str(self.temporary), LC_ALL="C.UTF-8")
        if hasattr(self.machine, "script"):
            environment["STAND_IN_PHONE"] = str(self.machine.script)
        return environment

    def start(self, *arguments, **options):
        options.setdefault("env", self.environment())
        options.setdefault("stdout", subprocess.PIPE)
        return subprocess.Popen([PROGRAM, *map(str, arguments)], stderr=subprocess.PIPE, **options)

    def run_program(self, *arguments, status=0, **options):
        """Runs the program to its end and gives back what it printed on its two streams."""
        process = self.start(*arguments, **options)
        output, errors = process.communicate(timeout=60)
        output, errors = (output or b"").decode(errors="surrogateescape"), errors.decode()
        self.assertEqual(process.returncode, status, output + errors)
        for line in errors.splitlines():
            if line.startswith("quaylink: "):
                said = {message for message, pattern in DOCUMENTED.items() if pattern.fullmatch(line)}
                self.assertTrue(said, f"the manual page lacks this: {line}")
                SAID.update(said)
        return output, errors

    def failure(self, *arguments, status=1, **options):
        """The one line that a command says when it fails."""
        output, errors = self.run_program(*arguments, status=status, **options)
        self.assertEqual(output, "")
        self.assertRegex(errors, r"\Aquaylink: [^\n]+\n\Z")
        return errors

    def run_on_terminal(self, *arguments, columns=200, status=0):
        """What the program shows on a terminal."""
        main, terminal = pty.openpty()
        self.addCleanup(os.close, main)
        subprocess.run(["stty", "cols", str(columns)], stdin=terminal, check=True)
        process = subprocess.Popen([PROGRAM, *map(str, arguments)], stdout=terminal, stderr=terminal,
                                   env=self.environment())
        os.close(terminal)
        output = b""
        while select.select([main], [], [], 10)[0]:
            try:
                output += os.read(main, 4096)
            except OSError:
                break
        self.assertEqual(process.wait(), status, output)
        return output.decode()

    def exported_files(self):
        """All but what an export remembers."""
        files = (str(f.relative_to(self.out)) for f in self.out.rglob("*") if not f.is_dir())
        return sorted(file for file in files if file != JOURNAL)

    def check_export(self, tracks=TRACKS, names=None, others=()):
        """Everything exported is there byte for byte, and nothing else but other files of those names."""
        names = EXPORTED if names is None else names
        self.assertEqual(self.exported_files(), sorted([*names, *others]))
        for number, name in enumerate(names):
            self.assertEqual((self.out / name).read_bytes(), contents_of(number), name)


class HeldFile:
    """Holds whoever opens a file until it is let go: the system asks the owner of a lease first."""

    def __init__(self, file):
        # To be asked is no reason to end.
        signal.signal(signal.SIGIO, signal.SIG_IGN)
        self.file = file.open("rb+")
        fcntl.fcntl(self.file, fcntl.F_SETLEASE, fcntl.F_WRLCK)

    def wait_for_reader(self):
        until = time.monotonic() + 30
        while fcntl.fcntl(self.file, fcntl.F_GETLEASE) == fcntl.F_WRLCK:
            if time.monotonic() > until:
                raise TimeoutError("nobody opens the file")
            time.sleep(0.001)

    def let_go(self):
        self.file.close()


class FullPipe:
    """An output that takes nothing until it is read."""

    def __init__(self):
        self.reader, self.writer = os.pipe()
        self.filling = fcntl.fcntl(self.writer, fcntl.F_SETPIPE_SZ, 4096)
        os.write(self.writer, bytes(self.filling))

    def read(self):
        os.close(self.writer)
        with os.fdopen(self.reader, "rb") as pipe:
            return pipe.read()[self.filling:].decode()


def wait_for(file):
    until = time.monotonic() + 30
    while not file.exists():
        if time.monotonic() > until:
            raise TimeoutError(f"{file} is not made")
        time.sleep(0.001)


def limit_file_size(size):
    """For a process to be started: writing a file beyond so many bytes fails."""
    import resource

    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


def obey_permissions():
    """For a process to be started: takes the superuser's leave to read and write every file."""
    PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH = 24, 1, 2
    if os.geteuid() != 0:
        return
    for capability in (CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH):
        if ctypes.CDLL(None).prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0:
            raise OSError("the right to override permissions cannot be dropped")
