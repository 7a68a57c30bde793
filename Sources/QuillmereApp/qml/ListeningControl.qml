import QtQuick
import QuillmereApp

// How sounds are heard: the volume, how loud it is just now, and what plays by itself.
Row {
    id: control

    required property PlaybackController playback
    // Without the slider: the button still turns the volume, by Up, Down and the wheel.
    property bool compact: false
    readonly property real fullWidth: button.width + spacing + meter.width

    spacing: Theme.tight

    IconButton {
        id: button
        objectName: "listening"
        anchors.verticalCenter: parent.verticalCenter
        iconName: control.playback.volume > 0 ? "speaker.wave.2" : "speaker"
        text: qsTr("Listening")
        tip: qsTr("What plays by itself; volume %1 % (Up, Down)").arg(Math.round(control.playback.volume * 100))
        Keys.onUpPressed: control.playback.volume += 0.05
        Keys.onDownPressed: control.playback.volume -= 0.05
        onClicked: {
            const opened = menu.made() as ListeningMenu;
            opened.popup(button, 0, -opened.implicitHeight - Theme.tight);
        }

        WheelHandler {
            acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
            onWheel: event => control.playback.volume += event.angleDelta.y / 2400
        }
        Later {
            id: menu
            view: "ListeningMenu.qml"
            needs: ({
                    "playback": control.playback
                })
        }
    }
    Item {
        id: meter
        anchors.verticalCenter: parent.verticalCenter
        visible: !control.compact
        width: 76
        height: 24

        ThinSlider {
            objectName: "volume"
            width: parent.width
            height: 18
            label: qsTr("Volume")
            valueText: Math.round(control.playback.volume * 100) + " %"
            tip: qsTr("Volume, from the next sound on")
            modelValue: control.playback.volume
            position: modelValue
            defaultPosition: 1
            marked: false
            emphasised: false
            onMoved: place => control.playback.volume = place
            onStepped: steps => control.playback.volume += steps / 20
            onValueRequested: wanted => control.playback.volume = wanted
            onResetRequested: control.playback.volume = 1
        }
        // The level now, from -60 dB to full scale.
        Rectangle {
            objectName: "levelMeter"
            x: 7
            y: parent.height - height
            width: parent.width - 14
            height: 3
            radius: 1.5
            color: Theme.control

            Accessible.role: Accessible.ProgressBar
            Accessible.name: qsTr("Level")
            Accessible.description: control.playback.level > 0 ? Math.round(60 * control.playback.level - 60) + " dB" : qsTr("silent")

            Rectangle {
                width: parent.width * control.playback.level
                height: parent.height
                radius: parent.radius
                color: control.playback.level > 0.985 ? Theme.error : Theme.good
            }
        }
    }
}
