"""What the programs say of themselves: commands, options, exit statuses."""

import re
import subprocess


def run(*command, text=""):
    return subprocess.run(command, input=text, capture_output=True, text=True, timeout=60, check=True).stdout


def block(text, title):
    """The lines under a title, as far as the next empty one."""
    found = re.search(rf"^{title}:\n(.*?)(?:\n\n|\Z)", text, re.M | re.S)
    return found.group(1).splitlines() if found else []


def commands(tool):
    """The subcommands, each with what it does; none of a program that has none."""
    return dict(line.split(maxsplit=1) for line in block(run(tool, "--help"), "Subcommands"))


def forms(tool):
    """The beginnings of command lines that have options of their own: none, and each subcommand."""
    return [()] + [(command,) for command in commands(tool)]


def option_lines(tool, *command):
    return [line for line in block(run(tool, *command, "--help"), "Options") if re.match(r" {2}-", line)]


def options(tool, *command):
    """The options of the program, or of a subcommand, short ones and long ones."""
    return {name for line in option_lines(tool, *command) for name in line.split()[0].split(",")}


def file_options(tool):
    """The options that take a path."""
    return {line.split()[0] for line in option_lines(tool) if re.match(r" {2}\S+ (PATH|FILE)\b", line)}


def exit_statuses(header):
    """The statuses that a header of the program names, as manuals name them."""
    found = dict(re.findall(r"\bexit_(\w+) = (\d+)", header.read_text(encoding="utf-8")))
    return {f"{status}+N" if name == "signal" else status for name, status in found.items()}


def prompt_commands(softphone, library):
    """The commands of the softphone's prompt, and the conditions of `expect`, each with its arguments."""

    def answers(line):
        shown = run(softphone, "--library", library, text=f"{line}\n").splitlines()
        return [text for text in shown if not text.startswith(("host ", "attached "))]

    names = [line.split()[0] for line in answers("help")]
    heads = {answers(f"help {name}")[0].split(":")[0] for name in names}
    conditions = {re.sub(r"\s+", " ", line.split(":")[0]).strip() for line in answers("help expect")
                  if line.startswith("  ")}
    return heads, conditions
