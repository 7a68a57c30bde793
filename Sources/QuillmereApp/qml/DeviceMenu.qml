pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The devices that can learn. Automatic and the processor are always there; the others are looked for whenever
// the menu opens, and follow when they are found.
Menu {
    id: menu

    required property AppModel app
    readonly property ComputeDevices devices: app.devices
    readonly property var cards: devices.devices.slice(1)

    onAboutToShow: devices.list()

    DeviceEntry {
        objectName: "deviceWait"
        shown: !menu.app.canChooseDevice
        enabled: false
        detail: qsTr("Wait until the present run has ended, or cancel it.")
    }
    DeviceEntry {
        objectName: "device-0"
        text: qsTr("Automatic")
        detail: menu.devices.automaticName.length > 0 ? menu.devices.automaticName : qsTr("A graphics card if there is one, else the processor")
        chosen: menu.devices.chosenIndex === 0
        enabled: menu.app.canChooseDevice
        onTriggered: menu.app.chooseDevice(0)
    }
    DeviceEntry {
        objectName: "device-1"
        text: menu.devices.devices[0].name
        detail: menu.devices.devices[0].detail
        chosen: menu.devices.chosenIndex === 1
        enabled: menu.app.canChooseDevice
        onTriggered: menu.app.chooseDevice(1)
    }
    DeviceEntry {
        objectName: "deviceSearch"
        shown: menu.cards.length === 0
        enabled: false
        detail: menu.devices.isListed ? qsTr("No graphics card was found.") : qsTr("Looking for graphics cards…")
    }

    Instantiator {
        model: menu.cards
        onObjectAdded: (index, object) => menu.insertItem(index + 3, object as DeviceEntry)
        onObjectRemoved: (index, object) => menu.removeItem(object as DeviceEntry)

        DeviceEntry {
            required property var modelData
            required property int index

            objectName: "device-" + (index + 2)
            text: modelData.name
            detail: modelData.detail
            chosen: menu.devices.chosenIndex === index + 2
            enabled: menu.app.canChooseDevice && modelData.usable
            onTriggered: menu.app.chooseDevice(index + 2)
        }
    }
}
