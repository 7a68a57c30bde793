import QtQuick

// A view that is made when it is first wanted. Its file, and those that it uses, are not read before either: the
// window is to be there soon.
Loader {
    id: later

    required property url view
    required property var needs // the properties that it requires
    // Made while this is true, or else by made().
    property bool wanted: false

    function made(): QtObject {
        if (!item)
            setSource(view, needs);
        return item;
    }

    Component.onCompleted: if (wanted)
        made()
    onWantedChanged: {
        if (wanted)
            made();
        else
            source = "";
    }
}
