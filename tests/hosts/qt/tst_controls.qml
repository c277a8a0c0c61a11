// The base controls: presses by mouse and keys, alerts and sheets.
import QtQuick
import QtTest
import Quillomat.Controls
import "Screens.js" as Screens

Item {
    id: root
    width: 360
    height: 640

    Component {
        id: presentation
        QtObject {
            property string title: "Title"
            property string message: "Message"
            property var actions: []
            property bool asksForText: false
            property var answered: []
            function answer(index, text) { answered.push([index, text ?? ""]); }
        }
    }
    Component { id: alert; AlertBox { shown: 1 } }
    Component { id: sheet; ActionSheet { shown: 1 } }
    Component { id: button; ToolButton { name: "Glare"; icon: "glare"; width: 70 } }

    function actions(...titles) {
        return titles.map(title => ({ title: title, isCancel: title === "Dismiss" }));
    }

    SignalSpy { id: pressed; signalName: "triggered" }

    TestCase {
        name: "Controls"
        when: windowShown

        function makeButton(available) {
            const made = createTemporaryObject(button, root, { available: available });
            pressed.target = made;
            pressed.clear();
            return made;
        }
        function test_buttonIsPressedByMouseAndKeys() {
            const made = makeButton(true);
            mouseClick(made);
            made.forceActiveFocus();
            keyClick(Qt.Key_Return);
            keyClick(Qt.Key_Space);
            compare(pressed.count, 3);
        }
        function test_pressThatLeavesTheButtonIsNone() {
            const made = makeButton(true);
            mousePress(made);
            mouseMove(made, 200, 300);
            mouseRelease(made, 200, 300);
            compare(pressed.count, 0);
        }
        function test_unavailableButtonTakesNoPress() {
            const made = makeButton(false);
            mouseClick(made);
            made.forceActiveFocus();
            keyClick(Qt.Key_Return);
            made.trigger();
            compare(pressed.count, 0);
        }
        function ring(thing) {
            for (let i = thing.children.length - 1; i >= 0; --i)
                if (thing.children[i].border !== undefined)
                    return thing.children[i];
            return null;
        }
        function test_ringShowsWhereTheKeyboardIsAndNotTheFinger() {
            const made = makeButton(true);
            made.forceActiveFocus();
            keyClick(Qt.Key_Tab);
            made.forceActiveFocus();
            verify(ring(made).visible);
            verify(ring(made).width > 40 && ring(made).height > 40);
            mouseClick(made);
            verify(!ring(made).visible);
        }
        function test_arrowKeysGoFromAnswerToAnswer() {
            const model = presentation.createObject(root, { actions: actions("No", "Yes") });
            const made = createTemporaryObject(alert, root, { presentation: model });
            made.forceActiveFocus();
            verify(Screens.find(made, "Yes").activeFocus);
            keyClick(Qt.Key_Left);
            verify(Screens.find(made, "No").activeFocus);
            keyClick(Qt.Key_Right);
            verify(Screens.find(made, "Yes").activeFocus);
            keyClick(Qt.Key_Up);
            keyClick(Qt.Key_Return);
            compare(model.answered, [[0, ""]]);
        }
        function test_longSheetScrollsToWhatHasTheFocus() {
            const titles = [];
            for (let i = 0; i < 30; ++i)
                titles.push("Action " + i);
            const model = presentation.createObject(root, { actions: actions(...titles, "Dismiss") });
            const made = createTemporaryObject(sheet, root, { presentation: model });
            waitForRendering(made);
            const last = Screens.find(made, "Action 29");
            verify(last.mapToItem(root, 0, last.height).y > root.height);
            last.forceActiveFocus();
            verify(last.mapToItem(root, 0, last.height).y < Screens.find(made, "Dismiss").mapToItem(root, 0, 0).y);
        }
        function test_twoShortActionsOfAnAlertStandSideBySide() {
            const model = presentation.createObject(root, { actions: actions("No", "Yes") });
            const made = createTemporaryObject(alert, root, { presentation: model });
            waitForRendering(made);
            const no = Screens.find(made, "No"), yes = Screens.find(made, "Yes");
            compare(no.y, yes.y);
            verify(no.x < yes.x);
            mouseClick(yes);
            compare(model.answered, [[1, ""]]);
        }
        function test_threeActionsOfAnAlertStandBelowEachOther() {
            const model = presentation.createObject(root, { actions: actions("One", "Two", "Three") });
            const made = createTemporaryObject(alert, root, { presentation: model });
            waitForRendering(made);
            verify(Screens.find(made, "One").y < Screens.find(made, "Two").y);
            mouseClick(Screens.find(made, "Three"));
            compare(model.answered, [[2, ""]]);
        }
        function test_alertWithAFieldAnswersWithItsText() {
            const model = presentation.createObject(root, { actions: actions("Cancel", "OK"), asksForText: true });
            const made = createTemporaryObject(alert, root, { presentation: model });
            made.forceActiveFocus();
            for (const digit of "42")
                keyClick(digit);
            keyClick(Qt.Key_Return);
            compare(model.answered, [[1, "42"]]);
        }
        function test_escapeTurnsAQuestionAwayOnlyWhereThereIsOneAnswer() {
            const question = presentation.createObject(root, { actions: actions("No", "Yes") });
            createTemporaryObject(alert, root, { presentation: question }).forceActiveFocus();
            keyClick(Qt.Key_Escape);
            compare(question.answered, []);
            const note = presentation.createObject(root, { actions: actions("Ok") });
            createTemporaryObject(alert, root, { presentation: note }).forceActiveFocus();
            keyClick(Qt.Key_Escape);
            compare(note.answered, [[0, ""]]);
        }
        function test_sheetKeepsItsCancelApartBelow() {
            const model = presentation.createObject(root, { actions: actions("First", "Second", "Dismiss") });
            const made = createTemporaryObject(sheet, root, { presentation: model });
            waitForRendering(made);
            const second = Screens.find(made, "Second"), dismiss = Screens.find(made, "Dismiss");
            verify(dismiss.mapToItem(made, 0, 0).y > second.mapToItem(made, 0, second.height).y);
            mouseClick(second);
            made.forceActiveFocus();
            keyClick(Qt.Key_Escape);
            compare(model.answered, [[1, ""], [2, ""]]);
        }
    }
}
