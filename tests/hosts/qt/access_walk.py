#!/usr/bin/env python3
"""Everything on every screen has a role and a name, everything that can be pressed has a press action, and nothing else is
there: the accessibility tree is compared whole, in English and in German. Then a visit by the keyboard alone, from the
start to the saved picture: what has the focus is read from the tree, and the Tab key's way round each screen is compared.

Usage: access_walk.py WINDOW-PROGRAM SOURCE-DIR (status 77: something needed is not installed)
"""
import pathlib
import shutil
import sys
import tempfile
import time
import xml.etree.ElementTree

import window_session

TOOLS = ["Left screenshot", "Right screenshot", "Background", "Glare", "Save"]
SHEET = ["Import Mockup", "Import Tutorial", "Get Import Location", "Browse Mockups", "Support this free app"]
PICTURES = ["Holiday", "background.jpg", "shot.png"]


def expected():
    """Screen by screen: role and name of everything; names that are data are marked with a leading '='."""
    def buttons(*names):
        return [("push button", name) for name in names]

    return {
        "list": buttons("Options") + [("heading", "Selection"), ("list", "Selection"), ("list item", "=Phones"),
                                      ("list item", "=Scenes"), ("list item", "=Imported")],
        "sheet": [("dialog", "Options")] + buttons(*SHEET, "Dismiss"),
        "documents": [("dialog", "=Downloads"), ("list", "=Downloads"), ("label", "Nothing here")]
        + buttons("Cancel", "Browse files", "Folder above"),
        "gallery": buttons("Back", "=upright.png", "=tilted.png", "=pair.png") + [("list", "Frames")],
        "editor": buttons("Back", "Options", *TOOLS) + [("image", "Preview"), ("tool bar", "Tools")],
        "editor's sheet": [("dialog", "Options")] + buttons("Delete Mockup", "Dismiss"),
        "deletion": [("alert", "Completed"), ("label", "Nothing removed. You can only delete mockups you added.")]
        + buttons("Ok"),
        "photos": [("dialog", "=pictures"), ("list", "=pictures")]
        + buttons("Cancel", "Browse files", "Folder above", *("=" + name for name in PICTURES)),
        "editing step": [("dialog", "Move and zoom"), ("image", "Part of the picture")] + buttons("Cancel", "Choose"),
        "question": [("alert", "Option"), ("label", "Blur background Image?")] + buttons("No", "Yes"),
    }


class Texts:
    def __init__(self, source, language):
        self.known = {}
        if language == "de":
            translation = source / "resources/screens/translations/quillomat_de.ts"
            for message in xml.etree.ElementTree.parse(translation).getroot().iter("message"):
                self.known[message.findtext("source")] = message.findtext("translation")

    def __call__(self, text):
        if text.startswith("="):
            return text[1:]
        return self.known[text] if self.known else text


def tree(session):
    """Role, name, and whether it can be pressed."""
    found = []
    for node in session.nodes():
        role = node.getRoleName()
        if role in ("frame", "layered pane"):
            continue
        try:
            action = node.queryAction()
            names = {action.getName(index).lower() for index in range(action.nActions)}
        except NotImplementedError:
            names = set()
        found.append((role, node.name, "press" in names))
    return found


def compare(session, screen, texts):
    wanted = sorted((role, texts(name)) for role, name in expected()[screen])
    last = []

    def agrees():
        last[:] = tree(session)
        return sorted((role, name) for role, name, _ in last) == wanted

    try:
        session.wait_for(agrees, screen, 8)
    except AssertionError:
        here = sorted((role, name) for role, name, _ in last)
        raise AssertionError(f"{screen}: too much: {[x for x in here if x not in wanted]}, missing: "
                             f"{[x for x in wanted if x not in here]}") from None
    for role, name, pressable in last:
        assert name, f"{screen}: a nameless {role}"
        assert pressable == (role in ("push button", "list item")), f'{screen}: "{name}" pressed: {pressable}'
    return len(wanted)


def open_session(program, source, folder, *options, **environment):
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"),
                                     "--reduce-motion", *options, environment=environment)
    (session.pictures / "Holiday").mkdir()
    for name, sample in (("shot.png", "screenshot.png"), ("background.jpg", "background.jpg")):
        shutil.copy(source / "resources/samples" / sample, session.pictures / name)
    return session


def whole_tree(program, source, folder, language, *options):
    environment = {"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "de"} if language == "de" else {}
    session = open_session(program, source, folder, *options, **environment)
    texts = Texts(source, language)
    count = 0

    def step(screen, press=None):
        nonlocal count
        count += compare(session, screen, texts)
        if press:
            session.press(texts(press))

    try:
        step("list", "Options")
        step("sheet", "Import Mockup")
        step("documents", "Cancel")
        step("list", "=Phones")
        step("gallery", "=upright.png")
        step("editor", "Options")
        step("editor's sheet", "Dismiss")
        step("editor", "Background")
        step("photos", "=background.jpg")
        step("editing step", "Choose")
        step("question", "No")
        step("editor", "Options")
        step("editor's sheet", "Delete Mockup")
        step("deletion", "Ok")
        step("list")
        print(f"{language}: {count} things by role and name, and no other")
    finally:
        session.close()


# By the keyboard alone -----------------------------------------------------------------------------------------------
def focused(session):
    for node in session.nodes():
        state = node.getState()
        if state.contains(session.atspi.STATE_FOCUSED) and node.getRoleName() in ("push button", "list item"):
            return node.name
    return None


def expect_focus(session, name, seconds=8):
    try:
        session.wait_for(lambda: focused(session) == name, "focus", seconds)
    except AssertionError:
        raise AssertionError(f'the focus is on "{focused(session)}" instead of "{name}"') from None


def go_round(session, names):
    """The Tab key's way round, and once back."""
    for name in names[1:] + names[:1]:
        session.key("Tab")
        expect_focus(session, name)
    session.key("shift+Tab")
    expect_focus(session, names[-1])
    session.key("Tab")
    expect_focus(session, names[0])


def by_keyboard(program, source, folder, *options):
    session = open_session(program, source, folder, *options)
    try:
        session.expect("Phones")
        expect_focus(session, "Phones")
        go_round(session, ["Phones", "Options"])
        session.key("Down")
        expect_focus(session, "Scenes")
        session.key("Up")
        expect_focus(session, "Phones")
        session.key("shift+Tab", "space")
        session.expect("Dismiss")
        expect_focus(session, "Dismiss")
        go_round(session, ["Dismiss", *SHEET])
        session.key("Up")
        expect_focus(session, SHEET[-1])
        session.key("Escape")
        session.expect_gone("Dismiss")
        expect_focus(session, "Options")
        session.key("Tab", "Return")

        expect_focus(session, "upright.png")
        go_round(session, ["upright.png", "Back"])
        session.key("Down")
        expect_focus(session, "tilted.png")
        session.key("Up")
        expect_focus(session, "upright.png")
        session.key("Return")

        expect_focus(session, "Left screenshot")
        go_round(session, ["Left screenshot", "Background", "Glare", "Save", "Back", "Options"])
        session.key("Right")  # past what the mockup does not take
        expect_focus(session, "Background")
        session.key("Left")
        expect_focus(session, "Left screenshot")
        session.key("Return")

        expect_focus(session, "Holiday")
        for _ in range(2):
            if focused(session) != "shot.png":
                session.key("Right")
                time.sleep(0.2)
        expect_focus(session, "shot.png")
        session.key("Return")
        session.expect_gone("Browse files")
        expect_focus(session, "Left screenshot")

        session.key("Right", "Return")
        expect_focus(session, "Holiday")
        for _ in range(2):
            if focused(session) != "background.jpg":
                session.key("Right")
                time.sleep(0.2)
        expect_focus(session, "background.jpg")
        session.key("Return")
        expect_focus(session, "Choose")
        session.key("plus", "plus", "Left", "Down")
        session.key("Return")
        expect_focus(session, "Yes")
        session.key("Left")
        expect_focus(session, "No")
        session.key("Return")
        session.expect_gone("No")
        expect_focus(session, "Background")
        session.key("Right", "space", "Right")
        expect_focus(session, "Save")
        session.key("Return")
        expect_focus(session, "Thanks!", 30)
        session.wait_for(lambda: list(session.pictures.glob("Mockup *.png")), "saved picture", 20)
        session.key("Return")
        expect_focus(session, "Phones")
        print("by the keyboard alone: from the start to the saved picture")
    finally:
        session.close()


if __name__ == "__main__":
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-access-") as scratch:
        program, source, place = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(scratch)
        by_keyboard(program, source, place / "keyboard", *sys.argv[3:])
        for language in ("en", "de"):
            whole_tree(program, source, place / language, language, *sys.argv[3:])
