<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR">
<context>
    <name>Alert</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>AnnColorPicker</name>
    <message>
        <source>More Colors…</source>
        <translation>Autres couleurs…</translation>
    </message>
    <message>
        <source>STROKE</source>
        <translation>CONTOUR</translation>
    </message>
    <message>
        <source>FILL</source>
        <translation type="unfinished">REMPLISS.</translation>
    </message>
    <message>
        <source>TEXT</source>
        <translation>TEXTE</translation>
    </message>
    <message>
        <source>BACK</source>
        <translation>FOND</translation>
    </message>
    <message>
        <source>COLOR</source>
        <translation>COULEUR</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Transparent</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rouge</translation>
    </message>
    <message>
        <source>Orange</source>
        <translation>Orange</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Jaune</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Vert</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Bleu</translation>
    </message>
    <message>
        <source>Blue2</source>
        <translation type="unfinished">Bleu 2</translation>
    </message>
    <message>
        <source>Pink</source>
        <translation>Rose</translation>
    </message>
    <message>
        <source>Puerple</source>
        <translation type="unfinished">Violet</translation>
    </message>
    <message>
        <source>Gray</source>
        <translation>Gris</translation>
    </message>
    <message>
        <source>Black</source>
        <translation>Noir</translation>
    </message>
</context>
<context>
    <name>AnnFontPicker</name>
    <message>
        <source>Font</source>
        <translation>Police</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Par défaut</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>Famille</translation>
    </message>
    <message>
        <source>Regular</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Gras</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Italique</translation>
    </message>
    <message>
        <source>Bold Italic</source>
        <translation>Gras italique</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
</context>
<context>
    <name>AnnLineAspectPicker</name>
    <message>
        <source>Width</source>
        <translation>Épaisseur</translation>
    </message>
    <message>
        <source>Style</source>
        <translation>Style</translation>
    </message>
    <message>
        <source>Arrows</source>
        <translation>Flèches</translation>
    </message>
    <message>
        <source>No Arrows</source>
        <translation>Sans flèches</translation>
    </message>
    <message>
        <source>Arrows at Both Ends</source>
        <translation>Flèches aux deux extrémités</translation>
    </message>
    <message>
        <source>Arrow at End</source>
        <translation>Flèche à la fin</translation>
    </message>
    <message>
        <source>Arrow at Start</source>
        <translation>Flèche au début</translation>
    </message>
    <message>
        <source>Width %1</source>
        <translation>Épaisseur %1</translation>
    </message>
    <message>
        <source>Solid</source>
        <translation>Continu</translation>
    </message>
    <message>
        <source>Dashed</source>
        <translation>Tirets</translation>
    </message>
</context>
<context>
    <name>AtomicFileWriter</name>
    <message>
        <source>Cannot read the link “%1”.</source>
        <translation>Impossible de lire le lien «&#xa0;%1&#xa0;».</translation>
    </message>
    <message>
        <source>Too many levels of symbolic links at “%1”.</source>
        <translation>Trop de niveaux de liens symboliques pour «&#xa0;%1&#xa0;».</translation>
    </message>
    <message>
        <source>Writing failed</source>
        <translation>Échec de l’écriture</translation>
    </message>
    <message>
        <source>Reading the file&apos;s attributes failed</source>
        <translation>Échec de la lecture des attributs du fichier</translation>
    </message>
    <message>
        <source>Reading the attribute %1 failed</source>
        <translation>Échec de la lecture de l’attribut %1</translation>
    </message>
    <message>
        <source>Copying the attribute %1 failed</source>
        <translation>Échec de la copie de l’attribut %1</translation>
    </message>
    <message>
        <source>Reading the file&apos;s permissions failed</source>
        <translation>Échec de la lecture des permissions du fichier</translation>
    </message>
    <message>
        <source>Setting permissions failed</source>
        <translation>Échec de la modification des permissions</translation>
    </message>
    <message>
        <source>“%1” is not a regular file.</source>
        <translation>«&#xa0;%1&#xa0;» n’est pas un fichier ordinaire.</translation>
    </message>
    <message>
        <source>Cannot create a file in “%1”</source>
        <translation>Impossible de créer un fichier dans «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Syncing the file failed</source>
        <translation>Échec de la synchronisation du fichier</translation>
    </message>
    <message>
        <source>Closing the file failed</source>
        <translation>Échec de la fermeture du fichier</translation>
    </message>
    <message>
        <source>Cannot replace “%1”</source>
        <translation>Impossible de remplacer «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Syncing the folder %1 failed</source>
        <translation>Échec de la synchronisation du dossier %1</translation>
    </message>
</context>
<context>
    <name>CompressContents</name>
    <message>
        <source>Compress</source>
        <translation>Compresser</translation>
    </message>
</context>
<context>
    <name>FDDocument</name>
    <message>
        <source>Untitled</source>
        <translation>Sans titre</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(vide)</translation>
    </message>
    <message>
        <source>You don’t have permission to save the file &quot;%1&quot;.</source>
        <translation>Vous n’avez pas l’autorisation d’enregistrer le fichier «&#xa0;%1&#xa0;».</translation>
    </message>
    <message>
        <source>To view or change permissions, open the file&apos;s properties in your file manager.</source>
        <translation>Pour voir ou modifier les permissions, ouvrez les propriétés du fichier dans votre gestionnaire de fichiers.</translation>
    </message>
</context>
<context>
    <name>FDDocumentReloader</name>
    <message>
        <source>The file of &quot;%1&quot; was changed by another program.</source>
        <translation>Le fichier de «&#xa0;%1&#xa0;» a été modifié par un autre programme.</translation>
    </message>
    <message>
        <source>Reloading shows the file as it is now and loses your unsaved changes. Keeping your version asks before it replaces the file when you save.</source>
        <translation>Recharger montre le fichier tel qu’il est maintenant et perd vos modifications non enregistrées. Si vous gardez votre version, une confirmation vous sera demandée avant de remplacer le fichier à l’enregistrement.</translation>
    </message>
    <message>
        <source>Keep My Version</source>
        <translation>Garder ma version</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Recharger</translation>
    </message>
</context>
<context>
    <name>FDError</name>
    <message>
        <source>The operation couldn’t be completed. (%1 error %2.)</source>
        <translation>L’opération n’a pas pu aboutir. (erreur %1 %2.)</translation>
    </message>
</context>
<context>
    <name>FDPDFView</name>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Open Link: %1</source>
        <translation>Ouvrir le lien&#xa0;: %1</translation>
    </message>
    <message>
        <source>Copy Link: %1</source>
        <translation>Copier le lien&#xa0;: %1</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Surligner</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Souligner</translation>
    </message>
    <message>
        <source>Strikeout</source>
        <translation>Barrer</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Coller</translation>
    </message>
    <message>
        <source>Add Note</source>
        <translation>Ajouter une note</translation>
    </message>
    <message>
        <source>Add Text</source>
        <translation>Ajouter du texte</translation>
    </message>
    <message>
        <source>Add Bookmark</source>
        <translation>Ajouter un signet</translation>
    </message>
    <message>
        <source>Add Outline Item</source>
        <translation>Ajouter une entrée à la table des matières</translation>
    </message>
    <message>
        <source>Can&apos;t read file: &quot;%1&quot;</source>
        <translation>Impossible de lire le fichier&#xa0;: «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(vide)</translation>
    </message>
</context>
<context>
    <name>FDThemePicker</name>
    <message>
        <source>System</source>
        <translation>Système</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rouge</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Vert</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Bleu</translation>
    </message>
    <message>
        <source>Sunset</source>
        <translation type="unfinished">Crépuscule</translation>
    </message>
    <message>
        <source>Night</source>
        <translation>Nuit</translation>
    </message>
</context>
<context>
    <name>GlobalService</name>
    <message>
        <source>Reads and annotates PDF documents.

Licence: GNU Affero General Public License, version 3 or later.
Qt %1, MuPDF %2</source>
        <translation>Lit et annote les documents PDF.

Licence&#xa0;: GNU Affero General Public License, version 3 ou ultérieure.
Qt %1, MuPDF %2</translation>
    </message>
</context>
<context>
    <name>NewTabContents</name>
    <message>
        <source>New Tab</source>
        <translation>Nouvel onglet</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Ouvrir…</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Nouveau</translation>
    </message>
    <message>
        <source>Merge</source>
        <translation>Fusionner</translation>
    </message>
    <message>
        <source>Convert</source>
        <translation>Convertir</translation>
    </message>
    <message>
        <source>Compress</source>
        <translation>Compresser</translation>
    </message>
    <message>
        <source>Clear Recents</source>
        <translation>Effacer la liste</translation>
    </message>
    <message>
        <source>Recent Documents</source>
        <translation>Documents récents</translation>
    </message>
</context>
<context>
    <name>NewTabDropFileArea</name>
    <message>
        <source>Drop PDF here</source>
        <translation>Déposez un PDF ici</translation>
    </message>
</context>
<context>
    <name>PDFAnnBar</name>
    <message>
        <source>Select Text</source>
        <translation>Sélectionner du texte</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Surligner</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Souligner</translation>
    </message>
    <message>
        <source>Strike Out</source>
        <translation>Barrer</translation>
    </message>
    <message>
        <source>Pen</source>
        <translation>Stylo</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Ligne</translation>
    </message>
    <message>
        <source>Circle</source>
        <translation>Cercle</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <translation>Rectangle</translation>
    </message>
    <message>
        <source>Text Box</source>
        <translation>Zone de texte</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Note</translation>
    </message>
    <message>
        <source>Font</source>
        <translation>Police</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Couleur</translation>
    </message>
    <message>
        <source>Line Style</source>
        <translation>Style de ligne</translation>
    </message>
</context>
<context>
    <name>PDFAnnotationListModel</name>
    <message>
        <source>Page %1</source>
        <translation>Page %1</translation>
    </message>
    <message>
        <source>(empty)</source>
        <translation>(vide)</translation>
    </message>
    <message>
        <source>Anonymous</source>
        <translation>Anonyme</translation>
    </message>
</context>
<context>
    <name>PDFContents</name>
    <message>
        <source>Do you want to save the changes made to the document &quot;%1&quot;?</source>
        <translation>Voulez-vous enregistrer les modifications apportées au document «&#xa0;%1&#xa0;»&#xa0;?</translation>
    </message>
    <message>
        <source>Your changes will be lost if you don&apos;t save them!</source>
        <translation>Vos modifications seront perdues si vous ne les enregistrez pas&#xa0;!</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Enregistrer</translation>
    </message>
    <message>
        <source>Don&apos;t Save</source>
        <translation>Ne pas enregistrer</translation>
    </message>
</context>
<context>
    <name>PDFDestinationEditor</name>
    <message>
        <source>Label:</source>
        <translation>Libellé&#xa0;:</translation>
    </message>
    <message>
        <source>Page:</source>
        <translation>Page&#xa0;:</translation>
    </message>
    <message>
        <source>of %1</source>
        <translation>sur %1</translation>
    </message>
</context>
<context>
    <name>PDFDocument</name>
    <message>
        <source>Only local files can be opened: %1</source>
        <translation>Seuls les fichiers locaux peuvent être ouverts&#xa0;: %1</translation>
    </message>
    <message>
        <source>The file does not exist: %1</source>
        <translation>Le fichier n’existe pas&#xa0;: %1</translation>
    </message>
    <message>
        <source>The file is not a readable PDF document: %1</source>
        <translation>Le fichier n’est pas un document PDF lisible&#xa0;: %1</translation>
    </message>
    <message>
        <source>The data is empty</source>
        <translation>Les données sont vides</translation>
    </message>
    <message>
        <source>The data is not a readable PDF document: %1</source>
        <translation>Les données ne sont pas un document PDF lisible&#xa0;: %1</translation>
    </message>
    <message>
        <source>The document has no content</source>
        <translation>Le document n’a pas de contenu</translation>
    </message>
</context>
<context>
    <name>PDFEditBar</name>
    <message>
        <source>Rotate Left</source>
        <translation>Pivoter à gauche</translation>
    </message>
    <message>
        <source>Rotate Right</source>
        <translation>Pivoter à droite</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Extract…</source>
        <translation>Extraire…</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Terminé</translation>
    </message>
</context>
<context>
    <name>PDFLayoutPicker</name>
    <message>
        <source>Single Page</source>
        <translation>Une page</translation>
    </message>
    <message>
        <source>Two Pages</source>
        <translation>Deux pages</translation>
    </message>
    <message>
        <source>No Split</source>
        <translation>Sans partage</translation>
    </message>
    <message>
        <source>Split Side by Side</source>
        <translation>Partager côte à côte</translation>
    </message>
    <message>
        <source>Split One Above the Other</source>
        <translation>Partager l’une au-dessus de l’autre</translation>
    </message>
    <message>
        <source>Swap Documents</source>
        <translation>Échanger les documents</translation>
    </message>
    <message>
        <source>Change…</source>
        <translation>Changer…</translation>
    </message>
    <message>
        <source>Change Document A</source>
        <translation>Changer le document A</translation>
    </message>
    <message>
        <source>Change Document B</source>
        <translation>Changer le document B</translation>
    </message>
</context>
<context>
    <name>PDFMainToolbar</name>
    <message>
        <source>Sidebar</source>
        <translation>Barre latérale</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Rechercher</translation>
    </message>
    <message>
        <source>Annotation Tools</source>
        <translation>Outils d’annotation</translation>
    </message>
    <message>
        <source>Page Layout</source>
        <translation>Disposition des pages</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>Thème</translation>
    </message>
    <message>
        <source>Edit Pages</source>
        <translation>Modifier les pages</translation>
    </message>
</context>
<context>
    <name>PDFPagesEditor</name>
    <message>
        <source>Are you sure you want to delete selected pages?</source>
        <translation>Voulez-vous vraiment supprimer les pages sélectionnées&#xa0;?</translation>
    </message>
    <message>
        <source>You can&apos;t undo this action!</source>
        <translation>Cette action ne peut pas être annulée&#xa0;!</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Rotate Right</source>
        <translation>Pivoter à droite</translation>
    </message>
    <message>
        <source>Rotate Left</source>
        <translation>Pivoter à gauche</translation>
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
        <source>Extract…</source>
        <translation>Extraire…</translation>
    </message>
</context>
<context>
    <name>PDFPasswordPanel</name>
    <message>
        <source>Enter the password to open it.</source>
        <translation>Saisissez le mot de passe pour l’ouvrir.</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>“%1” is locked.</source>
        <translation>«&#xa0;%1&#xa0;» est verrouillé.</translation>
    </message>
    <message>
        <source>The password is not correct. Try again.</source>
        <translation>Le mot de passe est incorrect. Réessayez.</translation>
    </message>
</context>
<context>
    <name>PDFPrintJob</name>
    <message>
        <source>The file %1 could not be written: %2</source>
        <translation>Le fichier %1 n’a pas pu être écrit&#xa0;: %2</translation>
    </message>
    <message>
        <source>Printing needs the CUPS program &quot;lp&quot;, which is not installed (package cups-client).</source>
        <translation>L’impression a besoin du programme CUPS «&#xa0;lp&#xa0;», qui n’est pas installé (paquet cups-client).</translation>
    </message>
    <message>
        <source>The print queue could not be reached: %1</source>
        <translation>La file d’impression est injoignable&#xa0;: %1</translation>
    </message>
    <message>
        <source>The print queue did not take the document in time.</source>
        <translation>La file d’impression n’a pas pris le document à temps.</translation>
    </message>
    <message>
        <source>The printer did not take the document: %1</source>
        <translation>L’imprimante n’a pas pris le document&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>PDFPrintWriter</name>
    <message>
        <source>The page has nothing to print</source>
        <translation>La page n’a rien à imprimer</translation>
    </message>
    <message>
        <source>Page %1 could not be written: %2</source>
        <translation>La page %1 n’a pas pu être écrite&#xa0;: %2</translation>
    </message>
    <message>
        <source>There are no pages to print</source>
        <translation>Il n’y a aucune page à imprimer</translation>
    </message>
    <message>
        <source>The print document could not be written: %1</source>
        <translation>Le document d’impression n’a pas pu être écrit&#xa0;: %1</translation>
    </message>
    <message>
        <source>Out of memory while writing the print document</source>
        <translation>Mémoire insuffisante pour écrire le document d’impression</translation>
    </message>
</context>
<context>
    <name>PDFSearchResultModel</name>
    <message>
        <source>Page %1</source>
        <translation>Page %1</translation>
    </message>
</context>
<context>
    <name>PDFSearchSidebarContents</name>
    <message>
        <source>Previous Result</source>
        <translation>Résultat précédent</translation>
    </message>
    <message>
        <source>Next Result</source>
        <translation>Résultat suivant</translation>
    </message>
    <message>
        <source>Stop Searching</source>
        <translation>Arrêter la recherche</translation>
    </message>
    <message>
        <source>Search Results</source>
        <translation>Résultats de la recherche</translation>
    </message>
    <message>
        <source>Found: </source>
        <translation>Trouvés&#xa0;: </translation>
    </message>
    <message>
        <source>First view</source>
        <translation>Première vue</translation>
    </message>
    <message>
        <source>Second view</source>
        <translation>Seconde vue</translation>
    </message>
    <message>
        <source>Searching...</source>
        <translation>Recherche...</translation>
    </message>
</context>
<context>
    <name>PDFSidebarAnnContents</name>
    <message>
        <source>Annotations</source>
        <translation>Annotations</translation>
    </message>
    <message>
        <source>Annotations ( %1 )</source>
        <translation>Annotations ( %1 )</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Copier</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
</context>
<context>
    <name>PDFSidebarBookmarkContents</name>
    <message>
        <source>Edit</source>
        <translation>Modifier</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Bookmarks ( %1 )</source>
        <translation>Signets ( %1 )</translation>
    </message>
</context>
<context>
    <name>PDFSidebarController</name>
    <message>
        <source>Thumbnails</source>
        <translation>Vignettes</translation>
    </message>
    <message>
        <source>Table of Contents</source>
        <translation>Table des matières</translation>
    </message>
    <message>
        <source>Annotations</source>
        <translation>Annotations</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Signets</translation>
    </message>
    <message>
        <source>View A</source>
        <translation>Vue A</translation>
    </message>
    <message>
        <source>View B</source>
        <translation>Vue B</translation>
    </message>
</context>
<context>
    <name>PDFSidebarOutlineContents</name>
    <message>
        <source>Add an item for the current place</source>
        <translation>Ajouter une entrée pour l’endroit actuel</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Modifier</translation>
    </message>
    <message>
        <source>Edit the item</source>
        <translation>Modifier l’entrée</translation>
    </message>
    <message>
        <source>Delete the selected items</source>
        <translation>Supprimer les entrées sélectionnées</translation>
    </message>
    <message>
        <source>Outline</source>
        <translation type="unfinished">Sommaire</translation>
    </message>
    <message>
        <source>Add Item</source>
        <translation>Ajouter une entrée</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Delete Outline Item</source>
        <translation>Supprimer l’entrée</translation>
    </message>
    <message>
        <source>Delete Outline Items</source>
        <translation>Supprimer les entrées</translation>
    </message>
</context>
<context>
    <name>PDFSidebarThumbContents</name>
    <message>
        <source>Thumbnails</source>
        <translation>Vignettes</translation>
    </message>
</context>
<context>
    <name>PDFView</name>
    <message>
        <source>Page %1</source>
        <translation>Page %1</translation>
    </message>
    <message>
        <source>This document</source>
        <translation>Ce document</translation>
    </message>
    <message>
        <source>No document</source>
        <translation>Aucun document</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Sans titre</translation>
    </message>
    <message>
        <source>Printing failed</source>
        <translation>L’impression a échoué</translation>
    </message>
    <message>
        <source>The pages to print are not in the document.</source>
        <translation>Les pages à imprimer ne sont pas dans le document.</translation>
    </message>
    <message>
        <source>Page %1 could not be read.</source>
        <translation>La page %1 n’a pas pu être lue.</translation>
    </message>
</context>
<context>
    <name>PDFViewInfoBarContainer</name>
    <message>
        <source>Change…</source>
        <translation>Changer…</translation>
    </message>
    <message>
        <source>Open another document in this view</source>
        <translation>Ouvrir un autre document dans cette vue</translation>
    </message>
</context>
<context>
    <name>PDFWindowController</name>
    <message>
        <source>Show Sidebar</source>
        <translation>Afficher la barre latérale</translation>
    </message>
    <message>
        <source>Hide Sidebar</source>
        <translation>Masquer la barre latérale</translation>
    </message>
    <message>
        <source>Remove Bookmark</source>
        <translation>Retirer le signet</translation>
    </message>
    <message>
        <source>Bookmark Page</source>
        <translation>Marquer la page d’un signet</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rétablir</translation>
    </message>
</context>
<context>
    <name>PDFWindowMenus</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>New Tab</source>
        <translation>Nouvel onglet</translation>
    </message>
    <message>
        <source>New Document</source>
        <translation>Nouveau document</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Ouvrir…</translation>
    </message>
    <message>
        <source>Open Recent</source>
        <translation>Documents récents</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Enregistrer</translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation>Enregistrer sous…</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>Afficher dans le gestionnaire de fichiers</translation>
    </message>
    <message>
        <source>Print…</source>
        <translation>Imprimer…</translation>
    </message>
    <message>
        <source>Print Without Annotations…</source>
        <translation>Imprimer sans les annotations…</translation>
    </message>
    <message>
        <source>Close Tab</source>
        <translation>Fermer l’onglet</translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation>Fermer la fenêtre</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Effacer la liste</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Édition</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rétablir</translation>
    </message>
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
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Tout sélectionner</translation>
    </message>
    <message>
        <source>Find…</source>
        <translation>Rechercher…</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Préférences…</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Affichage</translation>
    </message>
    <message>
        <source>Single Page Continuous</source>
        <translation>Une page en continu</translation>
    </message>
    <message>
        <source>Two Pages Continuous</source>
        <translation>Deux pages en continu</translation>
    </message>
    <message>
        <source>Actual Size</source>
        <translation>Taille réelle</translation>
    </message>
    <message>
        <source>Fit Width</source>
        <translation>Ajuster à la largeur</translation>
    </message>
    <message>
        <source>Fit Page</source>
        <translation>Ajuster à la page</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Zoom avant</translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation>Zoom arrière</translation>
    </message>
    <message>
        <source>Sidebar</source>
        <translation>Barre latérale</translation>
    </message>
    <message>
        <source>Sidebar Contents</source>
        <translation>Contenu de la barre latérale</translation>
    </message>
    <message>
        <source>Thumbnails</source>
        <translation>Vignettes</translation>
    </message>
    <message>
        <source>Table of Contents</source>
        <translation>Table des matières</translation>
    </message>
    <message>
        <source>Annotations</source>
        <translation>Annotations</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Signets</translation>
    </message>
    <message>
        <source>Split View</source>
        <translation>Vue partagée</translation>
    </message>
    <message>
        <source>No Split</source>
        <translation>Sans partage</translation>
    </message>
    <message>
        <source>Split Horizontally</source>
        <translation>Partager horizontalement</translation>
    </message>
    <message>
        <source>Split Vertically</source>
        <translation>Partager verticalement</translation>
    </message>
    <message>
        <source>Swap Views</source>
        <translation>Échanger les vues</translation>
    </message>
    <message>
        <source>Edit Pages</source>
        <translation>Modifier les pages</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Recharger</translation>
    </message>
    <message>
        <source>Full Screen</source>
        <translation>Plein écran</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>Thème</translation>
    </message>
    <message>
        <source>System</source>
        <translation>Système</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rouge</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Vert</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Bleu</translation>
    </message>
    <message>
        <source>Sunset</source>
        <translation type="unfinished">Crépuscule</translation>
    </message>
    <message>
        <source>Night</source>
        <translation>Nuit</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Outils</translation>
    </message>
    <message>
        <source>Select Text</source>
        <translation>Sélectionner du texte</translation>
    </message>
    <message>
        <source>Select Area</source>
        <translation>Sélectionner une zone</translation>
    </message>
    <message>
        <source>Hand</source>
        <translation>Main</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Eraser</source>
        <translation>Gomme</translation>
    </message>
    <message>
        <source>Highlight</source>
        <translation>Surligner</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Souligner</translation>
    </message>
    <message>
        <source>Strike Out</source>
        <translation>Barrer</translation>
    </message>
    <message>
        <source>Text Box</source>
        <translation>Zone de texte</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Note</translation>
    </message>
    <message>
        <source>Circle</source>
        <translation>Cercle</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <translation>Rectangle</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Ligne</translation>
    </message>
    <message>
        <source>Pen</source>
        <translation>Stylo</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>A&amp;ller</translation>
    </message>
    <message>
        <source>Previous Page</source>
        <translation>Page précédente</translation>
    </message>
    <message>
        <source>Next Page</source>
        <translation>Page suivante</translation>
    </message>
    <message>
        <source>First Page</source>
        <translation>Première page</translation>
    </message>
    <message>
        <source>Last Page</source>
        <translation>Dernière page</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Précédent</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Suivant</translation>
    </message>
    <message>
        <source>Go to Page…</source>
        <translation>Aller à la page…</translation>
    </message>
    <message>
        <source>Bookmark Page</source>
        <translation>Marquer la page d’un signet</translation>
    </message>
    <message>
        <source>Add Outline Item</source>
        <translation>Ajouter une entrée à la table des matières</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>Fe&amp;nêtre</translation>
    </message>
    <message>
        <source>Select Next Tab</source>
        <translation>Sélectionner l’onglet suivant</translation>
    </message>
    <message>
        <source>Select Previous Tab</source>
        <translation>Sélectionner l’onglet précédent</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>Ai&amp;de</translation>
    </message>
    <message>
        <source>Send Feedback…</source>
        <translation>Envoyer un commentaire…</translation>
    </message>
    <message>
        <source>About Folidoc</source>
        <translation>À propos de Folidoc</translation>
    </message>
</context>
<context>
    <name>PDFZoomPicker</name>
    <message>
        <source>Zoom Out</source>
        <translation>Zoom arrière</translation>
    </message>
    <message>
        <source>Zoom In</source>
        <translation>Zoom avant</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Fit Width</source>
        <translation>Ajuster à la largeur</translation>
    </message>
    <message>
        <source>Fit Page</source>
        <translation>Ajuster à la page</translation>
    </message>
    <message>
        <source>%1%</source>
        <translation>%1&#x202f;%</translation>
    </message>
    <message>
        <source>FIT</source>
        <translation>AJUSTER</translation>
    </message>
    <message>
        <source>WIDTH</source>
        <translation>LARGEUR</translation>
    </message>
    <message>
        <source>PAGE</source>
        <translation>PAGE</translation>
    </message>
</context>
<context>
    <name>PopoverAnnTextEditor</name>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
</context>
<context>
    <name>PrefWindowController</name>
    <message>
        <source>Preferences</source>
        <translation>Préférences</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Général</translation>
    </message>
    <message>
        <source>Advanced</source>
        <translation>Avancé</translation>
    </message>
    <message>
        <source>Show a start tab</source>
        <translation>Afficher un onglet de démarrage</translation>
    </message>
    <message>
        <source>Reopen the last windows</source>
        <translation>Rouvrir les dernières fenêtres</translation>
    </message>
    <message>
        <source>Actual size</source>
        <translation>Taille réelle</translation>
    </message>
    <message>
        <source>Fit width</source>
        <translation>Ajuster à la largeur</translation>
    </message>
    <message>
        <source>Fit page</source>
        <translation>Ajuster à la page</translation>
    </message>
    <message>
        <source>Reopen documents where I left off</source>
        <translation>Rouvrir les documents là où je les ai laissés</translation>
    </message>
    <message>
        <source>Show the sidebar also without an outline</source>
        <translation>Afficher la barre latérale même sans table des matières</translation>
    </message>
    <message>
        <source>Author name:</source>
        <translation>Nom de l’auteur&#xa0;:</translation>
    </message>
    <message>
        <source>Written into the annotations you add.</source>
        <translation>Inscrit dans les annotations que vous ajoutez.</translation>
    </message>
    <message>
        <source>On launch:</source>
        <translation>Au lancement&#xa0;:</translation>
    </message>
    <message>
        <source>Zoom of new documents:</source>
        <translation>Zoom des nouveaux documents&#xa0;:</translation>
    </message>
    <message>
        <source>Theme:</source>
        <translation>Thème&#xa0;:</translation>
    </message>
    <message>
        <source>Reading:</source>
        <translation>Lecture&#xa0;:</translation>
    </message>
    <message>
        <source>Ask before saving a changed document on closing</source>
        <translation>Demander avant d’enregistrer un document modifié à la fermeture</translation>
    </message>
    <message>
        <source>Keep a list of recent documents</source>
        <translation>Tenir une liste des documents récents</translation>
    </message>
    <message>
        <source>Start with the theme chosen last</source>
        <translation>Démarrer avec le dernier thème choisi</translation>
    </message>
    <message>
        <source>Closing:</source>
        <translation>Fermeture&#xa0;:</translation>
    </message>
    <message>
        <source>Otherwise changes to a named document are saved silently.</source>
        <translation>Sinon, les modifications d’un document qui a un nom sont enregistrées sans question.</translation>
    </message>
    <message>
        <source>History:</source>
        <translation>Historique&#xa0;:</translation>
    </message>
    <message>
        <source>Appearance:</source>
        <translation>Apparence&#xa0;:</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>PDF documents (%1)</source>
        <translation>Documents PDF (%1)</translation>
    </message>
    <message>
        <source>Colors</source>
        <translation>Couleurs</translation>
    </message>
</context>
<context>
    <name>SaveReport</name>
    <message>
        <source>The document “%1” could not be saved. %2</source>
        <translation>Le document «&#xa0;%1&#xa0;» n’a pas pu être enregistré. %2</translation>
    </message>
    <message>
        <source> A copy of the unsaved document is kept at “%1”.</source>
        <translation> Une copie du document non enregistré est conservée dans «&#xa0;%1&#xa0;».</translation>
    </message>
    <message>
        <source>“%1” was changed by another program.</source>
        <translation>«&#xa0;%1&#xa0;» a été modifié par un autre programme.</translation>
    </message>
    <message>
        <source>Your edits have not been saved over it. Save them to another file, overwrite the other program’s changes, or reload the file and drop your edits.</source>
        <translation>Vos modifications n’ont pas été enregistrées par-dessus. Enregistrez-les dans un autre fichier, écrasez les modifications de l’autre programme, ou rechargez le fichier et abandonnez vos modifications.</translation>
    </message>
    <message>
        <source>Save As…</source>
        <translation>Enregistrer sous…</translation>
    </message>
    <message>
        <source>Overwrite</source>
        <translation>Écraser</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Recharger</translation>
    </message>
</context>
<context>
    <name>TabStripView</name>
    <message>
        <source>New Tab</source>
        <translation>Nouvel onglet</translation>
    </message>
    <message>
        <source>Close Tab</source>
        <translation>Fermer l’onglet</translation>
    </message>
    <message>
        <source>Tabs</source>
        <translation>Onglets</translation>
    </message>
</context>
<context>
    <name>TabWindowController</name>
    <message>
        <source>Select Next Tab</source>
        <translation>Sélectionner l’onglet suivant</translation>
    </message>
    <message>
        <source>Select Previous Tab</source>
        <translation>Sélectionner l’onglet précédent</translation>
    </message>
</context>
<context>
    <name>TaskExcutor</name>
    <message>
        <source>The saved bytes are not a readable PDF (%1).</source>
        <translation>Les données enregistrées ne sont pas un PDF lisible (%1).</translation>
    </message>
    <message>
        <source>The document has no file.</source>
        <translation>Le document n’a pas de fichier.</translation>
    </message>
    <message>
        <source>The document could not be made into bytes (%1).</source>
        <translation>Le document n’a pas pu être converti en données (%1).</translation>
    </message>
</context>
<context>
    <name>UndoManager</name>
    <message>
        <source>Undo</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Undo %1</source>
        <translation type="unfinished">Annuler «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Rétablir</translation>
    </message>
    <message>
        <source>Redo %1</source>
        <translation type="unfinished">Rétablir «&#xa0;%1&#xa0;»</translation>
    </message>
</context>
<context>
    <name>XPDFView</name>
    <message>
        <source>Add Note</source>
        <translation>Ajouter une note</translation>
    </message>
    <message>
        <source>Delete Annotation</source>
        <translation>Supprimer l’annotation</translation>
    </message>
    <message>
        <source>Edit Note</source>
        <translation>Modifier la note</translation>
    </message>
    <message>
        <source>Rotate Page</source>
        <translation>Faire pivoter la page</translation>
    </message>
</context>
</TS>
