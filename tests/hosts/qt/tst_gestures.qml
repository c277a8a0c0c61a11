// Fingers: the swipe back from the left edge, the flick, the pinch.
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
        id: test
        name: "Gestures"
        when: windowShown

        readonly property Item ground: main.contentItem

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
        /// Where the item stands in the window.
        function leftOf(name) { return expect(name).mapToItem(ground, 0, 0).x; }

        /// One finger along the points, as a person moves it; it stays on the glass.
        function finger(points) {
            const touch = touchEvent(ground);
            touch.press(1, ground, points[0].x, points[0].y).commit();
            for (const point of points.slice(1)) {
                wait(16);
                touch.move(1, ground, point.x, point.y).commit();
            }
            wait(40); // moves are delivered once a frame
            return touch;
        }
        function lift(touch, point) {
            touch.release(1, ground, point.x, point.y).commit();
        }
        function line(from, to, steps) {
            const points = [];
            for (let step = 0; step <= steps; ++step)
                points.push(Qt.point(from.x + (to.x - from.x) * step / steps, from.y + (to.y - from.y) * step / steps));
            return points;
        }
        /// Rests before it is lifted, so that it is no fling.
        function rest(touch, point) {
            for (let i = 0; i < 12; ++i) {
                wait(16);
                touch.move(1, ground, point.x, point.y + i % 2).commit();
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
            expect("Phones");
            wait(250);
            compare(leftOf("Phones"), 0);
        }
        function openGallery() {
            press("Phones");
            expect("upright.png");
            wait(250);
        }

        function test_screenFollowsTheFingerAndGoesBack() {
            openGallery();
            const start = Qt.point(4, 300);
            const touch = finger(line(start, Qt.point(124, 310), 12));
            const here = leftOf("upright.png");
            verify(Math.abs(here - 120) < 30, "stands at " + here);
            verify(item("Phones") !== null, "the screen below does not show");
            for (const point of line(Qt.point(124, 310), Qt.point(264, 310), 12)) {
                wait(16);
                touch.move(1, ground, point.x, point.y).commit();
            }
            wait(40);
            fuzzyCompare(leftOf("upright.png") - here, 140, 1);
            compare(Shell.depth, 2, "the core hears of it only when the finger has let go");
            rest(touch, Qt.point(264, 310));
            lift(touch, Qt.point(264, 310));
            tryCompare(Shell, "depth", 1);
            tryVerify(() => leftOf("Phones") === 0);
            verify(item("upright.png") === null);
        }
        function test_screenSpringsBackWhenLetGoEarly() {
            openGallery();
            const end = Qt.point(120, 300);
            const touch = finger(line(Qt.point(4, 300), end, 12));
            verify(leftOf("upright.png") > 60);
            rest(touch, end);
            lift(touch, end);
            tryVerify(() => leftOf("upright.png") === 0);
            compare(Shell.depth, 2);
            tryVerify(() => item("Phones") === null, 1000, "the screen below stays");
            press("upright.png"); // all is as before
            expect("Save");
        }
        function test_flingGoesBackFromAShortWay() {
            openGallery();
            const touch = finger(line(Qt.point(4, 300), Qt.point(150, 300), 6));
            lift(touch, Qt.point(150, 300));
            tryCompare(Shell, "depth", 1);
        }
        function test_touchThatTheSystemTakesAwayIsNoWishToLeave() {
            openGallery();
            finger(line(Qt.point(4, 300), Qt.point(300, 300), 10));
            verify(leftOf("upright.png") > 200);
            session.cancelTouches(main);
            tryVerify(() => leftOf("upright.png") === 0);
            wait(100);
            compare(Shell.depth, 2);
        }
        function test_fingerThatTurnsRoundStays() {
            openGallery();
            const there = line(Qt.point(4, 300), Qt.point(260, 300), 10);
            const back = line(Qt.point(260, 300), Qt.point(30, 300), 8);
            const touch = finger(there.concat(back));
            lift(touch, Qt.point(30, 300));
            tryVerify(() => leftOf("upright.png") === 0);
            compare(Shell.depth, 2);
        }
        function test_mouseFromTheEdgeGoesBackToo() {
            openGallery();
            mousePress(ground, 5, 300);
            for (const point of line(Qt.point(5, 300), Qt.point(300, 300), 15)) {
                mouseMove(ground, point.x, point.y, 16);
            }
            verify(leftOf("upright.png") > 200);
            mouseRelease(ground, 300, 300);
            tryCompare(Shell, "depth", 1);
        }
        function test_keyThatGoesBackMeanwhileEndsTheSwipe() {
            openGallery();
            const touch = finger(line(Qt.point(4, 300), Qt.point(150, 300), 8));
            Shell.back();
            tryCompare(Shell, "depth", 1);
            lift(touch, Qt.point(150, 300));
            tryVerify(() => leftOf("Phones") === 0);
            compare(Shell.depth, 1);
        }
        function test_firstScreenStays() {
            const touch = finger(line(Qt.point(4, 300), Qt.point(300, 300), 12));
            compare(leftOf("Phones"), 0);
            lift(touch, Qt.point(300, 300));
            wait(300);
            compare(leftOf("Phones"), 0);
            compare(Shell.depth, 1);
        }
        function test_swipeAwayFromTheEdgeDoesNothing() {
            openGallery();
            const touch = finger(line(Qt.point(60, 300), Qt.point(340, 300), 12));
            compare(leftOf("upright.png"), 0);
            lift(touch, Qt.point(340, 300));
            wait(300);
            compare(Shell.depth, 2);
        }
        function test_whatIsPresentedHoldsTheScreen() {
            press("Phones");
            press("upright.png");
            press("Options");
            expect("Dismiss");
            const before = leftOf("Save");
            const touch = finger(line(Qt.point(4, 300), Qt.point(300, 300), 12));
            compare(leftOf("Save"), before);
            lift(touch, Qt.point(300, 300));
            wait(300);
            compare(Shell.depth, 3);
        }
        function test_flickUpAlongTheEdgeScrollsTheColumn() {
            openGallery();
            const column = expect("upright.png").ListView.view;
            const top = column.contentY;
            const touch = finger(line(Qt.point(6, 600), Qt.point(10, 300), 12));
            verify(column.contentY > top + 200, "scrolled by " + (column.contentY - top));
            lift(touch, Qt.point(10, 300));
            wait(100);
            compare(Shell.depth, 2);
            column.cancelFlick();
        }
        function test_flickScrollsTheColumn() {
            openGallery();
            const column = expect("upright.png").ListView.view;
            const top = column.contentY;
            const touch = finger(line(Qt.point(180, 600), Qt.point(200, 250), 8));
            lift(touch, Qt.point(200, 250));
            tryVerify(() => column.flicking);
            tryVerify(() => !column.moving, 5000);
            verify(column.contentY > top + 350);
            compare(Shell.depth, 2, "a flick is no tap");
        }
        function test_tapAtTheEdgeIsATap() {
            openGallery();
            const touch = finger([Qt.point(5, 170), Qt.point(6, 170)]);
            lift(touch, Qt.point(6, 170));
            tryCompare(Shell, "depth", 3);
        }
        function openCrop() {
            press("Phones");
            press("upright.png");
            press("Background");
            press("picture.jpg");
            expect("Choose");
            wait(300);
            return Shell.presentation.crop;
        }
        /// As it is now, where the property's own value would follow.
        function partOf(crop) {
            return { x: crop.part.x, y: crop.part.y, width: crop.part.width, height: crop.part.height };
        }
        function test_twoFingersZoomAboutWhatTheyHold() {
            const crop = openCrop();
            const hole = expect("cropWindow");
            const before = partOf(crop);
            const touch = touchEvent(hole);
            const y = hole.height / 2;
            touch.press(1, hole, hole.width * 0.4, y).press(2, hole, hole.width * 0.6, y).commit();
            for (let step = 1; step <= 20; ++step) {
                wait(16);
                touch.move(1, hole, hole.width * (0.4 - 0.01 * step), y)
                     .move(2, hole, hole.width * (0.6 + 0.01 * step), y).commit();
            }
            touch.release(1, hole, hole.width * 0.2, y).release(2, hole, hole.width * 0.8, y).commit();
            const factor = before.width / crop.part.width;
            verify(factor > 2 && factor <= 3.01, "zoomed by " + factor);
            fuzzyCompare(crop.part.x + crop.part.width / 2, before.x + before.width / 2, 0.01);
            fuzzyCompare(crop.part.y + crop.part.height / 2, before.y + before.height / 2, 0.01);
            verify(Shell.presentation.crop !== null, "it is still open");
        }
        function test_twoFingersMoveThePictureToo() {
            const crop = openCrop();
            crop.zoom(3);
            const hole = expect("cropWindow");
            const before = partOf(crop);
            const touch = touchEvent(hole);
            const y = hole.height / 2;
            touch.press(1, hole, hole.width * 0.3, y).press(2, hole, hole.width * 0.7, y).commit();
            for (let step = 1; step <= 20; ++step) { // apart, so that it is a pinch, and to the left
                wait(16);
                touch.move(1, hole, hole.width * (0.3 - 0.012 * step), y)
                     .move(2, hole, hole.width * (0.7 - 0.008 * step), y).commit();
            }
            touch.release(1, hole, hole.width * 0.06, y).release(2, hole, hole.width * 0.54, y).commit();
            verify(crop.part.x > before.x, "the picture went with the fingers");
            verify(crop.part.width < before.width);
        }
        function test_oneFingerMovesThePicture() {
            const crop = openCrop();
            crop.zoom(2);
            const hole = expect("cropWindow");
            const before = partOf(crop);
            const touch = touchEvent(hole);
            touch.press(1, hole, 200, 150).commit();
            for (let step = 1; step <= 10; ++step) {
                wait(16);
                touch.move(1, hole, 200 - 8 * step, 150).commit();
            }
            touch.release(1, hole, 120, 150).commit();
            verify(crop.part.x > before.x);
            compare(crop.part.width, before.width);
        }
        function test_wheelAndKeysDoWhatFingersDo() {
            const crop = openCrop();
            const hole = expect("cropWindow");
            const before = partOf(crop);
            main.requestActivate();
            tryCompare(main, "active", true);
            wait(100);
            mouseWheel(hole, hole.width / 2, hole.height / 2, 0, 120);
            fuzzyCompare(before.width / crop.part.width, 1.1, 0.01);
            mouseWheel(hole, hole.width / 2, hole.height / 2, 0, -120);
            fuzzyCompare(crop.part.width, before.width, 0.001);
            keyClick(Qt.Key_Plus);
            keyClick(Qt.Key_Plus);
            fuzzyCompare(before.width / crop.part.width, 1.21, 0.01);
            const zoomed = partOf(crop);
            keyClick(Qt.Key_Right);
            verify(crop.part.x > zoomed.x);
            keyClick(Qt.Key_Left);
            fuzzyCompare(crop.part.x, zoomed.x, 0.001);
            keyClick(Qt.Key_Down);
            verify(crop.part.y > zoomed.y);
            keyClick(Qt.Key_Up);
            fuzzyCompare(crop.part.y, zoomed.y, 0.001);
            keyClick(Qt.Key_Minus);
            keyClick(Qt.Key_Minus);
            fuzzyCompare(crop.part.width, before.width, 0.001);
            keyClick(Qt.Key_Escape);
            tryVerify(() => !Shell.presentation.crop);
        }
    }
}
