<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AppearanceButton</name>
    <message>
        <source>Appearance</source>
        <translation>Darstellung</translation>
    </message>
</context>
<context>
    <name>AppearanceMenu</name>
    <message>
        <source>As the Desktop</source>
        <translation>Wie der Desktop</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
</context>
<context>
    <name>CandidateTile</name>
    <message>
        <source>Candidate %1</source>
        <translation>Kandidat %1</translation>
    </message>
    <message>
        <source>kept as %1</source>
        <translation>behalten als %1</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>spielt</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 stoppen</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 abspielen</translation>
    </message>
    <message>
        <source>kept</source>
        <translation>behalten</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Keep (K): write the file</source>
        <translation>Behalten (K): die Datei schreiben</translation>
    </message>
    <message>
        <source>Keep %1</source>
        <translation>%1 behalten</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Discard (X); Ctrl+Z brings it back</source>
        <translation>Verwerfen (X); Strg+Z holt es zurück</translation>
    </message>
    <message>
        <source>Discard %1</source>
        <translation>%1 verwerfen</translation>
    </message>
</context>
<context>
    <name>CandidatesStrip</name>
    <message>
        <source>Candidates</source>
        <translation>Kandidaten</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>1 sound</source>
        <translation>1 Klang</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds</source>
        <translation>
            <numerusform>%n Klang</numerusform>
            <numerusform>%n Klänge</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy the seed of these candidates</source>
        <translation>Den Startwert dieser Kandidaten kopieren</translation>
    </message>
    <message>
        <source>Older candidates</source>
        <translation>Ältere Kandidaten</translation>
    </message>
    <message>
        <source>Set %1 of %2</source>
        <translation>Satz %1 von %2</translation>
    </message>
    <message>
        <source>Newer candidates</source>
        <translation>Neuere Kandidaten</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Untersuchen</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>Ergebnisse</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Strg+R</translation>
    </message>
    <message>
        <source>All discarded. Ctrl+Z brings them back.</source>
        <translation>Alle verworfen. Strg+Z holt sie zurück.</translation>
    </message>
</context>
<context>
    <name>ChanceSection</name>
    <message>
        <source>Chance</source>
        <translation>Zufall</translation>
    </message>
    <message>
        <source>Randomise</source>
        <translation>Würfeln</translation>
    </message>
    <message>
        <source>Moves every parameter that is not locked, by the amount beside</source>
        <translation>Verändert jeden Parameter, der nicht gesperrt ist, um das Maß daneben</translation>
    </message>
    <message>
        <source>Amount of Randomise</source>
        <translation>Maß des Würfelns</translation>
    </message>
</context>
<context>
    <name>CharacterPanel</name>
    <message>
        <source>Character</source>
        <translation>Charakter</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>%1, edited</source>
        <translation>%1, geändert</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Map of the samples (M)</source>
        <translation>Karte der Samples (M)</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Undo (Ctrl+Z)</source>
        <translation>Rückgängig (Strg+Z)</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Redo (Ctrl+Shift+Z)</source>
        <translation>Wiederholen (Strg+Umschalt+Z)</translation>
    </message>
</context>
<context>
    <name>CorpusCard</name>
    <message>
        <source>Sample corpus</source>
        <translation>Sample-Korpus</translation>
    </message>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>Den Ordner mit den Samples wählen, aus denen gelernt wird</translation>
    </message>
    <message>
        <source>Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty.</source>
        <translation>Einen Ordner mit WAV-, AIFF-, FLAC-, MP3- oder M4A-Dateien wählen. Ein paar Dutzend genügen.</translation>
    </message>
    <message>
        <source>Scanning</source>
        <translation>Wird durchsucht</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Show the files</source>
        <translation>Dateien zeigen</translation>
    </message>
    <message>
        <source>What becomes of each file (Ctrl+L)</source>
        <translation>Was aus jeder Datei wird (Strg+L)</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n Sample</numerusform>
            <numerusform>%n Samples</numerusform>
        </translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>In diesem Ordner sind keine Audiodateien.</translation>
    </message>
    <message>
        <source>Very few samples — expect variations that stay close to them.</source>
        <translation>Sehr wenige Samples – die Variationen bleiben wohl nah an ihnen.</translation>
    </message>
    <message>
        <source>1 file could not be read and is left out.</source>
        <translation>1 Datei konnte nicht gelesen werden und wird ausgelassen.</translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read and are left out.</source>
        <translation>
            <numerusform>%n Datei konnte nicht gelesen werden und wird ausgelassen.</numerusform>
            <numerusform>%n Dateien konnten nicht gelesen werden und werden ausgelassen.</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file is named like a variation made here. It is learned like the others.</source>
        <translation>1 Datei heißt wie eine Variation von hier. Sie wird gelernt wie die anderen.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are named like variations made here. They are learned like the others.</source>
        <translation>
            <numerusform>%n Datei heißt wie eine Variation von hier. Sie wird gelernt wie die anderen.</numerusform>
            <numerusform>%n Dateien heißen wie Variationen von hier. Sie werden gelernt wie die anderen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Scan Again</source>
        <translation>Neu durchsuchen</translation>
    </message>
    <message>
        <source>Change Folder…</source>
        <translation>Anderer Ordner …</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen …</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Strg+O</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Recent folders</source>
        <translation>Letzte Ordner</translation>
    </message>
</context>
<context>
    <name>CorpusFilesSheet</name>
    <message>
        <source>Files of “%1”</source>
        <translation>Dateien von „%1“</translation>
    </message>
    <message>
        <source>Reading the samples…</source>
        <translation>Die Samples werden gelesen …</translation>
    </message>
    <message>
        <source>The files could not be read.</source>
        <translation>Die Dateien konnten nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Which files</source>
        <translation>Welche Dateien</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Conspicuous</source>
        <translation>Auffällige</translation>
    </message>
    <message>
        <source>Reading the samples</source>
        <translation>Samples lesen</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
</context>
<context>
    <name>DetailControl</name>
    <message>
        <source>How much of the samples&apos; own attacks, fine structure and tails the variations get. Ctrl+D plays the last audition with and without.</source>
        <translation>Wie viel von den Anschlägen, der Feinstruktur und dem Ausklang der Samples die Variationen bekommen. Strg+D spielt das zuletzt Vorgehörte mit und ohne.</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Detail</translation>
    </message>
</context>
<context>
    <name>DeviceButton</name>
    <message>
        <source>Learns and generates on a graphics card if there is one, else on the processor.</source>
        <translation>Lernt und erzeugt auf einer Grafikkarte, wenn es eine gibt, sonst auf dem Prozessor.</translation>
    </message>
    <message>
        <source>Learns and generates on: %1 (chosen automatically)</source>
        <translation>Lernt und erzeugt auf: %1 (automatisch gewählt)</translation>
    </message>
    <message>
        <source>Learns and generates on: %1</source>
        <translation>Lernt und erzeugt auf: %1</translation>
    </message>
    <message>
        <source>Device: %1</source>
        <translation>Gerät: %1</translation>
    </message>
</context>
<context>
    <name>DeviceMenu</name>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Warten, bis der laufende Vorgang zu Ende ist, oder ihn abbrechen.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
    <message>
        <source>A graphics card if there is one, else the processor</source>
        <translation>Eine Grafikkarte, wenn es eine gibt, sonst der Prozessor</translation>
    </message>
    <message>
        <source>No graphics card was found.</source>
        <translation>Keine Grafikkarte gefunden.</translation>
    </message>
    <message>
        <source>Looking for graphics cards…</source>
        <translation>Grafikkarten werden gesucht …</translation>
    </message>
</context>
<context>
    <name>ErrorBanner</name>
    <message>
        <source>Something went wrong</source>
        <translation>Etwas ist schiefgegangen</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>Copy the message</source>
        <translation>Die Meldung kopieren</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>FieldMenu</name>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
</context>
<context>
    <name>FolderChooser</name>
    <message>
        <source>No audio files in this folder itself.</source>
        <translation>In diesem Ordner selbst sind keine Audiodateien.</translation>
    </message>
    <message>
        <source>1 audio file in this folder.</source>
        <translation>1 Audiodatei in diesem Ordner.</translation>
    </message>
    <message numerus="yes">
        <source>%n audio files in this folder.</source>
        <translation>
            <numerusform>%n Audiodatei in diesem Ordner.</numerusform>
            <numerusform>%n Audiodateien in diesem Ordner.</numerusform>
        </translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Aufwärts</translation>
    </message>
    <message>
        <source>Name of a new folder</source>
        <translation>Name des neuen Ordners</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Use Folder</source>
        <translation>Ordner verwenden</translation>
    </message>
</context>
<context>
    <name>FolderChoosers</name>
    <message>
        <source>Use Folder</source>
        <translation>Ordner verwenden</translation>
    </message>
</context>
<context>
    <name>FolderList</name>
    <message>
        <source>Folders</source>
        <translation>Ordner</translation>
    </message>
</context>
<context>
    <name>FooterBar</name>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>Training finished.</source>
        <translation>Das Training ist beendet.</translation>
    </message>
    <message>
        <source>1 variation written.</source>
        <translation>1 Variation geschrieben.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations written.</source>
        <translation>
            <numerusform>%n Variation geschrieben.</numerusform>
            <numerusform>%n Variationen geschrieben.</numerusform>
        </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Audition</source>
        <translation>Vorhören</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Render a single variation with the current settings and play it, without saving.</source>
        <translation>Eine einzelne Variation mit den jetzigen Einstellungen berechnen und abspielen, ohne sie zu speichern.</translation>
    </message>
    <message>
        <source>Try %1</source>
        <translation>%1 testen</translation>
    </message>
    <message>
        <source>Render twelve variations to listen to, without saving; keep the ones you like (Ctrl+N).</source>
        <translation>Zwölf Variationen zum Anhören berechnen, ohne sie zu speichern; behalten, was gefällt (Strg+N).</translation>
    </message>
    <message numerus="yes">
        <source>Generate %n Variations</source>
        <translation>
            <numerusform>%n Variation erzeugen</numerusform>
            <numerusform>%n Variationen erzeugen</numerusform>
        </translation>
    </message>
    <message>
        <source>Ctrl+G</source>
        <translation>Strg+G</translation>
    </message>
</context>
<context>
    <name>InspectorPanel</name>
    <message>
        <source>Inspector</source>
        <translation>Inspektor</translation>
    </message>
    <message>
        <source>Return renames, Esc leaves the name as it is.</source>
        <translation>Eingabe benennt um, Esc lässt den Namen, wie er ist.</translation>
    </message>
    <message>
        <source>New name of the file</source>
        <translation>Neuer Name der Datei</translation>
    </message>
    <message>
        <source>Close the inspector</source>
        <translation>Den Inspektor schließen</translation>
    </message>
    <message>
        <source>Close (I or Esc)</source>
        <translation>Schließen (I oder Esc)</translation>
    </message>
    <message>
        <source>Select a candidate or a result below.</source>
        <translation>Unten einen Kandidaten oder ein Ergebnis auswählen.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>How loud it is on average, and its loudest moment, below the most that a file can hold.</source>
        <translation>Wie laut es im Mittel ist und in seinem lautesten Moment, unter dem, was eine Datei höchstens fasst.</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Schleife</translation>
    </message>
    <message>
        <source>Play it again and again</source>
        <translation>Immer wieder abspielen</translation>
    </message>
    <message>
        <source>Made of</source>
        <translation>Gemacht aus</translation>
    </message>
    <message>
        <source>Made of samples of another folder</source>
        <translation>Gemacht aus Samples eines anderen Ordners</translation>
    </message>
    <message>
        <source>The samples that the sound is a blend of, each with its share. Their keys play them and the sound in turn, equally loud.</source>
        <translation>Die Samples, aus denen der Klang gemischt ist, mit ihren Anteilen. Ihre Tasten spielen sie und den Klang abwechselnd, gleich laut.</translation>
    </message>
    <message>
        <source>Nobody knows any more.</source>
        <translation>Das weiß niemand mehr.</translation>
    </message>
    <message>
        <source>Nearest in the corpus</source>
        <translation>Am nächsten im Korpus</translation>
    </message>
    <message>
        <source>Comparing: %1 of %2</source>
        <translation>Wird verglichen: %1 von %2</translation>
    </message>
    <message>
        <source>The samples that sound most like it. The decibels say how far apart the two are on average, over all bands and moments.</source>
        <translation>Die Samples, die ihm am ähnlichsten klingen. Die Dezibel sagen, wie weit beide im Mittel auseinander liegen, über alle Bänder und Momente.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Write the file (K)</source>
        <translation>Die Datei schreiben (K)</translation>
    </message>
    <message>
        <source>More like this</source>
        <translation>Ähnliche</translation>
    </message>
    <message>
        <source>Twelve candidates around its place</source>
        <translation>Zwölf Kandidaten rings um seinen Ort</translation>
    </message>
    <message>
        <source>New skin</source>
        <translation>Neue Haut</translation>
    </message>
    <message>
        <source>The same place, and all that is drawn after it anew</source>
        <translation>Derselbe Ort, und alles danach Gezogene neu</translation>
    </message>
    <message>
        <source>New body</source>
        <translation>Neuer Körper</translation>
    </message>
    <message>
        <source>Another place, and all that is drawn after it as here</source>
        <translation>Ein anderer Ort, und alles danach Gezogene wie hier</translation>
    </message>
    <message>
        <source>Copy recipe</source>
        <translation>Rezept kopieren</translation>
    </message>
    <message>
        <source>What it takes to make this sound again, as text</source>
        <translation>Was es braucht, um diesen Klang wieder zu machen, als Text</translation>
    </message>
    <message>
        <source>Favourite</source>
        <translation>Favorit</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Show file</source>
        <translation>Datei zeigen</translation>
    </message>
    <message>
        <source>Show the file in the file manager</source>
        <translation>Die Datei in der Dateiverwaltung zeigen</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>In den Papierkorb</translation>
    </message>
    <message>
        <source>Into the desktop&apos;s trash; Ctrl+Z brings it back</source>
        <translation>In den Papierkorb des Desktops; Strg+Z holt es zurück</translation>
    </message>
</context>
<context>
    <name>LeaveDialog</name>
    <message>
        <source>Stop learning?</source>
        <translation>Lernen beenden?</translation>
    </message>
    <message>
        <source>Close without storing?</source>
        <translation>Schließen, ohne zu speichern?</translation>
    </message>
    <message>
        <source>The model is still being learned. When the window closes, what it has learned so far is lost.</source>
        <translation>Das Modell wird noch gelernt. Wird das Fenster geschlossen, geht verloren, was es bisher gelernt hat.</translation>
    </message>
    <message>
        <source>A model could not be stored. When the window closes, what it has learned is lost.</source>
        <translation>Ein Modell konnte nicht gespeichert werden. Wird das Fenster geschlossen, geht verloren, was es gelernt hat.</translation>
    </message>
    <message>
        <source>Close Anyway</source>
        <translation>Trotzdem schließen</translation>
    </message>
    <message>
        <source>Keep Learning</source>
        <translation>Weiter lernen</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Noch einmal speichern</translation>
    </message>
</context>
<context>
    <name>ListeningControl</name>
    <message>
        <source>Listening</source>
        <translation>Hören</translation>
    </message>
    <message>
        <source>What plays by itself; volume %1 % (Up, Down)</source>
        <translation>Was von selbst spielt; Lautstärke %1 % (Auf, Ab)</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Volume, from the next sound on</source>
        <translation>Lautstärke, vom nächsten Klang an</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Pegel</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>stumm</translation>
    </message>
</context>
<context>
    <name>ListeningMenu</name>
    <message>
        <source>Play results when they are selected</source>
        <translation>Ergebnisse abspielen, wenn sie ausgewählt werden</translation>
    </message>
    <message>
        <source>Play every change of a slider</source>
        <translation>Jede Änderung eines Reglers abspielen</translation>
    </message>
    <message>
        <source>Play candidates as they come</source>
        <translation>Kandidaten nacheinander abspielen</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Play what the pointer rests on</source>
        <translation>Abspielen, worauf der Zeiger ruht</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation>Verkleinern (−)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation>Vergrößern (+)</translation>
    </message>
    <message>
        <source>Back to the sliders</source>
        <translation>Zurück zu den Reglern</translation>
    </message>
    <message>
        <source>Back to the sliders (M)</source>
        <translation>Zurück zu den Reglern (M)</translation>
    </message>
    <message>
        <source>Placing the samples…</source>
        <translation>Die Samples werden angeordnet …</translation>
    </message>
    <message>
        <source>Map of the samples</source>
        <translation>Karte der Samples</translation>
    </message>
    <message>
        <source>Click a point to hear it, or between the points for something new.</source>
        <translation>Einen Punkt anklicken, um ihn zu hören, oder dazwischen für etwas Neues.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n ausgewählt</numerusform>
            <numerusform>%n ausgewählt</numerusform>
        </translation>
    </message>
    <message>
        <source>More Like These</source>
        <translation>Ähnliche</translation>
    </message>
    <message>
        <source>Candidates around the selected sounds</source>
        <translation>Kandidaten rings um die ausgewählten Klänge</translation>
    </message>
    <message>
        <source>Select nothing</source>
        <translation>Nichts auswählen</translation>
    </message>
    <message>
        <source>Select nothing (Esc)</source>
        <translation>Nichts auswählen (Esc)</translation>
    </message>
    <message>
        <source>favourite</source>
        <translation>Favorit</translation>
    </message>
</context>
<context>
    <name>ModelCard</name>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>No model for this folder yet. It learns on this Mac — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</source>
        <translation>Für diesen Ordner gibt es noch kein Modell. Gelernt wird auf diesem Rechner – nichts verlässt ihn. Es entsteht von selbst beim Erzeugen oder jetzt durch Training.</translation>
    </message>
    <message>
        <source>Open the Model</source>
        <translation>Das Modell öffnen</translation>
    </message>
    <message>
        <source>Samples of the same names were learned in %1.</source>
        <translation>Gleichnamige Samples wurden in %1 gelernt.</translation>
    </message>
    <message>
        <source>The same samples were learned in %1.</source>
        <translation>Dieselben Samples wurden in %1 gelernt.</translation>
    </message>
    <message>
        <source>Use That Model</source>
        <translation>Dieses Modell verwenden</translation>
    </message>
    <message>
        <source>Trained and ready</source>
        <translation>Gelernt und bereit</translation>
    </message>
    <message>
        <source>Show what was learned</source>
        <translation>Zeigen, was gelernt wurde</translation>
    </message>
    <message>
        <source>How well the folder was learned (Ctrl+I)</source>
        <translation>Wie gut der Ordner gelernt wurde (Strg+I)</translation>
    </message>
    <message>
        <source>How the sound was taken apart, how much of each sample was learned, when, and for how long.</source>
        <translation>Wie der Klang zerlegt wurde, wie viel von jedem Sample gelernt wurde, wann und wie lange.</translation>
    </message>
    <message>
        <source>%1 · %2 s per sample · trained %3 · %4</source>
        <translation>%1 · %2 s pro Sample · gelernt %3 · %4</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Noch einmal speichern</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Qualität</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>Analyse</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Beginn</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Retrain</source>
        <translation>Neu lernen</translation>
    </message>
    <message>
        <source>Train Model</source>
        <translation>Modell lernen</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Strg+T</translation>
    </message>
    <message>
        <source>Detail then works also when the folder has been moved or changed. Counts from the next training.</source>
        <translation>Detail geht dann auch, wenn der Ordner verschoben oder verändert worden ist. Gilt ab dem nächsten Training.</translation>
    </message>
</context>
<context>
    <name>ModelOfferDialog</name>
    <message>
        <source>Open the model of this sound?</source>
        <translation>Das Modell dieses Klangs öffnen?</translation>
    </message>
    <message>
        <source>Another model has made it, one of “%1”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay.</source>
        <translation>Ihn hat ein anderes Modell gemacht, eines von „%1“. Mit dem jetzigen machen seine Einstellungen andere Klänge. Wird es geöffnet, beginnt die Liste der Ergebnisse neu; die Dateien bleiben.</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Nicht jetzt</translation>
    </message>
    <message>
        <source>Open It</source>
        <translation>Öffnen</translation>
    </message>
</context>
<context>
    <name>ModelsSheet</name>
    <message>
        <source>Stored models</source>
        <translation>Gespeicherte Modelle</translation>
    </message>
    <message>
        <source>Bring Back</source>
        <translation>Zurückholen</translation>
    </message>
    <message>
        <source>Looking for stored models…</source>
        <translation>Gespeicherte Modelle werden gesucht …</translation>
    </message>
    <message>
        <source>No folder has been learned yet.</source>
        <translation>Es wurde noch kein Ordner gelernt.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>In use</source>
        <translation>In Gebrauch</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>%1 öffnen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Move to the trash</source>
        <translation>In den Papierkorb legen</translation>
    </message>
    <message>
        <source>%1 (Del)</source>
        <translation>%1 (Entf)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>an action and what it is for</comment>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>NoveltyGauge</name>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>Kopie</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>nah</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>neu</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>fern</translation>
    </message>
    <message>
        <source>Distance to the nearest sample</source>
        <translation>Abstand zum nächsten Sample</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>How far it is from the nearest sample: as good as a copy, close to it, new and of the kind, or far from all of them.</source>
        <translation>Wie weit es vom nächsten Sample entfernt ist: so gut wie eine Kopie, nah daran, neu und von der Art, oder fern von allen.</translation>
    </message>
</context>
<context>
    <name>OpeningView</name>
    <message>
        <source>Opening the model…</source>
        <translation>Das Modell wird geöffnet …</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Modell öffnen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
</context>
<context>
    <name>OutputCard</name>
    <message>
        <source>This folder does not answer.</source>
        <translation>Dieser Ordner antwortet nicht.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>Das ist eine Datei, kein Ordner.</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Frühere Durchgänge</translation>
    </message>
    <message>
        <source>What was made of this folder before (Ctrl+H)</source>
        <translation>Was früher aus diesem Ordner gemacht wurde (Strg+H)</translation>
    </message>
    <message>
        <source>Folder path (created if it doesn&apos;t exist)</source>
        <translation>Pfad des Ordners (wird angelegt, wenn er fehlt)</translation>
    </message>
    <message>
        <source>Output folder</source>
        <translation>Ausgabeordner</translation>
    </message>
    <message>
        <source>Choose the output folder</source>
        <translation>Den Ausgabeordner wählen</translation>
    </message>
    <message>
        <source>Existing folder — new files are added, nothing is overwritten.</source>
        <translation>Vorhandener Ordner – neue Dateien kommen hinzu, nichts wird überschrieben.</translation>
    </message>
    <message>
        <source>Folder will be created.</source>
        <translation>Der Ordner wird angelegt.</translation>
    </message>
    <message>
        <source>No folder chosen yet.</source>
        <translation>Noch kein Ordner gewählt.</translation>
    </message>
    <message>
        <source>This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.</source>
        <translation>Dieser Ordner liegt im Korpus: Das nächste Durchsuchen findet, was hier geschrieben wird, und das Modell passt nicht mehr.</translation>
    </message>
    <message>
        <source>Use a Folder Beside It</source>
        <translation>Einen Ordner daneben verwenden</translation>
    </message>
    <message>
        <source>Variations</source>
        <translation>Variationen</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
</context>
<context>
    <name>ParameterRow</name>
    <message>
        <source>%1 value</source>
        <translation>Wert von %1</translation>
    </message>
    <message>
        <source>Reset to default</source>
        <translation>Auf den Standardwert setzen</translation>
    </message>
    <message>
        <source>Reset to default: %1</source>
        <translation>Auf den Standardwert setzen: %1</translation>
    </message>
    <message>
        <source>Unlock: let Randomise change it</source>
        <translation>Entsperren: Würfeln darf ihn ändern</translation>
    </message>
    <message>
        <source>Lock: keep it when randomising</source>
        <translation>Sperren: beim Würfeln so lassen</translation>
    </message>
    <message>
        <source>Lock %1</source>
        <translation>%1 sperren</translation>
    </message>
</context>
<context>
    <name>PresetChip</name>
    <message>
        <source>%1 Edited.</source>
        <translation>%1 Geändert.</translation>
    </message>
    <message>
        <source>Delete preset %1</source>
        <translation>Preset %1 löschen</translation>
    </message>
    <message>
        <source>%1 (edited)</source>
        <translation>%1 (geändert)</translation>
    </message>
</context>
<context>
    <name>PresetChips</name>
    <message>
        <source>Presets</source>
        <translation>Presets</translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation>Als Preset sichern</translation>
    </message>
</context>
<context>
    <name>RecentMenu</name>
    <message>
        <source>Stored Models…</source>
        <translation>Gespeicherte Modelle …</translation>
    </message>
    <message>
        <source>Forget These Folders</source>
        <translation>Diese Ordner vergessen</translation>
    </message>
</context>
<context>
    <name>RelativeRow</name>
    <message>
        <source>Play the sound itself</source>
        <translation>Den Klang selbst abspielen</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 abspielen</translation>
    </message>
</context>
<context>
    <name>ReportSheet</name>
    <message>
        <source>What was learned of “%1”</source>
        <translation>Was von „%1“ gelernt wurde</translation>
    </message>
    <message>
        <source>Show the Files…</source>
        <translation>Dateien zeigen …</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Bericht</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Noch einmal</translation>
    </message>
    <message>
        <source>Farthest off</source>
        <translation>Am weitesten daneben</translation>
    </message>
    <message>
        <source>Space plays the sample and what was learned of it in turn.</source>
        <translation>Die Leertaste spielt das Sample und das davon Gelernte abwechselnd.</translation>
    </message>
    <message>
        <source>the sample</source>
        <translation>das Sample</translation>
    </message>
    <message>
        <source>what was learned of it</source>
        <translation>was davon gelernt wurde</translation>
    </message>
    <message>
        <source>Nearly the same</source>
        <translation>Fast gleich</translation>
    </message>
    <message>
        <source>Unlike all others</source>
        <translation>Anders als alle anderen</translation>
    </message>
</context>
<context>
    <name>ResultTile</name>
    <message>
        <source>favourite</source>
        <translation>Favorit</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>spielt</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>This file is gone</source>
        <translation>Diese Datei ist weg</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 stoppen</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 abspielen</translation>
    </message>
    <message>
        <source>gone</source>
        <translation>weg</translation>
    </message>
</context>
<context>
    <name>ResultsStrip</name>
    <message>
        <source>Results</source>
        <translation>Ergebnisse</translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n ausgewählt</numerusform>
            <numerusform>%n ausgewählt</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 Datei</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Candidates</source>
        <translation>Kandidaten</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>None of these files is a favourite.</source>
        <translation>Keine dieser Dateien ist ein Favorit.</translation>
    </message>
    <message>
        <source>The variations of the last run appear here.</source>
        <translation>Hier erscheinen die Variationen des letzten Durchgangs.</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Untersuchen</translation>
    </message>
    <message>
        <source>Show all files</source>
        <translation>Alle Dateien zeigen</translation>
    </message>
    <message>
        <source>Show favourites only</source>
        <translation>Nur Favoriten zeigen</translation>
    </message>
    <message>
        <source>Make a kit for samplers</source>
        <translation>Ein Kit für Sampler machen</translation>
    </message>
    <message>
        <source>A kit for samplers of the selected sounds, each with three close variations</source>
        <translation>Ein Kit für Sampler aus den ausgewählten Klängen, jeder mit drei nahen Variationen</translation>
    </message>
</context>
<context>
    <name>RunProgress</name>
    <message>
        <source>1 variation follows.</source>
        <translation>1 Variation folgt.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations follow.</source>
        <translation>
            <numerusform>%n Variation folgt.</numerusform>
            <numerusform>%n Variationen folgen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>Learning first: %1</source>
        <translation>Erst wird gelernt: %1</translation>
    </message>
    <message>
        <source>Opening the model: %1</source>
        <translation>Das Modell wird geöffnet: %1</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Rendering…</source>
        <translation>Wird berechnet …</translation>
    </message>
    <message>
        <source>Learning</source>
        <translation>Lernen</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Modell öffnen</translation>
    </message>
    <message>
        <source>Generating</source>
        <translation>Erzeugen</translation>
    </message>
    <message>
        <source>Making a kit</source>
        <translation>Kit machen</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>Berechnen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Moving files: %1 of %2</source>
        <translation>Dateien werden verschoben: %1 von %2</translation>
    </message>
    <message>
        <source>Moving files</source>
        <translation>Dateien werden verschoben</translation>
    </message>
</context>
<context>
    <name>RunsSheet</name>
    <message>
        <source>Earlier runs of “%1”</source>
        <translation>Frühere Durchgänge von „%1“</translation>
    </message>
    <message>
        <source>Return opens a run, S sets its parameters and its seed again.</source>
        <translation>Eingabe öffnet einen Durchgang, S setzt seine Parameter und seinen Startwert wieder ein.</translation>
    </message>
    <message>
        <source>Reading the journal…</source>
        <translation>Das Journal wird gelesen …</translation>
    </message>
    <message>
        <source>The journal has no runs of this folder.</source>
        <translation>Im Journal ist kein Durchgang von diesem Ordner.</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Frühere Durchgänge</translation>
    </message>
    <message>
        <source>%2 · Seed %1</source>
        <translation>%2 · Startwert %1</translation>
    </message>
    <message>
        <source>Own settings</source>
        <translation>Eigene Einstellungen</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Render</source>
        <translation>Berechnen</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Render %1</source>
        <translation>%1 berechnen</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>%1 öffnen</translation>
    </message>
    <message>
        <source>Set its parameters and its seed again</source>
        <translation>Seine Parameter und seinen Startwert wieder einsetzen</translation>
    </message>
    <message>
        <source>%1 (S)</source>
        <translation>%1 (S)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>an action and what it is for</comment>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>SavePresetDialog</name>
    <message>
        <source>Save as Preset</source>
        <translation>Als Preset sichern</translation>
    </message>
</context>
<context>
    <name>SavePresetForm</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
</context>
<context>
    <name>SeedField</name>
    <message>
        <source>Enter a number to get identical results every time. Leave empty for a fresh roll.</source>
        <translation>Mit einer Zahl kommt jedes Mal dasselbe heraus. Ohne Zahl wird jedes Mal neu gewürfelt.</translation>
    </message>
    <message>
        <source>Seed</source>
        <translation>Startwert</translation>
    </message>
    <message>
        <source>as the last run</source>
        <translation>wie zuletzt</translation>
    </message>
    <message>
        <source>random</source>
        <translation>zufällig</translation>
    </message>
    <message>
        <source>Not a whole number: a fresh roll.</source>
        <translation>Keine ganze Zahl: wird gewürfelt.</translation>
    </message>
    <message>
        <source>Last run: %1</source>
        <translation>Zuletzt: %1</translation>
    </message>
    <message>
        <source>Copy the seed of the last run</source>
        <translation>Den letzten Startwert kopieren</translation>
    </message>
    <message>
        <source>Use the seed of the last run again</source>
        <translation>Den letzten Startwert wieder verwenden</translation>
    </message>
    <message>
        <source>Same seed</source>
        <translation>Gleicher Startwert</translation>
    </message>
    <message>
        <source>The next runs take this seed, too (S), so that what you change is what you hear.</source>
        <translation>Auch die nächsten Durchgänge nehmen diesen Startwert (S): So ist zu hören, was geändert wird.</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>SimilarSheet</name>
    <message>
        <source>“%1”</source>
        <translation>„%1“</translation>
    </message>
    <message>
        <source>Find similar in the corpus</source>
        <translation>Ähnliche im Korpus finden</translation>
    </message>
    <message>
        <source>The nearest sounds of the corpus, nearest first.</source>
        <translation>Die nächsten Klänge des Korpus, der nächste zuerst.</translation>
    </message>
    <message>
        <source>There is nothing in the corpus to compare it with.</source>
        <translation>Im Korpus ist nichts, womit er zu vergleichen wäre.</translation>
    </message>
    <message>
        <source>This sound was not made here: nothing is known of how it was made.</source>
        <translation>Dieser Klang wurde nicht hier gemacht: Wie er entstand, ist nicht bekannt.</translation>
    </message>
    <message>
        <source>Comparing</source>
        <translation>Vergleichen</translation>
    </message>
    <message>
        <source>Similar sounds</source>
        <translation>Ähnliche Klänge</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 stoppen</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 abspielen</translation>
    </message>
</context>
<context>
    <name>SortButton</name>
    <message>
        <source>Sort the results</source>
        <translation>Die Ergebnisse sortieren</translation>
    </message>
</context>
<context>
    <name>SortMenu</name>
    <message>
        <source>As made</source>
        <translation>Wie gemacht</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Nach Namen</translation>
    </message>
    <message>
        <source>Short to long</source>
        <translation>Kurz bis lang</translation>
    </message>
    <message>
        <source>Dark to bright</source>
        <translation>Dunkel bis hell</translation>
    </message>
    <message>
        <source>Close to new</source>
        <translation>Nah bis neu</translation>
    </message>
</context>
<context>
    <name>SoundRow</name>
    <message>
        <source>Stop %1</source>
        <translation>%1 stoppen</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 abspielen</translation>
    </message>
</context>
<context>
    <name>StripHandle</name>
    <message>
        <source>Height of the strip</source>
        <translation>Höhe des Streifens</translation>
    </message>
    <message>
        <source>Ctrl+Up and Ctrl+Down</source>
        <translation>Strg+Auf und Strg+Ab</translation>
    </message>
    <message>
        <source>Drag for more rows (Ctrl+Up)</source>
        <translation>Ziehen für mehr Reihen (Strg+Auf)</translation>
    </message>
</context>
<context>
    <name>SweepPopup</name>
    <message>
        <source>%1, seven values</source>
        <translation>%1, sieben Werte</translation>
    </message>
    <message>
        <source>Return takes the value</source>
        <translation>Eingabe übernimmt den Wert</translation>
    </message>
    <message>
        <source>the present value</source>
        <translation>der jetzige Wert</translation>
    </message>
</context>
<context>
    <name>TrainingProgressView</name>
    <message>
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message>
        <source>Stop Here</source>
        <translation>Hier aufhören</translation>
    </message>
    <message>
        <source>End the learning and keep what has been learned so far.</source>
        <translation>Das Lernen beenden und behalten, was bisher gelernt wurde.</translation>
    </message>
    <message>
        <source>Training</source>
        <translation>Training</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Schritt %1 von %2</translation>
    </message>
    <message>
        <source>Step %1</source>
        <translation>Schritt %1</translation>
    </message>
    <message>
        <source>Loss by step</source>
        <translation>Verlust nach Schritten</translation>
    </message>
    <message>
        <source>The loss says how far what is drawn is from the samples: the lower the line, the closer. Listen to hear it.</source>
        <translation>Der Verlust sagt, wie weit das Gezeichnete von den Samples entfernt ist: je tiefer die Linie, desto näher. Beim Anhören ist es zu hören.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Hear what has been learned so far</source>
        <translation>Anhören, was bisher gelernt wurde</translation>
    </message>
    <message>
        <source>Mel image of what has been learned so far</source>
        <translation>Mel-Bild dessen, was bisher gelernt wurde</translation>
    </message>
    <message>
        <source>You can listen in a few seconds.</source>
        <translation>In ein paar Sekunden gibt es etwas zu hören.</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>There is not enough memory for this.</source>
        <translation>Dafür reicht der Arbeitsspeicher nicht.</translation>
    </message>
    <message>
        <source>Works everywhere</source>
        <translation>Geht überall</translation>
    </message>
    <message>
        <source>Graphics card</source>
        <translation>Grafikkarte</translation>
    </message>
    <message>
        <source>Integrated graphics</source>
        <translation>Integrierte Grafik</translation>
    </message>
    <message>
        <source>Virtual graphics</source>
        <translation>Virtuelle Grafik</translation>
    </message>
    <message>
        <source>Software driver, never chosen automatically</source>
        <translation>Softwaretreiber, nie automatisch gewählt</translation>
    </message>
    <message>
        <source>Never chosen automatically</source>
        <translation>Nie automatisch gewählt</translation>
    </message>
    <message>
        <source>Cannot be used: %1</source>
        <translation>Nicht verwendbar: %1</translation>
    </message>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Warten, bis der laufende Vorgang zu Ende ist, oder ihn abbrechen.</translation>
    </message>
    <message>
        <source>These candidates were made by another model. Open it first, or try new ones.</source>
        <translation>Diese Kandidaten hat ein anderes Modell gemacht. Erst dieses öffnen oder neue probieren.</translation>
    </message>
    <message>
        <source>This sound was made by another model. Choose the folder that it was made from first.</source>
        <translation>Diesen Klang hat ein anderes Modell gemacht. Erst den Ordner wählen, aus dem er gemacht ist.</translation>
    </message>
    <message>
        <source>This sound is silent: nothing is like it.</source>
        <translation>Dieser Klang ist stumm: Nichts ist ihm ähnlich.</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Only folders on this computer can be used.</source>
        <translation>Nur Ordner auf diesem Rechner können verwendet werden.</translation>
    </message>
    <message>
        <source>%1 does not answer. Check the drive or the network that it is on.</source>
        <translation>%1 antwortet nicht. Das Laufwerk oder das Netzwerk prüfen, auf dem es liegt.</translation>
    </message>
    <message>
        <source>Drop one folder: the one that holds the samples.</source>
        <translation>Einen Ordner ablegen: den mit den Samples.</translation>
    </message>
    <message>
        <source>This is a file, not a folder. Drop the folder that holds it.</source>
        <translation>Das ist eine Datei, kein Ordner. Den Ordner ablegen, in dem sie liegt.</translation>
    </message>
    <message>
        <source>There is no folder %1.</source>
        <translation>Es gibt keinen Ordner %1.</translation>
    </message>
    <message>
        <source>A sound of these was made by another model: %1. Choose sounds of one model.</source>
        <translation>Einen dieser Klänge hat ein anderes Modell gemacht: %1. Klänge eines Modells wählen.</translation>
    </message>
    <message>
        <source>Only remains of a model that was being stored.</source>
        <translation>Nur Reste eines Modells, das gespeichert werden sollte.</translation>
    </message>
    <message>
        <source>1 sample</source>
        <translation>1 Sample</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n Sample</numerusform>
            <numerusform>%n Samples</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 · trained %2 · %3</source>
        <translation>%1 · gelernt %2 · %3</translation>
    </message>
    <message>
        <source>The learned samples could not be read: noise stands in for their detail.</source>
        <translation>Die gelernten Samples konnten nicht gelesen werden: Für ihr Detail steht Rauschen ein.</translation>
    </message>
    <message>
        <source>For %1 of %2 variations a learned sample could not be read: noise stands in for its detail.</source>
        <translation>Für %1 von %2 Variationen konnte ein gelerntes Sample nicht gelesen werden: Für sein Detail steht Rauschen ein.</translation>
    </message>
    <message>
        <source>How the files were made could not be noted everywhere. %1.</source>
        <translation>Wie die Dateien gemacht wurden, konnte nicht überall vermerkt werden. %1.</translation>
    </message>
    <message>
        <source>The journal stays as it is, because it cannot be told whether it is wanted. %1.</source>
        <translation>Das Journal bleibt, wie es ist, weil sich nicht sagen lässt, ob es gewünscht ist. %1.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n steps</source>
        <translation>
            <numerusform>%1 von %n Schritt</numerusform>
            <numerusform>%1 von %n Schritten</numerusform>
        </translation>
    </message>
    <message>
        <source>1 step</source>
        <translation>1 Schritt</translation>
    </message>
    <message numerus="yes">
        <source>%n steps</source>
        <translation>
            <numerusform>%n Schritt</numerusform>
            <numerusform>%n Schritte</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 from a head start</source>
        <translation>%1 mit Starthilfe</translation>
    </message>
    <message>
        <source>%1 onto %2</source>
        <translation>%1 auf %2</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>The preset&apos;s file cannot be read.</source>
        <translation>Die Datei des Presets ist nicht lesbar.</translation>
    </message>
    <message>
        <source>Give the preset a name.</source>
        <translation>Das Preset braucht einen Namen.</translation>
    </message>
    <message>
        <source>That name is too long.</source>
        <translation>Dieser Name ist zu lang.</translation>
    </message>
    <message>
        <source>A preset&apos;s name cannot begin with a dot or contain a slash.</source>
        <translation>Der Name eines Presets kann nicht mit einem Punkt beginnen und keinen Schrägstrich enthalten.</translation>
    </message>
    <message>
        <source>A built-in preset has that name.</source>
        <translation>Ein eingebautes Preset heißt so.</translation>
    </message>
    <message>
        <source>The file is too long to be played.</source>
        <translation>Die Datei ist zu lang, um abgespielt zu werden.</translation>
    </message>
    <message>
        <source>There is no sound card to play through: %1</source>
        <translation>Es gibt keine Soundkarte zum Abspielen: %1</translation>
    </message>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>Kopie</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>nah</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>neu</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>fern</translation>
    </message>
    <message>
        <source>0 s</source>
        <translation>0 s</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>about %1 s left</source>
        <translation>noch etwa %1 s</translation>
    </message>
    <message>
        <source>about %1 min left</source>
        <translation>noch etwa %1 min</translation>
    </message>
    <message>
        <source>about %1 h left</source>
        <translation>noch etwa %1 h</translation>
    </message>
    <message>
        <source>about %1 h %2 min left</source>
        <translation>noch etwa %1 h %2 min</translation>
    </message>
    <message>
        <source>Candidate %1</source>
        <translation>Kandidat %1</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds of the map</source>
        <translation>
            <numerusform>%n Klang der Karte</numerusform>
            <numerusform>%n Klänge der Karte</numerusform>
        </translation>
    </message>
    <message>
        <source>Processor</source>
        <translation>Prozessor</translation>
    </message>
    <message>
        <source>d MMM yyyy, hh:mm</source>
        <translation>dd.MM.yyyy, hh:mm</translation>
    </message>
</context>
<context>
    <name>quillmere::AppModel</name>
    <message>
        <source>The folder has changed since this model was learned. Retrain to learn it as it is now.</source>
        <translation>Der Ordner hat sich geändert, seit dieses Modell gelernt wurde. Neu lernen, damit es ihn kennt, wie er jetzt ist.</translation>
    </message>
    <message>
        <source>1 file is gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>1 Datei ist seit dem Durchsuchen verschwunden. Der Ordner wird neu durchsucht; danach noch einmal beginnen.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>
            <numerusform>%n Datei ist seit dem Durchsuchen verschwunden. Der Ordner wird neu durchsucht; danach noch einmal beginnen.</numerusform>
            <numerusform>%n Dateien sind seit dem Durchsuchen verschwunden. Der Ordner wird neu durchsucht; danach noch einmal beginnen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Erst einen Ausgabeordner wählen.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again.</source>
        <translation>Dieser Klang wurde hier gemacht: Seine Einstellungen gelten wieder.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again. Its model or the folder of that is gone.</source>
        <translation>Dieser Klang wurde hier gemacht: Seine Einstellungen gelten wieder. Sein Modell oder dessen Ordner gibt es nicht mehr.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again, and its model is opened.</source>
        <translation>Dieser Klang wurde hier gemacht: Seine Einstellungen gelten wieder, und sein Modell wird geöffnet.</translation>
    </message>
</context>
<context>
    <name>quillmere::CandidatesController</name>
    <message>
        <source>There is no model to try yet. Train one first, or press Generate.</source>
        <translation>Es gibt noch kein Modell zum Probieren. Erst eines lernen oder „Erzeugen“ drücken.</translation>
    </message>
    <message>
        <source>The oldest candidates were forgotten to make room for new ones.</source>
        <translation>Die ältesten Kandidaten wurden vergessen, um Platz für neue zu machen.</translation>
    </message>
    <message>
        <source>Seed %1</source>
        <translation>Startwert %1</translation>
    </message>
    <message>
        <source>New skins of %1</source>
        <translation>Neue Haut für %1</translation>
    </message>
    <message>
        <source>New bodies for %1</source>
        <translation>Neue Körper für %1</translation>
    </message>
    <message>
        <source>Like %1</source>
        <translation>Wie %1</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Erst einen Ausgabeordner wählen.</translation>
    </message>
    <message>
        <source>Kept: %1</source>
        <translation>Behalten: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::CharacterController</name>
    <message>
        <source>A preset of that name exists already.</source>
        <translation>Ein Preset dieses Namens gibt es schon.</translation>
    </message>
</context>
<context>
    <name>quillmere::ComputeDevices</name>
    <message>
        <source>The stored choice of a device cannot be read. It is chosen automatically.</source>
        <translation>Die gespeicherte Wahl des Geräts ist nicht lesbar. Es wird automatisch gewählt.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusController</name>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>Den Ordner mit den Samples wählen, aus denen gelernt wird</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesController</name>
    <message numerus="yes">
        <source>%n fine</source>
        <translation>
            <numerusform>%n in Ordnung</numerusform>
            <numerusform>%n in Ordnung</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n cut</source>
        <translation>
            <numerusform>%n gekürzt</numerusform>
            <numerusform>%n gekürzt</numerusform>
        </translation>
    </message>
    <message>
        <source>1 copy</source>
        <translation>1 Kopie</translation>
    </message>
    <message numerus="yes">
        <source>%n copies</source>
        <translation>
            <numerusform>%n Kopie</numerusform>
            <numerusform>%n Kopien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n damaged</source>
        <translation>
            <numerusform>%n beschädigt</numerusform>
            <numerusform>%n beschädigt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n silent</source>
        <translation>
            <numerusform>%n stumm</numerusform>
            <numerusform>%n stumm</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n unreadable</source>
        <translation>
            <numerusform>%n unlesbar</numerusform>
            <numerusform>%n unlesbar</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file: %1</source>
        <translation>1 Datei: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n files: %1</source>
        <translation>
            <numerusform>%n Datei: %1</numerusform>
            <numerusform>%n Dateien: %1</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesModel</name>
    <message>
        <source>silent</source>
        <translation>stumm</translation>
    </message>
    <message>
        <source>unreadable</source>
        <translation>unlesbar</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>beschädigt</translation>
    </message>
    <message>
        <source>cut</source>
        <translation>gekürzt</translation>
    </message>
    <message>
        <source>copy</source>
        <translation>Kopie</translation>
    </message>
    <message>
        <source>fine</source>
        <translation>in Ordnung</translation>
    </message>
    <message>
        <source>There is nothing to hear, so it is left out.</source>
        <translation>Es gibt nichts zu hören, darum wird sie ausgelassen.</translation>
    </message>
    <message>
        <source>It ends before it should.</source>
        <translation>Sie endet früher, als sie sollte.</translation>
    </message>
    <message>
        <source>Of %1 ms nothing could be read; they are silent.</source>
        <translation>%1 ms waren nicht lesbar; sie sind stumm.</translation>
    </message>
    <message>
        <source>The first %1 s are learned.</source>
        <translation>Die ersten %1 s werden gelernt.</translation>
    </message>
    <message>
        <source>The same file as %1: it counts twice.</source>
        <translation>Dieselbe Datei wie %1: Sie zählt doppelt.</translation>
    </message>
</context>
<context>
    <name>quillmere::FilesController</name>
    <message>
        <source>%1 could not be moved to the trash.</source>
        <translation>%1 konnte nicht in den Papierkorb gelegt werden.</translation>
    </message>
    <message>
        <source>In the trash: %1</source>
        <translation>Im Papierkorb: %1</translation>
    </message>
    <message>
        <source>“%1” is no name for a file.</source>
        <translation>„%1“ ist kein Name für eine Datei.</translation>
    </message>
    <message>
        <source>There is a file called %1 already.</source>
        <translation>Eine Datei namens %1 gibt es schon.</translation>
    </message>
    <message>
        <source>Another file is called %1 by now.</source>
        <translation>Eine andere Datei heißt inzwischen %1.</translation>
    </message>
    <message>
        <source>Back again: %1</source>
        <translation>Wieder da: %1</translation>
    </message>
    <message>
        <source>%1. Not moved: %2</source>
        <translation>%1. Nicht verschoben: %2</translation>
    </message>
    <message>
        <source>Not moved: %1</source>
        <translation>Nicht verschoben: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::FolderBrowser</name>
    <message>
        <source>A folder&apos;s name cannot contain a slash.</source>
        <translation>Der Name eines Ordners kann keinen Schrägstrich enthalten.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>Das ist eine Datei, kein Ordner.</translation>
    </message>
</context>
<context>
    <name>quillmere::GenerationController</name>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Erst einen Ausgabeordner wählen.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Dieser Ordner wurde nicht durchsucht.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Erst einen Korpus wählen.</translation>
    </message>
    <message>
        <source>%1 of 1 variation written.</source>
        <translation>%1 von 1 Variation geschrieben.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n variations written.</source>
        <translation>
            <numerusform>%1 von %n Variation geschrieben.</numerusform>
            <numerusform>%1 von %n Variationen geschrieben.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelled: %1</source>
        <translation>Abgebrochen: %1</translation>
    </message>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Es gibt noch kein Modell zum Vorhören. Erst eines lernen oder „Erzeugen“ drücken.</translation>
    </message>
    <message>
        <source>Before learning: this is the head start.</source>
        <translation>Vor dem Lernen: Das ist die Starthilfe.</translation>
    </message>
</context>
<context>
    <name>quillmere::InspectorController</name>
    <message>
        <source>Recipe copied</source>
        <translation>Rezept kopiert</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>stumm</translation>
    </message>
    <message>
        <source>%1, peak %2</source>
        <translation>%1, Spitze %2</translation>
    </message>
    <message>
        <source>Nearly a copy of a sample that it is made of</source>
        <translation>Fast eine Kopie eines Samples, aus dem es gemacht ist</translation>
    </message>
    <message>
        <source>Nothing to compare with</source>
        <translation>Nichts zum Vergleichen</translation>
    </message>
    <message>
        <source>Nearly a copy of %1</source>
        <translation>Fast eine Kopie von %1</translation>
    </message>
    <message>
        <source>Close to %1</source>
        <translation>Nah an %1</translation>
    </message>
    <message>
        <source>New, of the kind of %1</source>
        <translation>Neu, von der Art von %1</translation>
    </message>
    <message>
        <source>New, and far from every sample</source>
        <translation>Neu und fern von jedem Sample</translation>
    </message>
</context>
<context>
    <name>quillmere::KitController</name>
    <message>
        <source>Choose sounds that the present model has made.</source>
        <translation>Klänge wählen, die das jetzige Modell gemacht hat.</translation>
    </message>
    <message>
        <source>A kit has keys for %1 sounds. Choose fewer.</source>
        <translation>Ein Kit hat Tasten für %1 Klänge. Weniger wählen.</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Erst einen Ausgabeordner wählen.</translation>
    </message>
    <message>
        <source>Kit written: %1</source>
        <translation>Kit geschrieben: %1</translation>
    </message>
    <message>
        <source>The kit is not complete: %1</source>
        <translation>Das Kit ist unvollständig: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::LossChart</name>
    <message>
        <source>No loss yet</source>
        <translation>Noch kein Verlust</translation>
    </message>
    <message>
        <source>Loss %1 at step %2</source>
        <translation>Verlust %1 bei Schritt %2</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>Schritt</translation>
    </message>
    <message>
        <source>Loss</source>
        <translation>Verlust</translation>
    </message>
</context>
<context>
    <name>quillmere::MapController</name>
    <message>
        <source>Near one another is what sounds alike; the map shows %1 % of the differences.</source>
        <translation>Nah beieinander liegt, was ähnlich klingt; die Karte zeigt %1 % der Unterschiede.</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelController</name>
    <message>
        <source>This model is not stored yet. You can use it, but it is lost when the program ends.</source>
        <translation>Dieses Modell ist noch nicht gespeichert. Es ist benutzbar, geht aber verloren, wenn das Programm endet.</translation>
    </message>
    <message>
        <source>The model of %1 is not stored yet. It is lost when the program ends.</source>
        <translation>Das Modell von %1 ist noch nicht gespeichert. Es geht verloren, wenn das Programm endet.</translation>
    </message>
    <message>
        <source>The model is stored.</source>
        <translation>Das Modell ist gespeichert.</translation>
    </message>
    <message>
        <source>The stored model cannot be used. Retrain to get a new one; the files of the old one are kept.</source>
        <translation>Das gespeicherte Modell ist unbrauchbar. Neu lernen ergibt ein neues; die Dateien des alten bleiben erhalten.</translation>
    </message>
    <message>
        <source>The stored model could not be opened, which need not be its fault. Open it again, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>Das gespeicherte Modell ließ sich nicht öffnen, was nicht an ihm liegen muss. Noch einmal öffnen oder neu lernen; die Dateien des alten bleiben erhalten.</translation>
    </message>
    <message>
        <source>The stored model was not opened. Open it, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>Das gespeicherte Modell wurde nicht geöffnet. Öffnen oder neu lernen; die Dateien des alten bleiben erhalten.</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Beginnt …</translation>
    </message>
    <message>
        <source>The head start cannot be used, so learning begins from scratch. %1</source>
        <translation>Die Starthilfe ist unbrauchbar, darum beginnt das Lernen von vorn. %1</translation>
    </message>
    <message>
        <source>Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis for percussive ones.</source>
        <translation>„Automatisch“ nimmt für anhaltende Samples mit Tonhöhe eine in der Frequenz feine, für perkussive eine in der Zeit feine Analyse.</translation>
    </message>
    <message>
        <source>From scratch</source>
        <translation>Von vorn</translation>
    </message>
    <message>
        <source>Head start</source>
        <translation>Starthilfe</translation>
    </message>
    <message>
        <source>A head start begins with a network that has learned thousands of sounds made by rule: learning takes seconds, and Audition works before it.</source>
        <translation>Die Starthilfe ist ein Netz, das schon Tausende nach Regeln gemachte Klänge kennt: Das Lernen dauert Sekunden, und „Vorhören“ geht schon vorher.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Erst einen Korpus wählen.</translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>In diesem Ordner sind keine Audiodateien.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Dieser Ordner wurde nicht durchsucht.</translation>
    </message>
    <message>
        <source>The sounds could not be kept with the model. %1</source>
        <translation>Die Klänge konnten nicht beim Modell aufbewahrt werden. %1</translation>
    </message>
    <message>
        <source>Store the sounds, too</source>
        <translation>Auch die Klänge speichern</translation>
    </message>
    <message>
        <source>Store the sounds, too (up to %1 MB)</source>
        <translation>Auch die Klänge speichern (bis zu %1 MB)</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelsController</name>
    <message>
        <source>The model could not be moved to the trash. Delete it with: quillmere-cli models remove</source>
        <translation>Das Modell konnte nicht in den Papierkorb gelegt werden. Löschen mit: quillmere-cli models remove</translation>
    </message>
    <message>
        <source>1 model, %1</source>
        <translation>1 Modell, %1</translation>
    </message>
    <message numerus="yes">
        <source>%n models, %1</source>
        <translation>
            <numerusform>%n Modell, %1</numerusform>
            <numerusform>%n Modelle, %1</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::OutputController</name>
    <message>
        <source>No file manager could be opened. The folder is %1</source>
        <translation>Es ließ sich keine Dateiverwaltung öffnen. Der Ordner ist %1</translation>
    </message>
    <message>
        <source>Choose a folder for the generated samples — use New Folder to create one</source>
        <translation>Einen Ordner für die erzeugten Samples wählen – mit „Neuer Ordner“ einen anlegen</translation>
    </message>
</context>
<context>
    <name>quillmere::PresetModel</name>
    <message>
        <source>Your preset.</source>
        <translation>Eigenes Preset.</translation>
    </message>
</context>
<context>
    <name>quillmere::ReportController</name>
    <message>
        <source>Reading the samples…</source>
        <translation>Die Samples werden gelesen …</translation>
    </message>
    <message>
        <source>Comparing the samples…</source>
        <translation>Die Samples werden verglichen …</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 und %2</translation>
    </message>
</context>
<context>
    <name>quillmere::RunsController</name>
    <message>
        <source>1 candidate</source>
        <translation>1 Kandidat</translation>
    </message>
    <message numerus="yes">
        <source>%n candidates</source>
        <translation>
            <numerusform>%n Kandidat</numerusform>
            <numerusform>%n Kandidaten</numerusform>
        </translation>
    </message>
    <message>
        <source>Relatives of %1</source>
        <translation>Verwandte von %1</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 Datei</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n Datei</numerusform>
            <numerusform>%n Dateien</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::SweepController</name>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Es gibt noch kein Modell zum Vorhören. Erst eines lernen oder „Erzeugen“ drücken.</translation>
    </message>
</context>
</TS>
