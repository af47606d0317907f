"""Takes music or files off the attached player or phone: runs the program quaylink, and follows its events.

python3 follow_events.py PROGRAM FOLDER              all music
python3 follow_events.py PROGRAM DEVICE_PATH DEST    a file of the device, or a phone's folder, such as /DCIM/

PROGRAM is quaylink, or quaylink.exe on Windows, where every Python will do. Ctrl-C cancels: the copy under way is
finished, and the same command goes on from there.
"""

import json
import signal
import subprocess
import sys


def events(process):
    for line in process.stdout:
        event = json.loads(line)
        if event.get("format", 1) != 1:
            sys.exit("this quaylink is too new")
        yield event


def show_progress(text=""):
    """Draws over what was shown before."""
    print(f"\r{text[:78]:78}\r", end="", file=sys.stderr, flush=True)


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit("usage: python3 follow_events.py PROGRAM FOLDER, or PROGRAM DEVICE_PATH DEST")
    program, *paths = sys.argv[1:]
    command = "export" if len(paths) == 1 else "pull"
    # The end of its input, which this program holds open, cancels the run. The events tell everything that is said
    # on its error stream, and on Windows no console window is wanted.
    try:
        process = subprocess.Popen([program, command, "--json", *paths], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, creationflags=getattr(subprocess, "CREATE_NO_WINDOW", 0))
    except OSError as error:
        sys.exit(f"{program}: {error.strerror}")
    signal.signal(signal.SIGINT, lambda *_: process.stdin.close())
    start, end, told = {}, {}, 0
    with process:
        for event in events(process):
            if event["event"] == "start":
                start = event
            elif event["event"] == "progress":
                # A phone tells no sizes of files that are pulled: these are counted.
                done, total = (event["bytes"], event["total"]) if event["total"] else (told, start["tracks"])
                show_progress(f"{100 * done // total:3} %  {event['name']}")
            elif event["event"] == "track":
                told += 1
                if event["result"] == "failed":
                    show_progress()
                    print(f"{event['name']}: {event['error']}")
            elif event["event"] == "end":
                end = event
    show_progress()
    if "copied" in end:
        print(f"{end['copied'] + end['replaced']} copied, {end['moved'] + end['skipped']} there already, "
              f"{end['failed']} failed, {end['notReached']} not reached")
    else:
        print(end.get("error", f"quaylink ended with status {process.returncode}"))
    sys.exit(process.returncode)


if __name__ == "__main__":
    main()
