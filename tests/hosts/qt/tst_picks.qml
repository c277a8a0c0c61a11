// Pictures that are dropped or pasted: picks while a pick is under way, nothing at any other time.
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
        name: "Picks"
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
        function beginPick(tool) {
            press(tool);
            expect("Browse files");
            compare(Shell.presentation.kind, "photos");
            wait(250);
        }

        function initTestCase() {
            session.addPicture("shot.png", "screenshot.png", 500);
            session.addBrokenPicture("broken.png");
            session.launch();
            expect("Phones");
        }
        function init() {
            press("Phones");
            press("upright.png");
            expect("Left screenshot");
            wait(250);
        }
        function cleanup() {
            if (Shell.presentation) {
                Shell.presentation.cancel();
                tryCompare(Shell, "presentation", null);
            }
            for (let screen = 1; screen < 3; ++screen)
                Shell.back();
            tryCompare(Shell, "depth", 1);
            wait(250);
        }

        function test_droppedFileIsAPick() {
            beginPick("Left screenshot");
            verify(session.dropFile(main, session.pictures() + "/shot.png"));
            tryCompare(Shell, "presentation", null);
        }
        function test_droppedPictureWithoutAFileIsAPick() {
            beginPick("Left screenshot");
            verify(session.dropData(main, "image/png", "screenshot.png"));
            tryCompare(Shell, "presentation", null);
        }
        function test_droppedPictureForABackgroundIsCroppedFirst() {
            beginPick("Background");
            verify(session.dropData(main, "image/jpeg", "background.jpg"));
            expect("Choose");
            Shell.presentation.finishCrop();
            tryVerify(() => Shell.presentation?.kind === "alert" ?? false); // whether to blur it
            wait(250);
            Shell.presentation.answer(0);
            tryCompare(Shell, "presentation", null);
        }
        function test_dropThatIsNoPictureIsToldAndChangesNothing() {
            beginPick("Left screenshot");
            verify(session.dropData(main, "image/png", "no such sample"));
            verify(Shell.presentation.trouble !== "");
            compare(Shell.presentation.kind, "photos");
            verify(session.dropFile(main, session.pictures() + "/broken.png"));
            verify(Shell.presentation.trouble.includes("broken.png"));
        }
        function test_dropOfAnythingElseIsRefused() {
            beginPick("Left screenshot");
            verify(!session.dropData(main, "text/plain", "mockup"));
            compare(Shell.presentation.trouble, "");
        }
        function test_dropWithoutAPickIsRefused() {
            verify(!session.dropFile(main, session.pictures() + "/shot.png"));
            verify(!session.dropData(main, "image/png", "screenshot.png"));
            compare(Shell.presentation, null);
        }
        function test_pastedPictureIsAPick() {
            session.copyData("image/png", "screenshot.png");
            beginPick("Left screenshot");
            Shell.presentation.paste();
            tryCompare(Shell, "presentation", null);
        }
        function test_pastedFileIsAPick() {
            session.copyFile(session.pictures() + "/shot.png");
            beginPick("Left screenshot");
            Shell.presentation.paste();
            tryCompare(Shell, "presentation", null);
        }
        function test_whatComesWhileThePickerLeavesIsNotTaken() {
            beginPick("Background");
            const picker = Shell.presentation;
            picker.cancel();
            verify(picker.isLeaving);
            picker.chooseData(new ArrayBuffer(8));
            picker.choose(session.pictures() + "/shot.png");
            compare(picker.crop, null);
            compare(picker.trouble, "");
            tryCompare(Shell, "presentation", null);
        }
    }
}
