// A finger or a mouse that comes in over the left edge takes the screen along: let go beyond the middle, or flung, it
// goes back; else it springs into place again. The screen below waits underneath, a third of a width to the left.
import QtQuick
import QtQuick.Controls.Basic as Basic
import Quillomat.Host
import Quillomat.Theme

Item {
    id: root

    required property Basic.StackView stack
    property bool allowed: true

    readonly property bool isUnderWay: above !== null
    property real progress: 0 // 0 in place, 1 out of sight
    property Item above: null
    property Item below: null
    readonly property real flung: 500 // points a second

    function begin(): void {
        settling.stop();
        if (!isUnderWay) {
            above = stack.currentItem;
            below = stack.get(stack.depth - 2, Basic.StackView.ForceLoad);
            below.enabled = false;
            below.visible = true;
        }
        place();
    }
    function place(): void {
        if (!isUnderWay)
            return;
        above.x = progress * stack.width;
        below.x = Theme.reducesMotion ? 0 : (progress - 1) * stack.width / 3;
    }
    function settle(goal: real): void {
        if (!isUnderWay)
            return;
        settling.to = goal;
        settling.duration = Math.max(1, Theme.duration * Math.abs(goal - progress));
        settling.restart();
    }
    function leave(): void {
        const depth = stack.depth;
        Shell.back();
        if (stack.depth === depth) // something else has come between
            settle(0);
    }
    /// Puts everything back at once; true when the screen above is out of sight already.
    function end(): bool {
        const isGone = isUnderWay && progress === 1;
        settling.stop();
        if (isUnderWay) {
            above.x = 0;
            above.visible = !isGone;
            below.x = 0;
            below.enabled = true;
            below.visible = false;
        }
        above = null;
        below = null;
        progress = 0;
        return isGone;
    }

    onProgressChanged: place()
    Connections {
        target: root.stack
        function onWidthChanged(): void { root.place(); }
    }

    NumberAnimation {
        id: settling
        target: root
        property: "progress"
        easing.type: Theme.easing
        onFinished: {
            if (root.progress === 1)
                root.leave();
            else
                root.end();
        }
    }

    Rectangle {
        parent: root.stack
        z: root.above ? root.above.z + 0.5 : 0
        visible: root.isUnderWay
        x: root.progress * root.stack.width - width
        width: 2 * Theme.gap
        height: root.stack.height
        gradient: Gradient {
            orientation: Gradient.Horizontal
            GradientStop { position: 0; color: Theme.clear }
            GradientStop { position: 1; color: Theme.shade }
        }
    }
    Item {
        width: Theme.edge
        height: parent.height
        DragHandler {
            id: edge
            enabled: root.allowed && (active || (root.stack.depth > 1 && !root.stack.busy && !Shell.isWaiting))
            target: null
            yAxis.enabled: false
            property real from: 0
            property real wish: 0
            property int ending: 0 // the first thing that is heard of the grab's end
            onActiveChanged: {
                if (active) {
                    from = root.progress; // caught on its way back
                    root.begin();
                    return;
                }
                const speed = centroid.velocity.x;
                wish = speed > root.flung || (root.progress > 0.5 && speed > -root.flung) ? 1 : 0;
                ending = 0;
                Qt.callLater(() => root.settle(ending === PointerDevice.UngrabExclusive ? wish : 0));
            }
            // A grab that is taken away, rather than given up, is no wish to leave. Both are told in either case.
            onGrabChanged: transition => {
                const ends = [PointerDevice.UngrabExclusive, PointerDevice.CancelGrabExclusive];
                if (ending === 0 && ends.includes(transition))
                    ending = transition;
            }
            onActiveTranslationChanged: {
                if (active && root.isUnderWay)
                    root.progress = Math.min(1, Math.max(0, from + activeTranslation.x / root.stack.width));
            }
        }
    }
}
