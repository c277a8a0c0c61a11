// Shows what is presented, plays its coming and going, and reports when it has gone.
import QtQuick
import Quillomat.Controls
import Quillomat.Host
import Quillomat.Theme

Item {
    id: root

    property real shown: 0
    readonly property QtObject presentation: Shell.presentation

    signal gone()

    onPresentationChanged: {
        leaving.stop();
        if (!presentation) {
            loader.sourceComponent = undefined;
            root.gone();
            return;
        }
        shown = 0;
        loader.sourceComponent = undefined;
        const kinds = { "alert": alert, "sheet": sheet, "photos": photos, "documents": documents };
        loader.sourceComponent = kinds[presentation.kind];
        loader.item.forceActiveFocus();
        coming.restart();
    }

    Connections {
        target: root.presentation
        ignoreUnknownSignals: true
        function onIsLeavingChanged(): void {
            if (root.presentation.isLeaving) {
                coming.stop();
                leaving.restart();
            }
        }
    }

    NumberAnimation {
        id: coming
        target: root
        property: "shown"
        to: 1
        duration: Theme.duration
        easing.type: Theme.easing
    }
    SequentialAnimation {
        id: leaving
        NumberAnimation {
            target: root
            property: "shown"
            to: 0
            duration: Theme.duration
            easing.type: Easing.InCubic
        }
        ScriptAction { script: root.presentation.dismissalEnded() }
    }

    Loader {
        id: loader
        anchors.fill: parent
        enabled: root.presentation && !root.presentation.isLeaving
        focus: true
    }

    Component { id: alert; AlertBox { presentation: root.presentation; shown: root.shown } }
    Component { id: sheet; ActionSheet { presentation: root.presentation; shown: root.shown } }
    Component { id: photos; PhotoPicker { presentation: root.presentation; shown: root.shown } }
    Component { id: documents; DocumentPicker { presentation: root.presentation; shown: root.shown } }
}
