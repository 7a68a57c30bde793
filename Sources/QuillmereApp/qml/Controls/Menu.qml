pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A menu of MenuItem items.
T.Menu {
    id: menu

    implicitWidth: Math.max(160, contentItem.implicitWidth + leftPadding + rightPadding)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: Theme.inner
    padding: Theme.tight
    overlap: 1
    font.family: Theme.family
    font.pixelSize: Theme.textSize

    delegate: MenuItem {
    }
    contentItem: ListView {
        implicitHeight: contentHeight
        implicitWidth: {
            let widest = 0;
            for (let i = 0; i < menu.count; ++i)
                widest = Math.max(widest, menu.itemAt(i).implicitWidth);
            return widest;
        }
        model: menu.contentModel
        interactive: contentHeight > height
        clip: true
    }
    background: Rectangle {
        color: Theme.popup
        radius: Theme.controlRadius
        border.color: Theme.controlLine
    }
}
