#!/usr/bin/env python3
"""Drives the real application on its own Xvfb display, in its own working folder.

Usage: AppTest.py SCENARIO PATH_TO_VELLUMBRA

The application writes a few lines of state to $VELLUMBRA_REPORT (see GLWidget's test
report); pixels come from screenshots of the root window. Everything is polled with generous
time limits: the machine may be slow and loaded.
"""
import math
import os
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time

LIMIT = 180.0  # seconds for any one expected change


class Failure(Exception):
    pass


class Display:
    """An Xvfb of its own: -displayfd lets the server pick a free number atomically."""

    def __init__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-noreset", "-nolisten", "tcp", "-screen", "0", "1280x800x24"],
            pass_fds=(write,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        number = b""
        while not number.endswith(b"\n"):
            chunk = os.read(read, 16)
            if not chunk:
                raise Failure("Xvfb did not start")
            number += chunk
        os.close(read)
        self.name = ":" + number.decode().strip()

    def close(self):
        self.server.terminate()
        self.server.wait()


class App:
    def __init__(self, exe, display, folder, scene=False):
        self.exe, self.display, self.folder = exe, display, folder
        self.report_path = os.path.join(folder, "report.txt")
        self.env = dict(os.environ, DISPLAY=display.name, VELLUMBRA_REPORT=self.report_path)
        self.env.pop("LIBGL_ALWAYS_SOFTWARE", None)
        if scene:
            self.env["VELLUMBRA_TEST_SCENE"] = "1"
        self.reports = []

    def start(self):
        if os.path.exists(self.report_path):
            os.remove(self.report_path)
        self.process = subprocess.Popen([self.exe], cwd=self.folder, env=self.env)

    def report(self):
        try:
            with open(self.report_path) as f:
                state = dict(line.rstrip("\n").split("=", 1) for line in f if "=" in line)
        except FileNotFoundError:
            return {}
        if not self.reports or self.reports[-1] != state:
            self.reports.append(state)
        return state

    def wait_for(self, what, predicate):
        end = time.time() + LIMIT
        while time.time() < end:
            if self.process.poll() is not None:
                raise Failure("the application ended (%d) waiting for %s" % (self.process.returncode, what))
            state = self.report()
            if predicate(state):
                return state
            time.sleep(0.1)
        raise Failure("timed out waiting for %s; last report %r" % (what, self.report()))

    def xdo(self, *args):
        return subprocess.run(["xdotool"] + list(args), env=self.env, check=True, capture_output=True,
                              text=True).stdout

    def key(self, key):
        self.xdo("mousemove", "640", "300")
        self.xdo("key", key)

    def windows(self):
        out = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^VELLUMBRA$"], env=self.env,
                             capture_output=True, text=True).stdout
        return out.split()

    def shot(self, name):
        path = os.path.join(self.folder, name + ".png")
        subprocess.run(["import", "-window", "root", path], env=self.env, check=True)
        return path

    def close(self):
        self.process.send_signal(signal.SIGTERM)

    def wait_exit(self):
        try:
            return self.process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise Failure("the application did not end")


def colors(png, x, y, w, h):
    """Distinct colours in a region of a screenshot."""
    out = subprocess.run(["convert", png, "-crop", "%dx%d+%d+%d" % (w, h, x, y), "+repage", "-format", "%k",
                          "info:"], check=True, capture_output=True, text=True).stdout
    return int(out)


def check(condition, message):
    if not condition:
        raise Failure(message)


def shown(state):
    return state.get("shown") == "1" and state.get("opacity") == "1"


# Regions of a 1280x800 screen at interface scale 1 (see UI.cpp): the log window, the
# navigation sphere, and a stretch of empty stage.
LOG = (860, 640, 400, 140)
NAVIGATION = (1150, 20, 116, 116)
STAGE = (100, 100, 300, 200)


def figures(app, state):
    ready = [state[k] for k in ("log0", "log1", "log2") if "Ready in" in state.get(k, "")]
    print("figures: fps=%s cpu_ms_per_frame=%s %s" % (state.get("fps"), state.get("cpu_ms"),
                                                     ready[0].strip() if ready else ""))


def scenario_start(app):
    """The window shows only after a finished frame, with the interface drawn over the stage;
    Ctrl+` hides and shows the interface; an empty scene closes without a question."""
    app.start()
    state = app.wait_for("the window to show", shown)
    check(all(r.get("opacity") == "0" for r in app.reports if r.get("shown") != "1"),
          "the window was visible before its first frame: %r" % app.reports)
    check(int(state["frames"]) >= 1, "shown before any frame")
    check(app.windows(), "no visible window titled VELLUMBRA")
    png = app.shot("interface")
    check(colors(png, *LOG) > 2, "the log window is not drawn")
    check(colors(png, *NAVIGATION) > 8, "the navigation sphere is not drawn")
    check(colors(png, *STAGE) == 1, "the empty stage is not one colour")

    app.key("ctrl+grave")
    app.wait_for("the interface to hide", lambda s: s.get("ui") == "0")
    time.sleep(0.5)
    check(colors(app.shot("hidden"), *LOG) == 1, "the interface is still drawn after Ctrl+`")
    app.key("ctrl+grave")
    app.wait_for("the interface to show", lambda s: s.get("ui") == "1")
    time.sleep(0.5)
    check(colors(app.shot("again"), *LOG) > 2, "the interface did not come back")

    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")
    time.sleep(3)  # a steady frame rate for the figures, with nothing but the log and the sphere
    figures(app, app.report())
    app.close()
    check(app.wait_exit() == 0, "the application did not end cleanly (the three counts at close)")
    check(len(app.windows()) == 0, "a window is left")
    check(os.path.exists(os.path.join(app.folder, "vellumbra.xml")), "no configuration written at close")


def scenario_keys(app):
    """Keys wait for the start phase, but Ctrl+` does not; I opens the key sheet."""
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("i")
    app.key("ctrl+grave")
    app.wait_for("the interface to hide during the start phase", lambda s: s.get("ui") == "0")
    check(app.report().get("text") == "", "I acted during the start phase")
    app.key("ctrl+grave")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("ui") == "1")
    app.key("i")
    app.wait_for("the key sheet", lambda s: s.get("text") == "Controls")
    time.sleep(0.5)
    check(colors(app.shot("sheet"), 400, 120, 400, 300) > 1, "the key sheet is not drawn")
    app.key("shift+i")
    app.wait_for("the info window", lambda s: s.get("info") == "1")
    app.key("i")
    app.wait_for("the key sheet to close", lambda s: s.get("text") == "")
    app.close()
    check(app.wait_exit() == 0, "the application did not end cleanly")


def answer_close(app, answer):
    """Asks the window to close and answers its question with the key `answer`."""
    app.close()
    end = time.time() + LIMIT
    while len(app.windows()) < 2:
        check(time.time() < end, "no question at close")
        time.sleep(0.1)
    box = app.windows()[-1]
    app.xdo("windowfocus", "--sync", box)
    app.xdo("key", "--clearmodifiers", answer)


def scenario_close(app):
    """A scene that is not empty asks before closing; No keeps the program, Yes ends it with
    nothing of the scene left."""
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")
    for answer in ("alt+n", "alt+y"):
        answer_close(app, answer)
        if answer == "alt+n":
            end = time.time() + LIMIT
            while len(app.windows()) > 1:
                check(time.time() < end, "the question did not go away")
                time.sleep(0.1)
            time.sleep(1)
            check(app.process.poll() is None, "No ended the program")
    check(app.wait_exit() == 0, "the application did not end cleanly (the three counts at close)")


def scenario_hidpi(app):
    """Two device pixels per widget unit: the pointer arrives in device pixels, and the
    automatic scale (physical over logical resolution, here 1/2) draws the interface at half
    the device size, so that it comes out twice as large."""
    app.env["QT_SCALE_FACTOR"] = "2"
    app.start()
    state = app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    check(state.get("scale") == "2" and state.get("device") == "1280x800", "device size %r" % state)
    check(state.get("uifb") == "640x400", "interface framebuffer %r" % state.get("uifb"))
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3")
    app.xdo("mousemove", "300", "200")
    app.wait_for("the pointer in device pixels", lambda s: s.get("mouse") == "300,200")
    check(colors(app.shot("hidpi"), *LOG) > 2, "the log window is not drawn")
    app.close()
    check(app.wait_exit() == 0, "the application did not end cleanly")


def pixel(png, x, y):
    out = subprocess.run(["convert", png, "-crop", "1x1+%d+%d" % (x, y), "+repage", "-format",
                          "%[fx:int(255*r)],%[fx:int(255*g)],%[fx:int(255*b)]", "info:"],
                         check=True, capture_output=True, text=True).stdout
    return tuple(int(v) for v in out.split(","))


def black(png, x, y, w, h):
    """Pixels of a region whose brightest channel is below 20 (of 255)."""
    raw = subprocess.run(["convert", png, "-crop", "%dx%d+%d+%d" % (w, h, x, y), "+repage", "-channel", "RGB",
                          "-separate", "-evaluate-sequence", "Max", "-depth", "8", "gray:-"],
                         check=True, capture_output=True).stdout
    return sum(1 for v in raw if v < 20)


def scenario_scene(app):
    """A scene of one mesh (the test hook's box) is drawn: the first frame frames the scene, so
    the middle of the view is the box, shaded, and the stage around it keeps its colour."""
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")
    time.sleep(1)
    png = app.shot("scene")
    stage = pixel(png, 150, 150)
    middle = [pixel(png, 640 + dx, 400 + dy) for dx in (-40, 0, 40) for dy in (-40, 0, 40)]
    drawn = sum(1 for p in middle if max(abs(a - b) for a, b in zip(p, stage)) > 24)
    check(drawn == len(middle), "the mesh is not in the middle of the view: %r against the stage %r"
          % (middle, stage))
    check(colors(png, 560, 320, 160, 160) > 3, "the mesh is drawn without shading")
    check(colors(png, 20, 300, 100, 200) == 1, "the stage beside the mesh is not one colour")

    # The Render tab switches the edge pass on: the box's outline turns black.
    state = app.wait_for("the Render tab", lambda s: "edges_at" in s)
    check(state.get("edges") == "0", "edges are on before the switch: %r" % state)
    x, y = (str(int(float(v))) for v in state["edges_at"].split(","))
    app.xdo("mousemove", x, y)  # the interface learns what the pointer is over before the press
    time.sleep(0.5)
    app.xdo("click", "1")
    app.wait_for("the edge pass", lambda s: s.get("edges") == "1")
    app.xdo("mousemove", "150", "150")
    time.sleep(1)
    edged = app.shot("edges")
    before, after = black(png, 340, 100, 600, 600), black(edged, 340, 100, 600, 600)
    check(after > before + 200, "no black outline: %d black pixels against %d" % (after, before))
    app.process.kill()
    app.process.wait()


def write_config(app, body):
    with open(os.path.join(app.folder, "vellumbra.xml"), "w") as f:
        f.write(body)


def read_config(app):
    with open(os.path.join(app.folder, "vellumbra.xml")) as f:
        return f.read()


def run_and_close(app):
    app.start()
    state = app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")
    app.close()
    check(app.wait_exit() == 0, "the application did not end cleanly")
    return state


def scenario_config(app):
    """What is written at close is read at the next start: scale rules, eight recent files,
    a gap ending the list."""
    files = "".join('<File%d path="/r/%d.vsc"/>' % (i, i) for i in list(range(1, 10)) + [11])
    write_config(app, '<?xml version="1.0"?><Vellumbra><Version value="20230711"/><FPS cap="1" max="120"/>'
                      '<UIScale auto="0" value="2"/><RecentFiles>%s</RecentFiles></Vellumbra>' % files)
    for run in range(2):
        state = run_and_close(app)
        check(state.get("uiscale") == "0.5 auto=0", "interface scale %r on run %d" % (state.get("uiscale"), run))
        check(state.get("uifb") == "640x400", "interface framebuffer %r" % state.get("uifb"))
        text = read_config(app)
        written = re.findall(r'<File(\d+) path="([^"]*)"', text)
        check(written == [(str(i), "/r/%d.vsc" % i) for i in range(1, 9)], "recent files written %r" % written)
        check(re.search(r'<UIScale auto="0" value="2"', text), "UIScale written as %r" % text)
        check(re.search(r'<FPS cap="1" max="120"', text), "FPS written as %r" % text)

    write_config(app, text.replace("<File3 ", "<Gap "))
    run_and_close(app)
    written = re.findall(r"<File(\d+) ", read_config(app))
    check(written == ["1", "2"], "a gap did not end the list: %r" % written)


def scenario_broken(app):
    """A broken, truncated or missing configuration starts with the defaults and a window, and
    says so in the log, newest first."""
    good = ('<?xml version="1.0"?><Vellumbra><UIScale auto="0" value="2"/>'
            '<RecentFiles><File1 path="/a.vsc"/></RecentFiles></Vellumbra>')
    for name, text in (("truncated", good[: len(good) // 2]), ("broken", "\x00\x01<<<"), ("missing", None)):
        path = os.path.join(app.folder, "vellumbra.xml")
        if text is None:
            if os.path.exists(path):
                os.remove(path)
        else:
            write_config(app, text)
        state = run_and_close(app)
        check(state.get("uiscale") == "1 auto=1", "%s: not the default scale: %r" % (name, state))
        lines = [state.get("log%d" % i, "") for i in range(3)]
        check(lines[0].startswith(" i  Ready in") and lines[1].startswith(" i  OpenGL"),
              "%s: log not newest first: %r" % (name, lines))
        warned = lines[2].startswith("[w] vellumbra.xml cannot be read")
        check(warned == (text is not None), "%s: log %r" % (name, lines))


def answer_dialogs(app, path):
    """The next file dialog answers `path` (see FileDialogs.h)."""
    with open(app.env["VELLUMBRA_TEST_DIALOG"], "w") as f:
        f.write(path + "\n")


def close_answering_yes(app):
    answer_close(app, "alt+y")
    check(app.wait_exit() == 0, "the application did not end cleanly")


def logged(state, text):
    return any(text in state.get("log%d" % i, "") for i in range(3))


def scenario_files(app):
    """Save through the dialog flow; a save into a read-only folder keeps the old file and says
    so; open through the dialog flow and through the recent list of the start window; a
    failed open leaves the scene on screen with the reason in the log."""
    app.env["VELLUMBRA_TEST_DIALOG"] = os.path.join(app.folder, "dialog.answer")
    app.env["VELLUMBRA_TEST_SCENE"] = "1"
    folder = os.path.join(app.folder, "scenes")
    os.mkdir(folder)
    scene = os.path.join(folder, "box.vsc")
    answer_dialogs(app, scene)
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")
    app.key("ctrl+s")
    app.wait_for("the scene saved", lambda s: s.get("file") == scene and logged(s, "Saved"))
    check(os.path.getsize(scene) > 100, "the saved scene is %d bytes" % os.path.getsize(scene))

    with open(scene, "ab") as f:
        f.write(b"OLD")  # marks the old file
    subprocess.run(["chattr", "+i", folder], check=True)
    try:
        app.key("ctrl+s")
        app.wait_for("the failed save", lambda s: logged(s, "[e] Cannot save") and s.get("blocked") == "0")
        with open(scene, "rb") as f:
            check(f.read().endswith(b"OLD"), "a failed save changed the old file")
        check(os.listdir(folder) == ["box.vsc"], "a failed save left %r" % os.listdir(folder))
    finally:
        subprocess.run(["chattr", "-i", folder], check=True)
    with open(scene, "rb+") as f:
        f.truncate(os.path.getsize(scene) - 3)
    close_answering_yes(app)

    del app.env["VELLUMBRA_TEST_SCENE"]
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    app.wait_for("the start window to close", lambda s: s.get("start") == "3" and s.get("objects") == "0")
    app.key("ctrl+o")
    app.wait_for("the scene opened", lambda s: s.get("objects") == "1" and s.get("file") == scene)

    broken = os.path.join(folder, "broken.vsc")
    with open(broken, "wb") as f:
        f.write(struct.pack("<4I", 0xFFFFAAAA, 20230711, 0x99999999, 0xFFFFFF))  # a block past the end
    answer_dialogs(app, broken)
    app.key("ctrl+o")
    state = app.wait_for("the failed open", lambda s: logged(s, "Cannot open") and s.get("blocked") == "0")
    check(state.get("objects") == "1" and state.get("file") == scene, "a failed open changed the scene: %r" % state)
    close_answering_yes(app)

    # The newest recent file is the first entry of the start window, below its title.
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    for y in range(360, 470, 6):
        app.xdo("mousemove", "640", str(y), "click", "1")
        time.sleep(0.3)
        if app.report().get("objects") == "1":
            break
    app.wait_for("the recent scene opened", lambda s: s.get("objects") == "1" and s.get("file") == scene)
    close_answering_yes(app)


def vector(state, key):
    return tuple(float(v) for v in state[key].split(","))


def sub(a, b):
    return tuple(x - y for x, y in zip(a, b))


def angle(a, b):
    dot = sum(x * y for x, y in zip(a, b))
    norms = (sum(x * x for x in a) * sum(y * y for y in b)) ** 0.5
    return math.acos(max(-1.0, min(1.0, dot / norms)))


def drag(app, start, end, steps=6, button="1"):
    """A press, a few moves a frame or more apart, a release."""
    app.xdo("mousemove", str(start[0]), str(start[1]))
    time.sleep(0.3)
    app.xdo("mousedown", button)
    time.sleep(0.3)
    for i in range(1, steps + 1):
        x = start[0] + (end[0] - start[0]) * i // steps
        y = start[1] + (end[1] - start[1]) * i // steps
        app.xdo("mousemove", str(x), str(y))
        time.sleep(0.15)
    time.sleep(0.3)
    app.xdo("mouseup", button)


def settled(app, what, predicate):
    """Waits for the predicate, then for two reports in a row that agree on it."""
    app.wait_for(what, predicate)
    time.sleep(0.5)
    return app.wait_for(what, predicate)


def open_view(app):
    app.start()
    app.wait_for("the start window", lambda s: shown(s) and s.get("popup") == "1")
    app.key("Escape")
    return settled(app, "the start window to close", lambda s: s.get("start") == "3" and s.get("popup") == "0")


def tint(png, x, y, r=12):
    """Mean of red minus blue around a point: the selection tint is orange."""
    values = [pixel(png, x + dx, y + dy) for dx in (-r, 0, r) for dy in (-r, 0, r)]
    return sum(p[0] - p[2] for p in values) / len(values)


def moved_by(app, before, after, keys, pixels):
    """Every object of `keys` moved by the same world vector, as long as `pixels` of pointer
    travel at the depth of the press."""
    shift = [tuple(a - b for a, b in zip(vector(after, k), vector(before, k))) for k in keys]
    length = sum(v * v for v in shift[0]) ** 0.5
    expected = pixels * float(after["unit"])
    check(abs(length - expected) <= 0.02 * expected,
          "moved %g, expected %g (%d pixels of %s)" % (length, expected, pixels, after["unit"]))
    for other in shift[1:]:
        check(max(abs(a - b) for a, b in zip(other, shift[0])) < 1e-9, "the twins moved apart: %r" % shift)


def undo_redo(app, before, after, keys):
    """Ctrl+Z gives the placement from before the move back exactly, Ctrl+Shift+Z the moved one."""
    done = int(before["history"].split("/")[0])
    app.xdo("key", "ctrl+z")
    undone = settled(app, "the undo", lambda s: s.get("history", "").startswith("%d/" % done))
    for k in keys:
        check(undone[k] == before[k], "undo left %s at %s, not %s" % (k, undone[k], before[k]))
    app.xdo("key", "ctrl+shift+z")
    redone = settled(app, "the redo", lambda s: s.get("history") == after["history"])
    for k in keys:
        check(redone[k] == after[k], "redo left %s at %s, not %s" % (k, redone[k], after[k]))


def scenario_viewport(app):
    """One box: an orbit drag changes the picture and not the model; a click selects it (the
    tint); a Move drag moves it by the pointer's travel at its depth; undo and redo."""
    start = open_view(app)
    check(start.get("action") == "20", "Move is not the first action: %r" % start)
    # The first press of the session also gives the view focus: the drag must survive that.
    before_orbit = app.shot("before-orbit")
    drag(app, (200, 200), (320, 260))
    orbited = settled(app, "the orbit", lambda s: s.get("eye") != start["eye"] and s.get("selected") == "0")
    check(orbited["pos0"] == start["pos0"] and orbited["history"] == start["history"],
          "the orbit changed the model: %r" % orbited)
    # The whole drag turns the view (about 1.5 rad for 120 by 60 pixels), not its first frame.
    turned = angle(sub(vector(start, "eye"), vector(start, "target")), sub(vector(orbited, "eye"), vector(orbited, "target")))
    check(turned > 1.0, "the orbit turned %g rad only" % turned)
    after_orbit = app.shot("after-orbit")
    check(sum(1 for x in range(560, 720, 20) for y in range(320, 480, 20)
              if pixel(before_orbit, x, y) != pixel(after_orbit, x, y)) > 10, "the orbit left the picture alone")

    # A click on the box selects it: its pixels take the orange tint.
    box = tuple(int(float(v)) for v in orbited["screen0"].split(","))
    app.xdo("mousemove", "100", "150")
    time.sleep(0.5)
    plain = app.shot("plain")
    app.xdo("mousemove", str(box[0]), str(box[1]), "click", "1")
    settled(app, "the selection", lambda s: s.get("selected") == "1")
    app.xdo("mousemove", "100", "150")
    time.sleep(0.5)
    selected = app.shot("selected")
    check(tint(selected, *box) > tint(plain, *box) + 15, "no selection tint: %g against %g"
          % (tint(selected, *box), tint(plain, *box)))

    before = app.report()
    drag(app, box, (box[0] + 60, box[1]))
    after = settled(app, "the move", lambda s: s.get("pos0") != before["pos0"] and s.get("history") != before["history"])
    moved_by(app, before, after, ["pos0"], 60)
    undo_redo(app, before, after, ["pos0"])

    # The status panel names the action, the transform frame and the projection.
    check(start.get("status") == "Move|Frame: Object|Proj: On Object|To Parent|", "status %r" % start.get("status"))
    app.key("ctrl+f")
    app.key("t")
    settled(app, "the status", lambda s: s.get("status") == "Move|Frame: World|Proj: Tan. Plane|To Parent|")
    panel = colors(app.shot("status"), 10, 700, 120, 90)
    check(panel > 3, "the status panel is not drawn: %d colours" % panel)

    # Del deletes the hovered box as one step.
    app.xdo("mousemove", str(box[0]), str(box[1]))
    settled(app, "the hover", lambda s: s.get("hover") != "0")
    app.xdo("key", "Delete")
    settled(app, "the delete", lambda s: s.get("objects") == "0")
    app.xdo("key", "ctrl+z")
    settled(app, "the undone delete", lambda s: s.get("objects") == "1")
    app.process.kill()
    app.process.wait()


def scenario_twins(app):
    """Two linked twins: with groups on, a click selects both, a Move drag moves both alike,
    undo and redo give both back exactly."""
    start = open_view(app)
    app.key("g")
    left = tuple(int(float(v)) for v in start["screen0"].split(","))
    app.xdo("mousemove", str(left[0]), str(left[1]), "click", "1")
    before = settled(app, "both twins selected", lambda s: s.get("selected") == "2")
    drag(app, left, (left[0], left[1] + 50))
    after = settled(app, "the move and its step", lambda s: s.get("pos0") != before["pos0"]
                    and s.get("pos1") != before["pos1"] and s.get("history") != before["history"])
    moved_by(app, before, after, ["pos0", "pos1"], 50)
    undo_redo(app, before, after, ["pos0", "pos1"])
    app.process.kill()
    app.process.wait()


def patch(png, x, y, r=6):
    """The pixels of a square around a point, as one flat list."""
    return [c for dx in range(-r, r + 1, 3) for dy in range(-r, r + 1, 3) for c in pixel(png, x + dx, y + dy)]


def scenario_sculpt(app):
    """A clay sphere: A enters sculpt mode and F3 takes the Clay brush; a slow drag over the
    sphere changes the surface under it (the picture there and the shape's checksum) and
    nothing far from it; Ctrl+Z gives the shape back exactly."""
    start = open_view(app)
    centre = tuple(int(float(v)) for v in start["screen0"].split(","))
    app.key("a")
    settled(app, "sculpt mode", lambda s: s.get("mode") == "3" and "shape0" in s)
    app.key("F3")
    for _ in range(20):
        app.key("bracketright")
    app.xdo("mousemove", "60", "60")
    # Away from the sphere, nothing hovered: no tint on the pictures compared.
    before = settled(app, "the pointer away", lambda s: s.get("mouse") == "60,60" and s.get("hover") == "0")
    check(before.get("status", "").startswith("Clay|") and "|Brush: " in before.get("status", ""),
          "the status panel does not show the brush: %r" % before.get("status"))
    plain = app.shot("plain")
    # A press, a second's wait, small steps with pauses, a wait, a release: every step is a
    # frame or more, whatever the machine's load.
    y = centre[1] - 100
    app.xdo("mousemove", str(centre[0] - 60), str(y))
    time.sleep(1.0)
    app.xdo("mousedown", "1")
    time.sleep(1.0)
    for i in range(1, 13):
        app.xdo("mousemove", str(centre[0] - 60 + 10 * i), str(y))
        time.sleep(0.25)
    time.sleep(0.5)
    app.xdo("mouseup", "1")
    after = settled(app, "the stroke and its step", lambda s: s.get("shape0") != before["shape0"]
                    and s.get("history") != before["history"])
    app.xdo("mousemove", "60", "60")
    settled(app, "the pointer away", lambda s: s.get("mouse") == "60,60" and s.get("hover") == "0")
    time.sleep(0.5)
    stroked = app.shot("stroked")
    under = sum(abs(a - b) for a, b in zip(patch(stroked, centre[0], y), patch(plain, centre[0], y)))
    far = sum(abs(a - b) for a, b in zip(patch(stroked, centre[0], centre[1] + 170),
                                           patch(plain, centre[0], centre[1] + 170)))
    check(under > 200, "the picture under the stroke did not change (%d)" % under)
    check(far < under / 4, "the picture changed far from the stroke (%d against %d)" % (far, under))
    done = int(before["history"].split("/")[0])
    app.xdo("key", "ctrl+z")
    undone = settled(app, "the undo", lambda s: s.get("history", "").startswith("%d/" % done))
    check(undone["shape0"] == before["shape0"], "undo left the shape at %s, not %s"
          % (undone["shape0"], before["shape0"]))
    app.xdo("key", "ctrl+shift+z")
    redone = settled(app, "the redo", lambda s: s.get("history") == after["history"])
    check(redone["shape0"] == after["shape0"], "redo gave %s, not %s" % (redone["shape0"], after["shape0"]))
    app.process.kill()
    app.process.wait()


def main():
    scenario, exe = sys.argv[1], os.path.abspath(sys.argv[2])
    folder = tempfile.mkdtemp(prefix="vellumbra-%s-" % scenario)
    display = Display()
    app = App(exe, display, folder, scene=(scenario in ("close", "scene", "viewport")))
    if scenario == "twins":
        app.env["VELLUMBRA_TEST_SCENE"] = "2"
    if scenario == "sculpt":
        app.env["VELLUMBRA_TEST_SCENE"] = "3"
    try:
        globals()["scenario_" + scenario](app)
    except Failure as failure:
        print("FAILED %s: %s (files kept in %s)" % (scenario, failure, folder))
        if getattr(app, "process", None) and app.process.poll() is None:
            app.process.kill()
        display.close()
        return 1
    display.close()
    shutil.rmtree(folder, ignore_errors=True)
    print("passed", scenario)
    return 0


if __name__ == "__main__":
    sys.exit(main())
