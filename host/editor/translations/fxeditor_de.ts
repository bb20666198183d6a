<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>editor::ChainActions</name>
    <message>
        <source>Duplicate %1</source>
        <translation>%1 verdoppeln</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Name of the filter; empty for its own title</source>
        <translation>Name des Filters; leer für seinen eigenen Titel</translation>
    </message>
    <message>
        <source>%1: renamed</source>
        <translation>%1: umbenannt</translation>
    </message>
    <message>
        <source>&amp;Try values…</source>
        <translation>&amp;Werte ausprobieren …</translation>
    </message>
    <message>
        <source>Re&amp;name…</source>
        <translation>Um&amp;benennen …</translation>
    </message>
    <message>
        <source>&amp;Duplicate</source>
        <translation>&amp;Verdoppeln</translation>
    </message>
    <message>
        <source>&amp;Copy as text</source>
        <translation>Als &amp;Text kopieren</translation>
    </message>
    <message>
        <source>&amp;Save as preset…</source>
        <translation>Als Vor&amp;gabe speichern …</translation>
    </message>
    <message>
        <source>&amp;Reset to defaults</source>
        <translation>&amp;Zurücksetzen</translation>
    </message>
    <message>
        <source>%1: reset</source>
        <translation>%1: zurückgesetzt</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>The clipboard holds no filters</source>
        <translation>Die Zwischenablage enthält keine Filter</translation>
    </message>
    <message>
        <source>Paste filters</source>
        <translation>Filter einfügen</translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation>Als Vorgabe speichern</translation>
    </message>
    <message>
        <source>Name of the preset</source>
        <translation>Name der Vorgabe</translation>
    </message>
    <message>
        <source>There is a preset “%1”. Replace it?</source>
        <translation>Es gibt schon eine Vorgabe „%1“. Ersetzen?</translation>
    </message>
    <message>
        <source>The preset cannot be saved</source>
        <translation>Die Vorgabe kann nicht gespeichert werden</translation>
    </message>
    <message>
        <source>The preset cannot be applied</source>
        <translation>Die Vorgabe kann nicht angewandt werden</translation>
    </message>
    <message>
        <source>Apply preset %1</source>
        <translation>Vorgabe %1 anwenden</translation>
    </message>
    <message>
        <source>&amp;Save all filters as preset…</source>
        <translation>Alle Filter als Vorgabe &amp;speichern …</translation>
    </message>
    <message>
        <source>&amp;Apply preset from file…</source>
        <translation>Vorgabe aus Datei &amp;anwenden …</translation>
    </message>
    <message>
        <source>Apply preset</source>
        <translation>Vorgabe anwenden</translation>
    </message>
    <message>
        <source>Presets (*.fxpreset)</source>
        <translation>Vorgaben (*.fxpreset)</translation>
    </message>
    <message>
        <source>Appl&amp;y preset</source>
        <translation>Vorgabe &amp;anwenden</translation>
    </message>
    <message>
        <source>%1: preset %2</source>
        <translation>%1: Vorgabe %2</translation>
    </message>
</context>
<context>
    <name>editor::ChainPanel</name>
    <message>
        <source>Applied filters</source>
        <translation>Angewandte Filter</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message>
        <source>Shows the picture without any filter</source>
        <translation>Zeigt das Bild ohne Filter</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Shows the picture after all filters</source>
        <translation>Zeigt das Bild nach allen Filtern</translation>
    </message>
    <message>
        <source>No filters yet. Choose one under “Filters” and press “Add”.</source>
        <translation>Noch keine Filter. Unter „Filter“ einen wählen und „Hinzufügen“ drücken.</translation>
    </message>
</context>
<context>
    <name>editor::EditorDocument</name>
    <message>
        <source>The range “%1” cannot be used; write LO-HI, auto or each</source>
        <translation>Der Bereich „%1“ ist nicht zu gebrauchen; möglich sind UNTEN-OBEN, auto oder each</translation>
    </message>
</context>
<context>
    <name>editor::EntryRow</name>
    <message>
        <source>Drag to change the order (Alt+Up, Alt+Down)</source>
        <translation>Ziehen ändert die Reihenfolge (Alt+Auf, Alt+Ab)</translation>
    </message>
    <message>
        <source>Shows the picture after this filter (Return)</source>
        <translation>Zeigt das Bild nach diesem Filter (Eingabe)</translation>
    </message>
    <message>
        <source>Folds or unfolds the settings (Left, Right)</source>
        <translation>Klappt die Einstellungen ein oder aus (Links, Rechts)</translation>
    </message>
    <message>
        <source>More for this filter (menu key)</source>
        <translation>Mehr zu diesem Filter (Menütaste)</translation>
    </message>
</context>
<context>
    <name>editor::ExportDialog</name>
    <message>
        <source>%1 s left</source>
        <translation>noch %1 s</translation>
    </message>
    <message>
        <source>%1 min %2 s left</source>
        <translation>noch %1 min %2 s</translation>
    </message>
    <message>
        <source>%1 h %2 min left</source>
        <translation>noch %1 h %2 min</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>&amp;Write to</source>
        <translation>&amp;Schreiben nach</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen …</translation>
    </message>
    <message>
        <source>A folder, a numbered sequence such as out_####.png, or a video such as out.mp4. Files of the input are never overwritten.</source>
        <translation>Ein Ordner, eine nummerierte Folge wie out_####.png oder ein Video wie out.mp4. Dateien der Eingabe werden nie überschrieben.</translation>
    </message>
    <message>
        <source>The suffix decides the format: .png, .tif, .jpg and others. The input is never overwritten.</source>
        <translation>Die Endung bestimmt das Format: .png, .tif, .jpg und andere. Die Eingabe wird nie überschrieben.</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>&amp;Export</source>
        <translation>&amp;Exportieren</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Starting the renderer…</source>
        <translation>Der Renderer wird gestartet …</translation>
    </message>
    <message>
        <source>Stopping after the frames at work…</source>
        <translation>Hält nach den begonnenen Bildern an …</translation>
    </message>
    <message>
        <source>Write frames to</source>
        <translation>Bilder schreiben nach</translation>
    </message>
    <message>
        <source>Write to</source>
        <translation>Schreiben nach</translation>
    </message>
    <message>
        <source>%1 of %2 frames</source>
        <translation>%1 von %2 Bildern</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Cancelled. The frames written so far are whole.</source>
        <translation>Abgebrochen. Die bisher geschriebenen Bilder sind vollständig.</translation>
    </message>
    <message>
        <source>Done: %1</source>
        <translation>Fertig: %1</translation>
    </message>
    <message>
        <source>The filters cannot be handed to the renderer: %1; make room in %2</source>
        <translation>Die Filter können dem Renderer nicht übergeben werden: %1; Platz schaffen in %2</translation>
    </message>
</context>
<context>
    <name>editor::ExportProcess</name>
    <message>
        <source>%1 cannot be started (%2); install it beside this program</source>
        <translation>%1 kann nicht gestartet werden (%2); es gehört neben dieses Programm</translation>
    </message>
    <message>
        <source>The renderer ended unexpectedly; the frames written before are whole</source>
        <translation>Der Renderer endete unerwartet; die vorher geschriebenen Bilder sind vollständig</translation>
    </message>
    <message>
        <source>The renderer failed with code %1</source>
        <translation>Der Renderer endete mit dem Fehlercode %1</translation>
    </message>
</context>
<context>
    <name>editor::FileActions</name>
    <message>
        <source>Projects (*.fxp)</source>
        <translation>Projekte (*.fxp)</translation>
    </message>
    <message>
        <source>This cannot be opened</source>
        <translation>Das lässt sich nicht öffnen</translation>
    </message>
    <message>
        <source>The sample cannot be made</source>
        <translation>Das Beispiel lässt sich nicht anlegen</translation>
    </message>
    <message>
        <source>/sample.png</source>
        <translation>/sample.png</translation>
    </message>
    <message>
        <source>%1 cannot be written; check the permissions</source>
        <translation>%1 kann nicht geschrieben werden; Zugriffsrechte prüfen</translation>
    </message>
    <message>
        <source>the project</source>
        <translation>das Projekt</translation>
    </message>
    <message>
        <source>Save changes?</source>
        <translation>Änderungen speichern?</translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation>Die Änderungen an %1 speichern?</translation>
    </message>
    <message>
        <source>The project cannot be saved</source>
        <translation>Das Projekt kann nicht gespeichert werden</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 gespeichert</translation>
    </message>
    <message>
        <source>Save project</source>
        <translation>Projekt speichern</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Pictures, videos and projects (*)</source>
        <translation>Bilder, Videos und Projekte (*)</translation>
    </message>
    <message>
        <source>Open a folder of pictures</source>
        <translation>Einen Ordner mit Bildern öffnen</translation>
    </message>
    <message>
        <source>Open a project</source>
        <translation>Ein Projekt öffnen</translation>
    </message>
    <message>
        <source>Apply the same filters to other pictures</source>
        <translation>Dieselben Filter auf andere Bilder anwenden</translation>
    </message>
    <message>
        <source>Pictures, videos (*)</source>
        <translation>Bilder, Videos (*)</translation>
    </message>
    <message>
        <source>Opened with remarks</source>
        <translation>Mit Anmerkungen geöffnet</translation>
    </message>
    <message>
        <source>Not everything in the project can be used here. Nothing of it is lost when you save.</source>
        <translation>Nicht alles im Projekt kann hier benutzt werden. Beim Speichern geht nichts davon verloren.</translation>
    </message>
    <message>
        <source>The command is on the clipboard</source>
        <translation>Der Befehl ist in der Zwischenablage</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>There is nothing to render yet: open a picture and apply a filter.</source>
        <translation>Noch gibt es nichts zu rendern: ein Bild öffnen und einen Filter anwenden.</translation>
    </message>
    <message>
        <source>an unsaved project</source>
        <translation>ein ungespeichertes Projekt</translation>
    </message>
    <message>
        <source>Recover</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>The editor ended unexpectedly while %1 had unsaved changes (%2).</source>
        <translation>Der Editor endete unerwartet, als %1 ungespeicherte Änderungen hatte (%2).</translation>
    </message>
    <message>
        <source>Recovering overwrites no file: you decide whether to save.</source>
        <translation>Das Wiederherstellen überschreibt keine Datei: Sie entscheiden, ob gespeichert wird.</translation>
    </message>
    <message>
        <source>&amp;Recover</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation>Ver&amp;werfen</translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation>&amp;Später</translation>
    </message>
    <message>
        <source>This cannot be recovered</source>
        <translation>Das lässt sich nicht wiederherstellen</translation>
    </message>
    <message>
        <source>What is shown has no filters: there is nothing to render</source>
        <translation>Was gezeigt wird, hat keine Filter: es gibt nichts zu rendern</translation>
    </message>
    <message>
        <source>The command is on the clipboard, with the filters up to “%1”, which is shown</source>
        <translation>Der Befehl ist in der Zwischenablage, mit den Filtern bis „%1“, der gezeigt wird</translation>
    </message>
    <message>
        <source>An export is running. Stop it? The frames written so far stay.</source>
        <translation>Ein Export läuft. Anhalten? Die schon geschriebenen Bilder bleiben.</translation>
    </message>
    <message>
        <source>%1 is no longer there.</source>
        <translation>%1 ist nicht mehr da.</translation>
    </message>
    <message>
        <source>It may have been moved, or be on a disk that is not connected.</source>
        <translation>Vielleicht wurde es verschoben, oder es liegt auf einem Datenträger, der nicht angeschlossen ist.</translation>
    </message>
    <message>
        <source>&amp;Take it off the list</source>
        <translation>&amp;Aus der Liste nehmen</translation>
    </message>
</context>
<context>
    <name>FilterCommands</name>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message>
        <source>Remove %1</source>
        <translation>%1 entfernen</translation>
    </message>
    <message>
        <source>Move %1 up</source>
        <translation>%1 nach oben</translation>
    </message>
    <message>
        <source>Move %1 down</source>
        <translation>%1 nach unten</translation>
    </message>
    <message>
        <source> (frame %1)</source>
        <translation> (Bild %1)</translation>
    </message>
</context>
<context>
    <name>FxGuiImageFilter</name>
    <message>
        <source>Switches the filter on or off; its settings stay</source>
        <translation>Schaltet den Filter ein oder aus; seine Einstellungen bleiben</translation>
    </message>
    <message>
        <source>Animates the settings: every edit becomes a keyframe of its frame</source>
        <translation>Animiert die Einstellungen: jede Änderung wird ein Schlüsselbild</translation>
    </message>
    <message>
        <source>Applies this filter one place earlier</source>
        <translation>Wendet diesen Filter einen Platz früher an</translation>
    </message>
    <message>
        <source>Applies this filter one place later</source>
        <translation>Wendet diesen Filter einen Platz später an</translation>
    </message>
    <message>
        <source>Removes this filter</source>
        <translation>Entfernt diesen Filter</translation>
    </message>
</context>
<context>
    <name>HkFilterManipulator</name>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Applies this filter after the others</source>
        <translation>Wendet diesen Filter nach den anderen an</translation>
    </message>
    <message>
        <source>switch on</source>
        <translation>einschalten</translation>
    </message>
    <message>
        <source>switch off</source>
        <translation>ausschalten</translation>
    </message>
    <message>
        <source>animate</source>
        <translation>animieren</translation>
    </message>
    <message>
        <source>stop animating</source>
        <translation>nicht mehr animieren</translation>
    </message>
</context>
<context>
    <name>editor::InfoPanel</name>
    <message>
        <source>Levels 0 to 255; the line is the picture before the filters</source>
        <translation>Werte 0 bis 255; die Linie ist das Bild vor den Filtern</translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Nachher</translation>
    </message>
    <message>
        <source>Pixel</source>
        <translation>Pixel</translation>
    </message>
</context>
<context>
    <name>editor::MainMenus</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>Ö&amp;ffnen …</translation>
    </message>
    <message>
        <source>Open &amp;folder…</source>
        <translation>&amp;Ordner öffnen …</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>Open &amp;recent</source>
        <translation>&amp;Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Replace &amp;input…</source>
        <translation>E&amp;ingabe ersetzen …</translation>
    </message>
    <message>
        <source>&amp;Save project</source>
        <translation>Projekt &amp;speichern</translation>
    </message>
    <message>
        <source>Save project &amp;as…</source>
        <translation>Projekt speichern &amp;unter …</translation>
    </message>
    <message>
        <source>Ctrl+Shift+S</source>
        <translation>Ctrl+Shift+S</translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation>&amp;Exportieren …</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>&amp;Copy as command line</source>
        <translation>Als &amp;Kommandozeile kopieren</translation>
    </message>
    <message>
        <source>Ctrl+Shift+C</source>
        <translation>Ctrl+Shift+C</translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Ctrl+W</source>
        <translation>Ctrl+W</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>Switch between version &amp;A and B</source>
        <translation>Zwischen Fassung &amp;A und B wechseln</translation>
    </message>
    <message>
        <source>X</source>
        <translation>X</translation>
    </message>
    <message>
        <source>&amp;Presets</source>
        <translation>&amp;Vorgaben</translation>
    </message>
    <message>
        <source>Paste &amp;filters from text</source>
        <translation>&amp;Filter aus Text einfügen</translation>
    </message>
    <message>
        <source>Ctrl+Shift+V</source>
        <translation>Ctrl+Shift+V</translation>
    </message>
    <message>
        <source>F&amp;ilters</source>
        <translation>F&amp;ilter</translation>
    </message>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message>
        <source>F&amp;rames</source>
        <translation>Bil&amp;der</translation>
    </message>
    <message>
        <source>&amp;Play or stop</source>
        <translation>&amp;Abspielen oder anhalten</translation>
    </message>
    <message>
        <source>&amp;Next frame</source>
        <translation>&amp;Nächstes Bild</translation>
    </message>
    <message>
        <source>P&amp;revious frame</source>
        <translation>&amp;Voriges Bild</translation>
    </message>
    <message>
        <source>Ne&amp;xt key</source>
        <translation>Nä&amp;chster Schlüssel</translation>
    </message>
    <message>
        <source>Pre&amp;vious key</source>
        <translation>V&amp;origer Schlüssel</translation>
    </message>
    <message>
        <source>&amp;Make a key here</source>
        <translation>&amp;Hier einen Schlüssel setzen</translation>
    </message>
    <message>
        <source>&amp;Delete selected keys</source>
        <translation>Gewählte Schlüssel &amp;löschen</translation>
    </message>
    <message>
        <source>&amp;Copy selected keys</source>
        <translation>Gewählte Schlüssel &amp;kopieren</translation>
    </message>
    <message>
        <source>Pas&amp;te keys here</source>
        <translation>Schlüssel hier &amp;einfügen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation>&amp;Einpassen</translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation>Ctrl+0</translation>
    </message>
    <message>
        <source>&amp;100 %</source>
        <translation>&amp;100 %</translation>
    </message>
    <message>
        <source>Ctrl+1</source>
        <translation>Ctrl+1</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>Ver&amp;größern</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>Ver&amp;kleinern</translation>
    </message>
    <message>
        <source>&amp;Picture alone</source>
        <translation>&amp;Bild allein</translation>
    </message>
    <message>
        <source>&amp;Wipe line between before and after</source>
        <translation>&amp;Wischlinie zwischen vorher und nachher</translation>
    </message>
    <message>
        <source>Before and after &amp;side by side</source>
        <translation>Vorher und nachher &amp;nebeneinander</translation>
    </message>
    <message>
        <source>&amp;Difference</source>
        <translation>&amp;Differenz</translation>
    </message>
    <message>
        <source>&amp;Objects in colours</source>
        <translation>&amp;Objekte in Farben</translation>
    </message>
    <message>
        <source>Hold B to see the picture before</source>
        <translation>B halten zeigt das Bild vorher</translation>
    </message>
    <message>
        <source>Pa&amp;nels</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Theme</source>
        <translation>F&amp;arbschema</translation>
    </message>
    <message>
        <source>&amp;System</source>
        <translation>&amp;System</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>D&amp;unkel</translation>
    </message>
    <message>
        <source>&amp;Forget all</source>
        <translation>&amp;Alle vergessen</translation>
    </message>
</context>
<context>
    <name>editor::MainWindow</name>
    <message>
        <source>Filters</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Applied filters</source>
        <translation>Angewandte Filter</translation>
    </message>
    <message>
        <source>As opened</source>
        <translation>Wie geöffnet</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Levels and pixel</source>
        <translation>Werte und Pixel</translation>
    </message>
    <message>
        <source>Timeline</source>
        <translation>Zeitleiste</translation>
    </message>
    <message>
        <source>fxeditor[*]</source>
        <translation>fxeditor[*]</translation>
    </message>
    <message>
        <source>%1[*] – fxeditor</source>
        <translation>%1[*] – fxeditor</translation>
    </message>
    <message>
        <source>Version B</source>
        <translation>Fassung B</translation>
    </message>
    <message>
        <source>Frame %1</source>
        <translation>Bild %1</translation>
    </message>
    <message>
        <source>%1 × %2 pixels</source>
        <translation>%1 × %2 Pixel</translation>
    </message>
    <message>
        <source>grey</source>
        <translation>grau</translation>
    </message>
    <message>
        <source>colour</source>
        <translation>farbig</translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Not safe from a crash: %1</source>
        <translation>Nicht vor einem Absturz sicher: %1</translation>
    </message>
    <message>
        <source>Left out, for they are no files of this computer: %1</source>
        <translation>Ausgelassen, weil es keine Dateien dieses Rechners sind: %1</translation>
    </message>
</context>
<context>
    <name>editor::MessageBar</name>
    <message>
        <source>Warnings</source>
        <translation>Warnungen</translation>
    </message>
    <message>
        <source>Shown without filters: %1</source>
        <translation>Ohne Filter gezeigt: %1</translation>
    </message>
    <message>
        <source>%1 more: see the signs at the filters</source>
        <translation>%1 weitere: siehe die Zeichen an den Filtern</translation>
    </message>
</context>
<context>
    <name>editor::PictureView</name>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Frame %1, %2 × %3 pixels</source>
        <translation>Bild %1, %2 × %3 Pixel</translation>
    </message>
    <message>
        <source>Nothing is open</source>
        <translation>Nichts ist geöffnet</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Nachher</translation>
    </message>
    <message>
        <source>Difference × 4</source>
        <translation>Differenz × 4</translation>
    </message>
    <message>
        <source>No objects to colour: the picture is not one of areas</source>
        <translation>Keine Objekte zum Färben: das Bild besteht nicht aus Flächen</translation>
    </message>
    <message>
        <source>1/%1 size while dragging</source>
        <translation>1/%1 der Größe während des Ziehens</translation>
    </message>
</context>
<context>
    <name>editor::StageRow</name>
    <message>
        <source>%1 (Return)</source>
        <translation>%1 (Eingabe)</translation>
    </message>
</context>
<context>
    <name>editor::StartPage</name>
    <message>
        <source>%1 and %2 more</source>
        <translation>%1 und %2 weitere</translation>
    </message>
    <message>
        <source>What would you like to work on?</source>
        <translation>Woran möchten Sie arbeiten?</translation>
    </message>
    <message>
        <source>Open something, or drop files and folders on this window.</source>
        <translation>Etwas öffnen, oder Dateien und Ordner auf dieses Fenster ziehen.</translation>
    </message>
    <message>
        <source>Open pictures or a video</source>
        <translation>Bilder oder ein Video öffnen</translation>
    </message>
    <message>
        <source>One picture, several, or a video</source>
        <translation>Ein Bild, mehrere, oder ein Video</translation>
    </message>
    <message>
        <source>Open a folder</source>
        <translation>Einen Ordner öffnen</translation>
    </message>
    <message>
        <source>All its pictures as frames, in the order of their names</source>
        <translation>Alle seine Bilder, in der Reihenfolge ihrer Namen</translation>
    </message>
    <message>
        <source>Open a project</source>
        <translation>Ein Projekt öffnen</translation>
    </message>
    <message>
        <source>Pictures with the filters that were saved for them</source>
        <translation>Bilder mit den Filtern, die für sie gespeichert wurden</translation>
    </message>
    <message>
        <source>Try the sample picture</source>
        <translation>Das Beispielbild ausprobieren</translation>
    </message>
    <message>
        <source>It has something to do for every filter</source>
        <translation>Es hat für jeden Filter etwas zu tun</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt</translation>
    </message>
</context>
<context>
    <name>editor::SweepDialog</name>
    <message>
        <source>Pictures to choose from</source>
        <translation>Bilder zur Auswahl</translation>
    </message>
    <message>
        <source>Try values – %1</source>
        <translation>Werte ausprobieren – %1</translation>
    </message>
    <message>
        <source>&amp;Parameter</source>
        <translation>&amp;Parameter</translation>
    </message>
    <message>
        <source>&amp;And</source>
        <translation>&amp;Und</translation>
    </message>
    <message>
        <source>Click the best one: its values are set. Bold: the present values.</source>
        <translation>Ein Klick auf das beste setzt seine Werte. Fett: die jetzigen Werte.</translation>
    </message>
    <message>
        <source>no other</source>
        <translation>kein weiterer</translation>
    </message>
    <message>
        <source>How many values</source>
        <translation>Wie viele Werte</translation>
    </message>
    <message>
        <source>values</source>
        <translation>Werte</translation>
    </message>
</context>
<context>
    <name>editor::TimelineKeys</name>
    <message>
        <source>%1: add a key (frame %2)</source>
        <translation>%1: Schlüssel setzen (Bild %2)</translation>
    </message>
    <message>
        <source>No filter is animated: press ◇ on one first</source>
        <translation>Kein Filter ist animiert: zuerst ◇ an einem drücken</translation>
    </message>
    <message>
        <source>Add a key (frame %1)</source>
        <translation>Schlüssel setzen (Bild %1)</translation>
    </message>
    <message>
        <source>Delete a key</source>
        <translation>Einen Schlüssel löschen</translation>
    </message>
    <message>
        <source>Delete %1 keys</source>
        <translation>%1 Schlüssel löschen</translation>
    </message>
    <message>
        <source>Move a key by %1 frames</source>
        <translation>Einen Schlüssel um %1 Bilder verschieben</translation>
    </message>
    <message>
        <source>Move %1 keys by %2 frames</source>
        <translation>%1 Schlüssel um %2 Bilder verschieben</translation>
    </message>
    <message>
        <source>There is no lane for these keys: animate a filter first</source>
        <translation>Es gibt keine Spur für diese Schlüssel: zuerst einen Filter animieren</translation>
    </message>
    <message>
        <source>Paste keys (frame %1)</source>
        <translation>Schlüssel einfügen (Bild %1)</translation>
    </message>
    <message>
        <source>Left out, for this filter has no such parameter: %1</source>
        <translation>Ausgelassen, weil dieser Filter den Parameter nicht hat: %1</translation>
    </message>
    <message>
        <source>There is no key at this frame: Insert makes one</source>
        <translation>In diesem Bild ist kein Schlüssel: Einfg setzt einen</translation>
    </message>
    <message>
        <source>No key is selected: click one, draw a rectangle around several, or go to one and press Return</source>
        <translation>Kein Schlüssel ist gewählt: einen anklicken, ein Rechteck um mehrere ziehen oder zu einem gehen und die Eingabetaste drücken</translation>
    </message>
</context>
<context>
    <name>editor::TimelinePanel</name>
    <message>
        <source>First frame (Home)</source>
        <translation>Erstes Bild (Pos1)</translation>
    </message>
    <message>
        <source>Previous frame (,)</source>
        <translation>Voriges Bild (,)</translation>
    </message>
    <message>
        <source>Play or stop (Space)</source>
        <translation>Abspielen oder anhalten (Leertaste)</translation>
    </message>
    <message>
        <source>Next frame (.)</source>
        <translation>Nächstes Bild (.)</translation>
    </message>
    <message>
        <source>Last frame (End)</source>
        <translation>Letztes Bild (Ende)</translation>
    </message>
    <message>
        <source>Current frame</source>
        <translation>Gezeigtes Bild</translation>
    </message>
    <message>
        <source>Previous key (Ctrl+,)</source>
        <translation>Voriger Schlüssel (Strg+,)</translation>
    </message>
    <message>
        <source>Next key (Ctrl+.)</source>
        <translation>Nächster Schlüssel (Strg+.)</translation>
    </message>
    <message>
        <source>Make a key of the values here (K)</source>
        <translation>Die Werte hier als Schlüssel setzen (K)</translation>
    </message>
    <message>
        <source>Delete the selected keys (Delete)</source>
        <translation>Die gewählten Schlüssel löschen (Entf)</translation>
    </message>
</context>
<context>
    <name>editor::TimelineView</name>
    <message>
        <source>Timeline</source>
        <translation>Zeitleiste</translation>
    </message>
    <message>
        <source>Press ◇ on an applied filter to animate it; each edit then makes a key</source>
        <translation>◇ an einem angewandten Filter animiert ihn; jede Änderung setzt dann einen Schlüssel</translation>
    </message>
    <message>
        <source>Objects</source>
        <translation>Objekte</translation>
    </message>
    <message>
        <source>at most %1</source>
        <translation>höchstens %1</translation>
    </message>
    <message>
        <source>%1 here, at most %2</source>
        <translation>%1 hier, höchstens %2</translation>
    </message>
    <message>
        <source>Frame %1: %2</source>
        <translation>Bild %1: %2</translation>
    </message>
    <message>
        <source>%1, frame %2: selected key</source>
        <translation>%1, Bild %2: gewählter Schlüssel</translation>
    </message>
    <message>
        <source>%1, frame %2: key</source>
        <translation>%1, Bild %2: Schlüssel</translation>
    </message>
    <message>
        <source>%1, frame %2: no key</source>
        <translation>%1, Bild %2: kein Schlüssel</translation>
    </message>
</context>
<context>
    <name>editor</name>
    <message>
        <source>Show version %1</source>
        <translation>Fassung %1 zeigen</translation>
    </message>
    <message>
        <source>1 object</source>
        <translation>1 Objekt</translation>
    </message>
    <message>
        <source>%1 objects</source>
        <translation>%1 Objekte</translation>
    </message>
    <message>
        <source>not enough memory</source>
        <translation>nicht genug Speicher</translation>
    </message>
</context>
<context>
    <name>fxeditor</name>
    <message>
        <source>Applies image filters to pictures and sequences, with a preview.</source>
        <translation>Wendet Bildfilter auf Bilder und Bildfolgen an, mit Vorschau.</translation>
    </message>
    <message>
        <source>The plug-in library, if not the one of this program</source>
        <translation>Die Bibliothek mit den Filtern, wenn nicht die dieses Programms</translation>
    </message>
    <message>
        <source>system, light or dark</source>
        <translation>system, light oder dark</translation>
    </message>
    <message>
        <source>A project, pictures, a numbered sequence (shot_####.png) or a folder</source>
        <translation>Ein Projekt, Bilder, eine nummerierte Folge (shot_####.png) oder ein Ordner</translation>
    </message>
</context>
</TS>
