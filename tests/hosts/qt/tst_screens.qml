// The screens over the real application: list, gallery, editor, pickers, and back.
import QtQuick
import QtTest
import Quillomat.Host
import Quillomat.Screens
import "Screens.js" as Screens

Item {
    width: 10
    height: 10

    Main {
        id: main
        width: 360
        height: 740
    }

    TestCase {
        name: "Screens"
        when: windowShown

        function item(name) { return Screens.find(main.contentItem, name); }
        function expect(name) {
            tryVerify(() => item(name) !== null, 5000, "no " + name);
            return item(name);
        }
        function gone(name) { tryVerify(() => item(name) === null, 5000, name + " stays"); }
        function press(name) {
            expect(name);
            wait(250); // what moves comes to rest
            mouseClick(expect(name));
        }

        function initTestCase() {
            session.addPicture("older.png", "screenshot.png", 500);
            session.addPicture("newer.jpg", "background.jpg", 100);
            session.addFolder("holiday");
            session.addBrokenPicture("broken.png");
            session.launch();
            expect("Phones");
        }
        function init() {
            if (Shell.presentation) {
                Shell.presentation.cancel();
                Shell.presentation.answer(0);
                tryCompare(Shell, "presentation", null);
            }
            for (let screen = 1; screen < 3; ++screen)
                Shell.back();
            tryCompare(Shell, "depth", 1);
            expect("Phones");
            wait(250);
        }

        function test_rowsAreAsHighAsTheCoreSays() {
            compare(expect("Phones").height, 119);
            compare(expect("Scenes").y - expect("Phones").y, 119);
        }
        function test_wideWindowKeepsTheColumnNarrow() {
            main.width = 1200;
            tryCompare(expect("Phones"), "width", 480);
            main.width = 360;
        }
        function test_galleryKeepsTheColumnsMeasures() {
            press("Phones");
            const first = expect("upright.png");
            compare(Qt.size(first.width, first.height), Qt.size(360, 260));
            compare(first.y, 0);
            const column = first.ListView.view;
            compare(column.spacing, 40);
            compare(column.topMargin, 40);
            press("Back");
            gone("upright.png");
        }
        // The kind of screen that the focus is in.
        function focusedScreen() {
            for (let place = main.activeFocusItem; place; place = place.parent) {
                if (place.screen && place.screen.kind)
                    return place.screen.kind;
            }
            return "none";
        }
        function test_tabDuringAPushStaysWithTheNewScreen() {
            main.requestActivate();
            tryVerify(() => main.active);
            press("Phones");
            compare(focusedScreen(), "gallery");
            for (let times = 0; times < 4; ++times) {
                keyClick(Qt.Key_Tab);
                compare(focusedScreen(), "gallery");
            }
            press("Back");
            gone("upright.png");
        }
        function test_dismissClosesTheSheet() {
            press("Options");
            expect("Import Mockup");
            press("Dismiss");
            gone("Import Mockup");
            tryCompare(Shell, "presentation", null);
        }
        function test_importPickerIsTurnedAway() {
            press("Options");
            press("Import Mockup");
            expect("Browse files");
            press("Cancel");
            gone("Browse files");
        }
        function test_pickerShowsFoldersThenTheNewestPictures() {
            press("Phones");
            press("upright.png");
            press("Left screenshot");
            const names = ["holiday", "broken.png", "newer.jpg", "older.png"].map(name => expect(name).index);
            compare(names, [0, 1, 2, 3]);
            press("broken.png");
            expect("Browse files");
            tryVerify(() => Shell.presentation.trouble.includes("broken.png"));
            press("holiday");
            gone("older.png");
            press("Folder above");
            expect("older.png");
            press("Cancel");
            gone("Browse files");
        }
        function test_unavailableToolsAreThoseThatTheMockupDoesNotTake() {
            press("Phones");
            press("upright.png");
            verify(!expect("Right screenshot").available);
            for (const name of ["Left screenshot", "Background", "Glare", "Save"])
                verify(expect(name).available, name);
        }
        function test_wholeVisitSavesAPictureAndComesBack() {
            press("Phones");
            press("upright.png");
            const preview = expect("preview");
            tryCompare(preview, "isDrawn", true, 10000);
            press("Left screenshot");
            press("older.png");
            gone("Browse files");
            press("Background");
            press("newer.jpg");
            expect("Choose");
            const crop = Shell.presentation.crop;
            const before = crop.part.width;
            const hole = expect("cropWindow");
            mouseDrag(hole, hole.width / 2, hole.height / 2, -40, 0);
            mouseWheel(hole, hole.width / 2, hole.height / 2, 0, 240);
            verify(crop.part.width < before);
            press("Choose");
            press("Yes");
            gone("Yes");
            press("Glare");
            tryVerify(() => expect("Glare").on);
            press("Save");
            expect("Thanks!");
            compare(session.savedPictures().length, 1);
            press("Thanks!");
            expect("Phones");
            tryCompare(Shell, "depth", 1);
        }
    }
}
