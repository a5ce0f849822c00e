#!/usr/bin/env python3
"""Draws the pictures of terminals in the documents from real runs of the tools.

Usage: pictures.py [--update] PICTURE panel SOFTPHONE LIBRARY
       pictures.py [--update] PICTURE doctor VM_RUN HEADSET SOFTPHONE PRODUCT_LIBRARY UHID_LIBRARY

  panel   the softphone at a terminal, with a virtual headset of the library
  doctor  `headset doctor` in a virtual machine, with a headset that its user may not open

Exit status 1 when the picture is stale: when a run looks different now. --update draws it again instead.
"""

import argparse
import difflib
import fcntl
import html
import itertools
import os
import pathlib
import pty
import select
import struct
import subprocess
import sys
import tempfile
import termios
import time

import pyte

COLUMNS = 110
DEADLINE = 60  # seconds; a loaded machine is slow
QUIET = 0.5  # seconds without output, after which a program is taken to wait for input

# What is typed, and the text that the screen has to show afterwards. The key stays pressed: its release, which is read
# by another thread, would come at any time. The lines of the key press come in either order; those that are left on the
# screen at the end do not.
PANEL_ROWS = 25
PANEL_STORY = (
    ("plug jabra-link-380c as jabra", "02 00 00  all dark"),
    ("device jabra", "ready      onActiveDeviceNotify"),
    ("incoming 42", 'incomingCall("", "42", true)'),
    ("connect 42", "off-hook on"),
    ("key mute down", "mute on"),
    ("incoming 43", 'incomingCall("", "43", true)'),
    ("calls", "softphone> calls"),
)
# The thread of the key press may still write to the log while the next command is typed, on a loaded machine.
ATTEMPTS = 3

# Width and height of a character, and its place in that box, in pixels.
CELL_WIDTH, CELL_HEIGHT, BASELINE, FONT_SIZE, MARGIN = 8, 18, 14, 13, 12
BACKGROUND, FOREGROUND = "#1e2127", "#d7dae0"
COLOURS = {
    "default": FOREGROUND, "black": "#1e2127", "red": "#e06c75", "green": "#98c379", "brown": "#d19a66",
    "blue": "#61afef", "magenta": "#c678dd", "cyan": "#56b6c2", "white": "#ffffff",
}


class Failure(Exception):
    """What is wrong, for people."""


# ---- the picture


def style_of(cell):
    if cell.fg not in COLOURS:
        raise Failure(f"there is no colour for {cell.fg}")
    style = f' fill="{COLOURS[cell.fg]}"' if cell.fg != "default" else ""
    return style + (' font-weight="bold"' if cell.bold else "")


def draw_row(number, cells):
    """The text elements of a row: one for each run of characters of one style, each at its own place."""
    y = MARGIN + number * CELL_HEIGHT + BASELINE
    column = 0
    for style, run in itertools.groupby(cells, style_of):
        text = "".join(cell.data for cell in run)
        shown = text.rstrip()
        start = len(shown) - len(shown.lstrip())
        if shown:
            x = MARGIN + (column + start) * CELL_WIDTH
            width = (len(shown) - start) * CELL_WIDTH
            yield (f'<text x="{x}" y="{y}" textLength="{width}"{style} xml:space="preserve">'
                   f"{html.escape(shown[start:], quote=False)}</text>\n")
        column += len(text)


def draw(screen, rows, title):
    width = 2 * MARGIN + screen.columns * CELL_WIDTH
    height = 2 * MARGIN + rows * CELL_HEIGHT
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" '
        f'font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="{FONT_SIZE}" fill="{FOREGROUND}">\n',
        f"<title>{html.escape(title)}</title>\n",
        f'<rect width="{width}" height="{height}" rx="6" fill="{BACKGROUND}"/>\n',
    ]
    for row in range(rows):
        lines += draw_row(row, [screen.buffer[row][column] for column in range(screen.columns)])
    return "".join([*lines, "</svg>\n"])


# ---- the panel


class Terminal:
    """A program at a terminal, and what the terminal shows."""

    def __init__(self, command, rows, folder):
        self.screen = pyte.Screen(COLUMNS, rows)
        self.stream = pyte.ByteStream(self.screen)
        pid, self.file = pty.fork()
        if pid == 0:
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", rows, COLUMNS, 0, 0))
            # The picture must not depend on who draws it, and the run must not leave anything behind.
            home = str(folder)
            os.chdir(home)
            environment = {"TERM": "xterm", "LC_ALL": "C.UTF-8", "HOME": home, "XDG_STATE_HOME": home,
                           "LD_LIBRARY_PATH": home, "PATH": os.environ["PATH"]}
            os.execvpe(command[0], command, environment)
        self.pid = pid

    def read(self, seconds):
        """Shows what the program writes within this time; false when it writes nothing."""
        if not select.select([self.file], [], [], seconds)[0]:
            return False
        try:
            written = os.read(self.file, 65536)
        except OSError:  # how Linux says that the program has ended
            written = b""
        if not written:
            raise Failure("the program has ended:\n" + "\n".join(self.screen.display))
        self.stream.feed(written)
        return True

    def wait_for(self, text):
        end = time.monotonic() + DEADLINE
        while not any(text in line for line in self.screen.display) or self.read(QUIET):
            if time.monotonic() > end:
                raise Failure(f"the screen does not show {text!r}:\n" + "\n".join(self.screen.display))
            self.read(0.05)

    def type(self, line):
        os.write(self.file, line.encode() + b"\n")

    def end(self):
        os.close(self.file)  # hangs up
        os.waitpid(self.pid, 0)


def draw_panel(softphone, library):
    with tempfile.TemporaryDirectory() as name:
        # Under its name alone, since the panel shows the path of the library.
        soname = pathlib.Path(library).name
        pathlib.Path(name, soname).symlink_to(pathlib.Path(library).resolve())
        terminal = Terminal([softphone, "--library", soname], PANEL_ROWS, name)
        try:
            terminal.wait_for("softphone>")
            for line, shown in PANEL_STORY:
                terminal.type(line)
                terminal.wait_for(shown)
            return draw(terminal.screen, PANEL_ROWS, "softphone with two calls and a virtual headset")
        finally:
            terminal.end()


# ---- the doctor

# In the machine: a headset of the kernel, which the softphone plugs, and the doctor. The softphone's input stays open
# until the doctor is done.
DOCTOR_SCRIPT = """\
set -eu
mkfifo /tmp/commands
"$2" --library "$3" --headsets "$4" --plain </tmp/commands >/tmp/softphone.log 2>&1 &
exec 3>/tmp/commands
echo "plug jabra-link-380c" >&3
for attempt in $(seq 300); do
    [ -e /dev/hidraw0 ] && break
    sleep 0.1
done
[ -e /dev/hidraw0 ] || { cat /tmp/softphone.log; exit 3; }
"$1" doctor && status=0 || status=$?
exec 3>&-
wait
exit $status
"""
CALLS_WILL_NOT_WORK = 1


def draw_doctor(vm_run, headset, softphone, product_library, uhid_library):
    with tempfile.TemporaryDirectory() as name:
        script = pathlib.Path(name, "doctor.sh")
        script.write_text(DOCTOR_SCRIPT, encoding="utf-8")
        files = [str(script), headset, softphone, product_library, uhid_library]
        copies = [word for file in files for word in ("--copy", file)]
        result = subprocess.run(
            [vm_run, "--user", *copies, "--", "/bin/sh", *files], capture_output=True, text=True, timeout=900, check=False,
        )
    if result.returncode != CALLS_WILL_NOT_WORK:
        raise Failure(f"{vm_run} ends with status {result.returncode}:\n{result.stdout}\n{result.stderr}")
    lines = ["$ headset doctor", *result.stdout.splitlines()]
    screen = pyte.Screen(COLUMNS, sum(max(1, -(-len(line) // COLUMNS)) for line in lines))
    pyte.Stream(screen).feed("\r\n".join(lines))
    return draw(screen, screen.lines, "headset doctor with a headset that the user may not open")


# ---- comparing


def compare(path, drawings):
    shown = path.read_text(encoding="utf-8")
    for drawing in drawings:
        if drawing == shown:
            return
        difference = difflib.unified_diff(shown.splitlines(), drawing.splitlines(), "as it stands", "as it looks", lineterm="")
    raise Failure("\n".join([f"{path} is stale:", *difference, "Draw it again: cmake --build ... --target draw_pictures"]))


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("Usage: ")[1])
    parser.add_argument("--update", action="store_true")
    parser.add_argument("picture", type=pathlib.Path)
    parser.add_argument("kind", choices=("panel", "doctor"))
    parser.add_argument("files", nargs="+")
    given = parser.parse_args()
    draw_kind = {"panel": draw_panel, "doctor": draw_doctor}[given.kind]
    try:
        if given.update:
            given.picture.write_text(draw_kind(*given.files), encoding="utf-8")
        else:
            compare(given.picture, (draw_kind(*given.files) for _ in range(ATTEMPTS)))
    except Failure as failure:
        sys.exit(f"pictures.py: {failure}")


if __name__ == "__main__":
    main()
