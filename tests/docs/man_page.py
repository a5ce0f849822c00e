#!/usr/bin/env python3
"""Holds a manual page to what its program says of itself.

Usage: man_page.py PAGE PROGRAM HEADER_OF_EXIT_STATUSES [LIBRARY_OF_VIRTUAL_HEADSETS]

With a library the program is the softphone, whose commands are those of its prompt, and the last example is its script.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

import roff
import tool_help

OPTION = re.compile(r"(?<![\w-])--?[a-z][\w-]*")
HELP = {"-h", "--help"}

failures = []


def compare(what, on_page, in_program):
    for entry in sorted(set(on_page) - set(in_program)):
        failures.append(f"{what}: the page has {entry}, which the program does not")
    for entry in sorted(set(in_program) - set(on_page)):
        failures.append(f"{what}: the page lacks {entry}")


def options_in(lines):
    return set(OPTION.findall(roff.text(lines)))


def option_tags(lines):
    return {name for tag in roff.tags(lines) for name in OPTION.findall(tag)}


def synopses(lines):
    """The options of each form of the command line, by the command that it begins with."""
    forms = {}
    for form in "\n".join(lines).split(".SY ")[1:]:
        _, *body = form.splitlines()
        command = roff.text_of(body[0])
        forms.setdefault(command, set()).update(options_in(body))
    return forms


def check_subcommands(page, tool):
    commands = set(tool_help.commands(tool))
    described = roff.parts(page["COMMANDS"], ".SS")
    compare("COMMANDS", described, commands)
    forms = synopses(page["SYNOPSIS"])
    for command in sorted(commands & set(described)):
        options = tool_help.options(tool, command) - HELP
        compare(command, option_tags(described[command]), options)
        compare(f"SYNOPSIS of {command}", forms.pop(command, set()), options)
    compare("the rest of the SYNOPSIS", set().union(*forms.values()), tool_help.options(tool) - {"-h"})


def check_prompt(page, tool, library):
    commands, conditions = tool_help.prompt_commands(tool, library)
    groups = roff.parts(page["COMMANDS"], ".SS")
    compare("Conditions", roff.tags(groups.pop("Conditions")), conditions)
    compare("COMMANDS", [tag for lines in groups.values() for tag in roff.tags(lines)], commands)
    compare("SYNOPSIS", options_in(page["SYNOPSIS"]), tool_help.options(tool) - {"-h"})


def examples(page):
    return re.findall(r"^\.EX\n(.*?)^\.EE$", "\n".join(page["EXAMPLES"]), re.M | re.S)


def check_script(page, tool, library):
    with tempfile.NamedTemporaryFile("w", suffix=".story", encoding="utf-8") as script:
        script.write(roff.plain(examples(page)[-1]))
        script.flush()
        result = subprocess.run([tool, "--library", library, "--script", script.name],
                                capture_output=True, text=True, timeout=120)
    if result.returncode != 0:
        failures.append(f"the script ends with {result.returncode}:\n{result.stdout}{result.stderr}")


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    page, tool, header = roff.sections(pathlib.Path(sys.argv[1])), sys.argv[2], pathlib.Path(sys.argv[3])
    if len(sys.argv) == 5:
        check_prompt(page, tool, sys.argv[4])
        check_script(page, tool, sys.argv[4])
    else:
        check_subcommands(page, tool)
    compare("OPTIONS", option_tags(page["OPTIONS"]), tool_help.options(tool))
    known = set().union(*(tool_help.options(tool, *form) for form in tool_help.forms(tool)))
    compare("the page as a whole", set().union(*map(options_in, page.values())), known)
    compare("EXIT STATUS", roff.tags(page["EXIT STATUS"]), tool_help.exit_statuses(header))
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
