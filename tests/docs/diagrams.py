#!/usr/bin/env python3
"""Draws the sequence diagrams of a document from stories that the softphone plays on virtual headsets.

Usage: diagrams.py [--update] DOCUMENT STORIES SOFTPHONE LIBRARY

In the document, the diagram of STORIES/NAME.story stands between the lines

    <!-- diagram: NAME -->
    <!-- end of diagram -->

The exit status is 1 when a diagram is stale: when the story runs differently now. --update draws it again instead.

A diagram begins with the first `say` of its story, which says how things stand; what comes before leads there. It ends with
the story's `quit`.
"""

import argparse
import difflib
import json
import pathlib
import re
import subprocess
import sys

HEADER = """\
sequenceDiagram
    actor U as User
    participant H as Headset
    participant P as Plug-in
    participant C as Client
"""

PLACE = re.compile(r"^<!-- diagram: (\S+) -->\n((?:(?!<!--).)*?)^<!-- end of diagram -->$", re.M | re.S)

# What happens on one thread while another one writes its event down may come out in either order. Where one of two is
# the cause of the other, it stands first.
CAUSE_BEFORE_EFFECTS = {
    "input": ("action", "report"),
    "unplugged": ("removed",),
    "attached": ("report",),
    "result": ("ready",),
}

# What the user does in the client, and what comes from the network, by the story's commands.
COMMANDS = {
    "incoming": "Note over C: call {0} comes in",
    "connect": "U->>C: answer call {0}",
    "hold": "U->>C: hold call {0}",
    "resume": "U->>C: resume call {0}",
    "end": "U->>C: end call {0}",
    "device": "U->>C: choose the audio device {0}",
    "start": "Note over C: starts the plug-in",
    "stop": "Note over C: stops the plug-in",
}

MOVEMENTS = {"down": "press", "up": "release", "pressed": "press and release"}


class Failure(Exception):
    """What is wrong, for people."""


def argument(value):
    if isinstance(value, list):
        return "{" + ", ".join(value) + "}"
    return json.dumps(value)


def draw_command(event):
    name, *words = event["line"].split()
    return [COMMANDS[name].format(*words)] if name in COMMANDS else []


def draw_host(event):
    return [f"C->>P: {event['function']}({', '.join(map(argument, event['arguments']))})"]


def draw_result(event):
    return [f"P-->>C: {argument(event['result'])}"]


def draw_attached(_):
    # That the listener is attached comes of its being set, of which the softphone says nothing.
    return ["C->>P: setCallControlListener(listener)", 'P->>C: onListenerAttached("")']


def draw_action(event):
    name = event["action"][0].upper() + event["action"][1:]
    return [f'P->>C: on{name}("{event["device_id"]}", "{event["cid"]}", ...)']


def draw_notice(event):
    name = {"ready": "onActiveDeviceNotify", "removed": "onDeviceRemovedNotify"}[event["event"]]
    return [f'P->>C: {name}("{event["device_id"]}", ...)']


def draw_report(event):
    lit = " and ".join(event["lit"])
    return [f"P->>H: {event['bytes']} ({lit + ' lit' if lit else 'all dark'})"]


def draw_input(event):
    return [f"H->>P: {event['bytes']}"]


def draw_indicator(event):
    return [f"H->>U: {event['indicator']} {'lit' if event['on'] else 'dark'}"]


def draw_key(event):
    return [f"U->>H: {MOVEMENTS[event['movement']]} {event['key']}"]


def draw_plugged(_):
    return ["U->>H: plug in"]


def draw_unplugged(_):
    return ["U->>H: unplug"]


def draw_say(event):
    return [f"Note over U,C: {event['text']}"]


def draw_nothing(_):
    return []


DRAWN = {
    "action": draw_action,
    "attached": draw_attached,
    "call": draw_nothing,
    "command": draw_command,
    "expect": draw_nothing,
    "host": draw_host,
    "indicator": draw_indicator,
    "input": draw_input,
    "key": draw_key,
    "plugged": draw_plugged,
    "ready": draw_notice,
    "removed": draw_notice,
    "report": draw_report,
    "result": draw_result,
    "say": draw_say,
    "unplugged": draw_unplugged,
}


def play(story, softphone, library):
    """The events of a story."""
    result = subprocess.run(
        [softphone, "--library", library, "--json", "--script", str(story)],
        stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=120, check=False,
    )
    events = [json.loads(line) for line in result.stdout.splitlines()]
    if result.returncode != 0:
        reasons = [f"{e['place']}: wanted {e['wanted']}, found {e['found']}"
                   for e in events if e["event"] == "expect" and not e["ok"]]
        reasons += [f"{e['place']}: {e['text']}" for e in events if e["event"] == "error"]
        raise Failure("\n".join([f"{story} ends with status {result.returncode}", *reasons, result.stderr]).rstrip())
    return events


def is_command(event, *names):
    return event["event"] == "command" and event["line"].split()[0] in names


def shown(events, story):
    """The events from the first thing said to the end of the story."""
    first = next((i for i, event in enumerate(events) if event["event"] == "say"), None)
    last = next((i for i, event in enumerate(events) if is_command(event, "quit")), None)
    if first is None or last is None or last < first:
        raise Failure(f"{story} must say how things stand, and end with quit")
    return events[first:last]


def steps(events):
    """The events of each command, together with those of the expectations that wait for them."""
    step = []
    for event in events:
        if event["event"] == "command" and not is_command(event, "expect") and step:
            yield step
            step = []
        step.append(event)
    yield step


def in_causal_order(step):
    for cause, effects in CAUSE_BEFORE_EFFECTS.items():
        first = next((i for i, event in enumerate(step) if event["event"] in effects), len(step))
        late = [event for event in step[first:] if event["event"] == cause]
        step = step[:first] + late + [event for event in step[first:] if event["event"] != cause]
    return step


def draw_event(event):
    if event["event"] not in DRAWN:
        raise Failure(f"there is no way to draw {json.dumps(event)}")
    return DRAWN[event["event"]](event)


def draw(events):
    lines = [line for step in steps(events) for event in in_causal_order(step) for line in draw_event(event)]
    return HEADER + "".join(f"    {line}\n" for line in lines)


def find_places(document, stories):
    """The names of the diagrams; every one has a story, and every story a diagram."""
    names = [name for name, _ in PLACE.findall(document)]
    if len(names) != document.count("<!-- diagram:"):
        raise Failure("a diagram does not end, or its beginning is malformed")
    told = sorted(path.stem for path in stories.glob("*.story"))
    if sorted(names) != told or not names:
        raise Failure(f"diagrams of {', '.join(sorted(names)) or 'nothing'} for stories of {', '.join(told) or 'nothing'}")
    return names


def update(path, old, new):
    path.write_text(new, encoding="utf-8")
    print(f"{path}: {'drawn again' if new != old else 'nothing to draw'}")


def compare(path, old, new):
    if new == old:
        return
    lines = difflib.unified_diff(old.splitlines(), new.splitlines(), "as it stands", "as it happens", lineterm="")
    raise Failure(f"a diagram of {path} is stale:\n\n" + "\n".join(lines) +
                  "\n\nIf what happens is right, draw it again: cmake --build ... --target draw_diagrams")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    for name in ("document", "stories"):
        parser.add_argument(name, type=pathlib.Path)
    for name in ("softphone", "library"):
        parser.add_argument(name)
    given = parser.parse_args()
    try:
        old = given.document.read_text(encoding="utf-8")
        diagrams = {}
        for name in find_places(old, given.stories):
            story = given.stories / f"{name}.story"
            diagrams[name] = draw(shown(play(story, given.softphone, given.library), story))
        new = PLACE.sub(lambda place: f"<!-- diagram: {place[1]} -->\n```mermaid\n{diagrams[place[1]]}```\n"
                                      "<!-- end of diagram -->", old)
        (update if given.update else compare)(given.document, old, new)
    except Failure as failure:
        sys.exit(f"diagrams.py: {failure}")


if __name__ == "__main__":
    main()
