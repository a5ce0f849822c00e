#!/usr/bin/env python3
"""Holds the completion of a program's command line, for bash and for zsh, to what the program says of itself.

Usage: completion.py PROGRAM FILE_FOR_BASH FILE_FOR_ZSH BASH

The file for bash is run; that for zsh is read, so that zsh need not be there.
"""

import glob
import os
import pathlib
import pty
import re
import select
import shlex
import signal
import subprocess
import sys
import tempfile
import time

import tool_help

PATIENCE = 30.0  # seconds
OPTION = re.compile(r"(?<![\w-])--?[a-z][\w-]*")

# Calls the function as bash does at the Tab key, and prints what it asks of bash, and then what it offers.
CALL = """
source "$1" || exit
name=$2
shift 2
compopt() { printf 'compopt %s\\n' "$*"; }
COMP_WORDS=("$name" "$@")
COMP_CWORD=$#
"_$name"
printf '%s\\n' "${COMPREPLY[@]}"
"""

failures = []


def compare(what, found, wanted):
    if found != wanted:
        failures.append(f"{what}: {found}, not {wanted}")


def long_ones(options):
    return sorted(option for option in options if option.startswith("--"))


class Bash:
    def __init__(self, bash, file, name):
        self.bash, self.file, self.name = bash, file, name

    def answer(self, *words):
        result = subprocess.run([self.bash, "--norc", "-c", CALL, "bash", self.file, self.name, *words],
                                capture_output=True, text=True, timeout=60)
        if result.returncode != 0 or result.stderr:
            failures.append(f"{words}: {result.stderr}")
        return sorted(line for line in result.stdout.splitlines() if line)

    def offers(self, words, wanted):
        compare(f"bash offers for {words}", self.answer(*words), sorted(wanted))

    def offers_files(self, *words):
        compare(f"bash offers for {words}", self.answer(*words), ["compopt -o default"])

    def types(self, line, wanted):
        """Types a line at a bash, in a folder of its own with a file, and waits for what bash makes of it."""
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "unique.file").touch()
            child, terminal = pty.fork()
            if child == 0:
                os.chdir(folder)
                os.execve(self.bash, [self.bash, "--norc", "--noprofile", "-i"], {"TERM": "dumb", "HOME": folder})
            try:
                os.write(terminal, f"source {shlex.quote(str(self.file))}\n{line}\t".encode())
                shown = wait_for(terminal, wanted)
            finally:
                os.close(terminal)
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
        if wanted not in shown:
            failures.append(f"bash makes of {line}: {shown}")


def wait_for(terminal, wanted):
    shown = ""
    end = time.monotonic() + PATIENCE
    while wanted not in shown and select.select([terminal], [], [], max(0, end - time.monotonic()))[0]:
        shown += os.read(terminal, 4096).decode(errors="replace")
    return shown


def check_options(bash, tool):
    for form in tool_help.forms(tool):
        options = long_ones(tool_help.options(tool, *form))
        bash.offers([*form, "-"], options)
        for option in options:
            bash.offers([*form, option], [other for other in options if other.startswith(option)])
    bash.offers(["--no-such-option"], [])


def check_files(bash, tool):
    options = tool_help.file_options(tool)
    for option in sorted(options):
        bash.offers_files(option, "uni")
        bash.offers_files(option, "=", "uni")
        bash.types(f"{bash.name} {option} uni", "unique.file")


def check_commands(bash, tool):
    commands = tool_help.commands(tool)
    bash.offers([""], commands)
    for command in commands:
        bash.offers([command], [other for other in commands if other.startswith(command)])
    bash.offers(["no-such-command", ""], [])
    nodes = glob.glob("/dev/hidraw*")
    for command in commands:
        takes = re.search(r"^Usage: \S+ \S+ \[OPTIONS\] ?(.*)$", tool_help.run(tool, command, "--help"), re.M).group(1)
        if "DESCRIPTOR" in takes or "FILE" in takes:
            bash.offers_files(command, "uni")
            bash.offers_files(command, "--help", "uni")
            bash.offers([command, "a.file", ""], [])
            bash.types(f"{bash.name} {command} uni", "unique.file")
        else:
            bash.offers([command, ""], nodes if "PATH" in takes else [])
    bash.offers(["monitor", "--set", ""], [])
    bash.offers(["monitor", "/dev/hidraw0", ""], [])
    bash.offers(["caps", "-", ""], [])
    bash.offers(["--help", ""], commands)


def check_zsh(text, tool):
    commands = tool_help.commands(tool)
    compare("zsh: commands", dict(re.findall(r"^ +'([a-z-]+):(.+)'$", text, re.M)), commands)
    functions = dict(re.findall(r"^(_\S+)\(\) \{\n(.*?)^\}$", text, re.M | re.S))
    name = text.split()[1]
    for form in tool_help.forms(tool):
        body = functions.get("_".join(["", name, *form]), "") if functions else text
        arguments = re.sub(r"^ *local .*$", "", body, flags=re.M)
        compare(f"zsh: options of {form}", sorted(set(OPTION.findall(arguments))),
                sorted(tool_help.options(tool, *form)))


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    tool, bash_file, zsh_file, bash_program = sys.argv[1:]
    name = pathlib.Path(tool).name
    bash = Bash(bash_program, bash_file, name)
    check_options(bash, tool)
    check_files(bash, tool)
    if tool_help.commands(tool):
        check_commands(bash, tool)
    zsh = pathlib.Path(zsh_file).read_text(encoding="utf-8")
    compare("zsh: the first line", zsh.splitlines()[0], f"#compdef {name}")
    check_zsh(zsh, tool)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
