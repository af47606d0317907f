"""Prints a table of the most played tracks of a music database.

python3 most_played.py LIBRARY DATABASE [COUNT]

LIBRARY is libquaylink-collection.so, or quaylink-collection.dll for a 32-bit Python. The plays that the player counted
since the database was written are taken in, where its file "Play Counts" lies beside it.
"""

import ctypes
import datetime
import sys


class Error(ctypes.Structure):
    _fields_ = [("structSize", ctypes.c_uint32), ("code", ctypes.c_int32), ("offset", ctypes.c_uint64),
                ("message", ctypes.c_char * 240)]


class Track(ctypes.Structure):
    _fields_ = (
        [("structSize", ctypes.c_uint32), ("id", ctypes.c_uint32), ("persistentId", ctypes.c_uint64)]
        + [(name, ctypes.c_char_p) for name in (
            "location", "title", "artist", "album", "albumArtist", "genre", "composer", "comment", "grouping",
            "description", "category", "subtitle", "fileType", "sortTitle", "sortArtist", "sortAlbum",
            "sortAlbumArtist", "sortComposer", "sortShow", "show", "episode", "network", "podcastUrl",
            "podcastFeed")]
        + [(name, ctypes.c_uint32) for name in (
            "trackNumber", "trackCount", "discNumber", "discCount", "year", "lengthMs", "fileSize", "bitRate",
            "sampleRate", "beatsPerMinute", "rating", "playCount", "skipCount", "compilation", "checked",
            "mediaType", "seasonNumber", "episodeNumber", "bookmarkMs", "added", "modified", "lastPlayed",
            "lastSkipped", "released")])


def of_size(struct):
    """A struct that tells the library how large it is."""
    value = struct()
    value.structSize = ctypes.sizeof(struct)
    return value


def tracks(library, path):
    """Yields the tracks of the database. Their strings are good until the next one is asked for, and later."""
    collection = ctypes.c_void_p()
    error = of_size(Error)
    if library.QuaylinkOpenFile(path.encode(), None, ctypes.byref(collection), ctypes.byref(error)):
        sys.exit(f"{path}: {error.message.decode()}")
    try:
        index = 0
        track = of_size(Track)
        while library.QuaylinkGetTrack(collection, ctypes.c_uint32(index), ctypes.byref(track)) == 0:
            yield track
            index += 1
            track = of_size(Track)
    finally:
        library.QuaylinkClose(collection)


def day(time):
    """A time of the player's clock, which counts from 1904; 0 is none."""
    return (datetime.datetime(1904, 1, 1) + datetime.timedelta(seconds=time)).date().isoformat() if time else "never"


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit("usage: python3 most_played.py LIBRARY DATABASE [COUNT]")
    library = ctypes.CDLL(sys.argv[1])
    count = int(sys.argv[3]) if len(sys.argv) == 4 else 10
    rows = [(track.playCount, day(track.lastPlayed), track.rating // 20 * "*", track.artist.decode(),
             track.title.decode()) for track in tracks(library, sys.argv[2])]
    rows.sort(key=lambda row: -row[0])
    print(f"{'Plays':>5}  {'Last':10}  {'Rating':6}  Track")
    for plays, last, stars, artist, title in rows[:count]:
        print(f"{plays:5}  {last:10}  {stars:6}  {artist} - {title}")


if __name__ == "__main__":
    main()
