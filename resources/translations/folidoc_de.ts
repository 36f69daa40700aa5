<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Alert</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>AnnColorPicker</name>
    <message>
        <source>More Colors…</source>
        <translation>Weitere Farben…</translation>
    </message>
    <message>
        <source>STROKE</source>
        <translation>LINIE</translation>
    </message>
    <message>
        <source>FILL</source>
        <translation>FÜLLUNG</translation>
    </message>
    <message>
        <source>TEXT</source>
        <translation>TEXT</translation>
    </message>
    <message>
        <source>BACK</source>
        <translation type="unfinished">HINTERGR.</translation>
    </message>
    <message>
        <source>COLOR</source>
        <translation>FARBE</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Transparent</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Orange</source>
        <translation>Orange</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Blue2</source>
        <translation type="unfinished">Blau 2</translation>
    </message>
    <message>
        <source>Pink</source>
        <translation>Rosa</translation>
    </message>
    <message>
        <source>Puerple</source>
        <translation type="unfinished">Lila</translation>
    </message>
    <message>
        <source>Gray</source>
        <translation>Grau</translation>
    </message>
    <message>
        <source>Black</source>
        <translation>Schwarz</translation>
    </message>
</context>
<context>
    <name>AnnFontPicker</name>
    <message>
        <source>Font</source>
        <translation>Schrift</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>Schriftart</translation>
    </message>
    <message>
        <source>Regular</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Fett</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Kursiv</translation>
    </message>
    <message>
        <source>Bold Italic</source>
        <translation>Fett kursiv</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
</context>
<context>
    <name>AnnLineAspectPicker</name>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Style</source>
        <translation>Stil</translation>
    </message>
    <message>
        <source>Arrows</source>
        <translation>Pfeile</translation>
    </message>
    <message>
        <source>No Arrows</source>
        <translation>Keine Pfeile</translation>
    </message>
    <message>
        <source>Arrows at Both Ends</source>
        <translation>Pfeile an beiden Enden</translation>
    </message>
    <message>
        <source>Arrow at End</source>
        <translation>Pfeil am Ende</translation>
    </message>
    <message>
        <source>Arrow at Start</source>
        <translation>Pfeil am Anfang</translation>
    </message>
    <message>
        <source>Width %1</source>
        <translation>Breite %1</translation>
    </message>
    <message>
        <source>Solid</source>
        <translation>Durchgezogen</translation>
    </message>
    <message>
        <source>Dashed</source>
        <translation>Gestrichelt</translation>
    </message>
</context>
<context>
    <name>AtomicFileWriter</name>
    <message>
        <source>Cannot read the link “%1”.</source>
        <translation>Die Verknüpfung „%1“ kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Too many levels of symbolic links at “%1”.</source>
        <translation>Zu viele Ebenen symbolischer Verknüpfungen bei „%1“.</translation>
    </message>
    <message>
        <source>Writing failed</source>
        <translation>Schreiben fehlgeschlagen</translation>
    </message>
    <message>
        <source>Reading the file&apos;s attributes failed</source>
        <translation>Lesen der Dateiattribute fehlgeschlagen</translation>
    </message>
    <message>
        <source>Reading the attribute %1 failed</source>
        <translation>Lesen des Attributs %1 fehlgeschlagen</translation>
    </message>
    <message>
        <source>Copying the attribute %1 failed</source>
        <translation>Kopieren des Attributs %1 fehlgeschlagen</translation>
    </message>
    <message>
        <source>Reading the file&apos;s permissions failed</source>
        <translation>Lesen der Dateiberechtigungen fehlgeschlagen</translation>
    </message>
    <message>
        <source>Setting permissions failed</source>
        <translation>Setzen der Berechtigungen fehlgeschlagen</translation>
    </message>
    <message>
        <source>“%1” is not a regular file.</source>
        <translation>„%1“ ist keine reguläre Datei.</translation>
    </message>
    <message>
        <source>Cannot create a file in “%1”</source>
        <translation>In „%1“ kann keine Datei angelegt werden</translation>
    </message>
    <message>
        <source>Syncing the file failed</source>
        <translation>Synchronisieren der Datei fehlgeschlagen</translation>
    </message>
    <message>
        <source>Closing the file failed</source>
        <translation>Schließen der Datei fehlgeschlagen</translation>
    </message>
    <message>
        <source>Cannot replace “%1”</source>
        <translation>„%1“ kann nicht ersetzt werden</translation>
    </message>
    <message>
        <source>Syncing the folder %1 failed</source>
        <translation>Synchronisieren des Ordners %1 fehlgeschlagen</translation>
    </message>
</context>
<context>
    <name>CompressContents</name>
    <message>
        <source>Compress</source>
        <translation>Komprimieren</translation>
    </message>
</context>
<context>
    <name>FDDocument</name>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(leer)</translation>
    </message>
    <message>
        <source>You don’t have permission to save the file &quot;%1&quot;.</source>
        <translation>Sie haben keine Berechtigung, die Datei „%1“ zu speichern.</translation>
    </message>
    <message>
        <source>To view or change permissions, open the file&apos;s properties in your file manager.</source>
        <translation>Um die Berechtigungen anzusehen oder zu ändern, öffnen Sie die Eigenschaften der Datei in Ihrem Dateimanager.</translation>
    </message>
</context>
<context>
    <name>FDDocumentReloader</name>
    <message>
        <source>The file of &quot;%1&quot; was changed by another program.</source>
        <translation>Die Datei von „%1“ wurde von einem anderen Programm geändert.</translation>
    </message>
    <message>
        <source>Reloading shows the file as it is now and loses your unsaved changes. Keeping your version asks before it replaces the file when you save.</source>
        <translation>Neu laden zeigt die Datei, wie sie jetzt ist, und verwirft Ihre ungespeicherten Änderungen. Behalten Sie Ihre Version, wird beim Speichern gefragt, bevor die Datei ersetzt wird.</translation>
    </message>
    <message>
        <source>Keep My Version</source>
        <translation>Meine Version behalten</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Neu laden</translation>
    </message>
</context>
<context>
    <name>FDError</name>
    <message>
        <source>The operation couldn’t be completed. (%1 error %2.)</source>
        <translation>Der Vorgang konnte nicht abgeschlossen werden. (%1-Fehler %2.)</translation>
    </message>
</context>
<context>
    <name>FDPDFView</name>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Open Link: %1</source>
        <translation>Link öffnen: %1</translation>
    </message>
    <message>
        <source>Copy Link: %1</source>
        <translation>Link kopieren: %1</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Hervorheben</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Unterstreichen</translation>
    </message>
    <message>
        <source>Strikeout</source>
        <translation>Durchstreichen</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Add Note</source>
        <translation>Notiz hinzufügen</translation>
    </message>
    <message>
        <source>Add Text</source>
        <translation>Text hinzufügen</translation>
    </message>
    <message>
        <source>Add Bookmark</source>
        <translation>Lesezeichen hinzufügen</translation>
    </message>
    <message>
        <source>Add Outline Item</source>
        <translation>Eintrag im Inhaltsverzeichnis hinzufügen</translation>
    </message>
    <message>
        <source>Can&apos;t read file: &quot;%1&quot;</source>
        <translation>Datei kann nicht gelesen werden: „%1“</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(leer)</translation>
    </message>
</context>
<context>
    <name>FDThemePicker</name>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Sunset</source>
        <translation type="unfinished">Abendrot</translation>
    </message>
    <message>
        <source>Night</source>
        <translation>Nacht</translation>
    </message>
</context>
<context>
    <name>GlobalService</name>
    <message>
        <source>Reads and annotates PDF documents.

Licence: GNU Affero General Public License, version 3 or later.
Qt %1, MuPDF %2</source>
        <translation>Liest und kommentiert PDF-Dokumente.

Lizenz: GNU Affero General Public License, Version 3 oder später.
Qt %1, MuPDF %2</translation>
    </message>
</context>
<context>
    <name>NewTabContents</name>
    <message>
        <source>New Tab</source>
        <translation>Neuer Tab</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Öffnen…</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Merge</source>
        <translation>Zusammenführen</translation>
    </message>
    <message>
        <source>Convert</source>
        <translation>Umwandeln</translation>
    </message>
    <message>
        <source>Compress</source>
        <translation>Komprimieren</translation>
    </message>
    <message>
        <source>Clear Recents</source>
        <translation>Liste leeren</translation>
    </message>
    <message>
        <source>Recent Documents</source>
        <translation>Zuletzt geöffnete Dokumente</translation>
    </message>
</context>
<context>
    <name>NewTabDropFileArea</name>
    <message>
        <source>Drop PDF here</source>
        <translation>PDF hier ablegen</translation>
    </message>
</context>
<context>
    <name>PDFAnnBar</name>
    <message>
        <source>Select Text</source>
        <translation>Text auswählen</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Hervorheben</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Unterstreichen</translation>
    </message>
    <message>
        <source>Strike Out</source>
        <translation>Durchstreichen</translation>
    </message>
    <message>
        <source>Pen</source>
        <translation>Stift</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Linie</translation>
    </message>
    <message>
        <source>Circle</source>
        <translation>Kreis</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <translation>Rechteck</translation>
    </message>
    <message>
        <source>Text Box</source>
        <translation>Textfeld</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Notiz</translation>
    </message>
    <message>
        <source>Font</source>
        <translation>Schrift</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Line Style</source>
        <translation>Linienstil</translation>
    </message>
</context>
<context>
    <name>PDFAnnotationListModel</name>
    <message>
        <source>Page %1</source>
        <translation>Seite %1</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(leer)</translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation>Anonym</translation>
    </message>
</context>
<context>
    <name>PDFContents</name>
    <message>
        <source>Do you want to save the changes made to the document &quot;%1&quot;?</source>
        <translation>Möchten Sie die Änderungen am Dokument „%1“ speichern?</translation>
    </message>
    <message>
        <source>Your changes will be lost if you don&apos;t save them!</source>
        <translation>Ihre Änderungen gehen verloren, wenn Sie sie nicht speichern!</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Don&apos;t Save</source>
        <translation>Nicht speichern</translation>
    </message>
</context>
<context>
    <name>PDFDestinationEditor</name>
    <message>
        <source>Label:</source>
        <translation>Bezeichnung:</translation>
    </message>
    <message>
        <source>Page:</source>
        <translation>Seite:</translation>
    </message>
    <message>
        <source>of %1</source>
        <translation>von %1</translation>
    </message>
</context>
<context>
    <name>PDFDocument</name>
    <message>
        <source>Only local files can be opened: %1</source>
        <translation>Nur lokale Dateien können geöffnet werden: %1</translation>
    </message>
    <message>
        <source>The file does not exist: %1</source>
        <translation>Die Datei existiert nicht: %1</translation>
    </message>
    <message>
        <source>The file is not a readable PDF document: %1</source>
        <translation>Die Datei ist kein lesbares PDF-Dokument: %1</translation>
    </message>
    <message>
        <source>The data is empty</source>
        <translation>Die Daten sind leer</translation>
    </message>
    <message>
        <source>The data is not a readable PDF document: %1</source>
        <translation>Die Daten sind kein lesbares PDF-Dokument: %1</translation>
    </message>
    <message>
        <source>The document has no content</source>
        <translation>Das Dokument hat keinen Inhalt</translation>
    </message>
</context>
<context>
    <name>PDFEditBar</name>
    <message>
        <source>Rotate Left</source>
        <translation>Nach links drehen</translation>
    </message>
    <message>
        <source>Rotate Right</source>
        <translation>Nach rechts drehen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Extract…</source>
        <translation>Extrahieren…</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
</context>
<context>
    <name>PDFLayoutPicker</name>
    <message>
        <source>Single Page</source>
        <translation>Einzelseite</translation>
    </message>
    <message>
        <source>Two Pages</source>
        <translation>Zwei Seiten</translation>
    </message>
    <message>
        <source>No Split</source>
        <translation>Nicht teilen</translation>
    </message>
    <message>
        <source>Split Side by Side</source>
        <translation>Nebeneinander teilen</translation>
    </message>
    <message>
        <source>Split One Above the Other</source>
        <translation>Übereinander teilen</translation>
    </message>
    <message>
        <source>Swap Documents</source>
        <translation>Dokumente tauschen</translation>
    </message>
    <message>
        <source>Change…</source>
        <translation>Ändern…</translation>
    </message>
    <message>
        <source>Change Document A</source>
        <translation>Dokument A ändern</translation>
    </message>
    <message>
        <source>Change Document B</source>
        <translation>Dokument B ändern</translation>
    </message>
</context>
<context>
    <name>PDFMainToolbar</name>
    <message>
        <source>Sidebar</source>
        <translation>Seitenleiste</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Annotation Tools</source>
        <translation>Anmerkungswerkzeuge</translation>
    </message>
    <message>
        <source>Page Layout</source>
        <translation>Seitenlayout</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>Farbschema</translation>
    </message>
    <message>
        <source>Edit Pages</source>
        <translation>Seiten bearbeiten</translation>
    </message>
</context>
<context>
    <name>PDFPagesEditor</name>
    <message>
        <source>Are you sure you want to delete selected pages?</source>
        <translation>Möchten Sie die ausgewählten Seiten wirklich löschen?</translation>
    </message>
    <message>
        <source>You can&apos;t undo this action!</source>
        <translation>Diese Aktion kann nicht rückgängig gemacht werden!</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Rotate Right</source>
        <translation>Nach rechts drehen</translation>
    </message>
    <message>
        <source>Rotate Left</source>
        <translation>Nach links drehen</translation>
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
        <source>Extract…</source>
        <translation>Extrahieren…</translation>
    </message>
</context>
<context>
    <name>PDFPasswordPanel</name>
    <message>
        <source>Enter the password to open it.</source>
        <translation>Geben Sie das Passwort ein, um es zu öffnen.</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>“%1” is locked.</source>
        <translation>„%1“ ist gesperrt.</translation>
    </message>
    <message>
        <source>The password is not correct. Try again.</source>
        <translation>Das Passwort ist nicht richtig. Versuchen Sie es noch einmal.</translation>
    </message>
</context>
<context>
    <name>PDFPrintJob</name>
    <message>
        <source>The file %1 could not be written: %2</source>
        <translation>Die Datei %1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>Printing needs the CUPS program &quot;lp&quot;, which is not installed (package cups-client).</source>
        <translation>Zum Drucken wird das CUPS-Programm „lp“ gebraucht, das nicht installiert ist (Paket cups-client).</translation>
    </message>
    <message>
        <source>The print queue could not be reached: %1</source>
        <translation>Die Druckwarteschlange ist nicht erreichbar: %1</translation>
    </message>
    <message>
        <source>The print queue did not take the document in time.</source>
        <translation>Die Druckwarteschlange hat das Dokument nicht rechtzeitig angenommen.</translation>
    </message>
    <message>
        <source>The printer did not take the document: %1</source>
        <translation>Der Drucker hat das Dokument nicht angenommen: %1</translation>
    </message>
</context>
<context>
    <name>PDFPrintWriter</name>
    <message>
        <source>The page has nothing to print</source>
        <translation>Auf der Seite ist nichts zu drucken</translation>
    </message>
    <message>
        <source>Page %1 could not be written: %2</source>
        <translation>Seite %1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>There are no pages to print</source>
        <translation>Es gibt keine Seiten zu drucken</translation>
    </message>
    <message>
        <source>The print document could not be written: %1</source>
        <translation>Das Druckdokument konnte nicht geschrieben werden: %1</translation>
    </message>
    <message>
        <source>Out of memory while writing the print document</source>
        <translation>Zu wenig Speicher beim Schreiben des Druckdokuments</translation>
    </message>
</context>
<context>
    <name>PDFSearchResultModel</name>
    <message>
        <source>Page %1</source>
        <translation>Seite %1</translation>
    </message>
</context>
<context>
    <name>PDFSearchSidebarContents</name>
    <message>
        <source>Previous Result</source>
        <translation>Vorheriges Ergebnis</translation>
    </message>
    <message>
        <source>Next Result</source>
        <translation>Nächstes Ergebnis</translation>
    </message>
    <message>
        <source>Stop Searching</source>
        <translation>Suche beenden</translation>
    </message>
    <message>
        <source>Search Results</source>
        <translation>Suchergebnisse</translation>
    </message>
    <message>
        <source>Found: </source>
        <translation>Gefunden: </translation>
    </message>
    <message>
        <source>First view</source>
        <translation>Erste Ansicht</translation>
    </message>
    <message>
        <source>Second view</source>
        <translation>Zweite Ansicht</translation>
    </message>
    <message>
        <source>Searching...</source>
        <translation>Suche läuft...</translation>
    </message>
</context>
<context>
    <name>PDFSidebarAnnContents</name>
    <message>
        <source>Annotations</source>
        <translation>Anmerkungen</translation>
    </message>
    <message>
        <source>Annotations ( %1 )</source>
        <translation>Anmerkungen ( %1 )</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
</context>
<context>
    <name>PDFSidebarBookmarkContents</name>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Bookmarks ( %1 )</source>
        <translation>Lesezeichen ( %1 )</translation>
    </message>
</context>
<context>
    <name>PDFSidebarController</name>
    <message>
        <source>Thumbnails</source>
        <translation>Miniaturen</translation>
    </message>
    <message>
        <source>Table of Contents</source>
        <translation>Inhaltsverzeichnis</translation>
    </message>
    <message>
        <source>Annotations</source>
        <translation>Anmerkungen</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Lesezeichen</translation>
    </message>
    <message>
        <source>View A</source>
        <translation>Ansicht A</translation>
    </message>
    <message>
        <source>View B</source>
        <translation>Ansicht B</translation>
    </message>
</context>
<context>
    <name>PDFSidebarOutlineContents</name>
    <message>
        <source>Add an item for the current place</source>
        <translation>Einen Eintrag für die aktuelle Stelle hinzufügen</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Edit the item</source>
        <translation>Den Eintrag bearbeiten</translation>
    </message>
    <message>
        <source>Delete the selected items</source>
        <translation>Die ausgewählten Einträge löschen</translation>
    </message>
    <message>
        <source>Outline</source>
        <translation type="unfinished">Inhalt</translation>
    </message>
    <message>
        <source>Add Item</source>
        <translation>Eintrag hinzufügen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete Outline Item</source>
        <translation>Eintrag löschen</translation>
    </message>
    <message>
        <source>Delete Outline Items</source>
        <translation>Einträge löschen</translation>
    </message>
</context>
<context>
    <name>PDFSidebarThumbContents</name>
    <message>
        <source>Thumbnails</source>
        <translation>Miniaturen</translation>
    </message>
</context>
<context>
    <name>PDFView</name>
    <message>
        <source>Page %1</source>
        <translation>Seite %1</translation>
    </message>
    <message>
        <source>This document</source>
        <translation>Dieses Dokument</translation>
    </message>
    <message>
        <source>No document</source>
        <translation>Kein Dokument</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Printing failed</source>
        <translation>Drucken fehlgeschlagen</translation>
    </message>
    <message>
        <source>The pages to print are not in the document.</source>
        <translation>Die zu druckenden Seiten sind nicht im Dokument.</translation>
    </message>
    <message>
        <source>Page %1 could not be read.</source>
        <translation>Seite %1 konnte nicht gelesen werden.</translation>
    </message>
</context>
<context>
    <name>PDFViewInfoBarContainer</name>
    <message>
        <source>Change…</source>
        <translation>Ändern…</translation>
    </message>
    <message>
        <source>Open another document in this view</source>
        <translation>Ein anderes Dokument in dieser Ansicht öffnen</translation>
    </message>
</context>
<context>
    <name>PDFWindowController</name>
    <message>
        <source>Show Sidebar</source>
        <translation>Seitenleiste einblenden</translation>
    </message>
    <message>
        <source>Hide Sidebar</source>
        <translation>Seitenleiste ausblenden</translation>
    </message>
    <message>
        <source>Remove Bookmark</source>
        <translation>Lesezeichen entfernen</translation>
    </message>
    <message>
        <source>Bookmark Page</source>
        <translation>Lesezeichen setzen</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
</context>
<context>
    <name>PDFWindowMenus</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>New Tab</source>
        <translation>Neuer Tab</translation>
    </message>
    <message>
        <source>New Document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Öffnen…</translation>
    </message>
    <message>
        <source>Open Recent</source>
        <translation>Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation>Speichern unter…</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>Print…</source>
        <translation>Drucken…</translation>
    </message>
    <message>
        <source>Print Without Annotations…</source>
        <translation>Ohne Anmerkungen drucken…</translation>
    </message>
    <message>
        <source>Close Tab</source>
        <translation>Tab schließen</translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation>Fenster schließen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Liste leeren</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
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
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Find…</source>
        <translation>Suchen…</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Einstellungen…</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>Single Page Continuous</source>
        <translation>Einzelseite fortlaufend</translation>
    </message>
    <message>
        <source>Two Pages Continuous</source>
        <translation>Zwei Seiten fortlaufend</translation>
    </message>
    <message>
        <source>Actual Size</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>Fit Width</source>
        <translation>Breite anpassen</translation>
    </message>
    <message>
        <source>Fit Page</source>
        <translation>Seite anpassen</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Sidebar</source>
        <translation>Seitenleiste</translation>
    </message>
    <message>
        <source>Sidebar Contents</source>
        <translation>Inhalt der Seitenleiste</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Miniaturen</translation>
    </message>
    <message>
        <source>Table of Contents</source>
        <translation>Inhaltsverzeichnis</translation>
    </message>
    <message>
        <source>Annotations</source>
        <translation>Anmerkungen</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Lesezeichen</translation>
    </message>
    <message>
        <source>Split View</source>
        <translation>Geteilte Ansicht</translation>
    </message>
    <message>
        <source>No Split</source>
        <translation>Nicht teilen</translation>
    </message>
    <message>
        <source>Split Horizontally</source>
        <translation>Horizontal teilen</translation>
    </message>
    <message>
        <source>Split Vertically</source>
        <translation>Vertikal teilen</translation>
    </message>
    <message>
        <source>Swap Views</source>
        <translation>Ansichten tauschen</translation>
    </message>
    <message>
        <source>Edit Pages</source>
        <translation>Seiten bearbeiten</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Neu laden</translation>
    </message>
    <message>
        <source>Full Screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>Farbschema</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Sunset</source>
        <translation type="unfinished">Abendrot</translation>
    </message>
    <message>
        <source>Night</source>
        <translation>Nacht</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Werkzeuge</translation>
    </message>
    <message>
        <source>Select Text</source>
        <translation>Text auswählen</translation>
    </message>
    <message>
        <source>Select Area</source>
        <translation>Bereich auswählen</translation>
    </message>
    <message>
        <source>Hand</source>
        <translation>Hand</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Eraser</source>
        <translation>Radierer</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Hervorheben</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Unterstreichen</translation>
    </message>
    <message>
        <source>Strike Out</source>
        <translation>Durchstreichen</translation>
    </message>
    <message>
        <source>Text Box</source>
        <translation>Textfeld</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Notiz</translation>
    </message>
    <message>
        <source>Circle</source>
        <translation>Kreis</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <translation>Rechteck</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Linie</translation>
    </message>
    <message>
        <source>Pen</source>
        <translation>Stift</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>&amp;Gehe zu</translation>
    </message>
    <message>
        <source>Previous Page</source>
        <translation>Vorherige Seite</translation>
    </message>
    <message>
        <source>Next Page</source>
        <translation>Nächste Seite</translation>
    </message>
    <message>
        <source>First Page</source>
        <translation>Erste Seite</translation>
    </message>
    <message>
        <source>Last Page</source>
        <translation>Letzte Seite</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Vorwärts</translation>
    </message>
    <message>
        <source>Go to Page…</source>
        <translation>Gehe zu Seite…</translation>
    </message>
    <message>
        <source>Bookmark Page</source>
        <translation>Lesezeichen setzen</translation>
    </message>
    <message>
        <source>Add Outline Item</source>
        <translation>Eintrag im Inhaltsverzeichnis hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>Select Next Tab</source>
        <translation>Nächsten Tab auswählen</translation>
    </message>
    <message>
        <source>Select Previous Tab</source>
        <translation>Vorherigen Tab auswählen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Send Feedback…</source>
        <translation>Rückmeldung senden…</translation>
    </message>
    <message>
        <source>About Folidoc</source>
        <translation>Über Folidoc</translation>
    </message>
</context>
<context>
    <name>PDFZoomPicker</name>
    <message>
        <source>Zoom Out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Fit Width</source>
        <translation>Breite anpassen</translation>
    </message>
    <message>
        <source>Fit Page</source>
        <translation>Seite anpassen</translation>
    </message>
    <message>
        <source>%1%</source>
        <translation>%1&#xa0;%</translation>
    </message>
    <message>
        <source>FIT</source>
        <translation type="unfinished">ANPASSEN</translation>
    </message>
    <message>
        <source>WIDTH</source>
        <translation>BREITE</translation>
    </message>
    <message>
        <source>PAGE</source>
        <translation>SEITE</translation>
    </message>
</context>
<context>
    <name>PopoverAnnTextEditor</name>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
</context>
<context>
    <name>PrefWindowController</name>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Advanced</source>
        <translation>Erweitert</translation>
    </message>
    <message>
        <source>Show a start tab</source>
        <translation>Einen Start-Tab zeigen</translation>
    </message>
    <message>
        <source>Reopen the last windows</source>
        <translation>Die letzten Fenster wieder öffnen</translation>
    </message>
    <message>
        <source>Actual size</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>Fit width</source>
        <translation>Breite anpassen</translation>
    </message>
    <message>
        <source>Fit page</source>
        <translation>Seite anpassen</translation>
    </message>
    <message>
        <source>Reopen documents where I left off</source>
        <translation>Dokumente dort öffnen, wo ich aufgehört habe</translation>
    </message>
    <message>
        <source>Show the sidebar also without an outline</source>
        <translation>Die Seitenleiste auch ohne Inhaltsverzeichnis zeigen</translation>
    </message>
    <message>
        <source>Author name:</source>
        <translation>Name des Autors:</translation>
    </message>
    <message>
        <source>Written into the annotations you add.</source>
        <translation>Wird in die Anmerkungen geschrieben, die Sie hinzufügen.</translation>
    </message>
    <message>
        <source>On launch:</source>
        <translation>Beim Start:</translation>
    </message>
    <message>
        <source>Zoom of new documents:</source>
        <translation>Zoom neuer Dokumente:</translation>
    </message>
    <message>
        <source>Theme:</source>
        <translation>Farbschema:</translation>
    </message>
    <message>
        <source>Reading:</source>
        <translation>Lesen:</translation>
    </message>
    <message>
        <source>Ask before saving a changed document on closing</source>
        <translation>Vor dem Speichern eines geänderten Dokuments beim Schließen fragen</translation>
    </message>
    <message>
        <source>Keep a list of recent documents</source>
        <translation>Eine Liste der zuletzt geöffneten Dokumente führen</translation>
    </message>
    <message>
        <source>Start with the theme chosen last</source>
        <translation>Mit dem zuletzt gewählten Farbschema starten</translation>
    </message>
    <message>
        <source>Closing:</source>
        <translation>Schließen:</translation>
    </message>
    <message>
        <source>Otherwise changes to a named document are saved silently.</source>
        <translation>Sonst werden Änderungen an einem Dokument mit Namen ohne Nachfrage gespeichert.</translation>
    </message>
    <message>
        <source>History:</source>
        <translation>Verlauf:</translation>
    </message>
    <message>
        <source>Appearance:</source>
        <translation>Erscheinungsbild:</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>PDF documents (%1)</source>
        <translation>PDF-Dokumente (%1)</translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>Farben</translation>
    </message>
</context>
<context>
    <name>SaveReport</name>
    <message>
        <source>The document “%1” could not be saved. %2</source>
        <translation>Das Dokument „%1“ konnte nicht gespeichert werden. %2</translation>
    </message>
    <message>
        <source> A copy of the unsaved document is kept at “%1”.</source>
        <translation> Eine Kopie des ungespeicherten Dokuments liegt unter „%1“.</translation>
    </message>
    <message>
        <source>“%1” was changed by another program.</source>
        <translation>„%1“ wurde von einem anderen Programm geändert.</translation>
    </message>
    <message>
        <source>Your edits have not been saved over it. Save them to another file, overwrite the other program’s changes, or reload the file and drop your edits.</source>
        <translation>Ihre Änderungen wurden nicht darüber gespeichert. Speichern Sie sie in eine andere Datei, überschreiben Sie die Änderungen des anderen Programms oder laden Sie die Datei neu und verwerfen Sie Ihre Änderungen.</translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation>Speichern unter…</translation>
    </message>
    <message>
        <source>Overwrite</source>
        <translation>Überschreiben</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Neu laden</translation>
    </message>
</context>
<context>
    <name>TabStripView</name>
    <message>
        <source>New Tab</source>
        <translation>Neuer Tab</translation>
    </message>
    <message>
        <source>Close Tab</source>
        <translation>Tab schließen</translation>
    </message>
    <message>
        <source>Tabs</source>
        <translation>Tabs</translation>
    </message>
</context>
<context>
    <name>TabWindowController</name>
    <message>
        <source>Select Next Tab</source>
        <translation>Nächsten Tab auswählen</translation>
    </message>
    <message>
        <source>Select Previous Tab</source>
        <translation>Vorherigen Tab auswählen</translation>
    </message>
</context>
<context>
    <name>TaskExcutor</name>
    <message>
        <source>The saved bytes are not a readable PDF (%1).</source>
        <translation>Die gespeicherten Daten sind kein lesbares PDF (%1).</translation>
    </message>
    <message>
        <source>The document has no file.</source>
        <translation>Das Dokument hat keine Datei.</translation>
    </message>
    <message>
        <source>The document could not be made into bytes (%1).</source>
        <translation>Das Dokument konnte nicht in Daten umgewandelt werden (%1).</translation>
    </message>
</context>
<context>
    <name>UndoManager</name>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Undo %1</source>
        <translation type="unfinished">%1 rückgängig machen</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Redo %1</source>
        <translation type="unfinished">%1 wiederholen</translation>
    </message>
</context>
<context>
    <name>XPDFView</name>
    <message>
        <source>Add Note</source>
        <translation>Notiz hinzufügen</translation>
    </message>
    <message>
        <source>Delete Annotation</source>
        <translation>Anmerkung löschen</translation>
    </message>
    <message>
        <source>Edit Note</source>
        <translation>Notiz bearbeiten</translation>
    </message>
    <message>
        <source>Rotate Page</source>
        <translation>Seite drehen</translation>
    </message>
</context>
</TS>
