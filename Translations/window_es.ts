<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>AppearanceButton</name>
    <message>
        <source>Appearance</source>
        <translation>Apariencia</translation>
    </message>
</context>
<context>
    <name>AppearanceMenu</name>
    <message>
        <source>As the Desktop</source>
        <translation>Como el escritorio</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Claro</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Oscuro</translation>
    </message>
</context>
<context>
    <name>CandidateTile</name>
    <message>
        <source>Candidate %1</source>
        <translation>Candidato %1</translation>
    </message>
    <message>
        <source>kept as %1</source>
        <translation>conservado como %1</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>sonando</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Parar</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Reproducir</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Parar %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Reproducir %1</translation>
    </message>
    <message>
        <source>kept</source>
        <translation>conservado</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Conservar</translation>
    </message>
    <message>
        <source>Keep (K): write the file</source>
        <translation>Conservar (K): escribir el archivo</translation>
    </message>
    <message>
        <source>Keep %1</source>
        <translation>Conservar %1</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Descartar</translation>
    </message>
    <message>
        <source>Discard (X); Ctrl+Z brings it back</source>
        <translation>Descartar (X); Ctrl+Z lo recupera</translation>
    </message>
    <message>
        <source>Discard %1</source>
        <translation>Descartar %1</translation>
    </message>
</context>
<context>
    <name>CandidatesStrip</name>
    <message>
        <source>Candidates</source>
        <translation>Candidatos</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>1 sound</source>
        <translation>1 sonido</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds</source>
        <translation>
            <numerusform>%n sonido</numerusform>
            <numerusform>%n sonidos</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy the seed of these candidates</source>
        <translation>Copiar la semilla de estos candidatos</translation>
    </message>
    <message>
        <source>Older candidates</source>
        <translation>Candidatos anteriores</translation>
    </message>
    <message>
        <source>Set %1 of %2</source>
        <translation>Grupo %1 de %2</translation>
    </message>
    <message>
        <source>Newer candidates</source>
        <translation>Candidatos siguientes</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Examinar</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>Resultados</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Ctrl+R</translation>
    </message>
    <message>
        <source>All discarded. Ctrl+Z brings them back.</source>
        <translation>Todos descartados. Ctrl+Z los recupera.</translation>
    </message>
</context>
<context>
    <name>ChanceSection</name>
    <message>
        <source>Chance</source>
        <translation>Azar</translation>
    </message>
    <message>
        <source>Randomise</source>
        <translation>Al azar</translation>
    </message>
    <message>
        <source>Moves every parameter that is not locked, by the amount beside</source>
        <translation>Mueve todos los parámetros no bloqueados, en la cantidad de al lado</translation>
    </message>
    <message>
        <source>Amount of Randomise</source>
        <translation>Cantidad de azar</translation>
    </message>
</context>
<context>
    <name>CharacterPanel</name>
    <message>
        <source>Character</source>
        <translation>Carácter</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Antes</translation>
    </message>
    <message>
        <source>%1, edited</source>
        <translation>%1, modificado</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Mapa</translation>
    </message>
    <message>
        <source>Map of the samples (M)</source>
        <translation>Mapa de los samples (M)</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Deshacer</translation>
    </message>
    <message>
        <source>Undo (Ctrl+Z)</source>
        <translation>Deshacer (Ctrl+Z)</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rehacer</translation>
    </message>
    <message>
        <source>Redo (Ctrl+Shift+Z)</source>
        <translation>Rehacer (Ctrl+Mayús+Z)</translation>
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
        <translation>Elija la carpeta de samples de la que aprender</translation>
    </message>
    <message>
        <source>Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty.</source>
        <translation>Elija una carpeta de archivos WAV, AIFF, FLAC, MP3 o M4A. Unas docenas bastan.</translation>
    </message>
    <message>
        <source>Scanning</source>
        <translation>Explorando</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>Show the files</source>
        <translation>Ver los archivos</translation>
    </message>
    <message>
        <source>What becomes of each file (Ctrl+L)</source>
        <translation>Qué ocurre con cada archivo (Ctrl+L)</translation>
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
        <translation>No hay archivos de audio en esta carpeta.</translation>
    </message>
    <message>
        <source>Very few samples — expect variations that stay close to them.</source>
        <translation>Muy pocos samples: las variaciones se quedarán cerca de ellos.</translation>
    </message>
    <message>
        <source>1 file could not be read and is left out.</source>
        <translation>1 archivo no se pudo leer y queda fuera.</translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read and are left out.</source>
        <translation>
            <numerusform>%n archivo no se pudo leer y queda fuera.</numerusform>
            <numerusform>%n archivos no se pudieron leer y quedan fuera.</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file is named like a variation made here. It is learned like the others.</source>
        <translation>1 archivo se llama como una variación hecha aquí. Se aprende como los demás.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are named like variations made here. They are learned like the others.</source>
        <translation>
            <numerusform>%n archivo se llama como una variación hecha aquí. Se aprende como los demás.</numerusform>
            <numerusform>%n archivos se llaman como variaciones hechas aquí. Se aprenden como los demás.</numerusform>
        </translation>
    </message>
    <message>
        <source>Scan Again</source>
        <translation>Explorar de nuevo</translation>
    </message>
    <message>
        <source>Change Folder…</source>
        <translation>Cambiar carpeta…</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Elegir carpeta…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Recent folders</source>
        <translation>Carpetas recientes</translation>
    </message>
</context>
<context>
    <name>CorpusFilesSheet</name>
    <message>
        <source>Files of “%1”</source>
        <translation>Archivos de «%1»</translation>
    </message>
    <message>
        <source>Reading the samples…</source>
        <translation>Leyendo los samples…</translation>
    </message>
    <message>
        <source>The files could not be read.</source>
        <translation>No se pudieron leer los archivos.</translation>
    </message>
    <message>
        <source>Which files</source>
        <translation>Qué archivos</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Todos</translation>
    </message>
    <message>
        <source>Conspicuous</source>
        <translation>Llamativos</translation>
    </message>
    <message>
        <source>Reading the samples</source>
        <translation>Lectura de los samples</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Archivos</translation>
    </message>
</context>
<context>
    <name>DetailControl</name>
    <message>
        <source>How much of the samples&apos; own attacks, fine structure and tails the variations get. Ctrl+D plays the last audition with and without.</source>
        <translation>Cuánto reciben las variaciones de los ataques, la estructura fina y las colas de los samples. Ctrl+D reproduce la última escucha con y sin ello.</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Detalle</translation>
    </message>
</context>
<context>
    <name>DeviceButton</name>
    <message>
        <source>Learns and generates on a graphics card if there is one, else on the processor.</source>
        <translation>Aprende y genera en una tarjeta gráfica si la hay; si no, en el procesador.</translation>
    </message>
    <message>
        <source>Learns and generates on: %1 (chosen automatically)</source>
        <translation>Aprende y genera en: %1 (elegido automáticamente)</translation>
    </message>
    <message>
        <source>Learns and generates on: %1</source>
        <translation>Aprende y genera en: %1</translation>
    </message>
    <message>
        <source>Device: %1</source>
        <translation>Dispositivo: %1</translation>
    </message>
</context>
<context>
    <name>DeviceMenu</name>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Espere a que termine la operación en curso o cancélela.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automático</translation>
    </message>
    <message>
        <source>A graphics card if there is one, else the processor</source>
        <translation>Una tarjeta gráfica si la hay; si no, el procesador</translation>
    </message>
    <message>
        <source>No graphics card was found.</source>
        <translation>No se encontró ninguna tarjeta gráfica.</translation>
    </message>
    <message>
        <source>Looking for graphics cards…</source>
        <translation>Buscando tarjetas gráficas…</translation>
    </message>
</context>
<context>
    <name>ErrorBanner</name>
    <message>
        <source>Something went wrong</source>
        <translation>Algo ha ido mal</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Mensaje</translation>
    </message>
    <message>
        <source>Copy the message</source>
        <translation>Copiar el mensaje</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Cerrar</translation>
    </message>
</context>
<context>
    <name>FieldMenu</name>
    <message>
        <source>Cut</source>
        <translation>Cortar</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copiar</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Pegar</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Seleccionar todo</translation>
    </message>
</context>
<context>
    <name>FolderChooser</name>
    <message>
        <source>No audio files in this folder itself.</source>
        <translation>No hay archivos de audio en esta misma carpeta.</translation>
    </message>
    <message>
        <source>1 audio file in this folder.</source>
        <translation>1 archivo de audio en esta carpeta.</translation>
    </message>
    <message numerus="yes">
        <source>%n audio files in this folder.</source>
        <translation>
            <numerusform>%n archivo de audio en esta carpeta.</numerusform>
            <numerusform>%n archivos de audio en esta carpeta.</numerusform>
        </translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Carpeta</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>Subir</translation>
    </message>
    <message>
        <source>Name of a new folder</source>
        <translation>Nombre de la carpeta nueva</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Carpeta nueva</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Use Folder</source>
        <translation>Usar la carpeta</translation>
    </message>
</context>
<context>
    <name>FolderChoosers</name>
    <message>
        <source>Use Folder</source>
        <translation>Usar la carpeta</translation>
    </message>
</context>
<context>
    <name>FolderList</name>
    <message>
        <source>Folders</source>
        <translation>Carpetas</translation>
    </message>
</context>
<context>
    <name>FooterBar</name>
    <message>
        <source>Actions</source>
        <translation>Acciones</translation>
    </message>
    <message>
        <source>Training finished.</source>
        <translation>El entrenamiento ha terminado.</translation>
    </message>
    <message>
        <source>1 variation written.</source>
        <translation>1 variación escrita.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations written.</source>
        <translation>
            <numerusform>%n variación escrita.</numerusform>
            <numerusform>%n variaciones escritas.</numerusform>
        </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Parar</translation>
    </message>
    <message>
        <source>Audition</source>
        <translation>Escuchar</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Render a single variation with the current settings and play it, without saving.</source>
        <translation>Calcular una sola variación con los ajustes actuales y reproducirla, sin guardarla.</translation>
    </message>
    <message>
        <source>Try %1</source>
        <translation>Probar %1</translation>
    </message>
    <message>
        <source>Render twelve variations to listen to, without saving; keep the ones you like (Ctrl+N).</source>
        <translation>Calcular doce variaciones para escuchar, sin guardarlas; conserve las que le gusten (Ctrl+N).</translation>
    </message>
    <message numerus="yes">
        <source>Generate %n Variations</source>
        <translation>
            <numerusform>Generar %n variación</numerusform>
            <numerusform>Generar %n variaciones</numerusform>
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
        <translation>Inspector</translation>
    </message>
    <message>
        <source>Return renames, Esc leaves the name as it is.</source>
        <translation>Intro cambia el nombre, Esc lo deja como está.</translation>
    </message>
    <message>
        <source>New name of the file</source>
        <translation>Nombre nuevo del archivo</translation>
    </message>
    <message>
        <source>Close the inspector</source>
        <translation>Cerrar el inspector</translation>
    </message>
    <message>
        <source>Close (I or Esc)</source>
        <translation>Cerrar (I o Esc)</translation>
    </message>
    <message>
        <source>Select a candidate or a result below.</source>
        <translation>Seleccione abajo un candidato o un resultado.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>How loud it is on average, and its loudest moment, below the most that a file can hold.</source>
        <translation>Su nivel medio y su momento más fuerte, por debajo de lo máximo que cabe en un archivo.</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>Bucle</translation>
    </message>
    <message>
        <source>Play it again and again</source>
        <translation>Reproducir una y otra vez</translation>
    </message>
    <message>
        <source>Made of</source>
        <translation>Hecho de</translation>
    </message>
    <message>
        <source>Made of samples of another folder</source>
        <translation>Hecho de samples de otra carpeta</translation>
    </message>
    <message>
        <source>The samples that the sound is a blend of, each with its share. Their keys play them and the sound in turn, equally loud.</source>
        <translation>Los samples de los que el sonido es mezcla, cada uno con su parte. Sus teclas los reproducen alternando con el sonido, al mismo volumen.</translation>
    </message>
    <message>
        <source>Nobody knows any more.</source>
        <translation>Ya no lo sabe nadie.</translation>
    </message>
    <message>
        <source>Nearest in the corpus</source>
        <translation>Lo más cercano del corpus</translation>
    </message>
    <message>
        <source>Comparing: %1 of %2</source>
        <translation>Comparando: %1 de %2</translation>
    </message>
    <message>
        <source>The samples that sound most like it. The decibels say how far apart the two are on average, over all bands and moments.</source>
        <translation>Los samples que más se le parecen. Los decibelios dicen cuánto se separan los dos de media, en todas las bandas y momentos.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Conservar</translation>
    </message>
    <message>
        <source>Write the file (K)</source>
        <translation>Escribir el archivo (K)</translation>
    </message>
    <message>
        <source>More like this</source>
        <translation>Más como este</translation>
    </message>
    <message>
        <source>Twelve candidates around its place</source>
        <translation>Doce candidatos en torno a su lugar</translation>
    </message>
    <message>
        <source>New skin</source>
        <translation>Piel nueva</translation>
    </message>
    <message>
        <source>The same place, and all that is drawn after it anew</source>
        <translation>El mismo lugar, y todo lo que se sortea después, de nuevo</translation>
    </message>
    <message>
        <source>New body</source>
        <translation>Cuerpo nuevo</translation>
    </message>
    <message>
        <source>Another place, and all that is drawn after it as here</source>
        <translation>Otro lugar, y todo lo que se sortea después, como aquí</translation>
    </message>
    <message>
        <source>Copy recipe</source>
        <translation>Copiar la receta</translation>
    </message>
    <message>
        <source>What it takes to make this sound again, as text</source>
        <translation>Lo que hace falta para volver a hacer este sonido, como texto</translation>
    </message>
    <message>
        <source>Favourite</source>
        <translation>Favorito</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Renombrar</translation>
    </message>
    <message>
        <source>Show file</source>
        <translation>Ver el archivo</translation>
    </message>
    <message>
        <source>Show the file in the file manager</source>
        <translation>Mostrar el archivo en el gestor de archivos</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>A la papelera</translation>
    </message>
    <message>
        <source>Into the desktop&apos;s trash; Ctrl+Z brings it back</source>
        <translation>A la papelera del escritorio; Ctrl+Z lo recupera</translation>
    </message>
</context>
<context>
    <name>LeaveDialog</name>
    <message>
        <source>Stop learning?</source>
        <translation>¿Dejar de aprender?</translation>
    </message>
    <message>
        <source>Close without storing?</source>
        <translation>¿Cerrar sin guardar?</translation>
    </message>
    <message>
        <source>The model is still being learned. When the window closes, what it has learned so far is lost.</source>
        <translation>El modelo aún se está aprendiendo. Si se cierra la ventana, se pierde lo que ha aprendido hasta ahora.</translation>
    </message>
    <message>
        <source>A model could not be stored. When the window closes, what it has learned is lost.</source>
        <translation>No se pudo guardar un modelo. Si se cierra la ventana, se pierde lo que ha aprendido.</translation>
    </message>
    <message>
        <source>Close Anyway</source>
        <translation>Cerrar de todos modos</translation>
    </message>
    <message>
        <source>Keep Learning</source>
        <translation>Seguir aprendiendo</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Guardar de nuevo</translation>
    </message>
</context>
<context>
    <name>ListeningControl</name>
    <message>
        <source>Listening</source>
        <translation>Escucha</translation>
    </message>
    <message>
        <source>What plays by itself; volume %1 % (Up, Down)</source>
        <translation>Lo que suena por sí solo; volumen %1 % (Arriba, Abajo)</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volumen</translation>
    </message>
    <message>
        <source>Volume, from the next sound on</source>
        <translation>Volumen, a partir del próximo sonido</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Nivel</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>silencio</translation>
    </message>
</context>
<context>
    <name>ListeningMenu</name>
    <message>
        <source>Play results when they are selected</source>
        <translation>Reproducir los resultados al seleccionarlos</translation>
    </message>
    <message>
        <source>Play every change of a slider</source>
        <translation>Reproducir cada cambio de un deslizador</translation>
    </message>
    <message>
        <source>Play candidates as they come</source>
        <translation>Reproducir los candidatos según llegan</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>Map</source>
        <translation>Mapa</translation>
    </message>
    <message>
        <source>Play what the pointer rests on</source>
        <translation>Reproducir lo que está bajo el puntero</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Alejar</translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation>Alejar (−)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Acercar</translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation>Acercar (+)</translation>
    </message>
    <message>
        <source>Back to the sliders</source>
        <translation>Volver a los deslizadores</translation>
    </message>
    <message>
        <source>Back to the sliders (M)</source>
        <translation>Volver a los deslizadores (M)</translation>
    </message>
    <message>
        <source>Placing the samples…</source>
        <translation>Situando los samples…</translation>
    </message>
    <message>
        <source>Map of the samples</source>
        <translation>Mapa de los samples</translation>
    </message>
    <message>
        <source>Click a point to hear it, or between the points for something new.</source>
        <translation>Haga clic en un punto para oírlo, o entre los puntos para algo nuevo.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n seleccionado</numerusform>
            <numerusform>%n seleccionados</numerusform>
        </translation>
    </message>
    <message>
        <source>More Like These</source>
        <translation>Más como estos</translation>
    </message>
    <message>
        <source>Candidates around the selected sounds</source>
        <translation>Candidatos en torno a los sonidos seleccionados</translation>
    </message>
    <message>
        <source>Select nothing</source>
        <translation>No seleccionar nada</translation>
    </message>
    <message>
        <source>Select nothing (Esc)</source>
        <translation>No seleccionar nada (Esc)</translation>
    </message>
    <message>
        <source>favourite</source>
        <translation>favorito</translation>
    </message>
</context>
<context>
    <name>ModelCard</name>
    <message>
        <source>Model</source>
        <translation>Modelo</translation>
    </message>
    <message>
        <source>No model for this folder yet. It learns on this Mac — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</source>
        <translation>Aún no hay modelo para esta carpeta. Se aprende en este equipo: nada sale de él. Se crea automáticamente al generar, o puede entrenarlo ahora.</translation>
    </message>
    <message>
        <source>Open the Model</source>
        <translation>Abrir el modelo</translation>
    </message>
    <message>
        <source>Samples of the same names were learned in %1.</source>
        <translation>Samples con los mismos nombres se aprendieron en %1.</translation>
    </message>
    <message>
        <source>The same samples were learned in %1.</source>
        <translation>Los mismos samples se aprendieron en %1.</translation>
    </message>
    <message>
        <source>Use That Model</source>
        <translation>Usar ese modelo</translation>
    </message>
    <message>
        <source>Trained and ready</source>
        <translation>Entrenado y listo</translation>
    </message>
    <message>
        <source>Show what was learned</source>
        <translation>Ver lo aprendido</translation>
    </message>
    <message>
        <source>How well the folder was learned (Ctrl+I)</source>
        <translation>Lo bien que se aprendió la carpeta (Ctrl+I)</translation>
    </message>
    <message>
        <source>How the sound was taken apart, how much of each sample was learned, when, and for how long.</source>
        <translation>Cómo se descompuso el sonido, cuánto se aprendió de cada sample, cuándo y durante cuánto tiempo.</translation>
    </message>
    <message>
        <source>%1 · %2 s per sample · trained %3 · %4</source>
        <translation>%1 · %2 s por sample · entrenado %3 · %4</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>Guardar de nuevo</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Calidad</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>Análisis</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Inicio</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Retrain</source>
        <translation>Reentrenar</translation>
    </message>
    <message>
        <source>Train Model</source>
        <translation>Entrenar</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>Detail then works also when the folder has been moved or changed. Counts from the next training.</source>
        <translation>El detalle funciona entonces aunque la carpeta se haya movido o haya cambiado. Vale desde el próximo entrenamiento.</translation>
    </message>
</context>
<context>
    <name>ModelOfferDialog</name>
    <message>
        <source>Open the model of this sound?</source>
        <translation>¿Abrir el modelo de este sonido?</translation>
    </message>
    <message>
        <source>Another model has made it, one of “%1”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay.</source>
        <translation>Lo hizo otro modelo, uno de «%1». Con el actual, sus ajustes dan otros sonidos. Al abrirlo, la lista de resultados empieza de nuevo; los archivos se quedan.</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>Ahora no</translation>
    </message>
    <message>
        <source>Open It</source>
        <translation>Abrirlo</translation>
    </message>
</context>
<context>
    <name>ModelsSheet</name>
    <message>
        <source>Stored models</source>
        <translation>Modelos guardados</translation>
    </message>
    <message>
        <source>Bring Back</source>
        <translation>Recuperar</translation>
    </message>
    <message>
        <source>Looking for stored models…</source>
        <translation>Buscando modelos guardados…</translation>
    </message>
    <message>
        <source>No folder has been learned yet.</source>
        <translation>Aún no se ha aprendido ninguna carpeta.</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>In use</source>
        <translation>En uso</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Abrir</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>Abrir %1</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Eliminar</translation>
    </message>
    <message>
        <source>Move to the trash</source>
        <translation>Mover a la papelera</translation>
    </message>
    <message>
        <source>%1 (Del)</source>
        <translation>%1 (Supr)</translation>
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
        <translation>copia</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>cerca</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>nuevo</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>lejos</translation>
    </message>
    <message>
        <source>Distance to the nearest sample</source>
        <translation>Distancia al sample más cercano</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>desconocida</translation>
    </message>
    <message>
        <source>How far it is from the nearest sample: as good as a copy, close to it, new and of the kind, or far from all of them.</source>
        <translation>Lo lejos que está del sample más cercano: casi una copia, cerca, nuevo y del mismo tipo, o lejos de todos.</translation>
    </message>
</context>
<context>
    <name>OpeningView</name>
    <message>
        <source>Opening the model…</source>
        <translation>Abriendo el modelo…</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Apertura del modelo</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
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
        <translation>Esta carpeta no responde.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>Es un archivo, no una carpeta.</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Salida</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Tandas anteriores</translation>
    </message>
    <message>
        <source>What was made of this folder before (Ctrl+H)</source>
        <translation>Lo que se hizo antes de esta carpeta (Ctrl+H)</translation>
    </message>
    <message>
        <source>Folder path (created if it doesn&apos;t exist)</source>
        <translation>Ruta de la carpeta (se crea si no existe)</translation>
    </message>
    <message>
        <source>Output folder</source>
        <translation>Carpeta de salida</translation>
    </message>
    <message>
        <source>Choose the output folder</source>
        <translation>Elegir la carpeta de salida</translation>
    </message>
    <message>
        <source>Existing folder — new files are added, nothing is overwritten.</source>
        <translation>Carpeta existente: se añaden archivos nuevos, no se sobrescribe nada.</translation>
    </message>
    <message>
        <source>Folder will be created.</source>
        <translation>Se creará la carpeta.</translation>
    </message>
    <message>
        <source>No folder chosen yet.</source>
        <translation>Aún no se ha elegido carpeta.</translation>
    </message>
    <message>
        <source>This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.</source>
        <translation>Esta carpeta está en el corpus: la próxima exploración encontrará lo que se escriba aquí y el modelo dejará de encajar.</translation>
    </message>
    <message>
        <source>Use a Folder Beside It</source>
        <translation>Usar una carpeta al lado</translation>
    </message>
    <message>
        <source>Variations</source>
        <translation>Variaciones</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Formato</translation>
    </message>
</context>
<context>
    <name>ParameterRow</name>
    <message>
        <source>%1 value</source>
        <translation>Valor de %1</translation>
    </message>
    <message>
        <source>Reset to default</source>
        <translation>Restablecer el valor por defecto</translation>
    </message>
    <message>
        <source>Reset to default: %1</source>
        <translation>Restablecer el valor por defecto: %1</translation>
    </message>
    <message>
        <source>Unlock: let Randomise change it</source>
        <translation>Desbloquear: el azar puede cambiarlo</translation>
    </message>
    <message>
        <source>Lock: keep it when randomising</source>
        <translation>Bloquear: dejarlo igual con el azar</translation>
    </message>
    <message>
        <source>Lock %1</source>
        <translation>Bloquear %1</translation>
    </message>
</context>
<context>
    <name>PresetChip</name>
    <message>
        <source>%1 Edited.</source>
        <translation>%1 Modificado.</translation>
    </message>
    <message>
        <source>Delete preset %1</source>
        <translation>Eliminar el preajuste %1</translation>
    </message>
    <message>
        <source>%1 (edited)</source>
        <translation>%1 (modificado)</translation>
    </message>
</context>
<context>
    <name>PresetChips</name>
    <message>
        <source>Presets</source>
        <translation>Preajustes</translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation>Guardar como preajuste</translation>
    </message>
</context>
<context>
    <name>RecentMenu</name>
    <message>
        <source>Stored Models…</source>
        <translation>Modelos guardados…</translation>
    </message>
    <message>
        <source>Forget These Folders</source>
        <translation>Olvidar estas carpetas</translation>
    </message>
</context>
<context>
    <name>RelativeRow</name>
    <message>
        <source>Play the sound itself</source>
        <translation>Reproducir el propio sonido</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Reproducir %1</translation>
    </message>
</context>
<context>
    <name>ReportSheet</name>
    <message>
        <source>What was learned of “%1”</source>
        <translation>Lo aprendido de «%1»</translation>
    </message>
    <message>
        <source>Show the Files…</source>
        <translation>Ver los archivos…</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Informe</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Reintentar</translation>
    </message>
    <message>
        <source>Farthest off</source>
        <translation>Lo más desviado</translation>
    </message>
    <message>
        <source>Space plays the sample and what was learned of it in turn.</source>
        <translation>Espacio reproduce por turnos el sample y lo aprendido de él.</translation>
    </message>
    <message>
        <source>the sample</source>
        <translation>el sample</translation>
    </message>
    <message>
        <source>what was learned of it</source>
        <translation>lo aprendido de él</translation>
    </message>
    <message>
        <source>Nearly the same</source>
        <translation>Casi iguales</translation>
    </message>
    <message>
        <source>Unlike all others</source>
        <translation>Distintos de todos los demás</translation>
    </message>
</context>
<context>
    <name>ResultTile</name>
    <message>
        <source>favourite</source>
        <translation>favorito</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>sonando</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>This file is gone</source>
        <translation>Este archivo ya no está</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Parar</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Reproducir</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Parar %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Reproducir %1</translation>
    </message>
    <message>
        <source>gone</source>
        <translation>no está</translation>
    </message>
</context>
<context>
    <name>ResultsStrip</name>
    <message>
        <source>Results</source>
        <translation>Resultados</translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n seleccionado</numerusform>
            <numerusform>%n seleccionados</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 archivo</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n archivo</numerusform>
            <numerusform>%n archivos</numerusform>
        </translation>
    </message>
    <message>
        <source>Candidates</source>
        <translation>Candidatos</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Ver en el gestor de archivos</translation>
    </message>
    <message>
        <source>None of these files is a favourite.</source>
        <translation>Ninguno de estos archivos es favorito.</translation>
    </message>
    <message>
        <source>The variations of the last run appear here.</source>
        <translation>Aquí aparecen las variaciones de la última tanda.</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>Examinar</translation>
    </message>
    <message>
        <source>Show all files</source>
        <translation>Mostrar todos los archivos</translation>
    </message>
    <message>
        <source>Show favourites only</source>
        <translation>Mostrar solo los favoritos</translation>
    </message>
    <message>
        <source>Make a kit for samplers</source>
        <translation>Hacer un kit para samplers</translation>
    </message>
    <message>
        <source>A kit for samplers of the selected sounds, each with three close variations</source>
        <translation>Un kit para samplers con los sonidos seleccionados, cada uno con tres variaciones cercanas</translation>
    </message>
</context>
<context>
    <name>RunProgress</name>
    <message>
        <source>1 variation follows.</source>
        <translation>Sigue 1 variación.</translation>
    </message>
    <message numerus="yes">
        <source>%n variations follow.</source>
        <translation>
            <numerusform>Sigue %n variación.</numerusform>
            <numerusform>Siguen %n variaciones.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>Cancelando…</translation>
    </message>
    <message>
        <source>Learning first: %1</source>
        <translation>Primero se aprende: %1</translation>
    </message>
    <message>
        <source>Opening the model: %1</source>
        <translation>Abriendo el modelo: %1</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>Rendering…</source>
        <translation>Calculando…</translation>
    </message>
    <message>
        <source>Learning</source>
        <translation>Aprendizaje</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>Apertura del modelo</translation>
    </message>
    <message>
        <source>Generating</source>
        <translation>Generación</translation>
    </message>
    <message>
        <source>Making a kit</source>
        <translation>Creación de un kit</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>Cálculo</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Moving files: %1 of %2</source>
        <translation>Moviendo archivos: %1 de %2</translation>
    </message>
    <message>
        <source>Moving files</source>
        <translation>Moviendo archivos</translation>
    </message>
</context>
<context>
    <name>RunsSheet</name>
    <message>
        <source>Earlier runs of “%1”</source>
        <translation>Tandas anteriores de «%1»</translation>
    </message>
    <message>
        <source>Return opens a run, S sets its parameters and its seed again.</source>
        <translation>Intro abre una tanda, S vuelve a poner sus parámetros y su semilla.</translation>
    </message>
    <message>
        <source>Reading the journal…</source>
        <translation>Leyendo el diario…</translation>
    </message>
    <message>
        <source>The journal has no runs of this folder.</source>
        <translation>El diario no tiene tandas de esta carpeta.</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>Tandas anteriores</translation>
    </message>
    <message>
        <source>%2 · Seed %1</source>
        <translation>%2 · Semilla %1</translation>
    </message>
    <message>
        <source>Own settings</source>
        <translation>Ajustes propios</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Render</source>
        <translation>Calcular</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Abrir</translation>
    </message>
    <message>
        <source>Render %1</source>
        <translation>Calcular %1</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>Abrir %1</translation>
    </message>
    <message>
        <source>Set its parameters and its seed again</source>
        <translation>Volver a poner sus parámetros y su semilla</translation>
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
        <translation>Guardar como preajuste</translation>
    </message>
</context>
<context>
    <name>SavePresetForm</name>
    <message>
        <source>Name</source>
        <translation>Nombre</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Guardar</translation>
    </message>
</context>
<context>
    <name>SeedField</name>
    <message>
        <source>Enter a number to get identical results every time. Leave empty for a fresh roll.</source>
        <translation>Escriba un número para obtener siempre el mismo resultado. Déjelo vacío para una tirada nueva.</translation>
    </message>
    <message>
        <source>Seed</source>
        <translation>Semilla</translation>
    </message>
    <message>
        <source>as the last run</source>
        <translation>como la última</translation>
    </message>
    <message>
        <source>random</source>
        <translation>al azar</translation>
    </message>
    <message>
        <source>Not a whole number: a fresh roll.</source>
        <translation>No es un entero: tirada nueva.</translation>
    </message>
    <message>
        <source>Last run: %1</source>
        <translation>Última: %1</translation>
    </message>
    <message>
        <source>Copy the seed of the last run</source>
        <translation>Copiar la última semilla</translation>
    </message>
    <message>
        <source>Use the seed of the last run again</source>
        <translation>Volver a usar la última semilla</translation>
    </message>
    <message>
        <source>Same seed</source>
        <translation>Misma semilla</translation>
    </message>
    <message>
        <source>The next runs take this seed, too (S), so that what you change is what you hear.</source>
        <translation>Las próximas tandas también toman esta semilla (S), para oír lo que se cambia.</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
</context>
<context>
    <name>SimilarSheet</name>
    <message>
        <source>“%1”</source>
        <translation>«%1»</translation>
    </message>
    <message>
        <source>Find similar in the corpus</source>
        <translation>Buscar similares en el corpus</translation>
    </message>
    <message>
        <source>The nearest sounds of the corpus, nearest first.</source>
        <translation>Los sonidos más cercanos del corpus, el más cercano primero.</translation>
    </message>
    <message>
        <source>There is nothing in the corpus to compare it with.</source>
        <translation>No hay nada en el corpus con que compararlo.</translation>
    </message>
    <message>
        <source>This sound was not made here: nothing is known of how it was made.</source>
        <translation>Este sonido no se hizo aquí: no se sabe cómo se hizo.</translation>
    </message>
    <message>
        <source>Comparing</source>
        <translation>Comparación</translation>
    </message>
    <message>
        <source>Similar sounds</source>
        <translation>Sonidos similares</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>Parar %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Reproducir %1</translation>
    </message>
</context>
<context>
    <name>SortButton</name>
    <message>
        <source>Sort the results</source>
        <translation>Ordenar los resultados</translation>
    </message>
</context>
<context>
    <name>SortMenu</name>
    <message>
        <source>As made</source>
        <translation>Según se hicieron</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Por nombre</translation>
    </message>
    <message>
        <source>Short to long</source>
        <translation>De corto a largo</translation>
    </message>
    <message>
        <source>Dark to bright</source>
        <translation>De oscuro a brillante</translation>
    </message>
    <message>
        <source>Close to new</source>
        <translation>De cercano a nuevo</translation>
    </message>
</context>
<context>
    <name>SoundRow</name>
    <message>
        <source>Stop %1</source>
        <translation>Parar %1</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>Reproducir %1</translation>
    </message>
</context>
<context>
    <name>StripHandle</name>
    <message>
        <source>Height of the strip</source>
        <translation>Altura de la franja</translation>
    </message>
    <message>
        <source>Ctrl+Up and Ctrl+Down</source>
        <translation>Ctrl+Arriba y Ctrl+Abajo</translation>
    </message>
    <message>
        <source>Drag for more rows (Ctrl+Up)</source>
        <translation>Arrastre para ver más filas (Ctrl+Arriba)</translation>
    </message>
</context>
<context>
    <name>SweepPopup</name>
    <message>
        <source>%1, seven values</source>
        <translation>%1, siete valores</translation>
    </message>
    <message>
        <source>Return takes the value</source>
        <translation>Intro toma el valor</translation>
    </message>
    <message>
        <source>the present value</source>
        <translation>el valor actual</translation>
    </message>
</context>
<context>
    <name>TrainingProgressView</name>
    <message>
        <source>Cancelling…</source>
        <translation>Cancelando…</translation>
    </message>
    <message>
        <source>Stop Here</source>
        <translation>Parar aquí</translation>
    </message>
    <message>
        <source>End the learning and keep what has been learned so far.</source>
        <translation>Terminar el aprendizaje y conservar lo aprendido hasta ahora.</translation>
    </message>
    <message>
        <source>Training</source>
        <translation>Entrenamiento</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Paso %1 de %2</translation>
    </message>
    <message>
        <source>Step %1</source>
        <translation>Paso %1</translation>
    </message>
    <message>
        <source>Loss by step</source>
        <translation>Pérdida por paso</translation>
    </message>
    <message>
        <source>The loss says how far what is drawn is from the samples: the lower the line, the closer. Listen to hear it.</source>
        <translation>La pérdida dice lo lejos que está lo dibujado de los samples: cuanto más baja la línea, más cerca. Escúchelo para oírlo.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Parar</translation>
    </message>
    <message>
        <source>Hear what has been learned so far</source>
        <translation>Escuchar lo aprendido hasta ahora</translation>
    </message>
    <message>
        <source>Mel image of what has been learned so far</source>
        <translation>Imagen mel de lo aprendido hasta ahora</translation>
    </message>
    <message>
        <source>You can listen in a few seconds.</source>
        <translation>Podrá escuchar dentro de unos segundos.</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>There is not enough memory for this.</source>
        <translation>No hay memoria suficiente para esto.</translation>
    </message>
    <message>
        <source>Works everywhere</source>
        <translation>Funciona en todas partes</translation>
    </message>
    <message>
        <source>Graphics card</source>
        <translation>Tarjeta gráfica</translation>
    </message>
    <message>
        <source>Integrated graphics</source>
        <translation>Gráficos integrados</translation>
    </message>
    <message>
        <source>Virtual graphics</source>
        <translation>Gráficos virtuales</translation>
    </message>
    <message>
        <source>Software driver, never chosen automatically</source>
        <translation>Controlador de software, nunca se elige automáticamente</translation>
    </message>
    <message>
        <source>Never chosen automatically</source>
        <translation>Nunca se elige automáticamente</translation>
    </message>
    <message>
        <source>Cannot be used: %1</source>
        <translation>No se puede usar: %1</translation>
    </message>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>Espere a que termine la operación en curso o cancélela.</translation>
    </message>
    <message>
        <source>These candidates were made by another model. Open it first, or try new ones.</source>
        <translation>Estos candidatos los hizo otro modelo. Ábralo primero o pruebe otros nuevos.</translation>
    </message>
    <message>
        <source>This sound was made by another model. Choose the folder that it was made from first.</source>
        <translation>Este sonido lo hizo otro modelo. Elija primero la carpeta de la que se hizo.</translation>
    </message>
    <message>
        <source>This sound is silent: nothing is like it.</source>
        <translation>Este sonido está en silencio: nada se le parece.</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n archivo</numerusform>
            <numerusform>%n archivos</numerusform>
        </translation>
    </message>
    <message>
        <source>Only folders on this computer can be used.</source>
        <translation>Solo se pueden usar carpetas de este equipo.</translation>
    </message>
    <message>
        <source>%1 does not answer. Check the drive or the network that it is on.</source>
        <translation>%1 no responde. Compruebe el disco o la red en que está.</translation>
    </message>
    <message>
        <source>Drop one folder: the one that holds the samples.</source>
        <translation>Suelte una sola carpeta: la que contiene los samples.</translation>
    </message>
    <message>
        <source>This is a file, not a folder. Drop the folder that holds it.</source>
        <translation>Es un archivo, no una carpeta. Suelte la carpeta que lo contiene.</translation>
    </message>
    <message>
        <source>There is no folder %1.</source>
        <translation>No hay ninguna carpeta %1.</translation>
    </message>
    <message>
        <source>A sound of these was made by another model: %1. Choose sounds of one model.</source>
        <translation>Uno de estos sonidos lo hizo otro modelo: %1. Elija sonidos de un solo modelo.</translation>
    </message>
    <message>
        <source>Only remains of a model that was being stored.</source>
        <translation>Solo restos de un modelo que se estaba guardando.</translation>
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
        <translation>%1 · entrenado %2 · %3</translation>
    </message>
    <message>
        <source>The learned samples could not be read: noise stands in for their detail.</source>
        <translation>No se pudieron leer los samples aprendidos: el ruido sustituye su detalle.</translation>
    </message>
    <message>
        <source>For %1 of %2 variations a learned sample could not be read: noise stands in for its detail.</source>
        <translation>En %1 de %2 variaciones no se pudo leer un sample aprendido: el ruido sustituye su detalle.</translation>
    </message>
    <message>
        <source>How the files were made could not be noted everywhere. %1.</source>
        <translation>No se pudo anotar en todas partes cómo se hicieron los archivos. %1.</translation>
    </message>
    <message>
        <source>The journal stays as it is, because it cannot be told whether it is wanted. %1.</source>
        <translation>El diario se queda como está, porque no se puede saber si se desea. %1.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n steps</source>
        <translation>
            <numerusform>%1 de %n paso</numerusform>
            <numerusform>%1 de %n pasos</numerusform>
        </translation>
    </message>
    <message>
        <source>1 step</source>
        <translation>1 paso</translation>
    </message>
    <message numerus="yes">
        <source>%n steps</source>
        <translation>
            <numerusform>%n paso</numerusform>
            <numerusform>%n pasos</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 from a head start</source>
        <translation>%1 con base preaprendida</translation>
    </message>
    <message>
        <source>%1 onto %2</source>
        <translation>%1 sobre %2</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>The preset&apos;s file cannot be read.</source>
        <translation>No se puede leer el archivo del preajuste.</translation>
    </message>
    <message>
        <source>Give the preset a name.</source>
        <translation>Dé un nombre al preajuste.</translation>
    </message>
    <message>
        <source>That name is too long.</source>
        <translation>Ese nombre es demasiado largo.</translation>
    </message>
    <message>
        <source>A preset&apos;s name cannot begin with a dot or contain a slash.</source>
        <translation>El nombre de un preajuste no puede empezar por un punto ni contener una barra.</translation>
    </message>
    <message>
        <source>A built-in preset has that name.</source>
        <translation>Un preajuste incorporado tiene ese nombre.</translation>
    </message>
    <message>
        <source>The file is too long to be played.</source>
        <translation>El archivo es demasiado largo para reproducirlo.</translation>
    </message>
    <message>
        <source>There is no sound card to play through: %1</source>
        <translation>No hay tarjeta de sonido con la que reproducir: %1</translation>
    </message>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>copia</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>cerca</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>nuevo</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>lejos</translation>
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
        <translation>faltan unos %1 s</translation>
    </message>
    <message>
        <source>about %1 min left</source>
        <translation>faltan unos %1 min</translation>
    </message>
    <message>
        <source>about %1 h left</source>
        <translation>faltan unas %1 h</translation>
    </message>
    <message>
        <source>about %1 h %2 min left</source>
        <translation>faltan unas %1 h %2 min</translation>
    </message>
    <message>
        <source>Candidate %1</source>
        <translation>Candidato %1</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds of the map</source>
        <translation>
            <numerusform>%n sonido del mapa</numerusform>
            <numerusform>%n sonidos del mapa</numerusform>
        </translation>
    </message>
    <message>
        <source>Processor</source>
        <translation>Procesador</translation>
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
        <translation>La carpeta ha cambiado desde que se aprendió este modelo. Reentrene para aprenderla como está ahora.</translation>
    </message>
    <message>
        <source>1 file is gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>1 archivo ha desaparecido desde la exploración. La carpeta se explora de nuevo; empiece otra vez después.</translation>
    </message>
    <message numerus="yes">
        <source>%n files are gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>
            <numerusform>%n archivo ha desaparecido desde la exploración. La carpeta se explora de nuevo; empiece otra vez después.</numerusform>
            <numerusform>%n archivos han desaparecido desde la exploración. La carpeta se explora de nuevo; empiece otra vez después.</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Elija primero una carpeta de salida.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again.</source>
        <translation>Este sonido se hizo aquí: sus ajustes vuelven a estar puestos.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again. Its model or the folder of that is gone.</source>
        <translation>Este sonido se hizo aquí: sus ajustes vuelven a estar puestos. Su modelo o la carpeta de este ya no están.</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again, and its model is opened.</source>
        <translation>Este sonido se hizo aquí: sus ajustes vuelven a estar puestos y se abre su modelo.</translation>
    </message>
</context>
<context>
    <name>quillmere::CandidatesController</name>
    <message>
        <source>There is no model to try yet. Train one first, or press Generate.</source>
        <translation>Aún no hay modelo que probar. Entrene uno primero o pulse «Generar».</translation>
    </message>
    <message>
        <source>The oldest candidates were forgotten to make room for new ones.</source>
        <translation>Los candidatos más antiguos se han olvidado para dejar sitio a los nuevos.</translation>
    </message>
    <message>
        <source>Seed %1</source>
        <translation>Semilla %1</translation>
    </message>
    <message>
        <source>New skins of %1</source>
        <translation>Pieles nuevas de %1</translation>
    </message>
    <message>
        <source>New bodies for %1</source>
        <translation>Cuerpos nuevos para %1</translation>
    </message>
    <message>
        <source>Like %1</source>
        <translation>Como %1</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Elija primero una carpeta de salida.</translation>
    </message>
    <message>
        <source>Kept: %1</source>
        <translation>Conservado: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::CharacterController</name>
    <message>
        <source>A preset of that name exists already.</source>
        <translation>Ya existe un preajuste con ese nombre.</translation>
    </message>
</context>
<context>
    <name>quillmere::ComputeDevices</name>
    <message>
        <source>The stored choice of a device cannot be read. It is chosen automatically.</source>
        <translation>No se puede leer la elección guardada del dispositivo. Se elige automáticamente.</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automático</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusController</name>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>Elija la carpeta de samples de la que aprender</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesController</name>
    <message numerus="yes">
        <source>%n fine</source>
        <translation>
            <numerusform>%n correcto</numerusform>
            <numerusform>%n correctos</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n cut</source>
        <translation>
            <numerusform>%n recortado</numerusform>
            <numerusform>%n recortados</numerusform>
        </translation>
    </message>
    <message>
        <source>1 copy</source>
        <translation>1 copia</translation>
    </message>
    <message numerus="yes">
        <source>%n copies</source>
        <translation>
            <numerusform>%n copia</numerusform>
            <numerusform>%n copias</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n damaged</source>
        <translation>
            <numerusform>%n dañado</numerusform>
            <numerusform>%n dañados</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n silent</source>
        <translation>
            <numerusform>%n en silencio</numerusform>
            <numerusform>%n en silencio</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n unreadable</source>
        <translation>
            <numerusform>%n ilegible</numerusform>
            <numerusform>%n ilegibles</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file: %1</source>
        <translation>1 archivo: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n files: %1</source>
        <translation>
            <numerusform>%n archivo: %1</numerusform>
            <numerusform>%n archivos: %1</numerusform>
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
        <translation>silencio</translation>
    </message>
    <message>
        <source>unreadable</source>
        <translation>ilegible</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>dañado</translation>
    </message>
    <message>
        <source>cut</source>
        <translation>recortado</translation>
    </message>
    <message>
        <source>copy</source>
        <translation>copia</translation>
    </message>
    <message>
        <source>fine</source>
        <translation>correcto</translation>
    </message>
    <message>
        <source>There is nothing to hear, so it is left out.</source>
        <translation>No hay nada que oír, así que queda fuera.</translation>
    </message>
    <message>
        <source>It ends before it should.</source>
        <translation>Termina antes de lo que debería.</translation>
    </message>
    <message>
        <source>Of %1 ms nothing could be read; they are silent.</source>
        <translation>%1 ms no se pudieron leer; quedan en silencio.</translation>
    </message>
    <message>
        <source>The first %1 s are learned.</source>
        <translation>Se aprenden los primeros %1 s.</translation>
    </message>
    <message>
        <source>The same file as %1: it counts twice.</source>
        <translation>El mismo archivo que %1: cuenta dos veces.</translation>
    </message>
</context>
<context>
    <name>quillmere::FilesController</name>
    <message>
        <source>%1 could not be moved to the trash.</source>
        <translation>No se pudo mover %1 a la papelera.</translation>
    </message>
    <message>
        <source>In the trash: %1</source>
        <translation>En la papelera: %1</translation>
    </message>
    <message>
        <source>“%1” is no name for a file.</source>
        <translation>«%1» no es un nombre de archivo.</translation>
    </message>
    <message>
        <source>There is a file called %1 already.</source>
        <translation>Ya hay un archivo llamado %1.</translation>
    </message>
    <message>
        <source>Another file is called %1 by now.</source>
        <translation>Otro archivo se llama ya %1.</translation>
    </message>
    <message>
        <source>Back again: %1</source>
        <translation>De vuelta: %1</translation>
    </message>
    <message>
        <source>%1. Not moved: %2</source>
        <translation>%1. Sin mover: %2</translation>
    </message>
    <message>
        <source>Not moved: %1</source>
        <translation>Sin mover: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::FolderBrowser</name>
    <message>
        <source>A folder&apos;s name cannot contain a slash.</source>
        <translation>El nombre de una carpeta no puede contener una barra.</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>Es un archivo, no una carpeta.</translation>
    </message>
</context>
<context>
    <name>quillmere::GenerationController</name>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Elija primero una carpeta de salida.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Esta carpeta no se ha explorado.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Elija primero un corpus.</translation>
    </message>
    <message>
        <source>%1 of 1 variation written.</source>
        <translation>%1 de 1 variación escrita.</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n variations written.</source>
        <translation>
            <numerusform>%1 de %n variación escrita.</numerusform>
            <numerusform>%1 de %n variaciones escritas.</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelled: %1</source>
        <translation>Cancelado: %1</translation>
    </message>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Aún no hay modelo que escuchar. Entrene uno primero o pulse «Generar».</translation>
    </message>
    <message>
        <source>Before learning: this is the head start.</source>
        <translation>Antes de aprender: esta es la base preaprendida.</translation>
    </message>
</context>
<context>
    <name>quillmere::InspectorController</name>
    <message>
        <source>Recipe copied</source>
        <translation>Receta copiada</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>silencio</translation>
    </message>
    <message>
        <source>%1, peak %2</source>
        <translation>%1, pico %2</translation>
    </message>
    <message>
        <source>Nearly a copy of a sample that it is made of</source>
        <translation>Casi una copia de un sample del que está hecho</translation>
    </message>
    <message>
        <source>Nothing to compare with</source>
        <translation>Nada con que comparar</translation>
    </message>
    <message>
        <source>Nearly a copy of %1</source>
        <translation>Casi una copia de %1</translation>
    </message>
    <message>
        <source>Close to %1</source>
        <translation>Cerca de %1</translation>
    </message>
    <message>
        <source>New, of the kind of %1</source>
        <translation>Nuevo, del tipo de %1</translation>
    </message>
    <message>
        <source>New, and far from every sample</source>
        <translation>Nuevo y lejos de todos los samples</translation>
    </message>
</context>
<context>
    <name>quillmere::KitController</name>
    <message>
        <source>Choose sounds that the present model has made.</source>
        <translation>Elija sonidos hechos por el modelo actual.</translation>
    </message>
    <message>
        <source>A kit has keys for %1 sounds. Choose fewer.</source>
        <translation>Un kit tiene teclas para %1 sonidos. Elija menos.</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>Elija primero una carpeta de salida.</translation>
    </message>
    <message>
        <source>Kit written: %1</source>
        <translation>Kit escrito: %1</translation>
    </message>
    <message>
        <source>The kit is not complete: %1</source>
        <translation>El kit no está completo: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::LossChart</name>
    <message>
        <source>No loss yet</source>
        <translation>Aún no hay pérdida</translation>
    </message>
    <message>
        <source>Loss %1 at step %2</source>
        <translation>Pérdida %1 en el paso %2</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>Paso</translation>
    </message>
    <message>
        <source>Loss</source>
        <translation>Pérdida</translation>
    </message>
</context>
<context>
    <name>quillmere::MapController</name>
    <message>
        <source>Near one another is what sounds alike; the map shows %1 % of the differences.</source>
        <translation>Lo que suena parecido está cerca; el mapa muestra el %1 % de las diferencias.</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelController</name>
    <message>
        <source>This model is not stored yet. You can use it, but it is lost when the program ends.</source>
        <translation>Este modelo aún no está guardado. Puede usarlo, pero se pierde al cerrar el programa.</translation>
    </message>
    <message>
        <source>The model of %1 is not stored yet. It is lost when the program ends.</source>
        <translation>El modelo de %1 aún no está guardado. Se pierde al cerrar el programa.</translation>
    </message>
    <message>
        <source>The model is stored.</source>
        <translation>El modelo está guardado.</translation>
    </message>
    <message>
        <source>The stored model cannot be used. Retrain to get a new one; the files of the old one are kept.</source>
        <translation>El modelo guardado no se puede usar. Reentrene para tener uno nuevo; los archivos del antiguo se conservan.</translation>
    </message>
    <message>
        <source>The stored model could not be opened, which need not be its fault. Open it again, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>No se pudo abrir el modelo guardado, lo que no tiene por qué ser culpa suya. Ábralo otra vez o reentrene para tener uno nuevo; los archivos del antiguo se conservan.</translation>
    </message>
    <message>
        <source>The stored model was not opened. Open it, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>No se abrió el modelo guardado. Ábralo o reentrene para tener uno nuevo; los archivos del antiguo se conservan.</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Comenzando…</translation>
    </message>
    <message>
        <source>The head start cannot be used, so learning begins from scratch. %1</source>
        <translation>La base preaprendida no se puede usar, así que se empieza de cero. %1</translation>
    </message>
    <message>
        <source>Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis for percussive ones.</source>
        <translation>«Automático» elige un análisis fino en frecuencia para samples sostenidos con altura tonal, y fino en el tiempo para los percusivos.</translation>
    </message>
    <message>
        <source>From scratch</source>
        <translation>Desde cero</translation>
    </message>
    <message>
        <source>Head start</source>
        <translation>Base preaprendida</translation>
    </message>
    <message>
        <source>A head start begins with a network that has learned thousands of sounds made by rule: learning takes seconds, and Audition works before it.</source>
        <translation>La base preaprendida es una red que ya conoce miles de sonidos hechos según reglas: aprender lleva segundos y «Escuchar» funciona antes.</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>Elija primero un corpus.</translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>No hay archivos de audio en esta carpeta.</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>Esta carpeta no se ha explorado.</translation>
    </message>
    <message>
        <source>The sounds could not be kept with the model. %1</source>
        <translation>No se pudieron conservar los sonidos con el modelo. %1</translation>
    </message>
    <message>
        <source>Store the sounds, too</source>
        <translation>Guardar también los sonidos</translation>
    </message>
    <message>
        <source>Store the sounds, too (up to %1 MB)</source>
        <translation>Guardar también los sonidos (hasta %1 MB)</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelsController</name>
    <message>
        <source>The model could not be moved to the trash. Delete it with: quillmere-cli models remove</source>
        <translation>No se pudo mover el modelo a la papelera. Elimínelo con: quillmere-cli models remove</translation>
    </message>
    <message>
        <source>1 model, %1</source>
        <translation>1 modelo, %1</translation>
    </message>
    <message numerus="yes">
        <source>%n models, %1</source>
        <translation>
            <numerusform>%n modelo, %1</numerusform>
            <numerusform>%n modelos, %1</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::OutputController</name>
    <message>
        <source>No file manager could be opened. The folder is %1</source>
        <translation>No se pudo abrir ningún gestor de archivos. La carpeta es %1</translation>
    </message>
    <message>
        <source>Choose a folder for the generated samples — use New Folder to create one</source>
        <translation>Elija una carpeta para los samples generados; «Carpeta nueva» crea una</translation>
    </message>
</context>
<context>
    <name>quillmere::PresetModel</name>
    <message>
        <source>Your preset.</source>
        <translation>Su preajuste.</translation>
    </message>
</context>
<context>
    <name>quillmere::ReportController</name>
    <message>
        <source>Reading the samples…</source>
        <translation>Leyendo los samples…</translation>
    </message>
    <message>
        <source>Comparing the samples…</source>
        <translation>Comparando los samples…</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 y %2</translation>
    </message>
</context>
<context>
    <name>quillmere::RunsController</name>
    <message>
        <source>1 candidate</source>
        <translation>1 candidato</translation>
    </message>
    <message numerus="yes">
        <source>%n candidates</source>
        <translation>
            <numerusform>%n candidato</numerusform>
            <numerusform>%n candidatos</numerusform>
        </translation>
    </message>
    <message>
        <source>Relatives of %1</source>
        <translation>Parientes de %1</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 archivo</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n archivo</numerusform>
            <numerusform>%n archivos</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::SweepController</name>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>Aún no hay modelo que escuchar. Entrene uno primero o pulse «Generar».</translation>
    </message>
</context>
</TS>
