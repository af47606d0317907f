"""Takes the music off the attached player or phone: runs the program quaylink, and follows its events.

python3 export_events.py PROGRAM FOLDER

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
    if len(sys.argv) != 3:
        sys.exit("usage: python3 export_events.py PROGRAM FOLDER")
    program, folder = sys.argv[1:]
    # The end of its input, which this program holds open, cancels the export. The events tell everything that is said
    # on its error stream, and on Windows no console window is wanted.
    try:
        process = subprocess.Popen([program, "export", "--json", folder], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, creationflags=getattr(subprocess, "CREATE_NO_WINDOW", 0))
    except OSError as error:
        sys.exit(f"{program}: {error.strerror}")
    signal.signal(signal.SIGINT, lambda *_: process.stdin.close())
    end = {}
    with process:
        for event in events(process):
            if event["event"] == "progress":
                percent = 100 * event["bytes"] // max(event["total"], 1)
                show_progress(f"{percent:3} %  {event['name']}")
            elif event["event"] == "track" and event["result"] == "failed":
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
