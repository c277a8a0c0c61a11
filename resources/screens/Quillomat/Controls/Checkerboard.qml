// A barely visible chequer where a picture will be transparent.
import QtQuick
import Quillomat.Theme

Canvas {
    id: root
    property real cell: 2 * Theme.step
    readonly property color light: Theme.checkLight
    readonly property color deep: Theme.checkDark

    onLightChanged: requestPaint()
    onWidthChanged: requestPaint()
    onHeightChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        context.fillStyle = light;
        context.fillRect(0, 0, width, height);
        context.fillStyle = deep;
        for (let y = 0; y * cell < height; ++y)
            for (let x = y % 2; x * cell < width; x += 2)
                context.fillRect(x * cell, y * cell, cell, cell);
    }
}
