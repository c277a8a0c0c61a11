// One row of the catalogue: a preview on a soft well, a title, a description, a size.
import QtQuick
import Quillomat.Controls
import Quillomat.Theme

Pressable {
    id: root

    required property int index
    required property string typeLabel
    required property string sizeLabel
    required property string descLabel
    required property string previewImage

    name: typeLabel
    hint: descLabel
    sinks: true
    scrolls: true
    // Larger type makes it higher than the core asks for.
    implicitHeight: Math.ceil(texts.implicitHeight + (chip.visible ? chip.height + Theme.step : 0)) + 6 * Theme.step
    ringRadius: Theme.cardRadius + 3
    ringX: Theme.gap - 3
    ringY: Theme.step - 3
    Accessible.role: Accessible.ListItem

    Rectangle {
        id: card
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.gap
        anchors.topMargin: Theme.step
        anchors.bottomMargin: Theme.step
        radius: Theme.cardRadius
        color: root.pressed || root.hovered ? Theme.cardPressed : Theme.card
        Behavior on color { ColorAnimation { duration: Theme.fade } }
    }
    Rectangle {
        id: well
        width: Theme.previewSide
        height: Theme.previewSide
        anchors.left: card.left
        anchors.leftMargin: 2 * Theme.step
        anchors.verticalCenter: card.verticalCenter
        radius: Theme.wellRadius
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.wellTop }
            GradientStop { position: 1; color: Theme.wellBottom }
        }
        FadingPicture {
            anchors.fill: parent
            anchors.margins: Theme.step
            source: root.previewImage
        }
    }
    Column {
        id: texts
        anchors.left: well.right
        anchors.leftMargin: Theme.gap + Theme.step
        anchors.right: card.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: card.verticalCenter
        anchors.verticalCenterOffset: -Math.round((chip.visible ? chip.height : 0) / 2)
        spacing: Theme.step

        Caption {
            width: parent.width
            text: root.typeLabel
            size: Theme.sizeTitle
            strong: true
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: Math.min(Theme.sizeTitle, 14)
            lineHeight: 1.1
        }
        Caption {
            width: parent.width - chevron.width
            text: root.descLabel
            size: Theme.sizeSmall
            color: Theme.secondaryText
            wrapMode: Text.WordWrap
            maximumLineCount: 2
            lineHeight: 1.2
        }
    }
    Chip {
        id: chip
        anchors.right: texts.right
        anchors.bottom: card.bottom
        anchors.bottomMargin: Theme.gap
        text: root.sizeLabel
    }
    Icon {
        id: chevron
        name: "chevron"
        size: 18
        color: Theme.secondaryText
        opacity: 0.6
        anchors.right: card.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: card.verticalCenter
    }
}
