import QtQuick
import QuillmereApp

// How much of the samples' fine structure the variations get. No parameter: presets and undo leave it alone.
Row {
    id: control

    required property OutputController output
    property bool emphasised: true
    readonly property string help: qsTr("How much of the samples' own attacks, fine structure and tails the variations get. Ctrl+D plays the last audition with and without.")

    spacing: Theme.tight

    Label {
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Detail")
        wrapMode: Text.NoWrap

        HoverHandler {
            id: hover
        }
        ToolTip {
            text: control.help
            shown: hover.hovered
        }
    }
    ThinSlider {
        objectName: "detail"
        anchors.verticalCenter: parent.verticalCenter
        width: 96
        label: qsTr("Detail")
        valueText: share.text
        tip: control.help
        modelValue: control.output.detail
        stepSize: control.output.detailStep
        position: modelValue
        emphasised: control.emphasised
        onMoved: place => control.output.detail = place
        onStepped: steps => control.output.detail += steps * stepSize
        onValueRequested: wanted => control.output.detail = wanted
        onResetRequested: control.output.detail = 0
    }
    Label {
        id: share
        anchors.verticalCenter: parent.verticalCenter
        width: Math.ceil(widest.advanceWidth)
        text: Math.round(control.output.detail * 100) + " %"
        horizontalAlignment: Text.AlignRight
        font.family: Theme.figures
        wrapMode: Text.NoWrap

        TextMetrics {
            id: widest
            font: share.font
            text: "100 %"
        }
    }
}
