import QtQuick
import QuillmereApp

// The large dialogs of the window. They take their time to load: not before they are asked for.
Item {
    id: sheets

    required property AppModel app

    function showFiles() {
        if (!app.corpusFiles.canShow)
            return;
        files.active = true;
        (files.item as CorpusFilesSheet).open();
    }
    function showReport() {
        if (!app.report.canMake)
            return;
        report.active = true;
        (report.item as ReportSheet).open();
    }

    function showRuns() {
        if (!app.runs.canShow)
            return;
        runs.active = true;
        (runs.item as RunsSheet).open();
    }
    function showSimilar() {
        similar.active = true;
        (similar.item as SimilarSheet).open();
    }
    function showModels() {
        models.active = true;
        (models.item as ModelsSheet).open();
    }

    Loader {
        id: models
        active: false
        sourceComponent: ModelsSheet {
            app: sheets.app
        }
    }
    Connections {
        target: sheets.app

        function onModelOffered(corpus) {
            offer.active = true;
            const dialog = offer.item as ModelOfferDialog;
            dialog.corpus = corpus;
            dialog.open();
        }
    }
    Loader {
        id: offer
        active: false
        sourceComponent: ModelOfferDialog {
            app: sheets.app
        }
    }
    Connections {
        target: sheets.app.drops

        function onForeignDropped() {
            sheets.showSimilar();
        }
    }
    Loader {
        id: similar
        active: false
        sourceComponent: SimilarSheet {
            app: sheets.app
        }
    }
    Loader {
        id: runs
        active: false
        sourceComponent: RunsSheet {
            app: sheets.app
        }
    }
    Loader {
        id: files
        active: false
        sourceComponent: CorpusFilesSheet {
            app: sheets.app
        }
    }
    Loader {
        id: report
        active: false
        sourceComponent: ReportSheet {
            app: sheets.app
            onFilesRequested: sheets.showFiles()
        }
    }
}
