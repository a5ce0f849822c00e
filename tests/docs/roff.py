"""Reads the manual pages of the project, which are in man(7) and use few of its macros."""

import re
import shlex

JOINED = {".BR", ".RB", ".BI", ".IB", ".RI", ".IR"}
SPACED = {".B", ".I"}


def plain(text):
    text = re.sub(r"\\(f[A-Z]|[%:])", "", text)
    return text.replace(r"\-", "-").replace(r"\(dq", '"').replace(r"\&", "")


def words_of(arguments):
    """The arguments of a macro: only double quotes and blanks mean something."""
    lexer = shlex.shlex(plain(arguments.replace(r"\(dq", "\0")), posix=True, punctuation_chars=False)
    lexer.quotes, lexer.escape, lexer.commenters, lexer.whitespace_split = '"', "", "", True
    return [word.replace("\0", '"') for word in lexer]


def text_of(line):
    """What a line puts on the page; nothing for a macro that only sets things out."""
    if not line.startswith("."):
        return plain(line)
    macro, _, arguments = line.partition(" ")
    if macro in JOINED:
        return "".join(words_of(arguments))
    if macro in SPACED:
        return " ".join(words_of(arguments))
    return f"[{' '.join(words_of(arguments))}]" if macro == ".OP" else ""


def parts(lines, macro):
    """The lines under each title that the macro sets."""
    found = {}
    title = None
    for line in lines:
        if line.startswith(f"{macro} "):
            title = " ".join(words_of(line.partition(" ")[2]))
            found[title] = []
        elif title:
            found[title].append(line)
    return found


def sections(page):
    return parts(page.read_text(encoding="utf-8").splitlines(), ".SH")


def tags(lines):
    """The tags of tagged paragraphs."""
    return [text_of(lines[i + 1]) for i, line in enumerate(lines) if line == ".TP"]


def text(lines):
    return "\n".join(text_of(line) for line in lines if not line.startswith(r".\""))
