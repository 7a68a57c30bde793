import QtQuick
import QuillmereApp

// The large dialogs of the window. They take their time to load: not before they are asked for.
Item {
    id: sheets

    required property AppModel app

    function showFiles() {
        if (!app.corpusFiles.canShow)
            return;
        (files.made() as CorpusFilesSheet).open();
    }
    function showReport() {
        if (!app.report.canMake)
            return;
        (report.made() as ReportSheet).open();
    }

    function showRuns() {
        if (!app.runs.canShow)
            return;
        (runs.made() as RunsSheet).open();
    }
    function showSimilar() {
        (similar.made() as SimilarSheet).open();
    }
    function showModels() {
        (models.made() as ModelsSheet).open();
    }

    Later {
        id: models
        view: "ModelsSheet.qml"
        needs: ({
                "app": sheets.app
            })
    }
    Connections {
        target: sheets.app

        function onModelOffered(corpus) {
            const dialog = offer.made() as ModelOfferDialog;
            dialog.corpus = corpus;
            dialog.open();
        }
    }
    Later {
        id: offer
        view: "ModelOfferDialog.qml"
        needs: ({
                "app": sheets.app
            })
    }
    Connections {
        target: sheets.app.drops

        function onForeignDropped() {
            sheets.showSimilar();
        }
    }
    Later {
        id: similar
        view: "SimilarSheet.qml"
        needs: ({
                "app": sheets.app
            })
    }
    Later {
        id: runs
        view: "RunsSheet.qml"
        needs: ({
                "app": sheets.app
            })
    }
    Later {
        id: files
        view: "CorpusFilesSheet.qml"
        needs: ({
                "app": sheets.app
            })
    }
    Later {
        id: report
        view: "ReportSheet.qml"
        needs: ({
                "app": sheets.app
            })
        onLoaded: (item as ReportSheet).filesRequested.connect(sheets.showFiles)
    }
}
