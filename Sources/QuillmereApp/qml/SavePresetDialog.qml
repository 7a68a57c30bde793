import QtQuick
import QuillmereApp

// Asks for a name for the current values.
Dialog {
    id: dialog

    required property CharacterController character
    readonly property string problem: character.presetNameProblem(form.name)

    function save() {
        if (problem.length > 0)
            return;
        character.saveOwnPreset(form.name);
        close();
    }

    title: qsTr("Save as Preset")
    onAboutToShow: form.begin()

    SavePresetForm {
        id: form
        anchors.fill: parent
        // Nothing typed is no mistake yet.
        problem: name.length > 0 ? dialog.problem : ""
        saveable: dialog.problem.length === 0
        onSaveRequested: dialog.save()
        onCancelRequested: dialog.close()
    }
}
