pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A choice of one of a few words; the model is a list of strings.
T.ComboBox {
    id: control

    property string label
    property string tip

    // Wide enough for every choice, so that nothing moves when the choice changes.
    readonly property real widest: {
        let width = 0;
        for (const word of model)
            width = Math.max(width, Math.ceil(metrics.advanceWidth(word)));
        return width;
    }

    implicitWidth: widest + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.inner + 4
    rightPadding: 30
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.family: Theme.family
    font.pixelSize: Theme.textSize

    Accessible.role: Accessible.ComboBox
    Accessible.name: label
    Accessible.description: tip
    Accessible.onPressAction: popup.open()

    // A ComboBox closes its list when Return is released: so that is the moment to open it.
    property bool opensOnRelease: false

    Keys.onPressed: event => {
        if (event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter || popup.visible)
            return;
        opensOnRelease = true;
        event.accepted = true;
    }
    Keys.onReleased: event => {
        // Space plays: its press went to the window's shortcut, and its release would open the list.
        if (event.key === Qt.Key_Space && !popup.visible)
            event.accepted = true;
        if (!opensOnRelease)
            return;
        opensOnRelease = false;
        popup.open();
        event.accepted = true;
    }

    FontMetrics {
        id: metrics
        font: control.font
    }

    contentItem: Text {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
    }
    indicator: Icon {
        x: control.width - width - 9
        y: (control.height - height) / 2
        width: 13
        height: 13
        name: "chevron.down"
        color: control.enabled ? Theme.secondary : Theme.disabled
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: !control.enabled ? Theme.control : control.down ? Theme.controlPressed : control.hovered ? Theme.controlHover : Theme.control
        border.color: control.enabled ? Theme.controlLine : Theme.line
    }
    delegate: T.ItemDelegate {
        id: choice

        required property string modelData
        required property int index

        width: ListView.view ? ListView.view.width : implicitWidth
        implicitWidth: control.width
        implicitHeight: 30
        leftPadding: 30
        text: modelData
        highlighted: control.highlightedIndex === index
        font: control.font

        Accessible.role: Accessible.ListItem
        Accessible.name: text
        Accessible.selected: control.currentIndex === index
        Accessible.onPressAction: if (enabled)
            clicked()

        contentItem: Text {
            text: choice.text
            font: choice.font
            color: Theme.text
            verticalAlignment: Text.AlignVCenter
            textFormat: Text.PlainText
        }
        background: Rectangle {
            radius: Theme.controlRadius - 3
            color: choice.highlighted ? Theme.controlHover : "transparent"

            Icon {
                x: 9
                width: 14
                height: 14
                anchors.verticalCenter: parent.verticalCenter
                name: "checkmark"
                color: Theme.accent
                visible: control.currentIndex === choice.index
            }
        }
    }
    popup: T.Popup {
        y: control.height + Theme.tight
        width: Math.max(control.width, control.widest + 56)
        implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
        padding: Theme.tight
        margins: Theme.inner

        contentItem: ListView {
            implicitHeight: contentHeight
            model: control.delegateModel // qmllint disable
            currentIndex: control.highlightedIndex
            interactive: contentHeight > height
            clip: true
        }
        background: Rectangle {
            color: Theme.popup
            radius: Theme.controlRadius
            border.color: Theme.controlLine
        }
    }

    FocusRing {
        shown: control.visualFocus
    }
    ToolTip {
        text: control.tip
        shown: control.hovered && !control.popup.visible
    }
}
