"""Compares what the shells offer with what the program's help names."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from players import PROGRAM, TRACKS, ProgramTest, database

FOLDER = pathlib.Path(os.environ["QUAYLINK_COMPLETION"])
EVERYWHERE = {"--help", "--quiet", "--verbose"}
KINDS = ["audio", "audiobook", "music-video", "podcast", "television", "video"]


class Help(ProgramTest):
    """What is to be offered."""

    def setUp(self):
        super().setUp()
        self.out.mkdir()
        (self.out / "song").touch()
        (self.out / "folder").mkdir()
        whole = self.run_program("--help")[0]
        self.commands = sorted(re.findall(r"^  ([a-z][a-z-]+) +[A-Z]", whole, re.MULTILINE))
        self.assertIn("copy-database", self.commands)
        # Of each command, and of none.
        self.options = {"": self.option_names(whole)}
        for command in self.commands:
            self.options[command] = self.option_names(self.run_program(command, "--help")[0])
        file = self.folder / "copy"
        file.write_bytes(database(TRACKS))
        self.properties = sorted(json.loads(self.run_program("tracks", "--json", file)[0])[0])

    @staticmethod
    def option_names(text):
        return sorted({*re.findall(r"^  (?:-\w,)?(--[a-z-]+)", text, re.MULTILINE), *EVERYWHERE})


class Completion(Help):
    SHELLS = {
        "bash": 'source "$0/quaylink.bash"; COMP_WORDS=(quaylink "$@"); COMP_CWORD=$#; _quaylink; '
                'printf "%s\\n" "${COMPREPLY[@]}"',
        # The parts of zsh that put the words on the screen need a terminal.
        "zsh": 'compadd() { print -l -- "${@:2}"; }; _files() { if (($#)); then print -l -- *(/); else print -l -- *; fi; }; '
               '_describe() { print -l -- "${(@)${(P@)@[-1]}%%:*}"; }; '
               'fpath=("$0" $fpath); autoload -U _quaylink; words=(quaylink "$@"); CURRENT=$(($# + 1)); _quaylink',
        "fish": 'set folder $argv[1]; source $folder/quaylink.fish; '
                'complete -C (string join " " -- quaylink $argv[2..-1]) | string replace -r "\\t.*" ""',
    }

    def offered(self, shell, *words):
        script = self.SHELLS[shell]
        # What comes behind the script is $0 to two of them.
        result = subprocess.run([shell, *(["-f"] if shell == "zsh" else []), "-c", script, str(FOLDER), *words],
                                cwd=self.out, capture_output=True, check=False,
                                env=dict(os.environ, HOME=str(self.folder), LC_ALL="C.UTF-8",
                                         PATH=f"{os.path.dirname(PROGRAM)}:{os.environ['PATH']}"))
        self.assertEqual(result.stderr.decode(), "", (shell, words))
        return sorted(word.rstrip("/") for word in result.stdout.decode().split())

    def check_shell(self, shell):
        if not shutil.which(shell):
            self.skipTest(f"{shell} is not installed")
        self.assertEqual(self.offered(shell, ""), self.commands)
        for command, options in self.options.items():
            self.assertEqual(self.offered(shell, *filter(None, [command]), "--"), options, command)
        files = ["folder", "song"]
        for words, expected in [
                (["tracks"], files), (["-q", "tracks", "--artist", "x"], files), (["tracks", "x"], []),
                (["tracks", "--from"], ["folder"]), (["export", "--from"], ["folder"]),
                (["export"], files), (["export", "--name", "x"], files), (["export", "--name"], []),
                (["copy-database"], files), (["status"], []), (["files"], []), (["copy-track"], []),
                (["copy-track", "1"], files), (["pull"], []), (["pull", "/x"], files),
                (["tracks", "--artist"], []), (["tracks", "--kind"], KINDS), (["export", "--kind"], KINDS),
                (["tracks", "--sort"], self.properties), (["tracks", "--columns"], self.properties)]:
            self.assertEqual(self.offered(shell, *words, ""), expected, words)

    def test_bash(self):
        self.check_shell("bash")

    def test_zsh(self):
        self.check_shell("zsh")

    def test_fish(self):
        self.check_shell("fish")


class PowerShell(Help):
    """It cannot be run here; what it offers stands in tables."""

    def test_tables_are_those_of_the_help(self):
        text = (FOLDER / "quaylink.ps1").read_text(encoding="utf-8")
        variables = {name: " ".join(re.findall(r"'([^']*)'", value)) for name, value in
                     re.findall(r"^ *\$(\w+) = ((?:'[^']*',\s*)*'[^']*')", text, re.MULTILINE)}
        self.assertEqual(sorted(variables["properties"].split()), self.properties)
        self.assertEqual(sorted(variables["kinds"].split()), KINDS)
        table = {command: words.replace("$filters", variables["filters"]) for command, words in
                 re.findall(r"^ *'([a-z-]+)' = ['\"](.*)['\"]$", text, re.MULTILINE)}
        self.assertEqual(sorted(table), self.commands)
        for command, words in table.items():
            self.assertEqual(sorted({*words.split(), *variables["everywhere"].split()}), self.options[command], command)


if __name__ == "__main__":
    unittest.main()
