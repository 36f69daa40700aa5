#!/usr/bin/python3
# Prints what a screen reader sees of a running Folidoc over AT-SPI: roles, names, states, and
# the first line of each page's text. Run inside the desktop session of the program (its
# accessibility bus): accessibility-tree.py [application name] [max depth]
import sys

import pyatspi

NAME = sys.argv[1] if len(sys.argv) > 1 else "Folidoc"
DEPTH = int(sys.argv[2]) if len(sys.argv) > 2 else 40
SKIP = {"filler", "panel", "scroll bar", "unknown", "redundant object"}


def describe(node):
    role = node.getRoleName()
    words = [f"[{role}]"]
    if node.name:
        words.append(repr(node.name))
    states = node.getState()
    for state, label in ((pyatspi.STATE_SELECTED, "selected"), (pyatspi.STATE_FOCUSED, "focused")):
        if states.contains(state):
            words.append(label)
    if not states.contains(pyatspi.STATE_SHOWING) and role not in ("menu item", "popup menu"):
        words.append("hidden")
    try:
        text = node.queryText()
        first = text.getTextAtOffset(0, pyatspi.TEXT_BOUNDARY_LINE_START)[0].strip()
        words.append(f"text: {text.characterCount} characters, first line {first!r}")
    except NotImplementedError:
        pass
    try:
        actions = node.queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        if names:
            words.append("actions: " + ",".join(names))
    except NotImplementedError:
        pass
    return " ".join(words)


def walk(node, depth):
    if node is None or depth > DEPTH:
        return
    role = node.getRoleName()
    shown = role not in SKIP or node.name
    if shown:
        print("  " * depth + describe(node))
    for child in node:
        walk(child, depth + 1 if shown else depth)


desktop = pyatspi.Registry.getDesktop(0)
apps = [app for app in desktop if app is not None and app.name == NAME]
if not apps:
    sys.exit(f"no application named {NAME!r} on the accessibility bus")
walk(apps[0], 0)
