<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>AppearanceButton</name>
    <message>
        <source>Appearance</source>
        <translation>外観</translation>
    </message>
</context>
<context>
    <name>AppearanceMenu</name>
    <message>
        <source>As the Desktop</source>
        <translation>デスクトップに合わせる</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>ライト</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>ダーク</translation>
    </message>
</context>
<context>
    <name>CandidateTile</name>
    <message>
        <source>Candidate %1</source>
        <translation>候補 %1</translation>
    </message>
    <message>
        <source>kept as %1</source>
        <translation>%1 として保存済み</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>再生中</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 を停止</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 を再生</translation>
    </message>
    <message>
        <source>kept</source>
        <translation>保存済み</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>残す</translation>
    </message>
    <message>
        <source>Keep (K): write the file</source>
        <translation>残す (K): ファイルに書き出す</translation>
    </message>
    <message>
        <source>Keep %1</source>
        <translation>%1 を残す</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>捨てる</translation>
    </message>
    <message>
        <source>Discard (X); Ctrl+Z brings it back</source>
        <translation>捨てる (X)。Ctrl+Z で戻せます</translation>
    </message>
    <message>
        <source>Discard %1</source>
        <translation>%1 を捨てる</translation>
    </message>
</context>
<context>
    <name>CandidatesStrip</name>
    <message>
        <source>Candidates</source>
        <translation>候補</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>1 sound</source>
        <translation>1 個の音</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds</source>
        <translation>
            <numerusform>%n 個の音</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy the seed of these candidates</source>
        <translation>これらの候補のシードをコピー</translation>
    </message>
    <message>
        <source>Older candidates</source>
        <translation>前の候補</translation>
    </message>
    <message>
        <source>Set %1 of %2</source>
        <translation>%2 組中 %1 組目</translation>
    </message>
    <message>
        <source>Newer candidates</source>
        <translation>次の候補</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>調べる</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>結果</translation>
    </message>
    <message>
        <source>Ctrl+R</source>
        <translation>Ctrl+R</translation>
    </message>
    <message>
        <source>All discarded. Ctrl+Z brings them back.</source>
        <translation>すべて捨てました。Ctrl+Z で戻せます。</translation>
    </message>
</context>
<context>
    <name>ChanceSection</name>
    <message>
        <source>Chance</source>
        <translation>ランダム</translation>
    </message>
    <message>
        <source>Randomise</source>
        <translation>ランダム化</translation>
    </message>
    <message>
        <source>Moves every parameter that is not locked, by the amount beside</source>
        <translation>ロックされていないパラメーターを、横の量だけ動かします</translation>
    </message>
    <message>
        <source>Amount of Randomise</source>
        <translation>ランダム化の量</translation>
    </message>
</context>
<context>
    <name>CharacterPanel</name>
    <message>
        <source>Character</source>
        <translation>キャラクター</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>変更前</translation>
    </message>
    <message>
        <source>%1, edited</source>
        <translation>%1（変更あり）</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>マップ</translation>
    </message>
    <message>
        <source>Map of the samples (M)</source>
        <translation>サンプルのマップ (M)</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>元に戻す</translation>
    </message>
    <message>
        <source>Undo (Ctrl+Z)</source>
        <translation>元に戻す (Ctrl+Z)</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>やり直す</translation>
    </message>
    <message>
        <source>Redo (Ctrl+Shift+Z)</source>
        <translation>やり直す (Ctrl+Shift+Z)</translation>
    </message>
</context>
<context>
    <name>CorpusCard</name>
    <message>
        <source>Sample corpus</source>
        <translation>サンプルのコーパス</translation>
    </message>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>学習するオーディオサンプルのフォルダーを選んでください</translation>
    </message>
    <message>
        <source>Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty.</source>
        <translation>WAV、AIFF、FLAC、MP3、M4A ファイルのフォルダーを選んでください。数十個あれば十分です。</translation>
    </message>
    <message>
        <source>Scanning</source>
        <translation>スキャン中</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>Show the files</source>
        <translation>ファイルを表示</translation>
    </message>
    <message>
        <source>What becomes of each file (Ctrl+L)</source>
        <translation>各ファイルの扱い (Ctrl+L)</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n 個のサンプル</numerusform>
        </translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>このフォルダーにオーディオファイルがありません。</translation>
    </message>
    <message>
        <source>Very few samples — expect variations that stay close to them.</source>
        <translation>サンプルがとても少ないため、バリエーションは元の音に近くなります。</translation>
    </message>
    <message>
        <source>1 file could not be read and is left out.</source>
        <translation>1 個のファイルを読み込めなかったため除外します。</translation>
    </message>
    <message numerus="yes">
        <source>%n files could not be read and are left out.</source>
        <translation>
            <numerusform>%n 個のファイルを読み込めなかったため除外します。</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file is named like a variation made here. It is learned like the others.</source>
        <translation>1 個のファイルがここで作るバリエーションと同じ形の名前です。ほかと同じように学習します。</translation>
    </message>
    <message numerus="yes">
        <source>%n files are named like variations made here. They are learned like the others.</source>
        <translation>
            <numerusform>%n 個のファイルがここで作るバリエーションと同じ形の名前です。ほかと同じように学習します。</numerusform>
        </translation>
    </message>
    <message>
        <source>Scan Again</source>
        <translation>もう一度スキャン</translation>
    </message>
    <message>
        <source>Change Folder…</source>
        <translation>フォルダーを変更…</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>フォルダーを選択…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Recent folders</source>
        <translation>最近のフォルダー</translation>
    </message>
</context>
<context>
    <name>CorpusFilesSheet</name>
    <message>
        <source>Files of “%1”</source>
        <translation>「%1」のファイル</translation>
    </message>
    <message>
        <source>Reading the samples…</source>
        <translation>サンプルを読み込んでいます…</translation>
    </message>
    <message>
        <source>The files could not be read.</source>
        <translation>ファイルを読み込めませんでした。</translation>
    </message>
    <message>
        <source>Which files</source>
        <translation>表示するファイル</translation>
    </message>
    <message>
        <source>All</source>
        <translation>すべて</translation>
    </message>
    <message>
        <source>Conspicuous</source>
        <translation>要確認</translation>
    </message>
    <message>
        <source>Reading the samples</source>
        <translation>サンプルの読み込み</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>ファイル</translation>
    </message>
</context>
<context>
    <name>DetailControl</name>
    <message>
        <source>How much of the samples&apos; own attacks, fine structure and tails the variations get. Ctrl+D plays the last audition with and without.</source>
        <translation>サンプルのアタック、細かい構造、余韻をバリエーションにどれだけ与えるか。Ctrl+D で直前の試聴をあり・なしで再生します。</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>ディテール</translation>
    </message>
</context>
<context>
    <name>DeviceButton</name>
    <message>
        <source>Learns and generates on a graphics card if there is one, else on the processor.</source>
        <translation>グラフィックカードがあればそこで、なければプロセッサーで学習と生成を行います。</translation>
    </message>
    <message>
        <source>Learns and generates on: %1 (chosen automatically)</source>
        <translation>学習と生成に使う装置: %1（自動選択）</translation>
    </message>
    <message>
        <source>Learns and generates on: %1</source>
        <translation>学習と生成に使う装置: %1</translation>
    </message>
    <message>
        <source>Device: %1</source>
        <translation>デバイス: %1</translation>
    </message>
</context>
<context>
    <name>DeviceMenu</name>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>実行中の処理が終わるまで待つか、キャンセルしてください。</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>自動</translation>
    </message>
    <message>
        <source>A graphics card if there is one, else the processor</source>
        <translation>グラフィックカードがあればそれを、なければプロセッサーを使います</translation>
    </message>
    <message>
        <source>No graphics card was found.</source>
        <translation>グラフィックカードが見つかりませんでした。</translation>
    </message>
    <message>
        <source>Looking for graphics cards…</source>
        <translation>グラフィックカードを探しています…</translation>
    </message>
</context>
<context>
    <name>ErrorBanner</name>
    <message>
        <source>Something went wrong</source>
        <translation>問題が発生しました</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>メッセージ</translation>
    </message>
    <message>
        <source>Copy the message</source>
        <translation>メッセージをコピー</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>閉じる</translation>
    </message>
</context>
<context>
    <name>FieldMenu</name>
    <message>
        <source>Cut</source>
        <translation>切り取り</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>コピー</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>貼り付け</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>すべて選択</translation>
    </message>
</context>
<context>
    <name>FolderChooser</name>
    <message>
        <source>No audio files in this folder itself.</source>
        <translation>このフォルダーの直下にオーディオファイルはありません。</translation>
    </message>
    <message>
        <source>1 audio file in this folder.</source>
        <translation>このフォルダーにオーディオファイルが 1 個あります。</translation>
    </message>
    <message numerus="yes">
        <source>%n audio files in this folder.</source>
        <translation>
            <numerusform>このフォルダーにオーディオファイルが %n 個あります。</numerusform>
        </translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>フォルダー</translation>
    </message>
    <message>
        <source>Up</source>
        <translation>上へ</translation>
    </message>
    <message>
        <source>Name of a new folder</source>
        <translation>新しいフォルダーの名前</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>新規フォルダー</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Use Folder</source>
        <translation>このフォルダーを使う</translation>
    </message>
</context>
<context>
    <name>FolderChoosers</name>
    <message>
        <source>Use Folder</source>
        <translation>このフォルダーを使う</translation>
    </message>
</context>
<context>
    <name>FolderList</name>
    <message>
        <source>Folders</source>
        <translation>フォルダー</translation>
    </message>
</context>
<context>
    <name>FooterBar</name>
    <message>
        <source>Actions</source>
        <translation>操作</translation>
    </message>
    <message>
        <source>Training finished.</source>
        <translation>学習が終わりました。</translation>
    </message>
    <message>
        <source>1 variation written.</source>
        <translation>1 個のバリエーションを書き出しました。</translation>
    </message>
    <message numerus="yes">
        <source>%n variations written.</source>
        <translation>
            <numerusform>%n 個のバリエーションを書き出しました。</numerusform>
        </translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Audition</source>
        <translation>試聴</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Render a single variation with the current settings and play it, without saving.</source>
        <translation>現在の設定でバリエーションを 1 つ作り、保存せずに再生します。</translation>
    </message>
    <message>
        <source>Try %1</source>
        <translation>%1 個試す</translation>
    </message>
    <message>
        <source>Render twelve variations to listen to, without saving; keep the ones you like (Ctrl+N).</source>
        <translation>保存せずに聴くためのバリエーションを 12 個作ります。気に入ったものを残せます (Ctrl+N)。</translation>
    </message>
    <message numerus="yes">
        <source>Generate %n Variations</source>
        <translation>
            <numerusform>%n 個のバリエーションを生成</numerusform>
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
        <translation>インスペクター</translation>
    </message>
    <message>
        <source>Return renames, Esc leaves the name as it is.</source>
        <translation>Enter で名前を変更し、Esc で元のままにします。</translation>
    </message>
    <message>
        <source>New name of the file</source>
        <translation>ファイルの新しい名前</translation>
    </message>
    <message>
        <source>Close the inspector</source>
        <translation>インスペクターを閉じる</translation>
    </message>
    <message>
        <source>Close (I or Esc)</source>
        <translation>閉じる (I または Esc)</translation>
    </message>
    <message>
        <source>Select a candidate or a result below.</source>
        <translation>下の候補または結果を選んでください。</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>How loud it is on average, and its loudest moment, below the most that a file can hold.</source>
        <translation>平均の音量と最大の瞬間を、ファイルに入る最大値からの差で示します。</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>ループ</translation>
    </message>
    <message>
        <source>Play it again and again</source>
        <translation>繰り返し再生する</translation>
    </message>
    <message>
        <source>Made of</source>
        <translation>元になったサンプル</translation>
    </message>
    <message>
        <source>Made of samples of another folder</source>
        <translation>別のフォルダーのサンプルから作成</translation>
    </message>
    <message>
        <source>The samples that the sound is a blend of, each with its share. Their keys play them and the sound in turn, equally loud.</source>
        <translation>この音のもとになったサンプルとその割合です。キーを押すと、サンプルとこの音を同じ音量で交互に再生します。</translation>
    </message>
    <message>
        <source>Nobody knows any more.</source>
        <translation>もう分かりません。</translation>
    </message>
    <message>
        <source>Nearest in the corpus</source>
        <translation>コーパスで最も近い音</translation>
    </message>
    <message>
        <source>Comparing: %1 of %2</source>
        <translation>比較中: %1 / %2</translation>
    </message>
    <message>
        <source>The samples that sound most like it. The decibels say how far apart the two are on average, over all bands and moments.</source>
        <translation>最も似ているサンプルです。デシベルは、すべての帯域と時点で平均した両者の差です。</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>残す</translation>
    </message>
    <message>
        <source>Write the file (K)</source>
        <translation>ファイルに書き出す (K)</translation>
    </message>
    <message>
        <source>More like this</source>
        <translation>似たものを作る</translation>
    </message>
    <message>
        <source>Twelve candidates around its place</source>
        <translation>この音の周りから候補を 12 個</translation>
    </message>
    <message>
        <source>New skin</source>
        <translation>新しいスキン</translation>
    </message>
    <message>
        <source>The same place, and all that is drawn after it anew</source>
        <translation>同じ場所で、その後の乱数をすべて引き直す</translation>
    </message>
    <message>
        <source>New body</source>
        <translation>新しいボディ</translation>
    </message>
    <message>
        <source>Another place, and all that is drawn after it as here</source>
        <translation>別の場所で、その後の乱数はこの音と同じ</translation>
    </message>
    <message>
        <source>Copy recipe</source>
        <translation>レシピをコピー</translation>
    </message>
    <message>
        <source>What it takes to make this sound again, as text</source>
        <translation>この音をもう一度作るために必要なことを、テキストで</translation>
    </message>
    <message>
        <source>Favourite</source>
        <translation>お気に入り</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>名前を変更</translation>
    </message>
    <message>
        <source>Show file</source>
        <translation>ファイルを表示</translation>
    </message>
    <message>
        <source>Show the file in the file manager</source>
        <translation>ファイルマネージャーでファイルを表示</translation>
    </message>
    <message>
        <source>Move to trash</source>
        <translation>ゴミ箱へ</translation>
    </message>
    <message>
        <source>Into the desktop&apos;s trash; Ctrl+Z brings it back</source>
        <translation>デスクトップのゴミ箱へ移します。Ctrl+Z で戻せます</translation>
    </message>
</context>
<context>
    <name>LeaveDialog</name>
    <message>
        <source>Stop learning?</source>
        <translation>学習をやめますか？</translation>
    </message>
    <message>
        <source>Close without storing?</source>
        <translation>保存せずに閉じますか？</translation>
    </message>
    <message>
        <source>The model is still being learned. When the window closes, what it has learned so far is lost.</source>
        <translation>モデルはまだ学習中です。ウィンドウを閉じると、これまでに学習したものは失われます。</translation>
    </message>
    <message>
        <source>A model could not be stored. When the window closes, what it has learned is lost.</source>
        <translation>モデルを保存できませんでした。ウィンドウを閉じると、学習したものは失われます。</translation>
    </message>
    <message>
        <source>Close Anyway</source>
        <translation>それでも閉じる</translation>
    </message>
    <message>
        <source>Keep Learning</source>
        <translation>学習を続ける</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>もう一度保存</translation>
    </message>
</context>
<context>
    <name>ListeningControl</name>
    <message>
        <source>Listening</source>
        <translation>リスニング</translation>
    </message>
    <message>
        <source>What plays by itself; volume %1 % (Up, Down)</source>
        <translation>自動で再生するもの。音量 %1 % (↑、↓)</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>音量</translation>
    </message>
    <message>
        <source>Volume, from the next sound on</source>
        <translation>次の音からの音量</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>レベル</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>無音</translation>
    </message>
</context>
<context>
    <name>ListeningMenu</name>
    <message>
        <source>Play results when they are selected</source>
        <translation>結果を選んだら再生する</translation>
    </message>
    <message>
        <source>Play every change of a slider</source>
        <translation>スライダーを動かすたびに再生する</translation>
    </message>
    <message>
        <source>Play candidates as they come</source>
        <translation>候補ができたら順に再生する</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>Map</source>
        <translation>マップ</translation>
    </message>
    <message>
        <source>Play what the pointer rests on</source>
        <translation>ポインターの下の音を再生する</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>縮小</translation>
    </message>
    <message>
        <source>Zoom out (−)</source>
        <translation>縮小 (−)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>拡大</translation>
    </message>
    <message>
        <source>Zoom in (+)</source>
        <translation>拡大 (+)</translation>
    </message>
    <message>
        <source>Back to the sliders</source>
        <translation>スライダーに戻る</translation>
    </message>
    <message>
        <source>Back to the sliders (M)</source>
        <translation>スライダーに戻る (M)</translation>
    </message>
    <message>
        <source>Placing the samples…</source>
        <translation>サンプルを配置しています…</translation>
    </message>
    <message>
        <source>Map of the samples</source>
        <translation>サンプルのマップ</translation>
    </message>
    <message>
        <source>Click a point to hear it, or between the points for something new.</source>
        <translation>点をクリックするとその音が、点の間をクリックすると新しい音が聞けます。</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n 個を選択</numerusform>
        </translation>
    </message>
    <message>
        <source>More Like These</source>
        <translation>似たものを作る</translation>
    </message>
    <message>
        <source>Candidates around the selected sounds</source>
        <translation>選択した音の周りから候補を作ります</translation>
    </message>
    <message>
        <source>Select nothing</source>
        <translation>選択を解除</translation>
    </message>
    <message>
        <source>Select nothing (Esc)</source>
        <translation>選択を解除 (Esc)</translation>
    </message>
    <message>
        <source>favourite</source>
        <translation>お気に入り</translation>
    </message>
</context>
<context>
    <name>ModelCard</name>
    <message>
        <source>Model</source>
        <translation>モデル</translation>
    </message>
    <message>
        <source>No model for this folder yet. It learns on this Mac — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</source>
        <translation>このフォルダーのモデルはまだありません。学習はこのコンピューターで行われ、データが外に出ることはありません。生成時に自動で作られますが、今すぐ学習することもできます。</translation>
    </message>
    <message>
        <source>Open the Model</source>
        <translation>モデルを開く</translation>
    </message>
    <message>
        <source>Samples of the same names were learned in %1.</source>
        <translation>同じ名前のサンプルが %1 で学習されています。</translation>
    </message>
    <message>
        <source>The same samples were learned in %1.</source>
        <translation>同じサンプルが %1 で学習されています。</translation>
    </message>
    <message>
        <source>Use That Model</source>
        <translation>そのモデルを使う</translation>
    </message>
    <message>
        <source>Trained and ready</source>
        <translation>学習済み</translation>
    </message>
    <message>
        <source>Show what was learned</source>
        <translation>学習の結果を表示</translation>
    </message>
    <message>
        <source>How well the folder was learned (Ctrl+I)</source>
        <translation>フォルダーがどれだけよく学習されたか (Ctrl+I)</translation>
    </message>
    <message>
        <source>How the sound was taken apart, how much of each sample was learned, when, and for how long.</source>
        <translation>音の分析方法、各サンプルを学習した長さ、学習した日時と量です。</translation>
    </message>
    <message>
        <source>%1 · %2 s per sample · trained %3 · %4</source>
        <translation>%1 · 1 サンプル %2 秒 · 学習 %3 · %4</translation>
    </message>
    <message>
        <source>Store Again</source>
        <translation>もう一度保存</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>品質</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>分析</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>開始</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Retrain</source>
        <translation>学習し直す</translation>
    </message>
    <message>
        <source>Train Model</source>
        <translation>モデルを学習</translation>
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
        <translation>フォルダを移動したり変更したりした後でもディテールが使えます。次の学習から有効です。</translation>
    </message>
</context>
<context>
    <name>ModelOfferDialog</name>
    <message>
        <source>Open the model of this sound?</source>
        <translation>この音のモデルを開きますか？</translation>
    </message>
    <message>
        <source>Another model has made it, one of “%1”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay.</source>
        <translation>この音は「%1」の別のモデルで作られました。今のモデルでは同じ設定でも違う音になります。そのモデルを開くと結果の一覧は新しくなりますが、ファイルは残ります。</translation>
    </message>
    <message>
        <source>Not Now</source>
        <translation>今はしない</translation>
    </message>
    <message>
        <source>Open It</source>
        <translation>開く</translation>
    </message>
</context>
<context>
    <name>ModelsSheet</name>
    <message>
        <source>Stored models</source>
        <translation>保存されているモデル</translation>
    </message>
    <message>
        <source>Bring Back</source>
        <translation>元に戻す</translation>
    </message>
    <message>
        <source>Looking for stored models…</source>
        <translation>保存されているモデルを探しています…</translation>
    </message>
    <message>
        <source>No folder has been learned yet.</source>
        <translation>学習したフォルダーはまだありません。</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>In use</source>
        <translation>使用中</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>開く</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>%1 を開く</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>削除</translation>
    </message>
    <message>
        <source>Move to the trash</source>
        <translation>ゴミ箱に移動</translation>
    </message>
    <message>
        <source>%1 (Del)</source>
        <translation>%1 (Delete)</translation>
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
        <translation>コピー</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>近い</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>新しい</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>遠い</translation>
    </message>
    <message>
        <source>Distance to the nearest sample</source>
        <translation>最も近いサンプルとの距離</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>不明</translation>
    </message>
    <message>
        <source>How far it is from the nearest sample: as good as a copy, close to it, new and of the kind, or far from all of them.</source>
        <translation>最も近いサンプルとの距離です。ほぼコピー、近い、同じ種類で新しい、どれからも遠い、のどれか。</translation>
    </message>
</context>
<context>
    <name>OpeningView</name>
    <message>
        <source>Opening the model…</source>
        <translation>モデルを開いています…</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>モデルを開いています</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
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
        <translation>このフォルダーは応答しません。</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>これはファイルで、フォルダーではありません。</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>出力</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>以前の実行</translation>
    </message>
    <message>
        <source>What was made of this folder before (Ctrl+H)</source>
        <translation>このフォルダーから以前に作ったもの (Ctrl+H)</translation>
    </message>
    <message>
        <source>Folder path (created if it doesn&apos;t exist)</source>
        <translation>フォルダーのパス（なければ作成）</translation>
    </message>
    <message>
        <source>Output folder</source>
        <translation>出力フォルダー</translation>
    </message>
    <message>
        <source>Choose the output folder</source>
        <translation>出力フォルダーを選択</translation>
    </message>
    <message>
        <source>Existing folder — new files are added, nothing is overwritten.</source>
        <translation>既存のフォルダーです。新しいファイルを追加し、上書きはしません。</translation>
    </message>
    <message>
        <source>Folder will be created.</source>
        <translation>フォルダーを作成します。</translation>
    </message>
    <message>
        <source>No folder chosen yet.</source>
        <translation>フォルダーはまだ選ばれていません。</translation>
    </message>
    <message>
        <source>This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.</source>
        <translation>このフォルダーはコーパスの中にあります。次のスキャンでここに書き出したものが見つかり、モデルが合わなくなります。</translation>
    </message>
    <message>
        <source>Use a Folder Beside It</source>
        <translation>隣のフォルダーを使う</translation>
    </message>
    <message>
        <source>Variations</source>
        <translation>バリエーション</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>形式</translation>
    </message>
</context>
<context>
    <name>ParameterRow</name>
    <message>
        <source>%1 value</source>
        <translation>%1 の値</translation>
    </message>
    <message>
        <source>Reset to default</source>
        <translation>初期値に戻す</translation>
    </message>
    <message>
        <source>Reset to default: %1</source>
        <translation>初期値に戻す: %1</translation>
    </message>
    <message>
        <source>Unlock: let Randomise change it</source>
        <translation>ロック解除: ランダム化で変わるようにする</translation>
    </message>
    <message>
        <source>Lock: keep it when randomising</source>
        <translation>ロック: ランダム化しても変えない</translation>
    </message>
    <message>
        <source>Lock %1</source>
        <translation>%1 をロック</translation>
    </message>
</context>
<context>
    <name>PresetChip</name>
    <message>
        <source>%1 Edited.</source>
        <translation>%1 変更あり。</translation>
    </message>
    <message>
        <source>Delete preset %1</source>
        <translation>プリセット %1 を削除</translation>
    </message>
    <message>
        <source>%1 (edited)</source>
        <translation>%1（変更あり）</translation>
    </message>
</context>
<context>
    <name>PresetChips</name>
    <message>
        <source>Presets</source>
        <translation>プリセット</translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation>プリセットとして保存</translation>
    </message>
</context>
<context>
    <name>RecentMenu</name>
    <message>
        <source>Stored Models…</source>
        <translation>保存されているモデル…</translation>
    </message>
    <message>
        <source>Forget These Folders</source>
        <translation>これらのフォルダーを忘れる</translation>
    </message>
</context>
<context>
    <name>RelativeRow</name>
    <message>
        <source>Play the sound itself</source>
        <translation>この音を再生</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 を再生</translation>
    </message>
</context>
<context>
    <name>ReportSheet</name>
    <message>
        <source>What was learned of “%1”</source>
        <translation>「%1」から学習したもの</translation>
    </message>
    <message>
        <source>Show the Files…</source>
        <translation>ファイルを表示…</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>レポート</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>再試行</translation>
    </message>
    <message>
        <source>Farthest off</source>
        <translation>最も外れたもの</translation>
    </message>
    <message>
        <source>Space plays the sample and what was learned of it in turn.</source>
        <translation>スペースキーで、サンプルと学習した音を交互に再生します。</translation>
    </message>
    <message>
        <source>the sample</source>
        <translation>サンプル</translation>
    </message>
    <message>
        <source>what was learned of it</source>
        <translation>学習した音</translation>
    </message>
    <message>
        <source>Nearly the same</source>
        <translation>ほぼ同じもの</translation>
    </message>
    <message>
        <source>Unlike all others</source>
        <translation>ほかのどれとも違うもの</translation>
    </message>
</context>
<context>
    <name>ResultTile</name>
    <message>
        <source>favourite</source>
        <translation>お気に入り</translation>
    </message>
    <message>
        <source>playing</source>
        <translation>再生中</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>This file is gone</source>
        <translation>このファイルはもうありません</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 を停止</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 を再生</translation>
    </message>
    <message>
        <source>gone</source>
        <translation>なし</translation>
    </message>
</context>
<context>
    <name>ResultsStrip</name>
    <message>
        <source>Results</source>
        <translation>結果</translation>
    </message>
    <message numerus="yes">
        <source>%n selected</source>
        <translation>
            <numerusform>%n 個を選択</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 個のファイル</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n 個のファイル</numerusform>
        </translation>
    </message>
    <message>
        <source>Candidates</source>
        <translation>候補</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>ファイルマネージャーで表示</translation>
    </message>
    <message>
        <source>None of these files is a favourite.</source>
        <translation>お気に入りのファイルはありません。</translation>
    </message>
    <message>
        <source>The variations of the last run appear here.</source>
        <translation>最後に生成したバリエーションがここに表示されます。</translation>
    </message>
    <message>
        <source>Inspect</source>
        <translation>調べる</translation>
    </message>
    <message>
        <source>Show all files</source>
        <translation>すべてのファイルを表示</translation>
    </message>
    <message>
        <source>Show favourites only</source>
        <translation>お気に入りだけを表示</translation>
    </message>
    <message>
        <source>Make a kit for samplers</source>
        <translation>サンプラー用のキットを作る</translation>
    </message>
    <message>
        <source>A kit for samplers of the selected sounds, each with three close variations</source>
        <translation>選択した音から、それぞれ近いバリエーション 3 個を加えたサンプラー用キットを作ります</translation>
    </message>
</context>
<context>
    <name>RunProgress</name>
    <message>
        <source>1 variation follows.</source>
        <translation>続けて 1 個のバリエーションを生成します。</translation>
    </message>
    <message numerus="yes">
        <source>%n variations follow.</source>
        <translation>
            <numerusform>続けて %n 個のバリエーションを生成します。</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelling…</source>
        <translation>キャンセルしています…</translation>
    </message>
    <message>
        <source>Learning first: %1</source>
        <translation>先に学習します: %1</translation>
    </message>
    <message>
        <source>Opening the model: %1</source>
        <translation>モデルを開いています: %1</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <source>Rendering…</source>
        <translation>レンダリング中…</translation>
    </message>
    <message>
        <source>Learning</source>
        <translation>学習</translation>
    </message>
    <message>
        <source>Opening the model</source>
        <translation>モデルを開いています</translation>
    </message>
    <message>
        <source>Generating</source>
        <translation>生成</translation>
    </message>
    <message>
        <source>Making a kit</source>
        <translation>キットの作成</translation>
    </message>
    <message>
        <source>Rendering</source>
        <translation>レンダリング</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Moving files: %1 of %2</source>
        <translation>ファイルを移動中: %1 / %2</translation>
    </message>
    <message>
        <source>Moving files</source>
        <translation>ファイルを移動中</translation>
    </message>
</context>
<context>
    <name>RunsSheet</name>
    <message>
        <source>Earlier runs of “%1”</source>
        <translation>「%1」の以前の実行</translation>
    </message>
    <message>
        <source>Return opens a run, S sets its parameters and its seed again.</source>
        <translation>Enter で実行を開き、S でそのパラメーターとシードを再び設定します。</translation>
    </message>
    <message>
        <source>Reading the journal…</source>
        <translation>ジャーナルを読み込んでいます…</translation>
    </message>
    <message>
        <source>The journal has no runs of this folder.</source>
        <translation>ジャーナルにこのフォルダーの実行はありません。</translation>
    </message>
    <message>
        <source>Earlier runs</source>
        <translation>以前の実行</translation>
    </message>
    <message>
        <source>%2 · Seed %1</source>
        <translation>%2 · シード %1</translation>
    </message>
    <message>
        <source>Own settings</source>
        <translation>独自の設定</translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message>
        <source>Render</source>
        <translation>作成</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>開く</translation>
    </message>
    <message>
        <source>Render %1</source>
        <translation>%1 を作成</translation>
    </message>
    <message>
        <source>Open %1</source>
        <translation>%1 を開く</translation>
    </message>
    <message>
        <source>Set its parameters and its seed again</source>
        <translation>このパラメーターとシードを再び設定</translation>
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
        <translation>プリセットとして保存</translation>
    </message>
</context>
<context>
    <name>SavePresetForm</name>
    <message>
        <source>Name</source>
        <translation>名前</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
</context>
<context>
    <name>SeedField</name>
    <message>
        <source>Enter a number to get identical results every time. Leave empty for a fresh roll.</source>
        <translation>数を入力すると毎回同じ結果になります。空にすると毎回新しくなります。</translation>
    </message>
    <message>
        <source>Seed</source>
        <translation>シード</translation>
    </message>
    <message>
        <source>as the last run</source>
        <translation>前回と同じ</translation>
    </message>
    <message>
        <source>random</source>
        <translation>ランダム</translation>
    </message>
    <message>
        <source>Not a whole number: a fresh roll.</source>
        <translation>整数ではないため、ランダムになります。</translation>
    </message>
    <message>
        <source>Last run: %1</source>
        <translation>前回: %1</translation>
    </message>
    <message>
        <source>Copy the seed of the last run</source>
        <translation>前回のシードをコピー</translation>
    </message>
    <message>
        <source>Use the seed of the last run again</source>
        <translation>前回のシードを再び使う</translation>
    </message>
    <message>
        <source>Same seed</source>
        <translation>同じシード</translation>
    </message>
    <message>
        <source>The next runs take this seed, too (S), so that what you change is what you hear.</source>
        <translation>次からもこのシードを使います (S)。変えたことだけが音に現れます。</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Close</source>
        <translation>閉じる</translation>
    </message>
</context>
<context>
    <name>SimilarSheet</name>
    <message>
        <source>“%1”</source>
        <translation>「%1」</translation>
    </message>
    <message>
        <source>Find similar in the corpus</source>
        <translation>コーパスから似た音を探す</translation>
    </message>
    <message>
        <source>The nearest sounds of the corpus, nearest first.</source>
        <translation>コーパスの中で最も近い音を、近い順に並べています。</translation>
    </message>
    <message>
        <source>There is nothing in the corpus to compare it with.</source>
        <translation>コーパスに比較できるものがありません。</translation>
    </message>
    <message>
        <source>This sound was not made here: nothing is known of how it was made.</source>
        <translation>この音はここで作られたものではなく、作り方は分かりません。</translation>
    </message>
    <message>
        <source>Comparing</source>
        <translation>比較</translation>
    </message>
    <message>
        <source>Similar sounds</source>
        <translation>似た音</translation>
    </message>
    <message>
        <source>Stop %1</source>
        <translation>%1 を停止</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 を再生</translation>
    </message>
</context>
<context>
    <name>SortButton</name>
    <message>
        <source>Sort the results</source>
        <translation>結果を並べ替え</translation>
    </message>
</context>
<context>
    <name>SortMenu</name>
    <message>
        <source>As made</source>
        <translation>作成順</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>名前順</translation>
    </message>
    <message>
        <source>Short to long</source>
        <translation>短い順</translation>
    </message>
    <message>
        <source>Dark to bright</source>
        <translation>暗い音から明るい音へ</translation>
    </message>
    <message>
        <source>Close to new</source>
        <translation>近い音から新しい音へ</translation>
    </message>
</context>
<context>
    <name>SoundRow</name>
    <message>
        <source>Stop %1</source>
        <translation>%1 を停止</translation>
    </message>
    <message>
        <source>Play %1</source>
        <translation>%1 を再生</translation>
    </message>
</context>
<context>
    <name>StripHandle</name>
    <message>
        <source>Height of the strip</source>
        <translation>一覧の高さ</translation>
    </message>
    <message>
        <source>Ctrl+Up and Ctrl+Down</source>
        <translation>Ctrl+↑ と Ctrl+↓</translation>
    </message>
    <message>
        <source>Drag for more rows (Ctrl+Up)</source>
        <translation>ドラッグで行を増やす (Ctrl+↑)</translation>
    </message>
</context>
<context>
    <name>SweepPopup</name>
    <message>
        <source>%1, seven values</source>
        <translation>%1、7 つの値</translation>
    </message>
    <message>
        <source>Return takes the value</source>
        <translation>Enter で値を採用</translation>
    </message>
    <message>
        <source>the present value</source>
        <translation>現在の値</translation>
    </message>
</context>
<context>
    <name>TrainingProgressView</name>
    <message>
        <source>Cancelling…</source>
        <translation>キャンセルしています…</translation>
    </message>
    <message>
        <source>Stop Here</source>
        <translation>ここで終える</translation>
    </message>
    <message>
        <source>End the learning and keep what has been learned so far.</source>
        <translation>学習を終えて、これまでに学習したものを残します。</translation>
    </message>
    <message>
        <source>Training</source>
        <translation>学習</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>ステップ %1 / %2</translation>
    </message>
    <message>
        <source>Step %1</source>
        <translation>ステップ %1</translation>
    </message>
    <message>
        <source>Loss by step</source>
        <translation>ステップごとの損失</translation>
    </message>
    <message>
        <source>The loss says how far what is drawn is from the samples: the lower the line, the closer. Listen to hear it.</source>
        <translation>損失は、描かれたものがサンプルからどれだけ離れているかです。線が低いほど近くなります。試聴すると確かめられます。</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Hear what has been learned so far</source>
        <translation>これまでに学習した音を聴く</translation>
    </message>
    <message>
        <source>Mel image of what has been learned so far</source>
        <translation>これまでに学習したもののメル画像</translation>
    </message>
    <message>
        <source>You can listen in a few seconds.</source>
        <translation>数秒後に試聴できます。</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>There is not enough memory for this.</source>
        <translation>メモリーが足りません。</translation>
    </message>
    <message>
        <source>Works everywhere</source>
        <translation>どこでも使えます</translation>
    </message>
    <message>
        <source>Graphics card</source>
        <translation>グラフィックカード</translation>
    </message>
    <message>
        <source>Integrated graphics</source>
        <translation>内蔵グラフィックス</translation>
    </message>
    <message>
        <source>Virtual graphics</source>
        <translation>仮想グラフィックス</translation>
    </message>
    <message>
        <source>Software driver, never chosen automatically</source>
        <translation>ソフトウェアドライバー（自動では選ばれません）</translation>
    </message>
    <message>
        <source>Never chosen automatically</source>
        <translation>自動では選ばれません</translation>
    </message>
    <message>
        <source>Cannot be used: %1</source>
        <translation>使えません: %1</translation>
    </message>
    <message>
        <source>Wait until the present run has ended, or cancel it.</source>
        <translation>実行中の処理が終わるまで待つか、キャンセルしてください。</translation>
    </message>
    <message>
        <source>These candidates were made by another model. Open it first, or try new ones.</source>
        <translation>これらの候補は別のモデルで作られました。先にそのモデルを開くか、新しい候補を試してください。</translation>
    </message>
    <message>
        <source>This sound was made by another model. Choose the folder that it was made from first.</source>
        <translation>この音は別のモデルで作られました。先に元のフォルダーを選んでください。</translation>
    </message>
    <message>
        <source>This sound is silent: nothing is like it.</source>
        <translation>この音は無音のため、似たものはありません。</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n 個のファイル</numerusform>
        </translation>
    </message>
    <message>
        <source>Only folders on this computer can be used.</source>
        <translation>このコンピューターにあるフォルダーだけが使えます。</translation>
    </message>
    <message>
        <source>%1 does not answer. Check the drive or the network that it is on.</source>
        <translation>%1 が応答しません。ドライブまたはネットワークを確認してください。</translation>
    </message>
    <message>
        <source>Drop one folder: the one that holds the samples.</source>
        <translation>サンプルの入ったフォルダーを 1 つだけドロップしてください。</translation>
    </message>
    <message>
        <source>This is a file, not a folder. Drop the folder that holds it.</source>
        <translation>これはファイルで、フォルダーではありません。これを含むフォルダーをドロップしてください。</translation>
    </message>
    <message>
        <source>There is no folder %1.</source>
        <translation>フォルダー %1 はありません。</translation>
    </message>
    <message>
        <source>A sound of these was made by another model: %1. Choose sounds of one model.</source>
        <translation>別のモデルで作られた音があります: %1。同じモデルの音を選んでください。</translation>
    </message>
    <message>
        <source>Only remains of a model that was being stored.</source>
        <translation>保存途中だったモデルの残りだけです。</translation>
    </message>
    <message>
        <source>1 sample</source>
        <translation>1 個のサンプル</translation>
    </message>
    <message numerus="yes">
        <source>%n samples</source>
        <translation>
            <numerusform>%n 個のサンプル</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 · trained %2 · %3</source>
        <translation>%1 · 学習 %2 · %3</translation>
    </message>
    <message>
        <source>The learned samples could not be read: noise stands in for their detail.</source>
        <translation>学習したサンプルを読み込めなかったため、ディテールの代わりにノイズを使いました。</translation>
    </message>
    <message>
        <source>For %1 of %2 variations a learned sample could not be read: noise stands in for its detail.</source>
        <translation>%2 個中 %1 個のバリエーションで、学習したサンプルを読み込めなかったため、ディテールの代わりにノイズを使いました。</translation>
    </message>
    <message>
        <source>How the files were made could not be noted everywhere. %1.</source>
        <translation>ファイルの作り方を記録できなかったところがあります。%1。</translation>
    </message>
    <message>
        <source>The journal stays as it is, because it cannot be told whether it is wanted. %1.</source>
        <translation>ジャーナルが必要か分からないため、そのままにします。%1。</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n steps</source>
        <translation>
            <numerusform>%1 / %n ステップ</numerusform>
        </translation>
    </message>
    <message>
        <source>1 step</source>
        <translation>1 ステップ</translation>
    </message>
    <message numerus="yes">
        <source>%n steps</source>
        <translation>
            <numerusform>%n ステップ</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 from a head start</source>
        <translation>%1（事前学習から）</translation>
    </message>
    <message>
        <source>%1 onto %2</source>
        <translation>%1（%2 から継続）</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>The preset&apos;s file cannot be read.</source>
        <translation>プリセットのファイルを読み込めません。</translation>
    </message>
    <message>
        <source>Give the preset a name.</source>
        <translation>プリセットに名前を付けてください。</translation>
    </message>
    <message>
        <source>That name is too long.</source>
        <translation>名前が長すぎます。</translation>
    </message>
    <message>
        <source>A preset&apos;s name cannot begin with a dot or contain a slash.</source>
        <translation>プリセットの名前はドットで始めることも、スラッシュを含むこともできません。</translation>
    </message>
    <message>
        <source>A built-in preset has that name.</source>
        <translation>組み込みのプリセットと同じ名前です。</translation>
    </message>
    <message>
        <source>The file is too long to be played.</source>
        <translation>ファイルが長すぎて再生できません。</translation>
    </message>
    <message>
        <source>There is no sound card to play through: %1</source>
        <translation>再生できるサウンドデバイスがありません: %1</translation>
    </message>
    <message>
        <source>copy</source>
        <comment>how new a sound is</comment>
        <translation>コピー</translation>
    </message>
    <message>
        <source>close</source>
        <comment>how new a sound is</comment>
        <translation>近い</translation>
    </message>
    <message>
        <source>new</source>
        <comment>how new a sound is</comment>
        <translation>新しい</translation>
    </message>
    <message>
        <source>far</source>
        <comment>how new a sound is</comment>
        <translation>遠い</translation>
    </message>
    <message>
        <source>0 s</source>
        <translation>0 秒</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 分 %2 秒</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 時間 %2 分</translation>
    </message>
    <message>
        <source>about %1 s left</source>
        <translation>残り約 %1 秒</translation>
    </message>
    <message>
        <source>about %1 min left</source>
        <translation>残り約 %1 分</translation>
    </message>
    <message>
        <source>about %1 h left</source>
        <translation>残り約 %1 時間</translation>
    </message>
    <message>
        <source>about %1 h %2 min left</source>
        <translation>残り約 %1 時間 %2 分</translation>
    </message>
    <message>
        <source>Candidate %1</source>
        <translation>候補 %1</translation>
    </message>
    <message numerus="yes">
        <source>%n sounds of the map</source>
        <translation>
            <numerusform>マップの %n 個の音</numerusform>
        </translation>
    </message>
    <message>
        <source>Processor</source>
        <translation>プロセッサー</translation>
    </message>
    <message>
        <source>d MMM yyyy, hh:mm</source>
        <translation>yyyy/MM/dd hh:mm</translation>
    </message>
</context>
<context>
    <name>quillmere::AppModel</name>
    <message>
        <source>The folder has changed since this model was learned. Retrain to learn it as it is now.</source>
        <translation>このモデルを学習した後でフォルダーが変わりました。今の状態を学習するには、学習し直してください。</translation>
    </message>
    <message>
        <source>1 file is gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>スキャンの後で 1 個のファイルがなくなりました。フォルダーを再スキャンするので、その後もう一度始めてください。</translation>
    </message>
    <message numerus="yes">
        <source>%n files are gone since the scan. The folder is scanned again; start once more then.</source>
        <translation>
            <numerusform>スキャンの後で %n 個のファイルがなくなりました。フォルダーを再スキャンするので、その後もう一度始めてください。</numerusform>
        </translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>先に出力フォルダーを選んでください。</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again.</source>
        <translation>この音はここで作られたものです。その設定に戻しました。</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again. Its model or the folder of that is gone.</source>
        <translation>この音はここで作られたものです。その設定に戻しました。モデルまたはそのフォルダーはもうありません。</translation>
    </message>
    <message>
        <source>This sound was made here: its settings are set again, and its model is opened.</source>
        <translation>この音はここで作られたものです。その設定に戻し、モデルを開きます。</translation>
    </message>
</context>
<context>
    <name>quillmere::CandidatesController</name>
    <message>
        <source>There is no model to try yet. Train one first, or press Generate.</source>
        <translation>試せるモデルがまだありません。先に学習するか、「生成」を押してください。</translation>
    </message>
    <message>
        <source>The oldest candidates were forgotten to make room for new ones.</source>
        <translation>新しい候補のために、最も古い候補を破棄しました。</translation>
    </message>
    <message>
        <source>Seed %1</source>
        <translation>シード %1</translation>
    </message>
    <message>
        <source>New skins of %1</source>
        <translation>%1 の新しいスキン</translation>
    </message>
    <message>
        <source>New bodies for %1</source>
        <translation>%1 の新しいボディ</translation>
    </message>
    <message>
        <source>Like %1</source>
        <translation>%1 に似た音</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>先に出力フォルダーを選んでください。</translation>
    </message>
    <message>
        <source>Kept: %1</source>
        <translation>保存しました: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::CharacterController</name>
    <message>
        <source>A preset of that name exists already.</source>
        <translation>その名前のプリセットはすでにあります。</translation>
    </message>
</context>
<context>
    <name>quillmere::ComputeDevices</name>
    <message>
        <source>The stored choice of a device cannot be read. It is chosen automatically.</source>
        <translation>保存されたデバイスの選択を読み込めません。自動で選びます。</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>自動</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusController</name>
    <message>
        <source>Choose the folder of audio samples to learn from</source>
        <translation>学習するオーディオサンプルのフォルダーを選んでください</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesController</name>
    <message numerus="yes">
        <source>%n fine</source>
        <translation>
            <numerusform>問題なし %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n cut</source>
        <translation>
            <numerusform>短縮 %n</numerusform>
        </translation>
    </message>
    <message>
        <source>1 copy</source>
        <translation>重複 1</translation>
    </message>
    <message numerus="yes">
        <source>%n copies</source>
        <translation>
            <numerusform>重複 %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n damaged</source>
        <translation>
            <numerusform>破損 %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n silent</source>
        <translation>
            <numerusform>無音 %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n unreadable</source>
        <translation>
            <numerusform>読込不可 %n</numerusform>
        </translation>
    </message>
    <message>
        <source>1 file: %1</source>
        <translation>1 個のファイル: %1</translation>
    </message>
    <message numerus="yes">
        <source>%n files: %1</source>
        <translation>
            <numerusform>%n 個のファイル: %1</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
</context>
<context>
    <name>quillmere::CorpusFilesModel</name>
    <message>
        <source>silent</source>
        <translation>無音</translation>
    </message>
    <message>
        <source>unreadable</source>
        <translation>読込不可</translation>
    </message>
    <message>
        <source>damaged</source>
        <translation>破損</translation>
    </message>
    <message>
        <source>cut</source>
        <translation>短縮</translation>
    </message>
    <message>
        <source>copy</source>
        <translation>重複</translation>
    </message>
    <message>
        <source>fine</source>
        <translation>問題なし</translation>
    </message>
    <message>
        <source>There is nothing to hear, so it is left out.</source>
        <translation>聞こえる音がないため除外します。</translation>
    </message>
    <message>
        <source>It ends before it should.</source>
        <translation>途中で終わっています。</translation>
    </message>
    <message>
        <source>Of %1 ms nothing could be read; they are silent.</source>
        <translation>%1 ミリ秒分を読み込めなかったため、無音になっています。</translation>
    </message>
    <message>
        <source>The first %1 s are learned.</source>
        <translation>最初の %1 秒を学習します。</translation>
    </message>
    <message>
        <source>The same file as %1: it counts twice.</source>
        <translation>%1 と同じファイルのため、2 回数えられます。</translation>
    </message>
</context>
<context>
    <name>quillmere::FilesController</name>
    <message>
        <source>%1 could not be moved to the trash.</source>
        <translation>%1 をゴミ箱に移動できませんでした。</translation>
    </message>
    <message>
        <source>In the trash: %1</source>
        <translation>ゴミ箱に移動しました: %1</translation>
    </message>
    <message>
        <source>“%1” is no name for a file.</source>
        <translation>「%1」はファイル名にできません。</translation>
    </message>
    <message>
        <source>There is a file called %1 already.</source>
        <translation>%1 というファイルはすでにあります。</translation>
    </message>
    <message>
        <source>Another file is called %1 by now.</source>
        <translation>別のファイルがすでに %1 という名前になっています。</translation>
    </message>
    <message>
        <source>Back again: %1</source>
        <translation>元に戻しました: %1</translation>
    </message>
    <message>
        <source>%1. Not moved: %2</source>
        <translation>%1。移動していないもの: %2</translation>
    </message>
    <message>
        <source>Not moved: %1</source>
        <translation>移動していないもの: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::FolderBrowser</name>
    <message>
        <source>A folder&apos;s name cannot contain a slash.</source>
        <translation>フォルダーの名前にスラッシュは使えません。</translation>
    </message>
    <message>
        <source>This is a file, not a folder.</source>
        <translation>これはファイルで、フォルダーではありません。</translation>
    </message>
</context>
<context>
    <name>quillmere::GenerationController</name>
    <message>
        <source>Choose an output folder first.</source>
        <translation>先に出力フォルダーを選んでください。</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>このフォルダーはスキャンされていません。</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>先にコーパスを選んでください。</translation>
    </message>
    <message>
        <source>%1 of 1 variation written.</source>
        <translation>1 個中 %1 個のバリエーションを書き出しました。</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n variations written.</source>
        <translation>
            <numerusform>%n 個中 %1 個のバリエーションを書き出しました。</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelled: %1</source>
        <translation>キャンセルしました: %1</translation>
    </message>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>試聴できるモデルがまだありません。先に学習するか、「生成」を押してください。</translation>
    </message>
    <message>
        <source>Before learning: this is the head start.</source>
        <translation>学習前の音です。事前学習だけを使っています。</translation>
    </message>
</context>
<context>
    <name>quillmere::InspectorController</name>
    <message>
        <source>Recipe copied</source>
        <translation>レシピをコピーしました</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>無音</translation>
    </message>
    <message>
        <source>%1, peak %2</source>
        <translation>%1、ピーク %2</translation>
    </message>
    <message>
        <source>Nearly a copy of a sample that it is made of</source>
        <translation>元になったサンプルのほぼコピー</translation>
    </message>
    <message>
        <source>Nothing to compare with</source>
        <translation>比較するものがありません</translation>
    </message>
    <message>
        <source>Nearly a copy of %1</source>
        <translation>%1 のほぼコピー</translation>
    </message>
    <message>
        <source>Close to %1</source>
        <translation>%1 に近い</translation>
    </message>
    <message>
        <source>New, of the kind of %1</source>
        <translation>%1 と同じ種類の新しい音</translation>
    </message>
    <message>
        <source>New, and far from every sample</source>
        <translation>新しく、どのサンプルからも遠い音</translation>
    </message>
</context>
<context>
    <name>quillmere::KitController</name>
    <message>
        <source>Choose sounds that the present model has made.</source>
        <translation>現在のモデルで作った音を選んでください。</translation>
    </message>
    <message>
        <source>A kit has keys for %1 sounds. Choose fewer.</source>
        <translation>キットに割り当てられる音は %1 個までです。選択を減らしてください。</translation>
    </message>
    <message>
        <source>Choose an output folder first.</source>
        <translation>先に出力フォルダーを選んでください。</translation>
    </message>
    <message>
        <source>Kit written: %1</source>
        <translation>キットを書き出しました: %1</translation>
    </message>
    <message>
        <source>The kit is not complete: %1</source>
        <translation>キットは完成していません: %1</translation>
    </message>
</context>
<context>
    <name>quillmere::LossChart</name>
    <message>
        <source>No loss yet</source>
        <translation>損失はまだありません</translation>
    </message>
    <message>
        <source>Loss %1 at step %2</source>
        <translation>ステップ %2 の損失 %1</translation>
    </message>
    <message>
        <source>Step</source>
        <translation>ステップ</translation>
    </message>
    <message>
        <source>Loss</source>
        <translation>損失</translation>
    </message>
</context>
<context>
    <name>quillmere::MapController</name>
    <message>
        <source>Near one another is what sounds alike; the map shows %1 % of the differences.</source>
        <translation>似た音ほど近くにあります。マップは違いの %1 % を表しています。</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelController</name>
    <message>
        <source>This model is not stored yet. You can use it, but it is lost when the program ends.</source>
        <translation>このモデルはまだ保存されていません。使えますが、プログラムを終了すると失われます。</translation>
    </message>
    <message>
        <source>The model of %1 is not stored yet. It is lost when the program ends.</source>
        <translation>%1 のモデルはまだ保存されていません。プログラムを終了すると失われます。</translation>
    </message>
    <message>
        <source>The model is stored.</source>
        <translation>モデルを保存しました。</translation>
    </message>
    <message>
        <source>The stored model cannot be used. Retrain to get a new one; the files of the old one are kept.</source>
        <translation>保存されているモデルは使えません。学習し直すと新しいモデルができます。古いファイルは残ります。</translation>
    </message>
    <message>
        <source>The stored model could not be opened, which need not be its fault. Open it again, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>保存されているモデルを開けませんでした。モデルの問題とは限りません。もう一度開くか、学習し直してください。古いファイルは残ります。</translation>
    </message>
    <message>
        <source>The stored model was not opened. Open it, or retrain to get a new one; the files of the old one are kept.</source>
        <translation>保存されているモデルを開きませんでした。開くか、学習し直してください。古いファイルは残ります。</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>開始しています…</translation>
    </message>
    <message>
        <source>The head start cannot be used, so learning begins from scratch. %1</source>
        <translation>事前学習を使えないため、最初から学習します。%1</translation>
    </message>
    <message>
        <source>Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis for percussive ones.</source>
        <translation>「自動」では、音程のある持続音には周波数が細かい分析を、打楽器的な音には時間が細かい分析を選びます。</translation>
    </message>
    <message>
        <source>From scratch</source>
        <translation>最初から</translation>
    </message>
    <message>
        <source>Head start</source>
        <translation>事前学習</translation>
    </message>
    <message>
        <source>A head start begins with a network that has learned thousands of sounds made by rule: learning takes seconds, and Audition works before it.</source>
        <translation>事前学習では、規則で作られた何千もの音を覚えたネットワークから始めます。学習は数秒で終わり、その前でも「試聴」できます。</translation>
    </message>
    <message>
        <source>Choose a corpus first.</source>
        <translation>先にコーパスを選んでください。</translation>
    </message>
    <message>
        <source>No audio files found in this folder.</source>
        <translation>このフォルダーにオーディオファイルがありません。</translation>
    </message>
    <message>
        <source>This folder has not been scanned.</source>
        <translation>このフォルダーはスキャンされていません。</translation>
    </message>
    <message>
        <source>The sounds could not be kept with the model. %1</source>
        <translation>音をモデルと一緒に保存できませんでした。%1</translation>
    </message>
    <message>
        <source>Store the sounds, too</source>
        <translation>音も保存する</translation>
    </message>
    <message>
        <source>Store the sounds, too (up to %1 MB)</source>
        <translation>音も保存する（最大 %1 MB）</translation>
    </message>
</context>
<context>
    <name>quillmere::ModelsController</name>
    <message>
        <source>The model could not be moved to the trash. Delete it with: quillmere-cli models remove</source>
        <translation>モデルをゴミ箱に移動できませんでした。削除するには: quillmere-cli models remove</translation>
    </message>
    <message>
        <source>1 model, %1</source>
        <translation>1 個のモデル、%1</translation>
    </message>
    <message numerus="yes">
        <source>%n models, %1</source>
        <translation>
            <numerusform>%n 個のモデル、%1</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::OutputController</name>
    <message>
        <source>No file manager could be opened. The folder is %1</source>
        <translation>ファイルマネージャーを開けませんでした。フォルダーは %1 です</translation>
    </message>
    <message>
        <source>Choose a folder for the generated samples — use New Folder to create one</source>
        <translation>生成したサンプルのフォルダーを選んでください。「新規フォルダー」で作成できます</translation>
    </message>
</context>
<context>
    <name>quillmere::PresetModel</name>
    <message>
        <source>Your preset.</source>
        <translation>自分のプリセット。</translation>
    </message>
</context>
<context>
    <name>quillmere::ReportController</name>
    <message>
        <source>Reading the samples…</source>
        <translation>サンプルを読み込んでいます…</translation>
    </message>
    <message>
        <source>Comparing the samples…</source>
        <translation>サンプルを比較しています…</translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <translation>%1 と %2</translation>
    </message>
</context>
<context>
    <name>quillmere::RunsController</name>
    <message>
        <source>1 candidate</source>
        <translation>1 個の候補</translation>
    </message>
    <message numerus="yes">
        <source>%n candidates</source>
        <translation>
            <numerusform>%n 個の候補</numerusform>
        </translation>
    </message>
    <message>
        <source>Relatives of %1</source>
        <translation>%1 から派生</translation>
    </message>
    <message>
        <source>1 file</source>
        <translation>1 個のファイル</translation>
    </message>
    <message numerus="yes">
        <source>%n files</source>
        <translation>
            <numerusform>%n 個のファイル</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>quillmere::SweepController</name>
    <message>
        <source>There is no model to audition yet. Train one first, or press Generate.</source>
        <translation>試聴できるモデルがまだありません。先に学習するか、「生成」を押してください。</translation>
    </message>
</context>
</TS>
