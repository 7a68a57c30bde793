<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>AppearanceButton</name>
    <message>
        <source>Appearance</source>
        <translation>Apparence</translation>
    </message>
</context>
<context>
    <name>AppearanceMenu</name>
    <message>
        <source>As the Desktop</source>
        <translation>Comme le bureau</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Clair</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Sombre</translation>
    </message>
</context>
<context>
    <name>CandidateTile</name>
    <message>
        <source>Candidate %1</source>
        <translation>Candidat %1</translation>
    </message>
    <message>
        <source>kept as %1</source>
        <translation>gardé sous %1</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>en lecture</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêter</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lire</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Arrêter %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Lire %1</translation>
    </message>
    <message>
        <source>kept</source>
        <translation>gardé</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Garder</translation>
    </message>
    <message>
        <source>Keep (K): write the file</source>
        <translation>Garder (K)&#xa0;: écrire le fichier</translation>
    </message>
    <message>
        <source>Keep %1</source>
        <translation>Garder %1</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Écarter</translation>
    </message>
    <message>
        <source>Discard (X); Ctrl+Z brings it back</source>
        <translation>Écarter (X)&#xa0;; Ctrl+Z le ramène</translation>
    </message>
    <message>
        <source>Discard %1</source>
        <translation>Écarter %1</translation>
    </message>
</context>
<context>
    <name>CandidatesStrip</name>
    <message>
        <source>Candidates</source>
        <translation>Candidats</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>1 sound</source>
        <translation>1 son</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds</source>
        <translation>
            <numerusform>%n son</numerusform>
            <numerusform>%n sons</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy the seed of these candidates</source>
        <translation>Copier la graine de ces candidats</translation>
    </message>
    <message>
        <source>Older candidates</source>
        <translation>Candidats précédents</translation>
    </message>
    <message>
        <source>Set %1 of %2</source>
        <translation>Lot %1 sur %2</translation>
    </message>
    <message>
        <source>Newer candidates</source>
        <translation>Candidats suivants</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Examiner</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>Résultats</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Ctrl+R</translation>
    </message>
    <message>
        <source>All discarded. Ctrl+Z brings them back.</source>
        <translation>Tous écartés. Ctrl+Z les ramène.</translation>
    </message>
</context>
<context>
    <name>ChanceSection</name>
    <message>
        <source>Chance</source>
        <translation>Hasard</translation>
    </message>
    <message>
        <source>Randomise</source>
        <translation>Au hasard</translation>
    </message>
    <message>
        <source>Moves every parameter that is not locked, by the amount beside</source>
        <translation>Déplace tous les paramètres non verrouillés, de la quantité indiquée à côté</translation>
    </message>
    <message>
        <source>Amount of Randomise</source>
        <translation>Quantité de hasard</translation>
    </message>
</context>
<context>
    <name>CharacterPanel</name>
    <message>
        <source>Character</source>
        <translation>Caractère</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Avant</translation>
    </message>
    <message>
        <source>%1, edited</source>
        <translation>%1, modifié</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Carte</translation>
    </message>
    <message>
        <source>Map of the samples (M)</source>
        <translation>Carte des samples (M)</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Undo (Ctrl+Z)</source>
        <translation>Annuler (Ctrl+Z)</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rétablir</translation>
    </message>
    <message>
        <source>Redo (Ctrl+Shift+Z)</source>
        <translation>Rétablir (Ctrl+Maj+Z)</translation>
    </message>
</context>
<context>
    <name>CorpusCard</name>
    <message>
        <source>Sample corpus</source>
        <translation>Corpus de samples</translation>
    </message>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>Choisissez le dossier de samples dont apprendre</translation>
    </message>
    <message>
        <source>Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty.</source>
        <translation>Choisissez un dossier de fichiers WAV, AIFF, FLAC, MP3 ou M4A. Quelques dizaines suffisent.</translation>
    </message>
    <message>
        <source>Scanning</source>
        <translation>Analyse</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>Show the files</source>
        <translation>Voir les fichiers</translation>
    </message>
    <message>
        <source>What becomes of each file (Ctrl+L)</source>
        <translation>Ce que devient chaque fichier (Ctrl+L)</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n sample</numerusform>
            <numerusform>%n samples</numerusform>
        </translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>Aucun fichier audio dans ce dossier.</translation>
    </message>
    <message>
        <source>Very few samples — expect variations that stay close to them.</source>
        <translation>Très peu de samples – les variations resteront proches d&apos;eux.</translation>
    </message>
    <message>
        <source>1 file could not be read and is left out.</source>
        <translation>1 fichier est illisible et laissé de côté.</translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read and are left out.</source>
        <translation>
            <numerusform>%n fichier est illisible et laissé de côté.</numerusform>
            <numerusform>%n fichiers sont illisibles et laissés de côté.</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file is named like a variation made here. It is learned like the others.</source>
        <translation>1 fichier porte le nom d&apos;une variation faite ici. Il est appris comme les autres.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are named like variations made here. They are learned like the others.</source>
        <translation>
            <numerusform>%n fichier porte le nom d&apos;une variation faite ici. Il est appris comme les autres.</numerusform>
            <numerusform>%n fichiers portent le nom de variations faites ici. Ils sont appris comme les autres.</numerusform>
        </translation>
    </message>
    <message>
        <source>Scan Again</source>
        <translation>Analyser à nouveau</translation>
    </message>
    <message>
        <source>Change Folder…</source>
        <translation>Autre dossier…</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Choisir un dossier…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Recent folders</source>
        <translation>Dossiers récents</translation>
    </message>
</context>
<context>
    <name>CorpusFilesSheet</name>
    <message>
        <source>Files of “%1”</source>
        <translation>Fichiers de «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Reading the samples…</source>
        <translation>Lecture des samples…</translation>
    </message>
    <message>
        <source>The files could not be read.</source>
        <translation>Les fichiers n&apos;ont pas pu être lus.</translation>
    </message>
    <message>
        <source>Which files</source>
        <translation>Quels fichiers</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Tous</translation>
    </message>
    <message>
        <source>Conspicuous</source>
        <translation>À signaler</translation>
    </message>
    <message>
        <source>Reading the samples</source>
        <translation>Lecture des samples</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Fichiers</translation>
    </message>
</context>
<context>
    <name>DetailControl</name>
    <message>
        <source>How much of the samples&apos; own attacks, fine structure and tails the variations get. Ctrl+D plays the last audition with and without.</source>
        <translation>La part des attaques, de la structure fine et des chutes des samples que reçoivent les variations. Ctrl+D joue la dernière écoute avec et sans.</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Détail</translation>
    </message>
</context>
<context>
    <name>DeviceButton</name>
    <message>
        <source>Learns and generates on a graphics card if there is one, else on the processor.</source>
        <translation>Apprend et génère sur une carte graphique s&apos;il y en a une, sinon sur le processeur.</translation>
    </message>
    <message>
        <source>Learns and generates on: %1 (chosen automatically)</source>
        <translation>Apprend et génère sur&#xa0;: %1 (choisi automatiquement)</translation>
    </message>
    <message>
        <source>Learns and generates on: %1</source>
        <translation>Apprend et génère sur&#xa0;: %1</translation>
    </message>
    <message>
        <source>Device: %1</source>
        <translation>Périphérique&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>DeviceMenu</name>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Attendez la fin de l&apos;opération en cours, ou annulez-la.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatique</translation>
    </message>
    <message>
        <source>A graphics card if there is one, else the processor</source>
        <translation>Une carte graphique s&apos;il y en a une, sinon le processeur</translation>
    </message>
    <message>
        <source>No graphics card was found.</source>
        <translation>Aucune carte graphique trouvée.</translation>
    </message>
    <message>
        <source>Looking for graphics cards…</source>
        <translation>Recherche de cartes graphiques…</translation>
    </message>
</context>
<context>
    <name>ErrorBanner</name>
    <message>
        <source>Something went wrong</source>
        <translation>Un problème est survenu</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>Copy the message</source>
        <translation>Copier le message</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Fermer</translation>
    </message>
</context>
<context>
    <name>FieldMenu</name>
    <message>
        <source>Cut</source>
        <translation>Couper</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Coller</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Tout sélectionner</translation>
    </message>
</context>
<context>
    <name>FolderChooser</name>
    <message>
        <source>No audio files in this folder itself.</source>
        <translation>Aucun fichier audio dans ce dossier lui-même.</translation>
    </message>
    <message>
        <source>1 audio file in this folder.</source>
        <translation>1 fichier audio dans ce dossier.</translation>
    </message>
    <message numerus="yes">
        <source>%n audio files in this folder.</source>
        <translation>
            <numerusform>%n fichier audio dans ce dossier.</numerusform>
            <numerusform>%n fichiers audio dans ce dossier.</numerusform>
        </translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Dossier</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Monter</translation>
    </message>
    <message>
        <source>Name of a new folder</source>
        <translation>Nom du nouveau dossier</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Nouveau dossier</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Use Folder</source>
        <translation>Utiliser ce dossier</translation>
    </message>
</context>
<context>
    <name>FolderChoosers</name>
    <message>
        <source>Use Folder</source>
        <translation>Utiliser ce dossier</translation>
    </message>
</context>
<context>
    <name>FolderList</name>
    <message>
        <source>Folders</source>
        <translation>Dossiers</translation>
    </message>
</context>
<context>
    <name>FooterBar</name>
    <message>
        <source>Actions</source>
        <translation>Actions</translation>
    </message>
    <message>
        <source>Training finished.</source>
        <translation>L&apos;entraînement est terminé.</translation>
    </message>
    <message>
        <source>1 variation written.</source>
        <translation>1 variation écrite.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations written.</source>
        <translation>
            <numerusform>%n variation écrite.</numerusform>
            <numerusform>%n variations écrites.</numerusform>
        </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêter</translation>
    </message>
    <message>
        <source>Audition</source>
        <translation>Écouter</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Échap</translation>
    </message>
    <message>
        <source>Render a single variation with the current settings and play it, without saving.</source>
        <translation>Calculer une seule variation avec les réglages actuels et la lire, sans l&apos;enregistrer.</translation>
    </message>
    <message>
        <source>Try %1</source>
        <translation>Essayer %1</translation>
    </message>
    <message>
        <source>Render twelve variations to listen to, without saving; keep the ones you like (Ctrl+N).</source>
        <translation>Calculer douze variations à écouter, sans les enregistrer&#xa0;; gardez celles qui vous plaisent (Ctrl+N).</translation>
    </message>
    <message numerus="yes">
        <source>Generate %n Variations</source>
        <translation>
            <numerusform>Générer %n variation</numerusform>
            <numerusform>Générer %n variations</numerusform>
        </translation>
    </message>
    <message>
        <source>Ctrl+G</source>
        <translation>Ctrl+G</translation>
    </message>
</context>
<context>
    <name>InspectorPanel</name>
    <message>
        <source>Inspector</source>
        <translation>Inspecteur</translation>
    </message>
    <message>
        <source>Return renames, Esc leaves the name as it is.</source>
        <translation>Entrée renomme, Échap laisse le nom tel quel.</translation>
    </message>
    <message>
        <source>New name of the file</source>
        <translation>Nouveau nom du fichier</translation>
    </message>
    <message>
        <source>Close the inspector</source>
        <translation>Fermer l&apos;inspecteur</translation>
    </message>
    <message>
        <source>Close (I or Esc)</source>
        <translation>Fermer (I ou Échap)</translation>
    </message>
    <message>
        <source>Select a candidate or a result below.</source>
        <translation>Sélectionnez un candidat ou un résultat ci-dessous.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>How loud it is on average, and its loudest moment, below the most that a file can hold.</source>
        <translation>Le niveau moyen et le moment le plus fort, sous le maximum qu&apos;un fichier peut contenir.</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Boucle</translation>
    </message>
    <message>
        <source>Play it again and again</source>
        <translation>Lire encore et encore</translation>
    </message>
    <message>
        <source>Made of</source>
        <translation>Fait de</translation>
    </message>
    <message>
        <source>Made of samples of another folder</source>
        <translation>Fait de samples d&apos;un autre dossier</translation>
    </message>
    <message>
        <source>The samples that the sound is a blend of, each with its share. Their keys play them and the sound in turn, equally loud.</source>
        <translation>Les samples dont le son est un mélange, chacun avec sa part. Leurs touches les jouent en alternance avec le son, au même niveau.</translation>
    </message>
    <message>
        <source>Nobody knows any more.</source>
        <translation>Plus personne ne le sait.</translation>
    </message>
    <message>
        <source>Nearest in the corpus</source>
        <translation>Les plus proches du corpus</translation>
    </message>
    <message>
        <source>Comparing: %1 of %2</source>
        <translation>Comparaison&#xa0;: %1 sur %2</translation>
    </message>
    <message>
        <source>The samples that sound most like it. The decibels say how far apart the two are on average, over all bands and moments.</source>
        <translation>Les samples qui lui ressemblent le plus. Les décibels disent l&apos;écart moyen des deux, sur toutes les bandes et tous les instants.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Garder</translation>
    </message>
    <message>
        <source>Write the file (K)</source>
        <translation>Écrire le fichier (K)</translation>
    </message>
    <message>
        <source>More like this</source>
        <translation>Dans ce genre</translation>
    </message>
    <message>
        <source>Twelve candidates around its place</source>
        <translation>Douze candidats autour de sa place</translation>
    </message>
    <message>
        <source>New skin</source>
        <translation>Nouvelle peau</translation>
    </message>
    <message>
        <source>The same place, and all that is drawn after it anew</source>
        <translation>La même place, et tout ce qui est tiré ensuite à neuf</translation>
    </message>
    <message>
        <source>New body</source>
        <translation>Nouveau corps</translation>
    </message>
    <message>
        <source>Another place, and all that is drawn after it as here</source>
        <translation>Une autre place, et tout ce qui est tiré ensuite comme ici</translation>
    </message>
    <message>
        <source>Copy recipe</source>
        <translation>Copier la recette</translation>
    </message>
    <message>
        <source>What it takes to make this sound again, as text</source>
        <translation>Ce qu&apos;il faut pour refaire ce son, sous forme de texte</translation>
    </message>
    <message>
        <source>Favourite</source>
        <translation>Favori</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Renommer</translation>
    </message>
    <message>
        <source>Show file</source>
        <translation>Voir le fichier</translation>
    </message>
    <message>
        <source>Show the file in the file manager</source>
        <translation>Montrer le fichier dans le gestionnaire de fichiers</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>Mettre à la corbeille</translation>
    </message>
    <message>
        <source>Into the desktop&apos;s trash; Ctrl+Z brings it back</source>
        <translation>Dans la corbeille du bureau&#xa0;; Ctrl+Z le ramène</translation>
    </message>
</context>
<context>
    <name>LeaveDialog</name>
    <message>
        <source>Stop learning?</source>
        <translation>Arrêter l&apos;apprentissage&#xa0;?</translation>
    </message>
    <message>
        <source>Close without storing?</source>
        <translation>Fermer sans enregistrer&#xa0;?</translation>
    </message>
    <message>
        <source>The model is still being learned. When the window closes, what it has learned so far is lost.</source>
        <translation>Le modèle est encore en cours d&apos;apprentissage. Si la fenêtre se ferme, ce qu&apos;il a appris jusqu&apos;ici est perdu.</translation>
    </message>
    <message>
        <source>A model could not be stored. When the window closes, what it has learned is lost.</source>
        <translation>Un modèle n&apos;a pas pu être enregistré. Si la fenêtre se ferme, ce qu&apos;il a appris est perdu.</translation>
    </message>
    <message>
        <source>Close Anyway</source>
        <translation>Fermer quand même</translation>
    </message>
    <message>
        <source>Keep Learning</source>
        <translation>Continuer d&apos;apprendre</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Enregistrer à nouveau</translation>
    </message>
</context>
<context>
    <name>ListeningControl</name>
    <message>
        <source>Listening</source>
        <translation>Écoute</translation>
    </message>
    <message>
        <source>What plays by itself; volume %1 % (Up, Down)</source>
        <translation>Ce qui se joue tout seul&#xa0;; volume %1&#xa0;% (Haut, Bas)</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Volume, from the next sound on</source>
        <translation>Volume, à partir du son suivant</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Niveau</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>silencieux</translation>
    </message>
</context>
<context>
    <name>ListeningMenu</name>
    <message>
        <source>Play results when they are selected</source>
        <translation>Lire les résultats quand ils sont sélectionnés</translation>
    </message>
    <message>
        <source>Play every change of a slider</source>
        <translation>Lire chaque changement d&apos;un curseur</translation>
    </message>
    <message>
        <source>Play candidates as they come</source>
        <translation>Lire les candidats l&apos;un après l&apos;autre</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>Map</source>
        <translation>Carte</translation>
    </message>
    <message>
        <source>Play what the pointer rests on</source>
        <translation>Lire ce que survole le pointeur</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Zoom arrière</translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation>Zoom arrière (−)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Zoom avant</translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation>Zoom avant (+)</translation>
    </message>
    <message>
        <source>Back to the sliders</source>
        <translation>Revenir aux curseurs</translation>
    </message>
    <message>
        <source>Back to the sliders (M)</source>
        <translation>Revenir aux curseurs (M)</translation>
    </message>
    <message>
        <source>Placing the samples…</source>
        <translation>Placement des samples…</translation>
    </message>
    <message>
        <source>Map of the samples</source>
        <translation>Carte des samples</translation>
    </message>
    <message>
        <source>Click a point to hear it, or between the points for something new.</source>
        <translation>Cliquez sur un point pour l&apos;entendre, ou entre les points pour du nouveau.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n sélectionné</numerusform>
            <numerusform>%n sélectionnés</numerusform>
        </translation>
    </message>
    <message>
        <source>More Like These</source>
        <translation>Dans ce genre</translation>
    </message>
    <message>
        <source>Candidates around the selected sounds</source>
        <translation>Des candidats autour des sons sélectionnés</translation>
    </message>
    <message>
        <source>Select nothing</source>
        <translation>Ne rien sélectionner</translation>
    </message>
    <message>
        <source>Select nothing (Esc)</source>
        <translation>Ne rien sélectionner (Échap)</translation>
    </message>
    <message>
        <source>favourite</source>
        <translation>favori</translation>
    </message>
</context>
<context>
    <name>ModelCard</name>
    <message>
        <source>Model</source>
        <translation>Modèle</translation>
    </message>
    <message>
        <source>No model for this folder yet. It learns on this Mac — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</source>
        <translation>Pas encore de modèle pour ce dossier. L&apos;apprentissage se fait sur cet ordinateur – rien n&apos;en sort. Il est créé automatiquement quand vous générez, ou vous pouvez l&apos;entraîner maintenant.</translation>
    </message>
    <message>
        <source>Open the Model</source>
        <translation>Ouvrir le modèle</translation>
    </message>
    <message>
        <source>Samples of the same names were learned in %1.</source>
        <translation>Des samples de mêmes noms ont été appris dans %1.</translation>
    </message>
    <message>
        <source>The same samples were learned in %1.</source>
        <translation>Les mêmes samples ont été appris dans %1.</translation>
    </message>
    <message>
        <source>Use That Model</source>
        <translation>Utiliser ce modèle</translation>
    </message>
    <message>
        <source>Trained and ready</source>
        <translation>Entraîné et prêt</translation>
    </message>
    <message>
        <source>Show what was learned</source>
        <translation>Voir ce qui a été appris</translation>
    </message>
    <message>
        <source>How well the folder was learned (Ctrl+I)</source>
        <translation>À quel point le dossier a été bien appris (Ctrl+I)</translation>
    </message>
    <message>
        <source>How the sound was taken apart, how much of each sample was learned, when, and for how long.</source>
        <translation>Comment le son a été décomposé, quelle part de chaque sample a été apprise, quand, et pendant combien de temps.</translation>
    </message>
    <message>
        <source>%1 · %2 s per sample · trained %3 · %4</source>
        <translation>%1 · %2 s par sample · entraîné %3 · %4</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Enregistrer à nouveau</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Qualité</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>Analyse</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Départ</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Retrain</source>
        <translation>Réentraîner</translation>
    </message>
    <message>
        <source>Train Model</source>
        <translation>Entraîner</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Échap</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>Detail then works also when the folder has been moved or changed. Counts from the next training.</source>
        <translation>Le détail marche alors même si le dossier a été déplacé ou modifié. Compte à partir du prochain entraînement.</translation>
    </message>
</context>
<context>
    <name>ModelOfferDialog</name>
    <message>
        <source>Open the model of this sound?</source>
        <translation>Ouvrir le modèle de ce son&#xa0;?</translation>
    </message>
    <message>
        <source>Another model has made it, one of “%1”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay.</source>
        <translation>Un autre modèle l&apos;a fait, celui de «&#xa0;%1&#xa0;». Avec le modèle actuel, ses réglages donnent d&apos;autres sons. À son ouverture, la liste des résultats repart de zéro&#xa0;; les fichiers restent.</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Pas maintenant</translation>
    </message>
    <message>
        <source>Open It</source>
        <translation>L&apos;ouvrir</translation>
    </message>
</context>
<context>
    <name>ModelsSheet</name>
    <message>
        <source>Stored models</source>
        <translation>Modèles enregistrés</translation>
    </message>
    <message>
        <source>Bring Back</source>
        <translation>Ramener</translation>
    </message>
    <message>
        <source>Looking for stored models…</source>
        <translation>Recherche de modèles enregistrés…</translation>
    </message>
    <message>
        <source>No folder has been learned yet.</source>
        <translation>Aucun dossier n&apos;a encore été appris.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>In use</source>
        <translation>Utilisé</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Ouvrir</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>Ouvrir %1</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Move to the trash</source>
        <translation>Mettre à la corbeille</translation>
    </message>
    <message>
        <source>%1 (Del)</source>
        <translation>%1 (Suppr)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>an action and what it is for</comment>
        <translation>%1&#xa0;: %2</translation>
    </message>
</context>
<context>
    <name>NoveltyGauge</name>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>copie</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>proche</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>neuf</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>loin</translation>
    </message>
    <message>
        <source>Distance to the nearest sample</source>
        <translation>Distance au sample le plus proche</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>inconnue</translation>
    </message>
    <message>
        <source>How far it is from the nearest sample: as good as a copy, close to it, new and of the kind, or far from all of them.</source>
        <translation>La distance au sample le plus proche&#xa0;: presque une copie, proche, nouveau dans le même genre, ou loin de tous.</translation>
    </message>
</context>
<context>
    <name>OpeningView</name>
    <message>
        <source>Opening the model…</source>
        <translation>Ouverture du modèle…</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Ouverture du modèle</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Échap</translation>
    </message>
</context>
<context>
    <name>OutputCard</name>
    <message>
        <source>This folder does not answer.</source>
        <translation>Ce dossier ne répond pas.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>C&apos;est un fichier, pas un dossier.</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Sortie</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Générations précédentes</translation>
    </message>
    <message>
        <source>What was made of this folder before (Ctrl+H)</source>
        <translation>Ce qui a été fait de ce dossier auparavant (Ctrl+H)</translation>
    </message>
    <message>
        <source>Folder path (created if it doesn&apos;t exist)</source>
        <translation>Chemin du dossier (créé s&apos;il n&apos;existe pas)</translation>
    </message>
    <message>
        <source>Output folder</source>
        <translation>Dossier de sortie</translation>
    </message>
    <message>
        <source>Choose the output folder</source>
        <translation>Choisir le dossier de sortie</translation>
    </message>
    <message>
        <source>Existing folder — new files are added, nothing is overwritten.</source>
        <translation>Dossier existant – les nouveaux fichiers s&apos;ajoutent, rien n&apos;est écrasé.</translation>
    </message>
    <message>
        <source>Folder will be created.</source>
        <translation>Le dossier sera créé.</translation>
    </message>
    <message>
        <source>No folder chosen yet.</source>
        <translation>Pas encore de dossier choisi.</translation>
    </message>
    <message>
        <source>This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.</source>
        <translation>Ce dossier est dans le corpus&#xa0;: la prochaine analyse trouvera ce qui est écrit ici, et le modèle ne conviendra plus.</translation>
    </message>
    <message>
        <source>Use a Folder Beside It</source>
        <translation>Utiliser un dossier à côté</translation>
    </message>
    <message>
        <source>Variations</source>
        <translation>Variations</translation>
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
        <translation>Valeur de %1</translation>
    </message>
    <message>
        <source>Reset to default</source>
        <translation>Rétablir la valeur par défaut</translation>
    </message>
    <message>
        <source>Reset to default: %1</source>
        <translation>Rétablir la valeur par défaut&#xa0;: %1</translation>
    </message>
    <message>
        <source>Unlock: let Randomise change it</source>
        <translation>Déverrouiller&#xa0;: le hasard peut le changer</translation>
    </message>
    <message>
        <source>Lock: keep it when randomising</source>
        <translation>Verrouiller&#xa0;: le hasard n&apos;y touche pas</translation>
    </message>
    <message>
        <source>Lock %1</source>
        <translation>Verrouiller %1</translation>
    </message>
</context>
<context>
    <name>PresetChip</name>
    <message>
        <source>%1 Edited.</source>
        <translation>%1 Modifié.</translation>
    </message>
    <message>
        <source>Delete preset %1</source>
        <translation>Supprimer le préréglage %1</translation>
    </message>
    <message>
        <source>%1 (edited)</source>
        <translation>%1 (modifié)</translation>
    </message>
</context>
<context>
    <name>PresetChips</name>
    <message>
        <source>Presets</source>
        <translation>Préréglages</translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation>Enregistrer comme préréglage</translation>
    </message>
</context>
<context>
    <name>RecentMenu</name>
    <message>
        <source>Stored Models…</source>
        <translation>Modèles enregistrés…</translation>
    </message>
    <message>
        <source>Forget These Folders</source>
        <translation>Oublier ces dossiers</translation>
    </message>
</context>
<context>
    <name>RelativeRow</name>
    <message>
        <source>Play the sound itself</source>
        <translation>Lire le son lui-même</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Lire %1</translation>
    </message>
</context>
<context>
    <name>ReportSheet</name>
    <message>
        <source>What was learned of “%1”</source>
        <translation>Ce qui a été appris de «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Show the Files…</source>
        <translation>Voir les fichiers…</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Rapport</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Réessayer</translation>
    </message>
    <message>
        <source>Farthest off</source>
        <translation>Les plus éloignés</translation>
    </message>
    <message>
        <source>Space plays the sample and what was learned of it in turn.</source>
        <translation>Espace lit tour à tour le sample et ce qui en a été appris.</translation>
    </message>
    <message>
        <source>the sample</source>
        <translation>le sample</translation>
    </message>
    <message>
        <source>what was learned of it</source>
        <translation>ce qui en a été appris</translation>
    </message>
    <message>
        <source>Nearly the same</source>
        <translation>Presque identiques</translation>
    </message>
    <message>
        <source>Unlike all others</source>
        <translation>Différents de tous les autres</translation>
    </message>
</context>
<context>
    <name>ResultTile</name>
    <message>
        <source>favourite</source>
        <translation>favori</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>en lecture</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>This file is gone</source>
        <translation>Ce fichier a disparu</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêter</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lire</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Arrêter %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Lire %1</translation>
    </message>
    <message>
        <source>gone</source>
        <translation>disparu</translation>
    </message>
</context>
<context>
    <name>ResultsStrip</name>
    <message>
        <source>Results</source>
        <translation>Résultats</translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n sélectionné</numerusform>
            <numerusform>%n sélectionnés</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 fichier</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n fichier</numerusform>
            <numerusform>%n fichiers</numerusform>
        </translation>
    </message>
    <message>
        <source>Candidates</source>
        <translation>Candidats</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Voir dans le gestionnaire de fichiers</translation>
    </message>
    <message>
        <source>None of these files is a favourite.</source>
        <translation>Aucun de ces fichiers n&apos;est un favori.</translation>
    </message>
    <message>
        <source>The variations of the last run appear here.</source>
        <translation>Les variations de la dernière génération apparaissent ici.</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Examiner</translation>
    </message>
    <message>
        <source>Show all files</source>
        <translation>Montrer tous les fichiers</translation>
    </message>
    <message>
        <source>Show favourites only</source>
        <translation>Montrer seulement les favoris</translation>
    </message>
    <message>
        <source>Make a kit for samplers</source>
        <translation>Faire un kit pour échantillonneurs</translation>
    </message>
    <message>
        <source>A kit for samplers of the selected sounds, each with three close variations</source>
        <translation>Un kit pour échantillonneurs avec les sons sélectionnés, chacun avec trois variations proches</translation>
    </message>
</context>
<context>
    <name>RunProgress</name>
    <message>
        <source>1 variation follows.</source>
        <translation>1 variation suit.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations follow.</source>
        <translation>
            <numerusform>%n variation suit.</numerusform>
            <numerusform>%n variations suivent.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Annulation…</translation>
    </message>
    <message>
        <source>Learning first: %1</source>
        <translation>Apprentissage d&apos;abord&#xa0;: %1</translation>
    </message>
    <message>
        <source>Opening the model: %1</source>
        <translation>Ouverture du modèle&#xa0;: %1</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>Rendering…</source>
        <translation>Calcul…</translation>
    </message>
    <message>
        <source>Learning</source>
        <translation>Apprentissage</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Ouverture du modèle</translation>
    </message>
    <message>
        <source>Generating</source>
        <translation>Génération</translation>
    </message>
    <message>
        <source>Making a kit</source>
        <translation>Création d&apos;un kit</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>Calcul</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Échap</translation>
    </message>
    <message>
        <source>Moving files: %1 of %2</source>
        <translation>Déplacement des fichiers&#xa0;: %1 sur %2</translation>
    </message>
    <message>
        <source>Moving files</source>
        <translation>Déplacement des fichiers</translation>
    </message>
</context>
<context>
    <name>RunsSheet</name>
    <message>
        <source>Earlier runs of “%1”</source>
        <translation>Générations précédentes de «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Return opens a run, S sets its parameters and its seed again.</source>
        <translation>Entrée ouvre une génération, S reprend ses paramètres et sa graine.</translation>
    </message>
    <message>
        <source>Reading the journal…</source>
        <translation>Lecture du journal…</translation>
    </message>
    <message>
        <source>The journal has no runs of this folder.</source>
        <translation>Le journal n&apos;a aucune génération de ce dossier.</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Générations précédentes</translation>
    </message>
    <message>
        <source>%2 · Seed %1</source>
        <translation>%2 · Graine %1</translation>
    </message>
    <message>
        <source>Own settings</source>
        <translation>Réglages personnels</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Render</source>
        <translation>Calculer</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Ouvrir</translation>
    </message>
    <message>
        <source>Render %1</source>
        <translation>Calculer %1</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>Ouvrir %1</translation>
    </message>
    <message>
        <source>Set its parameters and its seed again</source>
        <translation>Reprendre ses paramètres et sa graine</translation>
    </message>
    <message>
        <source>%1 (S)</source>
        <translation>%1 (S)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>an action and what it is for</comment>
        <translation>%1&#xa0;: %2</translation>
    </message>
</context>
<context>
    <name>SavePresetDialog</name>
    <message>
        <source>Save as Preset</source>
        <translation>Enregistrer comme préréglage</translation>
    </message>
</context>
<context>
    <name>SavePresetForm</name>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Enregistrer</translation>
    </message>
</context>
<context>
    <name>SeedField</name>
    <message>
        <source>Enter a number to get identical results every time. Leave empty for a fresh roll.</source>
        <translation>Entrez un nombre pour obtenir chaque fois le même résultat. Laissez vide pour un nouveau tirage.</translation>
    </message>
    <message>
        <source>Seed</source>
        <translation>Graine</translation>
    </message>
    <message>
        <source>as the last run</source>
        <translation>comme la dernière</translation>
    </message>
    <message>
        <source>random</source>
        <translation>au hasard</translation>
    </message>
    <message>
        <source>Not a whole number: a fresh roll.</source>
        <translation>Pas un entier&#xa0;: nouveau tirage.</translation>
    </message>
    <message>
        <source>Last run: %1</source>
        <translation>Dernière&#xa0;: %1</translation>
    </message>
    <message>
        <source>Copy the seed of the last run</source>
        <translation>Copier la dernière graine</translation>
    </message>
    <message>
        <source>Use the seed of the last run again</source>
        <translation>Reprendre la dernière graine</translation>
    </message>
    <message>
        <source>Same seed</source>
        <translation>Même graine</translation>
    </message>
    <message>
        <source>The next runs take this seed, too (S), so that what you change is what you hear.</source>
        <translation>Les générations suivantes prennent aussi cette graine (S), pour que vous entendiez ce que vous changez.</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
</context>
<context>
    <name>SimilarSheet</name>
    <message>
        <source>“%1”</source>
        <translation>«&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Find similar in the corpus</source>
        <translation>Trouver des sons semblables dans le corpus</translation>
    </message>
    <message>
        <source>The nearest sounds of the corpus, nearest first.</source>
        <translation>Les sons les plus proches du corpus, le plus proche d&apos;abord.</translation>
    </message>
    <message>
        <source>There is nothing in the corpus to compare it with.</source>
        <translation>Il n&apos;y a rien dans le corpus à quoi le comparer.</translation>
    </message>
    <message>
        <source>This sound was not made here: nothing is known of how it was made.</source>
        <translation>Ce son n&apos;a pas été fait ici&#xa0;: on ne sait pas comment il a été fait.</translation>
    </message>
    <message>
        <source>Comparing</source>
        <translation>Comparaison</translation>
    </message>
    <message>
        <source>Similar sounds</source>
        <translation>Sons semblables</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Arrêter %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Lire %1</translation>
    </message>
</context>
<context>
    <name>SortButton</name>
    <message>
        <source>Sort the results</source>
        <translation>Trier les résultats</translation>
    </message>
</context>
<context>
    <name>SortMenu</name>
    <message>
        <source>As made</source>
        <translation>Ordre de création</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Par nom</translation>
    </message>
    <message>
        <source>Short to long</source>
        <translation>Du court au long</translation>
    </message>
    <message>
        <source>Dark to bright</source>
        <translation>Du sombre au clair</translation>
    </message>
    <message>
        <source>Close to new</source>
        <translation>Du proche au neuf</translation>
    </message>
</context>
<context>
    <name>SoundRow</name>
    <message>
        <source>Stop %1</source>
        <translation>Arrêter %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Lire %1</translation>
    </message>
</context>
<context>
    <name>StripHandle</name>
    <message>
        <source>Height of the strip</source>
        <translation>Hauteur de la bande</translation>
    </message>
    <message>
        <source>Ctrl+Up and Ctrl+Down</source>
        <translation>Ctrl+Haut et Ctrl+Bas</translation>
    </message>
    <message>
        <source>Drag for more rows (Ctrl+Up)</source>
        <translation>Faites glisser pour plus de rangées (Ctrl+Haut)</translation>
    </message>
</context>
<context>
    <name>SweepPopup</name>
    <message>
        <source>%1, seven values</source>
        <translation>%1, sept valeurs</translation>
    </message>
    <message>
        <source>Return takes the value</source>
        <translation>Entrée prend la valeur</translation>
    </message>
    <message>
        <source>the present value</source>
        <translation>la valeur actuelle</translation>
    </message>
</context>
<context>
    <name>TrainingProgressView</name>
    <message>
        <source>Cancelling…</source>
        <translation>Annulation…</translation>
    </message>
    <message>
        <source>Stop Here</source>
        <translation>Arrêter ici</translation>
    </message>
    <message>
        <source>End the learning and keep what has been learned so far.</source>
        <translation>Terminer l&apos;apprentissage et garder ce qui a été appris jusqu&apos;ici.</translation>
    </message>
    <message>
        <source>Training</source>
        <translation>Entraînement</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Étape %1 sur %2</translation>
    </message>
    <message>
        <source>Step %1</source>
        <translation>Étape %1</translation>
    </message>
    <message>
        <source>Loss by step</source>
        <translation>Perte par étape</translation>
    </message>
    <message>
        <source>The loss says how far what is drawn is from the samples: the lower the line, the closer. Listen to hear it.</source>
        <translation>La perte dit à quelle distance des samples est ce qui est dessiné&#xa0;: plus la ligne est basse, plus c&apos;est proche. Écoutez pour l&apos;entendre.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêter</translation>
    </message>
    <message>
        <source>Hear what has been learned so far</source>
        <translation>Écouter ce qui a été appris jusqu&apos;ici</translation>
    </message>
    <message>
        <source>Mel image of what has been learned so far</source>
        <translation>Image mel de ce qui a été appris jusqu&apos;ici</translation>
    </message>
    <message>
        <source>You can listen in a few seconds.</source>
        <translation>Vous pourrez écouter dans quelques secondes.</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>There is not enough memory for this.</source>
        <translation>Il n&apos;y a pas assez de mémoire pour cela.</translation>
    </message>
    <message>
        <source>Works everywhere</source>
        <translation>Fonctionne partout</translation>
    </message>
    <message>
        <source>Graphics card</source>
        <translation>Carte graphique</translation>
    </message>
    <message>
        <source>Integrated graphics</source>
        <translation>Graphique intégré</translation>
    </message>
    <message>
        <source>Virtual graphics</source>
        <translation>Graphique virtuel</translation>
    </message>
    <message>
        <source>Software driver, never chosen automatically</source>
        <translation>Pilote logiciel, jamais choisi automatiquement</translation>
    </message>
    <message>
        <source>Never chosen automatically</source>
        <translation>Jamais choisi automatiquement</translation>
    </message>
    <message>
        <source>Cannot be used: %1</source>
        <translation>Inutilisable&#xa0;: %1</translation>
    </message>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Attendez la fin de l&apos;opération en cours, ou annulez-la.</translation>
    </message>
    <message>
        <source>These candidates were made by another model. Open it first, or try new ones.</source>
        <translation>Ces candidats viennent d&apos;un autre modèle. Ouvrez-le d&apos;abord, ou essayez-en de nouveaux.</translation>
    </message>
    <message>
        <source>This sound was made by another model. Choose the folder that it was made from first.</source>
        <translation>Ce son vient d&apos;un autre modèle. Choisissez d&apos;abord le dossier dont il est fait.</translation>
    </message>
    <message>
        <source>This sound is silent: nothing is like it.</source>
        <translation>Ce son est silencieux&#xa0;: rien ne lui ressemble.</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n fichier</numerusform>
            <numerusform>%n fichiers</numerusform>
        </translation>
    </message>
    <message>
        <source>Only folders on this computer can be used.</source>
        <translation>Seuls les dossiers de cet ordinateur peuvent être utilisés.</translation>
    </message>
    <message>
        <source>%1 does not answer. Check the drive or the network that it is on.</source>
        <translation>%1 ne répond pas. Vérifiez le disque ou le réseau où il se trouve.</translation>
    </message>
    <message>
        <source>Drop one folder: the one that holds the samples.</source>
        <translation>Déposez un seul dossier&#xa0;: celui qui contient les samples.</translation>
    </message>
    <message>
        <source>This is a file, not a folder. Drop the folder that holds it.</source>
        <translation>C&apos;est un fichier, pas un dossier. Déposez le dossier qui le contient.</translation>
    </message>
    <message>
        <source>There is no folder %1.</source>
        <translation>Il n&apos;y a pas de dossier %1.</translation>
    </message>
    <message>
        <source>A sound of these was made by another model: %1. Choose sounds of one model.</source>
        <translation>L&apos;un de ces sons vient d&apos;un autre modèle&#xa0;: %1. Choisissez des sons d&apos;un même modèle.</translation>
    </message>
    <message>
        <source>Only remains of a model that was being stored.</source>
        <translation>Seulement les restes d&apos;un modèle en cours d&apos;enregistrement.</translation>
    </message>
    <message>
        <source>1 sample</source>
        <translation>1 sample</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n sample</numerusform>
            <numerusform>%n samples</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 · trained %2 · %3</source>
        <translation>%1 · entraîné %2 · %3</translation>
    </message>
    <message>
        <source>The learned samples could not be read: noise stands in for their detail.</source>
        <translation>Les samples appris n&apos;ont pas pu être lus&#xa0;: du bruit remplace leur détail.</translation>
    </message>
    <message>
        <source>For %1 of %2 variations a learned sample could not be read: noise stands in for its detail.</source>
        <translation>Pour %1 variations sur %2, un sample appris n&apos;a pas pu être lu&#xa0;: du bruit remplace son détail.</translation>
    </message>
    <message>
        <source>How the files were made could not be noted everywhere. %1.</source>
        <translation>La façon dont les fichiers ont été faits n&apos;a pas pu être notée partout. %1.</translation>
    </message>
    <message>
        <source>The journal stays as it is, because it cannot be told whether it is wanted. %1.</source>
        <translation>Le journal reste tel quel, car on ne peut pas savoir s&apos;il est voulu. %1.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n steps</source>
        <translation>
            <numerusform>%1 étape sur %n</numerusform>
            <numerusform>%1 étapes sur %n</numerusform>
        </translation>
    </message>
    <message>
        <source>1 step</source>
        <translation>1 étape</translation>
    </message>
    <message numerus="yes">
        <source>%n steps</source>
        <translation>
            <numerusform>%n étape</numerusform>
            <numerusform>%n étapes</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 from a head start</source>
        <translation>%1 sur base préapprise</translation>
    </message>
    <message>
        <source>%1 onto %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 Mo</translation>
    </message>
    <message>
        <source>The preset&apos;s file cannot be read.</source>
        <translation>Le fichier du préréglage est illisible.</translation>
    </message>
    <message>
        <source>Give the preset a name.</source>
        <translation>Donnez un nom au préréglage.</translation>
    </message>
    <message>
        <source>That name is too long.</source>
        <translation>Ce nom est trop long.</translation>
    </message>
    <message>
        <source>A preset&apos;s name cannot begin with a dot or contain a slash.</source>
        <translation>Le nom d&apos;un préréglage ne peut ni commencer par un point ni contenir de barre oblique.</translation>
    </message>
    <message>
        <source>A built-in preset has that name.</source>
        <translation>Un préréglage intégré porte ce nom.</translation>
    </message>
    <message>
        <source>The file is too long to be played.</source>
        <translation>Le fichier est trop long pour être lu.</translation>
    </message>
    <message>
        <source>There is no sound card to play through: %1</source>
        <translation>Il n&apos;y a pas de carte son pour la lecture&#xa0;: %1</translation>
    </message>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>copie</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>proche</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>neuf</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>loin</translation>
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
        <translation>encore %1 s environ</translation>
    </message>
    <message>
        <source>about %1 min left</source>
        <translation>encore %1 min environ</translation>
    </message>
    <message>
        <source>about %1 h left</source>
        <translation>encore %1 h environ</translation>
    </message>
    <message>
        <source>about %1 h %2 min left</source>
        <translation>encore %1 h %2 min environ</translation>
    </message>
    <message>
        <source>Candidate %1</source>
        <translation>Candidat %1</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds of the map</source>
        <translation>
            <numerusform>%n son de la carte</numerusform>
            <numerusform>%n sons de la carte</numerusform>
        </translation>
    </message>
    <message>
        <source>Processor</source>
        <translation>Processeur</translation>
    </message>
    <message>
        <source>d MMM yyyy, hh:mm</source>
        <translation>dd/MM/yyyy, hh:mm</translation>
    </message>
</context>
<context>
    <name>quillmere::AppModel</name>
    <message>
        <source>The folder has changed since this model was learned. Retrain to learn it as it is now.</source>
        <translation>Le dossier a changé depuis l&apos;apprentissage de ce modèle. Réentraînez pour l&apos;apprendre tel qu&apos;il est.</translation>
    </message>
    <message>
        <source>1 file is gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>1 fichier a disparu depuis l&apos;analyse. Le dossier est analysé à nouveau&#xa0;; recommencez ensuite.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>
            <numerusform>%n fichier a disparu depuis l&apos;analyse. Le dossier est analysé à nouveau&#xa0;; recommencez ensuite.</numerusform>
            <numerusform>%n fichiers ont disparu depuis l&apos;analyse. Le dossier est analysé à nouveau&#xa0;; recommencez ensuite.</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Choisissez d&apos;abord un dossier de sortie.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again.</source>
        <translation>Ce son a été fait ici&#xa0;: ses réglages sont repris.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again. Its model or the folder of that is gone.</source>
        <translation>Ce son a été fait ici&#xa0;: ses réglages sont repris. Son modèle ou le dossier de celui-ci a disparu.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again, and its model is opened.</source>
        <translation>Ce son a été fait ici&#xa0;: ses réglages sont repris, et son modèle est ouvert.</translation>
    </message>
</context>
<context>
    <name>quillmere::CandidatesController</name>
    <message>
        <source>There is no model to try yet. Train one first, or press Generate.</source>
        <translation>Il n&apos;y a pas encore de modèle à essayer. Entraînez-en un d&apos;abord, ou appuyez sur «&#xa0;Générer&#xa0;».</translation>
    </message>
    <message>
        <source>The oldest candidates were forgotten to make room for new ones.</source>
        <translation>Les plus anciens candidats ont été oubliés pour faire place aux nouveaux.</translation>
    </message>
    <message>
        <source>Seed %1</source>
        <translation>Graine %1</translation>
    </message>
    <message>
        <source>New skins of %1</source>
        <translation>Nouvelles peaux de %1</translation>
    </message>
    <message>
        <source>New bodies for %1</source>
        <translation>Nouveaux corps pour %1</translation>
    </message>
    <message>
        <source>Like %1</source>
        <translation>Comme %1</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Choisissez d&apos;abord un dossier de sortie.</translation>
    </message>
    <message>
        <source>Kept: %1</source>
        <translation>Gardé&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::CharacterController</name>
    <message>
        <source>A preset of that name exists already.</source>
        <translation>Un préréglage de ce nom existe déjà.</translation>
    </message>
</context>
<context>
    <name>quillmere::ComputeDevices</name>
    <message>
        <source>The stored choice of a device cannot be read. It is chosen automatically.</source>
        <translation>Le choix enregistré du périphérique est illisible. Il est choisi automatiquement.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatique</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusController</name>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>Choisissez le dossier de samples dont apprendre</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesController</name>
    <message numerus="yes">
        <source>%n fine</source>
        <translation>
            <numerusform>%n correct</numerusform>
            <numerusform>%n corrects</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n cut</source>
        <translation>
            <numerusform>%n raccourci</numerusform>
            <numerusform>%n raccourcis</numerusform>
        </translation>
    </message>
    <message>
        <source>1 copy</source>
        <translation>1 copie</translation>
    </message>
    <message numerus="yes">
        <source>%n copies</source>
        <translation>
            <numerusform>%n copie</numerusform>
            <numerusform>%n copies</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n damaged</source>
        <translation>
            <numerusform>%n abîmé</numerusform>
            <numerusform>%n abîmés</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n silent</source>
        <translation>
            <numerusform>%n silencieux</numerusform>
            <numerusform>%n silencieux</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n unreadable</source>
        <translation>
            <numerusform>%n illisible</numerusform>
            <numerusform>%n illisibles</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file: %1</source>
        <translation>1 fichier&#xa0;: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n files: %1</source>
        <translation>
            <numerusform>%n fichier&#xa0;: %1</numerusform>
            <numerusform>%n fichiers&#xa0;: %1</numerusform>
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
        <translation>silencieux</translation>
    </message>
    <message>
        <source>unreadable</source>
        <translation>illisible</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>abîmé</translation>
    </message>
    <message>
        <source>cut</source>
        <translation>raccourci</translation>
    </message>
    <message>
        <source>copy</source>
        <translation>copie</translation>
    </message>
    <message>
        <source>fine</source>
        <translation>correct</translation>
    </message>
    <message>
        <source>There is nothing to hear, so it is left out.</source>
        <translation>Il n&apos;y a rien à entendre, il est donc laissé de côté.</translation>
    </message>
    <message>
        <source>It ends before it should.</source>
        <translation>Il se termine plus tôt qu&apos;il ne devrait.</translation>
    </message>
    <message>
        <source>Of %1 ms nothing could be read; they are silent.</source>
        <translation>%1 ms étaient illisibles&#xa0;; elles sont silencieuses.</translation>
    </message>
    <message>
        <source>The first %1 s are learned.</source>
        <translation>Les %1 premières secondes sont apprises.</translation>
    </message>
    <message>
        <source>The same file as %1: it counts twice.</source>
        <translation>Le même fichier que %1&#xa0;: il compte deux fois.</translation>
    </message>
</context>
<context>
    <name>quillmere::FilesController</name>
    <message>
        <source>%1 could not be moved to the trash.</source>
        <translation>%1 n&apos;a pas pu être mis à la corbeille.</translation>
    </message>
    <message>
        <source>In the trash: %1</source>
        <translation>Dans la corbeille&#xa0;: %1</translation>
    </message>
    <message>
        <source>“%1” is no name for a file.</source>
        <translation>«&#xa0;%1&#xa0;» n&apos;est pas un nom de fichier.</translation>
    </message>
    <message>
        <source>There is a file called %1 already.</source>
        <translation>Il y a déjà un fichier nommé %1.</translation>
    </message>
    <message>
        <source>Another file is called %1 by now.</source>
        <translation>Un autre fichier s&apos;appelle maintenant %1.</translation>
    </message>
    <message>
        <source>Back again: %1</source>
        <translation>De retour&#xa0;: %1</translation>
    </message>
    <message>
        <source>%1. Not moved: %2</source>
        <translation>%1. Non déplacés&#xa0;: %2</translation>
    </message>
    <message>
        <source>Not moved: %1</source>
        <translation>Non déplacés&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::FolderBrowser</name>
    <message>
        <source>A folder&apos;s name cannot contain a slash.</source>
        <translation>Le nom d&apos;un dossier ne peut pas contenir de barre oblique.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>C&apos;est un fichier, pas un dossier.</translation>
    </message>
</context>
<context>
    <name>quillmere::GenerationController</name>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Choisissez d&apos;abord un dossier de sortie.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Ce dossier n&apos;a pas été analysé.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Choisissez d&apos;abord un corpus.</translation>
    </message>
    <message>
        <source>%1 of 1 variation written.</source>
        <translation>%1 variation sur 1 écrite.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n variations written.</source>
        <translation>
            <numerusform>%1 variation sur %n écrite.</numerusform>
            <numerusform>%1 sur %n variations écrites.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelled: %1</source>
        <translation>Annulé&#xa0;: %1</translation>
    </message>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Il n&apos;y a pas encore de modèle à écouter. Entraînez-en un d&apos;abord, ou appuyez sur «&#xa0;Générer&#xa0;».</translation>
    </message>
    <message>
        <source>Before learning: this is the head start.</source>
        <translation>Avant l&apos;apprentissage&#xa0;: voici la base préapprise.</translation>
    </message>
</context>
<context>
    <name>quillmere::InspectorController</name>
    <message>
        <source>Recipe copied</source>
        <translation>Recette copiée</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>silencieux</translation>
    </message>
    <message>
        <source>%1, peak %2</source>
        <translation>%1, crête %2</translation>
    </message>
    <message>
        <source>Nearly a copy of a sample that it is made of</source>
        <translation>Presque une copie d&apos;un sample dont il est fait</translation>
    </message>
    <message>
        <source>Nothing to compare with</source>
        <translation>Rien à quoi comparer</translation>
    </message>
    <message>
        <source>Nearly a copy of %1</source>
        <translation>Presque une copie de %1</translation>
    </message>
    <message>
        <source>Close to %1</source>
        <translation>Proche de %1</translation>
    </message>
    <message>
        <source>New, of the kind of %1</source>
        <translation>Nouveau, du genre de %1</translation>
    </message>
    <message>
        <source>New, and far from every sample</source>
        <translation>Nouveau, et loin de tous les samples</translation>
    </message>
</context>
<context>
    <name>quillmere::KitController</name>
    <message>
        <source>Choose sounds that the present model has made.</source>
        <translation>Choisissez des sons faits par le modèle actuel.</translation>
    </message>
    <message>
        <source>A kit has keys for %1 sounds. Choose fewer.</source>
        <translation>Un kit a des touches pour %1 sons. Choisissez-en moins.</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Choisissez d&apos;abord un dossier de sortie.</translation>
    </message>
    <message>
        <source>Kit written: %1</source>
        <translation>Kit écrit&#xa0;: %1</translation>
    </message>
    <message>
        <source>The kit is not complete: %1</source>
        <translation>Le kit n&apos;est pas complet&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::LossChart</name>
    <message>
        <source>No loss yet</source>
        <translation>Pas encore de perte</translation>
    </message>
    <message>
        <source>Loss %1 at step %2</source>
        <translation>Perte %1 à l&apos;étape %2</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>Étape</translation>
    </message>
    <message>
        <source>Loss</source>
        <translation>Perte</translation>
    </message>
</context>
<context>
    <name>quillmere::MapController</name>
    <message>
        <source>Near one another is what sounds alike; the map shows %1 % of the differences.</source>
        <translation>Ce qui se ressemble est voisin&#xa0;; la carte montre %1&#xa0;% des différences.</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelController</name>
    <message>
        <source>This model is not stored yet. You can use it, but it is lost when the program ends.</source>
        <translation>Ce modèle n&apos;est pas encore enregistré. Vous pouvez l&apos;utiliser, mais il est perdu à la fin du programme.</translation>
    </message>
    <message>
        <source>The model of %1 is not stored yet. It is lost when the program ends.</source>
        <translation>Le modèle de %1 n&apos;est pas encore enregistré. Il est perdu à la fin du programme.</translation>
    </message>
    <message>
        <source>The model is stored.</source>
        <translation>Le modèle est enregistré.</translation>
    </message>
    <message>
        <source>The stored model cannot be used. Retrain to get a new one; the files of the old one are kept.</source>
        <translation>Le modèle enregistré est inutilisable. Réentraînez pour en avoir un nouveau&#xa0;; les fichiers de l&apos;ancien sont gardés.</translation>
    </message>
    <message>
        <source>The stored model could not be opened, which need not be its fault. Open it again, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>Le modèle enregistré n&apos;a pas pu être ouvert, ce qui n&apos;est pas forcément sa faute. Rouvrez-le, ou réentraînez pour en avoir un nouveau&#xa0;; les fichiers de l&apos;ancien sont gardés.</translation>
    </message>
    <message>
        <source>The stored model was not opened. Open it, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>Le modèle enregistré n&apos;a pas été ouvert. Ouvrez-le, ou réentraînez pour en avoir un nouveau&#xa0;; les fichiers de l&apos;ancien sont gardés.</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Démarrage…</translation>
    </message>
    <message>
        <source>The head start cannot be used, so learning begins from scratch. %1</source>
        <translation>La base préapprise est inutilisable, l&apos;apprentissage part donc de zéro. %1</translation>
    </message>
    <message>
        <source>Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis for percussive ones.</source>
        <translation>«&#xa0;Automatique&#xa0;» prend une analyse fine en fréquence pour les samples tenus avec une hauteur, et fine en temps pour les percussifs.</translation>
    </message>
    <message>
        <source>From scratch</source>
        <translation>De zéro</translation>
    </message>
    <message>
        <source>Head start</source>
        <translation>Base préapprise</translation>
    </message>
    <message>
        <source>A head start begins with a network that has learned thousands of sounds made by rule: learning takes seconds, and Audition works before it.</source>
        <translation>La base préapprise est un réseau qui connaît déjà des milliers de sons faits selon des règles&#xa0;: l&apos;apprentissage prend quelques secondes, et «&#xa0;Écouter&#xa0;» marche avant lui.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Choisissez d&apos;abord un corpus.</translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>Aucun fichier audio dans ce dossier.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Ce dossier n&apos;a pas été analysé.</translation>
    </message>
    <message>
        <source>The sounds could not be kept with the model. %1</source>
        <translation>Les sons n&apos;ont pas pu être conservés avec le modèle. %1</translation>
    </message>
    <message>
        <source>Store the sounds, too</source>
        <translation>Enregistrer aussi les sons</translation>
    </message>
    <message>
        <source>Store the sounds, too (up to %1 MB)</source>
        <translation>Enregistrer aussi les sons (%1 Mo au plus)</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelsController</name>
    <message>
        <source>The model could not be moved to the trash. Delete it with: quillmere-cli models remove</source>
        <translation>Le modèle n&apos;a pas pu être mis à la corbeille. Supprimez-le avec&#xa0;: quillmere-cli models remove</translation>
    </message>
    <message>
        <source>1 model, %1</source>
        <translation>1 modèle, %1</translation>
    </message>
    <message numerus="yes">
        <source>%n models, %1</source>
        <translation>
            <numerusform>%n modèle, %1</numerusform>
            <numerusform>%n modèles, %1</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::OutputController</name>
    <message>
        <source>No file manager could be opened. The folder is %1</source>
        <translation>Aucun gestionnaire de fichiers n&apos;a pu être ouvert. Le dossier est %1</translation>
    </message>
    <message>
        <source>Choose a folder for the generated samples — use New Folder to create one</source>
        <translation>Choisissez un dossier pour les samples générés – «&#xa0;Nouveau dossier&#xa0;» en crée un</translation>
    </message>
</context>
<context>
    <name>quillmere::PresetModel</name>
    <message>
        <source>Your preset.</source>
        <translation>Votre préréglage.</translation>
    </message>
</context>
<context>
    <name>quillmere::ReportController</name>
    <message>
        <source>Reading the samples…</source>
        <translation>Lecture des samples…</translation>
    </message>
    <message>
        <source>Comparing the samples…</source>
        <translation>Comparaison des samples…</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 et %2</translation>
    </message>
</context>
<context>
    <name>quillmere::RunsController</name>
    <message>
        <source>1 candidate</source>
        <translation>1 candidat</translation>
    </message>
    <message numerus="yes">
        <source>%n candidates</source>
        <translation>
            <numerusform>%n candidat</numerusform>
            <numerusform>%n candidats</numerusform>
        </translation>
    </message>
    <message>
        <source>Relatives of %1</source>
        <translation>Apparentés de %1</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 fichier</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n fichier</numerusform>
            <numerusform>%n fichiers</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::SweepController</name>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Il n&apos;y a pas encore de modèle à écouter. Entraînez-en un d&apos;abord, ou appuyez sur «&#xa0;Générer&#xa0;».</translation>
    </message>
</context>
</TS>
