"""Prints the tracks of the attached player or phone, then a phone's files.

python3 device_contents.py LIBRARY

LIBRARY is the path of libquaylink.so, or of quaylink.dll for a 32-bit Python on Windows.
"""

import ctypes
import os
import sys
import tempfile

# The library's strings are in the ANSI code page, which is UTF-8 everywhere but on Windows.
ENCODING = "mbcs" if os.name == "nt" else "utf-8"


class TrackRecord(ctypes.Structure):
    _fields_ = [(name, ctypes.c_char * 256) for name in ("location", "artist", "title", "album")]

    def text(self, field):
        return getattr(self, field).decode(ENCODING, "replace")


EnumFileCallback = ctypes.CFUNCTYPE(None, ctypes.c_char_p, ctypes.c_void_p)  # cdecl

FUNCTIONS = {  # name: (result, arguments)
    "InitializeIPod": (ctypes.c_size_t, []),
    "TerminateIPod": (None, []),
    "IsIPodConnected": (ctypes.c_ubyte, []),
    "ConnectIPod": (ctypes.c_ubyte, []),
    "DisconnectIPod": (ctypes.c_ubyte, []),
    "CopyITunesDB": (ctypes.c_ubyte, [ctypes.c_char_p]),
    "ParseITunesDB": (
        ctypes.c_int32,
        [ctypes.c_char_p, ctypes.c_int32, ctypes.POINTER(TrackRecord)],
    ),
    "CopyFileFromIPod": (ctypes.c_ubyte, [ctypes.c_uint32, ctypes.c_char_p]),
    "EnumGenericFileFromIPod": (
        ctypes.c_ubyte,
        [ctypes.c_ubyte, EnumFileCallback, ctypes.c_void_p],
    ),
    "CopyGenericFileFromIPod": (
        ctypes.c_ubyte,
        [ctypes.c_ubyte, ctypes.c_char_p, ctypes.c_char_p],
    ),
}


def load(path):
    library = ctypes.CDLL(os.path.abspath(path))
    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


def tracks(library):
    with tempfile.TemporaryDirectory() as folder:
        database = os.path.join(folder, "iTunesDB").encode(ENCODING)
        if not library.CopyITunesDB(database):
            sys.exit("the music database could not be copied")
        count = library.ParseITunesDB(database, 0, None)
        records = (TrackRecord * count)()
        count = library.ParseITunesDB(database, count, records)
        return records[:count]


def files(library):
    """The paths of a phone's files, as bytes. A player in disk mode gives none."""
    found = []
    # What a callback raises is lost: this one only collects.
    collect = EnumFileCallback(lambda path, context: found.append(path))
    if not library.EnumGenericFileFromIPod(1, collect, None):
        sys.exit("the device's files could not be listed")
    return found


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: python3 device_contents.py LIBRARY")
    library = load(sys.argv[1])
    if not library.InitializeIPod():
        sys.exit("the library does not start")
    try:
        if not library.IsIPodConnected():
            sys.exit("no player or phone is attached")
        for track in tracks(library):
            print(track.text("artist"), track.text("title"), track.text("location"), sep="\t")
        for path in files(library):
            print(path.decode("utf-8", "replace"))
    finally:
        library.TerminateIPod()


if __name__ == "__main__":
    main()
