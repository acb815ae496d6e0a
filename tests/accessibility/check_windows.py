#!/usr/bin/python3
"""Reads the console's windows as a screen reader does, over the AT-SPI bus of a display server
of its own: check_windows.py OPEN_WINDOWS_PROGRAM. Where the servers can't be had it skips (77),
but fails under CI.
"""

import importlib.util
import os
import select
import shutil
import subprocess
import sys
import tempfile
import time

APP_NAME = "orvane-accessibility-windows"
BUS_LAUNCHER = "/usr/libexec/at-spi-bus-launcher"

# Each window by its title, and the controls a user can change in it, in the order the window
# holds them, shown or not: (role, name). A name is the caption, or the text of the label beside
# the control; a list on a tab of the console is named after the tab. On X11 a combo box is named
# by its value, and a screen reader speaks the label it is labelled by: that label stands here
# (the console's user field kinds have none and are named after their tab while still empty).
# The entry editor's password box shows the password as typed, so it is a plain text box.
DELETE_GIVE = ("Delete Employee and his/her schedule but give ALL data, including contacts, "
               "billing, and files, to:")
DELETE_ALL = "Delete Employee and ALL of his/her contacts, schedule, billing, and files data."
EXPECTED = {
    "Logon": [("text", "Logon"), ("password text", "Password"), ("check box", "Save Password"),
              ("text", "Database"), ("text", "Server"), ("text", "Database")],
    "Administration": [
        ("tree", "Employees"), ("tree", "Scheduling Workgroups"), ("tree", "Equipment"),
        ("combo box", "Level"), ("text", "Name"), ("list", "Allow Access to..."),
        ("list", "Can Modify the Following..."), ("combo box", "User Fields"),
        ("tree", "User Fields"), ("radio button", "Class A"), ("radio button", "Class B"),
        ("radio button", "Class C (Personal)"), ("tree", "Branches")],
    "Edit Employee": [
        ("text", "Name"), ("combo box", "Access Level"), ("text", "Logon"), ("text", "Password"),
        ("combo box", "Employee is using Lattimer Series level"),
        ("check box", "Employee is a Branch Manager"), ("check box", "Employee under supervision"),
        ("list", "Extend Access to these Employees"), ("list", "Manage these Branches")],
    "Delete Employee": [("radio button", DELETE_GIVE), ("combo box", DELETE_GIVE),
                        ("radio button", DELETE_ALL)],
}
SHOWN_TABS = ["Employees", "Scheduling Workgroups", "Equipment", "Access Levels", "User Fields"]
EDITABLE_ROLES = {"text", "password text", "entry", "combo box", "check box", "radio button",
                  "list", "list box", "table", "tree table", "tree"}


def unavailable(reason):
    under_ci = os.environ.get("CI") == "true"
    print(f"{'FAIL' if under_ci else 'SKIP'}: {reason}")
    return 1 if under_ci else 77


def outer(program):
    for tool, package in (("Xvfb", "xvfb"), ("dbus-run-session", "dbus")):
        if not shutil.which(tool):
            return unavailable(f"{tool} is not installed (Debian: {package})")
    if not os.access(BUS_LAUNCHER, os.X_OK):
        return unavailable(f"{BUS_LAUNCHER} is not installed (Debian: at-spi2-core)")
    if importlib.util.find_spec("pyatspi") is None:
        return unavailable(f"{sys.executable} can't import pyatspi (Debian: python3-pyatspi)")
    return subprocess.run(["dbus-run-session", "--", sys.executable, os.path.abspath(__file__),
                           program, "--inside"], stdin=subprocess.DEVNULL).returncode


def start_display():
    """A display server on a free display, which it names once it is ready; sets DISPLAY."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24",
                               "-nolisten", "tcp"], pass_fds=(writing,),
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writing)
    with os.fdopen(reading) as named:
        number = named.readline().strip() if select.select([named], [], [], 30)[0] else ""
    if number:
        os.environ["DISPLAY"] = f":{number}"
        return server
    server.kill()
    server.wait()
    return None


def walk(node):
    """Every node under `node`, but not into the rows of lists and combo boxes."""
    for child in node:
        if child is not None:
            yield child
            if child.getRoleName() not in EDITABLE_ROLES:
                yield from walk(child)


def showing(node):
    import pyatspi
    state = node.getState()
    return state.contains(pyatspi.STATE_SHOWING) or state.contains(pyatspi.STATE_VISIBLE)


def spoken_name(node):
    """What a screen reader announces a control by: a combo box by its label, others by name."""
    import pyatspi
    if node.getRoleName() == "combo box":
        for relation in node.getRelationSet():
            if relation.getRelationType() == pyatspi.RELATION_LABELLED_BY:
                return relation.getTarget(0).name
    return node.name


def find_windows(program, seconds):
    """The program's windows by title once they are all on the bus, while it runs."""
    import pyatspi
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline and program.poll() is None:
        for app in pyatspi.Registry.getDesktop(0):
            if app is not None and app.name == APP_NAME:
                windows = {window.name: window for window in app if window is not None}
                if set(EXPECTED) <= set(windows):
                    return windows
        time.sleep(0.5)
    return None


def check_names(window):
    """Every control is announced by its caption or the label beside it."""
    found = [(node.getRoleName(), spoken_name(node)) for node in walk(window)
             if node.getRoleName() in EDITABLE_ROLES]
    if found != EXPECTED[window.name]:
        return f"{window.name}: the controls are announced as\n    {found}\n  not as\n    " \
               f"{EXPECTED[window.name]}"
    return None


def check_hidden_tab(console):
    """The Branches tab isn't shown, and whatever it offers to do, its page stays closed."""
    strip = next((node for node in walk(console) if node.getRoleName() == "page tab list"), [])
    tabs = [tab for tab in strip if tab is not None and tab.getRoleName() == "page tab"]
    if [tab.name for tab in tabs if showing(tab)] != SHOWN_TABS:
        return f"Administration: the tabs shown are {[(t.name, showing(t)) for t in tabs]}"
    for tab in tabs:
        if tab.name == "Branches":
            actions = tab.queryAction()
            for i in range(actions.nActions):
                actions.doAction(i)
    lists = [node for node in walk(console)
             if node.getRoleName() == "tree" and node.name == "Branches"]
    if len(lists) != 1 or showing(lists[0]):
        return "Administration: the hidden Branches tab opened through its actions"
    return None


def inside(program):
    display = start_display()
    if display is None:
        print("FAIL: Xvfb did not start")
        return 1
    runtime = tempfile.TemporaryDirectory()
    bus = subprocess.Popen([BUS_LAUNCHER, "--launch-immediately"], stdout=subprocess.DEVNULL)
    # The system's keyboard library, which the X11 platform loads, copies names with strndup
    # bounds that reach past the buffer though each name ends inside it; the strict string checks
    # of a sanitizer build take that for an overflow. The program's own code is still checked.
    sanitizer = ":".join(filter(None, [os.environ.get("ASAN_OPTIONS"), "strict_string_checks=0"]))
    environment = dict(os.environ, QT_QPA_PLATFORM="xcb", QT_ACCESSIBILITY="1",
                       QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", XDG_RUNTIME_DIR=runtime.name,
                       ASAN_OPTIONS=sanitizer)
    windows = subprocess.Popen([program], stdin=subprocess.PIPE, env=environment, text=True)
    try:
        by_title = find_windows(windows, 90)
        if by_title is None:
            print(f"FAIL: {APP_NAME} with its windows {sorted(EXPECTED)} is not on the "
                  "accessibility bus")
            return 1
        outcomes = [check_names(by_title[title]) for title in EXPECTED]
        outcomes.append(check_hidden_tab(by_title["Administration"]))
        failures = [outcome for outcome in outcomes if outcome]
        for failure in failures:
            print(f"FAIL: {failure}")
        print(f"accessibility: {len(outcomes) - len(failures)} passed, {len(failures)} failed")
        return 1 if failures else 0
    finally:
        try:
            windows.communicate("done\n", timeout=30)
        except subprocess.TimeoutExpired:
            windows.kill()
        for server in (bus, display):
            server.terminate()
            server.wait(10)
        runtime.cleanup()


if __name__ == "__main__":
    arguments = sys.argv[1:]
    sys.exit(inside(arguments[0]) if "--inside" in arguments else outer(arguments[0]))
