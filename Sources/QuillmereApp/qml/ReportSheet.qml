pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// How well the folder was learned: in a sentence, what would help, and the samples that say so, to be heard.
Sheet {
    id: sheet

    readonly property ReportController report: app.report

    signal filesRequested

    objectName: "report"
    title: qsTr("What was learned of “%1”").arg(app.corpus.name)
    onAboutToShow: report.make()
    onClosed: report.cancel()
    actions: ActionButton {
        objectName: "reportFiles"
        quiet: true
        text: qsTr("Show the Files…")
        onClicked: {
            sheet.close();
            sheet.filesRequested();
        }
    }

    Column {
        width: parent.width
        visible: sheet.report.isMaking
        spacing: Theme.inner

        Label {
            text: sheet.report.message
            font.weight: Font.DemiBold
        }
        ProgressBar {
            width: parent.width
            label: qsTr("Report")
            indeterminate: sheet.report.fraction === 0
            value: sheet.report.fraction
        }
    }
    Column {
        width: parent.width
        visible: sheet.report.problem.length > 0
        spacing: Theme.between

        Note {
            width: parent.width
            iconName: "exclamationmark.triangle.fill"
            text: sheet.report.problem
            ink: Theme.warning
            textColor: Theme.text
            Accessible.role: Accessible.AlertMessage
        }
        ActionButton {
            objectName: "reportAgain"
            text: qsTr("Try Again")
            onClicked: sheet.report.make()
        }
    }
    ScrollPane {
        id: pane
        objectName: "reportPane"
        anchors.fill: parent
        visible: sheet.report.isThere
        contentHeight: content.height

        Column {
            id: content
            width: pane.width - (pane.overflows ? Theme.between : 0)
            spacing: Theme.tight

            Note {
                width: parent.width
                iconName: sheet.report.grade === "good" ? "checkmark.circle.fill" : "exclamationmark.triangle.fill"
                text: sheet.report.verdict
                ink: sheet.report.grade === "good" ? Theme.good : sheet.report.grade === "poor" ? Theme.error : Theme.warning
                textColor: Theme.text
                font.pixelSize: Theme.textSize
                font.weight: Font.DemiBold
            }
            Repeater {
                model: sheet.report.advice

                Label {
                    required property string modelData

                    x: Theme.inner
                    width: content.width - x
                    text: "·  " + modelData
                    color: Theme.secondary
                }
            }
            Section {
                text: qsTr("Farthest off")
                hint: qsTr("Space plays the sample and what was learned of it in turn.")
                visible: worst.count > 0
            }
            Repeater {
                id: worst
                model: sheet.report.worst

                SoundRow {
                    required property var modelData
                    required property int index

                    objectName: "worst-" + index
                    width: content.width
                    activeFocusOnTab: true
                    app: sheet.app
                    sounds: [{
                            "name": qsTr("the sample"),
                            "url": modelData.originalUrl
                        }, {
                            "name": qsTr("what was learned of it"),
                            "url": modelData.learnedUrl
                        }]
                    title: modelData.name
                    value: modelData.errorText
                }
            }
            Section {
                text: qsTr("Nearly the same")
                visible: duplicates.count > 0
            }
            Repeater {
                id: duplicates
                model: sheet.report.nearDuplicates

                SoundRow {
                    required property var modelData
                    required property int index

                    objectName: "duplicate-" + index
                    width: content.width
                    activeFocusOnTab: true
                    app: sheet.app
                    sounds: [{
                            "name": modelData.first,
                            "url": modelData.firstUrl
                        }, {
                            "name": modelData.second,
                            "url": modelData.secondUrl
                        }]
                    title: modelData.both
                    value: modelData.distanceText
                }
            }
            Section {
                text: qsTr("Unlike all others")
                visible: outliers.count > 0
            }
            Repeater {
                id: outliers
                model: sheet.report.outliers

                SoundRow {
                    required property var modelData
                    required property int index

                    objectName: "outlier-" + index
                    width: content.width
                    activeFocusOnTab: true
                    app: sheet.app
                    sounds: [{
                            "name": modelData.name,
                            "url": modelData.url
                        }]
                    title: modelData.name
                    value: modelData.distanceText
                }
            }
        }
    }

    component Section: Column {
        id: section

        property alias text: heading.text
        property alias hint: hint.text

        width: content.width
        topPadding: Theme.between

        Label {
            id: heading
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Label {
            id: hint
            width: parent.width
            visible: text.length > 0
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }
}
