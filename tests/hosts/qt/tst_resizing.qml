// The window turns and changes its size: the same screen at the same place, all of it to be seen.
import QtQuick
import QtTest
import Quillomat.Host
import Quillomat.Screens
import Quillomat.Theme
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
        name: "Resizing"
        when: windowShown

        readonly property var shapes: [Qt.size(740, 360), Qt.size(1280, 800), Qt.size(820, 1100), Qt.size(320, 480),
                                       Qt.size(360, 740)]

        function item(name) { return Screens.find(main.contentItem, name); }
        function expect(name) {
            tryVerify(() => item(name) !== null, 5000, "no " + name);
            return item(name);
        }
        function press(name) {
            expect(name);
            wait(250); // what moves comes to rest
            mouseClick(expect(name));
        }
        function shape(size) {
            main.width = size.width;
            main.height = size.height;
            tryCompare(main.contentItem, "width", size.width);
            tryCompare(main.contentItem, "height", size.height);
            wait(60);
        }
        function placeOf(thing) {
            const corner = thing.mapToItem(main.contentItem, 0, 0);
            return Qt.rect(corner.x, corner.y, thing.width, thing.height);
        }
        function verifyInside(name) {
            const place = placeOf(expect(name));
            verify(place.x >= 0 && place.y >= 0 && place.x + place.width <= main.width + 0.01
                   && place.y + place.height <= main.height + 0.01,
                   name + " at " + place + " in " + main.width + " x " + main.height);
        }
        function verifyApart(names) {
            const places = names.map(name => placeOf(expect(name)));
            for (let i = 0; i < places.length; ++i)
                for (let j = 0; j < i; ++j) {
                    const a = places[i], b = places[j];
                    verify(a.x + a.width <= b.x + 0.01 || b.x + b.width <= a.x + 0.01
                           || a.y + a.height <= b.y + 0.01 || b.y + b.height <= a.y + 0.01,
                           names[i] + " lies on " + names[j] + " at " + main.width + " x " + main.height);
                }
        }

        function initTestCase() {
            session.addPicture("picture.jpg", "background.jpg", 100);
            session.launch();
            expect("Phones");
        }
        function init() {
            if (Shell.presentation) {
                Shell.presentation.cancelCrop();
                Shell.presentation.cancel();
                Shell.presentation.answer(0);
                tryCompare(Shell, "presentation", null);
            }
            for (let screen = 1; screen < 3; ++screen)
                Shell.back();
            tryCompare(Shell, "depth", 1);
            shape(Qt.size(360, 740));
            expect("Phones");
            wait(250);
        }

        function test_windowTurnsAsAPhoneDoes() {
            verify(main.minimumWidth <= 360 && main.minimumHeight <= 360);
        }
        function test_editorStaysAndShowsAllItsTools() {
            press("Phones");
            press("upright.png");
            const preview = expect("preview");
            tryCompare(preview, "isDrawn", true, 10000);
            const tools = ["Left screenshot", "Right screenshot", "Background", "Glare", "Save"];
            for (const size of shapes) {
                shape(size);
                compare(Shell.depth, 3);
                compare(item("preview"), preview, "it is the same one");
                for (const name of tools.concat(["preview", "Back", "Options"]))
                    verifyInside(name);
                verifyApart(tools.concat(["preview", "Back", "Options"]));
                for (const name of tools)
                    verify(expect(name).width >= Theme.target && expect(name).height >= Theme.target, name);
                fuzzyCompare(preview.width, preview.height, 1);
                const room = Math.min(main.width, main.height);
                verify(preview.width > 0.5 * room, "the preview has shrunk to " + preview.width);
            }
        }
        function test_previewIsDrawnAnewForEachShape() {
            press("Phones");
            press("upright.png");
            const preview = expect("preview");
            tryCompare(preview, "isDrawn", true, 10000);
            drawn.target = preview;
            for (const size of shapes) {
                drawn.clear();
                shape(size);
                tryVerify(() => drawn.count > 0, 5000, "not drawn at " + size);
            }
        }
        function test_previewStandsOnDevicePixels() {
            press("Phones");
            press("upright.png");
            const preview = expect("preview");
            const ratio = preview.Screen.devicePixelRatio;
            if (scaleFactor > 0)
                compare(ratio, scaleFactor);
            for (let width = 321; width < 420; width += 7)
                for (let height = 481; height < 760; height += 61) {
                    shape(Qt.size(width, height));
                    const place = placeOf(preview);
                    for (const side of [place.x, place.y, place.width, place.height])
                        fuzzyCompare(side * ratio, Math.round(side * ratio), 0.001);
                }
        }
        function test_listKeepsItsPlace() {
            const list = expect("Phones").ListView.view;
            shape(Qt.size(740, 360)); // three rows do not fit here
            list.contentY = 60;
            for (const size of [Qt.size(900, 320), Qt.size(740, 360)]) {
                shape(size);
                fuzzyCompare(list.contentY, 60, 1);
            }
        }
        function test_galleryKeepsWhatStandsInTheMiddle() {
            press("Phones");
            const column = expect("upright.png").ListView.view;
            wait(100);
            column.contentY = 390; // the third of six
            wait(50);
            function standing() {
                return column.itemAt(column.width / 2, column.contentY + column.height / 2)?.name ?? "between";
            }
            const middle = standing();
            compare(middle, "pair.png");
            for (const size of shapes) {
                shape(size);
                compare(standing(), middle, "at " + size);
            }
            fuzzyCompare(column.contentY, 390, 1);
        }
        function test_galleryStaysAtItsBeginning() {
            press("Phones");
            const column = expect("upright.png").ListView.view;
            wait(100);
            compare(column.contentY, -column.topMargin);
        }
        function test_sheetFitsALowWindow() {
            press("Options");
            for (const size of [Qt.size(740, 360), Qt.size(320, 320), Qt.size(360, 740)]) {
                shape(size);
                verifyInside("Dismiss");
            }
            shape(Qt.size(740, 360));
            main.requestActivate();
            tryCompare(main, "active", true);
            wait(100);
            const last = expect("Support this free app");
            last.forceActiveFocus();
            wait(50);
            verifyInside("Support this free app");
            verifyApart(["Support this free app", "Dismiss"]);
            press("Dismiss");
            tryCompare(Shell, "presentation", null);
        }
        function test_editingStepKeepsItsPartOfThePicture() {
            press("Phones");
            press("upright.png");
            press("Background");
            press("picture.jpg");
            expect("Choose");
            const crop = Shell.presentation.crop;
            crop.zoom(2, 0.2, 0.7);
            const before = crop.description;
            for (const size of shapes) {
                shape(size);
                compare(crop.description, before);
                for (const name of ["Choose", "Cancel", "cropWindow"])
                    verifyInside(name);
                verifyApart(["Choose", "Cancel", "cropWindow"]);
            }
        }
        function test_pickerTurnsToo() {
            press("Phones");
            press("upright.png");
            press("Left screenshot");
            for (const size of shapes) {
                shape(size);
                for (const name of ["Cancel", "Browse files", "picture.jpg"])
                    verifyInside(name);
                verifyApart(["Cancel", "Browse files", "picture.jpg"]);
            }
        }
        SignalSpy { id: drawn; signalName: "drawn" }
        /// What the surroundings ask for; none where the platform decides.
        readonly property real scaleFactor: session.scaleFactor()
    }
}
