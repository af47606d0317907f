"""Exports that are killed again and again, into a folder and from a player that change in between."""

import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time

PROJECT = pathlib.Path(__file__).resolve().parent.parent
JOURNAL = ".quaylink-journal"
PARTS = ".quaylink-parts-"
PLAYLIST = re.compile(rb"#EXTM3U\n(#EXTINF:[^\n]*\n\.\./[^\n]+\n)*")
PERSISTENT_ID = 0x70


def load_players(build):
    """What the tests of the program make players with."""
    os.environ["QUAYLINK_PROGRAM"] = str(build / "quaylink")
    os.environ["QUAYLINK_MANUAL"] = str(PROJECT / "docs/quaylink.1")
    os.environ["QUAYLINK_PHONE_LIBRARIES"] = str(build / "samples/stand_in_phone/libraries")
    sys.path.insert(0, str(PROJECT / "tests/cli"))
    import players

    return players


def is_whole_by_itself(path):
    """Whether a file that the program writes besides the copies is whole. A journal's last line may be cut."""
    contents = path.read_bytes()
    if path.name != JOURNAL:
        return PLAYLIST.fullmatch(contents) is not None
    lines = contents.split(b"\n")[:-1]
    try:
        return bool(lines) and all(isinstance(json.loads(line), dict) for line in lines)
    except ValueError:
        return False


class Player:
    """A player whose music comes and goes."""

    PLAYER_NUMBER, LIST_NUMBER = 7, 21

    def __init__(self, folder, players):
        self.players = players
        self.machine = players.Machine(folder).attach_player([])
        self.tracks, self.ever, self.count = [], set(), 0
        for _ in range(random.randint(20, 40)):
            self.add()
        self.write_database()

    def file_of(self, track):
        return self.machine.drive.joinpath(*track["location"].split(":")[1:])

    def fill(self, track, contents=None):
        self.count += 1
        if contents is None:
            contents = random.randbytes(random.choice((10, 3000, 40000, 40000, 300000, 2000000)) + self.count)
        track["contents"] = contents
        self.ever.add(contents)
        file = self.file_of(track)
        file.parent.mkdir(exist_ok=True)
        file.write_bytes(contents)
        # Each time is another one, however coarse the clock of the file system is.
        os.utime(file, (1.4e9 + self.count, 1.4e9 + self.count))

    def tag(self, track):
        """Few tags, so that many tracks want the same name."""
        tags = (f"Artist {random.randint(1, 3)}", f"Album {random.randint(1, 3)}", f"Title {random.randint(1, 8)}")
        # Tags that come back need not bring the name back.
        track["taggings"] = track.get("taggings", 0) + (tags != track.get("tags"))
        track["tags"] = tags

    def add(self, tags=None, location=None):
        self.count += 1
        track = {"id": 0x1000 + self.count,
                 "location": location or f":iPod_Control:Music:F{self.count % 5:02}:T{self.count}.mp3"}
        self.tag(track)
        track["tags"] = tags or track["tags"]
        self.fill(track)
        self.tracks.insert(random.randint(0, len(self.tracks)), track)
        return track

    def remove(self, track):
        self.tracks.remove(track)
        self.file_of(track).unlink()

    def exchange(self, track):
        """For another recording with the same tags, at another place or at the same one."""
        self.remove(track)
        self.add(track["tags"], track["location"] if random.random() < 0.3 else None)

    def change_bytes(self, track):
        contents = track["contents"]
        self.fill(track, random.choice((contents + b"longer", contents[:len(contents) // 2] + b"shorter",
                                        contents[:-1] + bytes([contents[-1] ^ 1]), None)))

    def write_database(self):
        tracks = [(*track["tags"], track["location"]) for track in self.tracks]
        properties = {i: ({}, [(PERSISTENT_ID, "Q", track["id"])]) for i, track in enumerate(self.tracks)}
        first = self.players.FIRST_ID
        lists = [self.players.playlist("Player", [], [(20, "B", 1), (28, "Q", self.PLAYER_NUMBER)]),
                 self.players.playlist("List", list(range(first, first + len(tracks), 2)),
                                       [(28, "Q", self.LIST_NUMBER)])]
        file = self.machine.drive / "iPod_Control/iTunes/iTunesDB"
        file.write_bytes(self.players.database(tracks, properties, lists))

    def listed(self):
        return self.tracks[::2]

    def change(self):
        for _ in range(random.randint(1, 4)):
            if len(self.tracks) < 15:
                self.add()
                continue
            track = random.choice(self.tracks)
            random.choice((self.add, self.add, lambda track=track: self.remove(track),
                           lambda track=track: self.exchange(track), lambda track=track: self.tag(track),
                           lambda track=track: self.tag(track), lambda track=track: self.change_bytes(track),
                           lambda track=track: self.change_bytes(track)))()
        self.write_database()


class Exports:
    """One player and one folder, and all that has happened to them."""

    def __init__(self, work, build, players, found):
        shutil.rmtree(work, ignore_errors=True)
        self.build, self.found = build, found
        self.player = Player(work / "machine", players)
        self.out, self.temporary, self.events = work / "out", work / "temporary", work / "events"
        self.temporary.mkdir()
        self.environment = dict(os.environ, QUAYLINK_MACHINE=str(self.player.machine.folder),
                                TMPDIR=str(self.temporary))
        self.foreign = {}     # what this script has put into the folder, by name: never to be changed
        self.damaged = set()  # what it has left of copies
        self.names = {}       # of the copies, by the tracks' ids, as the journal tells them
        self.usual, self.runs = 0.2, 0

    # --- Running -------------------------------------------------------------------------------------------------

    def reads_folder(self):
        return self.runs % 2 == 1

    def start(self, *options):
        self.runs += 1
        source = ("--from", self.player.machine.drive) if self.reads_folder() else ()
        with self.events.open("wb") as output:
            return subprocess.Popen([self.build / "quaylink", "export", "--json", *source, self.out, *options],
                                    env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                                    stderr=subprocess.PIPE)

    def kill_one(self):
        """Whether a run was still under way at a random moment. One that had ended is checked as such."""
        begin = time.monotonic()
        process = self.start()
        try:
            process.wait(random.uniform(0, self.usual))
        except subprocess.TimeoutExpired:
            process.kill()
        _, errors = process.communicate()
        if process.returncode == -signal.SIGKILL:
            self.check_files("after a kill")
            return True
        self.usual = 0.8 * self.usual + 0.2 * (time.monotonic() - begin)
        self.check_run(process.returncode, errors)
        return False

    def run_undisturbed(self):
        begin = time.monotonic()
        process = self.start()
        _, errors = process.communicate()
        self.usual = 0.8 * self.usual + 0.2 * (time.monotonic() - begin)
        self.check_run(process.returncode, errors)

    def verify(self):
        process = self.start("--verify")
        _, errors = process.communicate()
        end = json.loads(self.events.read_text().splitlines()[-1])
        if process.returncode != 0 or end.get("verified") != len(self.player.tracks):
            self.fault(f"--verify does not agree: {end} {errors.decode()}")

    # --- Others' work --------------------------------------------------------------------------------------------

    def change_folder(self):
        """Cuts, empties, deletes and edits copies, and puts files of others in the way."""
        names = self.journal()
        copied = [track for track in self.player.tracks if (self.out / names.get(track["id"], "none")).is_file()]
        for track in random.sample(copied, min(random.randint(0, 2), len(copied))):
            name = names[track["id"]]
            copy = self.out / name
            contents = copy.read_bytes()
            if name in self.foreign or contents in self.damaged:
                continue
            what = random.choice(("cut", "empty", "delete", "zeros", "edit", "edit"))
            if what == "delete":
                copy.unlink()
            elif what == "edit":
                self.foreign[name] = random.choice((b"new tags" + contents, b"X" + contents[1:-1] + b"Y",
                                                    b"shorter" + bytes([len(self.foreign) % 256])))
                copy.write_bytes(self.foreign[name])
                # Another name is right for the track now.
                self.names.pop(track["id"], None)
                if random.random() < 0.3:
                    self.player.tag(track)
                    self.player.write_database()
            else:
                left = contents[:len(contents) // 3] if what != "empty" else b""
                left += bytes(len(contents) - len(left)) if what == "zeros" else b""
                self.damaged.add(left)
                track["damaged"] = contents
                copy.write_bytes(left)
        if random.random() < 0.3:
            self.put_in_the_way()

    def put_in_the_way(self):
        track = self.player.add()
        self.player.write_database()
        artist, album, title = track["tags"]
        name = f"{artist}/{album}/{title}{random.choice(('', ' (2)', ' (3)'))}.mp3"
        file = self.out / name
        if file.exists() or name in self.journal().values():
            return
        file.parent.mkdir(parents=True, exist_ok=True)
        size = len(track["contents"])
        self.foreign[name] = random.choice((bytes(size), b"", track["contents"][:-1] + b"?", b"a song of mine"))
        file.write_bytes(self.foreign[name])

    # --- Checking ------------------------------------------------------------------------------------------------

    def fault(self, what):
        self.found.append(f"run {self.runs}: {what}")

    def journal(self):
        """The names of copies by the ids of their tracks."""
        file = self.out / JOURNAL
        names = {}
        for line in file.read_bytes().split(b"\n")[:-1] if file.exists() else []:
            record = json.loads(line)
            if "item" in record and not record["item"].startswith("playlist "):
                names[int(record["item"], 16)] = record["name"]
        return names

    def check_files(self, when):
        """What must hold at every moment."""
        for path in self.out.rglob("*"):
            name = str(path.relative_to(self.out))
            if not path.is_file() or name.startswith(PARTS):
                continue
            if name == JOURNAL or name.startswith("Playlists/"):
                if not is_whole_by_itself(path):
                    self.fault(f"{name} is not whole {when}")
            elif name not in self.foreign and path.read_bytes() not in self.player.ever | self.damaged:
                self.fault(f"{name} is not whole {when}")
        for name, contents in self.foreign.items():
            file = self.out / name
            if not file.is_file() or file.read_bytes() != contents:
                self.fault(f"{name} was somebody's, and has changed or gone {when}")

    def check_run(self, status, errors):
        """What must hold after a run that was not disturbed."""
        if status != 0:
            self.fault(f"an export ends with {status}: {errors.decode()}")
            return
        self.check_files("after a run")
        left = list(self.out.glob(PARTS + "*"))
        # Only the road to an attached player makes temporary files.
        if not self.reads_folder():
            left += self.temporary.iterdir()
        if left:
            self.fault(f"{[path.name for path in left]} is left")
        told = {}
        for event in map(json.loads, self.events.read_text().splitlines()):
            if event["event"] == "track":
                told[event["location"].split(":")[-1].replace("\\", "/").split("/")[-1]] = event["file"]
        names = self.journal()
        mine = [names.get(track["id"]) for track in self.player.tracks]
        if len(set(mine)) != len(mine):
            self.fault("two tracks share a name")
        for track, name in zip(self.player.tracks, mine):
            title = f"{track['id']:X} {'/'.join(track['tags'])}"
            if not name or not (self.out / name).is_file():
                self.fault(f"{title} has no copy")
            elif (self.out / name).read_bytes() != track["contents"]:
                self.fault(f"{name} does not hold what {title} is")
            if told.get(self.player.file_of(track).name) != str(self.out / str(name)):
                self.fault(f"{title} is told to be {told.get(self.player.file_of(track).name)}, but is {name}")
            before, taggings = self.names.get(track["id"], (name, 0))
            # What is left of an earlier recording's copy cannot be told from somebody's work.
            is_known = track.pop("damaged", track["contents"]) == track["contents"]
            if is_known and taggings == track["taggings"] and before != name:
                self.fault(f"{title} was {before}, and is {name} now")
            self.names[track["id"]] = (name, track["taggings"])
        self.check_list(names)

    def check_list(self, names):
        expected = "#EXTM3U\n"
        for track in self.player.listed():
            artist, _, title = track["tags"]
            expected += f"#EXTINF:0,{artist} - {title}\n../{names.get(track['id'])}\n"
        lists = [path.read_text() for path in (self.out / "Playlists").glob("*.m3u8")]
        if lists != [expected]:
            self.fault(f"{len(lists)} playlists, and they are not what the player's is")

    def strays(self):
        """Whole copies of tracks that are on the player, under names that the journal does not tell."""
        known = {*self.journal().values(), *self.foreign}
        current = {track["contents"] for track in self.player.tracks}
        names = (path.relative_to(self.out) for path in self.out.rglob("*.mp3"))
        return [str(name) for name in names if str(name) not in known and (self.out / name).read_bytes() in current]


def exports(count, work, build, seed=None):
    """Prints what it finds; true when that is nothing."""
    seed = random.randrange(1 << 32) if seed is None else seed
    random.seed(seed)
    print(f"What {count} kills of exports leave, with changes in between (seed {seed}):", flush=True)
    players = load_players(build)
    found, strays = [], []
    killed = runs = verified = worlds = 0
    begin = time.monotonic()
    while killed < count:
        worlds += 1
        world = Exports(work, build, players, found)
        aim = min(count, killed + 50)
        while killed < aim and len(found) < 20:
            killed += world.kill_one()
            if random.random() < 0.6:
                world.player.change()
            if random.random() < 0.4:
                world.change_folder()
            if random.random() < 0.5:
                world.run_undisturbed()
            if random.random() < 0.05:
                world.run_undisturbed()
                world.verify()
                verified += 1
        world.run_undisturbed()
        world.verify()
        strays += world.strays()
        runs += world.runs
        if len(found) >= 20:
            break
    print(f"{killed} kills in {runs} runs on {worlds} players, {verified + worlds} verifications, {len(strays)} second "
          f"copies, {time.monotonic() - begin:.0f} s, {len(found)} faults", flush=True)
    for fault in found[:20]:
        print("  " + fault)
    return not found
