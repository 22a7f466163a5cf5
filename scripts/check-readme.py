#!/usr/bin/env python3
"""Runs the commands of README.md's console blocks, in order, and compares what they print with what the README shows.
There "…" stands for any text, and on a line of its own for any lines.

usage: check-readme.py FOLDER    (with the program configstorectl)
"""

import pathlib
import re
import subprocess
import sys
import tempfile

SOURCES = pathlib.Path(__file__).resolve().parent.parent


def steps():
    """Pairs of a command and the lines shown below it."""
    for block in re.findall(r"^```console\n(.*?)^```", (SOURCES / "README.md").read_text(), re.M | re.S):
        for step in re.split(r"^\$ ", block, flags=re.M)[1:]:
            command, _, shown = step.partition("\n")
            yield command, shown


def pattern(shown):
    meanings = {"…\n": "(?:.*\n)*?", "…": ".*?"}
    parts = re.split("(^…\n|…)", shown, flags=re.M)
    return re.compile("".join(meanings.get(part) or re.escape(part) for part in parts))


def main(programs):
    shell = ["bash", "-c"]
    with tempfile.TemporaryDirectory() as scratch:
        set_up = f'cd {SOURCES}; PATH="{pathlib.Path(programs).resolve()}:$PATH"; shopt -s expand_aliases\n'
        for command, shown in steps():
            command = command.replace("/tmp/myhost", f"{scratch}/myhost")
            if command.startswith("alias "):
                set_up += command + "\n"
                continue
            run = subprocess.run(shell + [set_up + command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if not pattern(shown).fullmatch(run.stdout):
                print(f"README.md shows for {command}:\n{shown}\nbut it prints:\n{run.stdout}")
                return 1
    print("readme: every command does what it shows")
    return 0


sys.exit(main(sys.argv[1]))
