import QtQuick
import QuillmereApp

// A frame with a number in a disc, a title, and content below one another.
Rectangle {
    id: card

    property string number
    property string title
    property bool highlighted: false
    property real padding: Theme.outer  // at the sides and below
    property alias trailing: trailing.data  // at the right of the title
    default property alias contents: body.data
    readonly property real bodyWidth: body.width

    implicitHeight: body.y + body.height + card.padding
    radius: Theme.cardRadius
    color: Theme.card
    border.width: highlighted ? 2 : 1
    border.color: highlighted ? Theme.accent : Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Rectangle {
        id: disc
        x: card.padding
        y: Theme.outer - 1  // the titles of all cards in a row stand on one line
        width: 22
        height: 22
        radius: 11
        color: Theme.control
        visible: card.number.length > 0

        Label {
            anchors.centerIn: parent
            text: card.number
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            font.weight: Font.DemiBold
        }
    }
    Label {
        id: heading
        x: disc.visible ? disc.x + disc.width + 9 : card.padding
        anchors.verticalCenter: disc.verticalCenter
        text: card.title
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Item {
        id: trailing
        anchors.left: heading.right
        anchors.leftMargin: Theme.between
        anchors.right: parent.right
        anchors.rightMargin: card.padding
        anchors.verticalCenter: disc.verticalCenter
        height: disc.height
    }
    Column {
        id: body
        x: card.padding
        y: disc.y + disc.height + 9
        width: card.width - 2 * card.padding
        spacing: 10
    }
}
