// Whatever the size of the type: nothing is cut off, and nothing lies on something else.
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
        name: "Text"
        when: windowShown

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
        function placeOf(thing) {
            const corner = thing.mapToItem(main.contentItem, 0, 0);
            return Qt.rect(corner.x, corner.y, thing.width, thing.height);
        }
        function texts(thing, found) {
            if (!thing.visible || thing.opacity === 0)
                return found;
            if (thing.truncated !== undefined && thing.paintedWidth !== undefined && thing.text !== "")
                found.push(thing);
            for (let i = 0; i < thing.children.length; ++i)
                texts(thing.children[i], found);
            return found;
        }
        /// The button that the text belongs to.
        function holder(thing) {
            for (let above = thing.parent; above; above = above.parent)
                if (above.trigger)
                    return above;
            return null;
        }
        function flicks(thing) {
            for (let above = thing.parent; above; above = above.parent)
                if (above.contentY !== undefined)
                    return true;
            return false;
        }
        function verifyTexts(screen) {
            wait(300);
            const all = texts(main.contentItem, []);
            verify(all.length > 0, "there are texts on " + screen);
            for (const text of all) {
                const where = `"${text.text}" on ${screen}`;
                const place = placeOf(text);
                verify(text.paintedHeight <= text.height + 1, where + ": too low for its lines");
                verify(text.paintedWidth <= text.width + 1, where + ": too narrow");
                verify(place.x > -0.5 && place.x + place.width <= main.width + 0.5, where + ": leaves the window");
                if (!flicks(text))
                    verify(place.y > -0.5 && place.y + place.height <= main.height + 0.5, where + ": leaves the window");
                const button = holder(text);
                if (button) {
                    const room = placeOf(button);
                    verify(place.y >= room.y - 0.5 && place.y + place.height <= room.y + room.height + 0.5,
                           where + ": leaves its button");
                    verify(place.x >= room.x - 0.5 && place.x + place.width <= room.x + room.width + 0.5,
                           where + ": leaves its button");
                }
            }
            verifyApart(all, screen);
        }
        /// Texts of one layer; what is presented lies over the screen on purpose.
        function layerOf(thing) {
            let last = thing;
            while (last.parent && last.parent !== main.contentItem)
                last = last.parent;
            return last;
        }
        function verifyApart(all, screen) {
            for (let i = 0; i < all.length; ++i)
                for (let j = 0; j < i; ++j) {
                    if (layerOf(all[i]) !== layerOf(all[j]) || flicks(all[i]) !== flicks(all[j]))
                        continue;
                    const a = placeOf(all[i]), b = placeOf(all[j]);
                    verify(a.x + a.width <= b.x + 1 || b.x + b.width <= a.x + 1 || a.y + a.height <= b.y + 1
                           || b.y + b.height <= a.y + 1, `"${all[i].text}" lies on "${all[j].text}" on ${screen}`);
                }
        }

        function initTestCase() {
            if (session.textScale() > 0)
                fuzzyCompare(Theme.scale, session.textScale(), 0.01);
            session.addPicture("a picture with quite a long name.jpg", "background.jpg", 100);
            session.addFolder("a folder with quite a long name");
            session.launch();
            expect("Phones");
        }

        function test_allScreens_data() {
            return [{ tag: "upright", size: Qt.size(360, 740) }, { tag: "on its side", size: Qt.size(740, 360) },
                    { tag: "smallest", size: Qt.size(320, 480) }];
        }
        function test_allScreens(row) {
            main.width = row.size.width;
            main.height = row.size.height;
            verifyTexts("the list");
            press("Options");
            expect("Dismiss");
            verifyTexts("the sheet");
            press("Import Mockup");
            expect("Cancel");
            verifyTexts("the document picker");
            press("Cancel");
            tryCompare(Shell, "presentation", null);
            press("Options");
            expect("Dismiss").forceActiveFocus();
            Shell.presentation.answer(2);
            expect("Ok");
            verifyTexts("an alert");
            press("Ok");
            tryCompare(Shell, "presentation", null);
            press("Phones");
            expect("upright.png");
            press("upright.png");
            expect("Save");
            verifyTexts("the editor");
            press("Background");
            expect("Cancel");
            verifyTexts("the photo picker");
            press("a picture with quite a long name.jpg");
            expect("Choose");
            verifyTexts("the editing step");
            press("Cancel");
            tryVerify(() => item("Choose") === null);
            press("Cancel");
            tryCompare(Shell, "presentation", null);
            Shell.back();
            Shell.back();
            tryCompare(Shell, "depth", 1);
            expect("Phones");
            wait(300);
        }
        function test_rowsGrowWithTheType() {
            const row = expect("Phones");
            verify(row.height >= 119);
            if (Theme.scale <= 1.2)
                compare(row.height, 119);
            if (Theme.scale > 1.9)
                verify(row.height > 119);
        }
    }
}
