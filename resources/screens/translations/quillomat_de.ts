<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Core</name>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>Selection</source>
        <translation>Auswahl</translation>
    </message>
    <message>
        <source>Import Mockup</source>
        <translation>Mockup importieren</translation>
    </message>
    <message>
        <source>Import Tutorial</source>
        <translation>Anleitung zum Importieren</translation>
    </message>
    <message>
        <source>Get Import Location</source>
        <translation>Ort der Importe zeigen</translation>
    </message>
    <message>
        <source>Browse Mockups</source>
        <translation>Mockups im Netz</translation>
    </message>
    <message>
        <source>Support this free app</source>
        <translation>Diese freie App unterstützen</translation>
    </message>
    <message>
        <source>Dismiss</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Importing</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>Ok</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>Thanks!</source>
        <translation>Danke!</translation>
    </message>
    <message>
        <source>Option</source>
        <translation>Option</translation>
    </message>
    <message>
        <source>Blur background Image?</source>
        <translation>Hintergrundbild weichzeichnen?</translation>
    </message>
    <message>
        <source>Screenshot</source>
        <translation>Screenshot</translation>
    </message>
    <message>
        <source>Completed</source>
        <translation>Erledigt</translation>
    </message>
    <message>
        <source>Delete Mockup</source>
        <translation>Mockup löschen</translation>
    </message>
    <message>
        <source>Nothing removed. You can only delete mockups you added.</source>
        <translation>Nichts entfernt. Löschen lassen sich nur Mockups, die Sie hinzugefügt haben.</translation>
    </message>
    <message>
        <source>File Already Exists</source>
        <translation>Datei vorhanden</translation>
    </message>
    <message>
        <source>Do you wish to replace this file?</source>
        <translation>Möchten Sie diese Datei ersetzen?</translation>
    </message>
    <message>
        <source>Downloading Files</source>
        <translation>Dateien werden geladen</translation>
    </message>
    <message>
        <source>Update Available</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Adding A Row</source>
        <translation>Zeile hinzufügen</translation>
    </message>
    <message>
        <source>Enter A Number</source>
        <translation>Zahl eingeben</translation>
    </message>
    <message>
        <source>The imported resources are saved in %1</source>
        <translation>Importiertes liegt in %1</translation>
    </message>
    <message>
        <source>Deleted mockup named %1</source>
        <translation>Mockup %1 gelöscht</translation>
    </message>
    <message>
        <source>There was an issue removing this mockup %1</source>
        <translation>Dieses Mockup ließ sich nicht entfernen: %1</translation>
    </message>
    <message>
        <source>Image saved to camera roll 

%1</source>
        <translation>Bild in den Aufnahmen gesichert 

%1</translation>
    </message>
    <message>
        <source> Mockup created by %1</source>
        <translation> Mockup von %1</translation>
    </message>
</context>
<context>
    <name>NavigationBar</name>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
</context>
<context>
    <name>EditorPage</name>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Left screenshot</source>
        <translation>Linker Screenshot</translation>
    </message>
    <message>
        <source>Left</source>
        <translation>Links</translation>
    </message>
    <message>
        <source>Right screenshot</source>
        <translation>Rechter Screenshot</translation>
    </message>
    <message>
        <source>Right</source>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Hintergrund</translation>
    </message>
    <message>
        <source>Glare</source>
        <translation>Glanz</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
</context>
<context>
    <name>GalleryPage</name>
    <message>
        <source>Frames</source>
        <translation>Rahmen</translation>
    </message>
</context>
<context>
    <name>PickerFrame</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Browse files</source>
        <translation>Dateien</translation>
    </message>
</context>
<context>
    <name>PhotoPicker</name>
    <message>
        <source>Pictures (*.png *.jpg *.jpeg *.webp *.heic *.heif *.avif)</source>
        <translation>Bilder (*.png *.jpg *.jpeg *.webp *.heic *.heif *.avif)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Folder above</source>
        <translation>Ordner darüber</translation>
    </message>
    <message>
        <source>No pictures here yet. Browse for a file, drop one on the window, or paste one.</source>
        <translation>Noch keine Bilder hier. Wählen Sie eine Datei, ziehen Sie eine ins Fenster oder fügen Sie eine ein.</translation>
    </message>
</context>
<context>
    <name>DocumentPicker</name>
    <message>
        <source>Folder above</source>
        <translation>Ordner darüber</translation>
    </message>
    <message>
        <source>Nothing here</source>
        <translation>Hier ist nichts</translation>
    </message>
</context>
<context>
    <name>CropStep</name>
    <message>
        <source>Move and zoom</source>
        <translation>Bewegen und zoomen</translation>
    </message>
    <message>
        <source>Part of the picture</source>
        <translation>Bildausschnitt</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>quillomat::PresentationModel</name>
    <message>
        <source>This picture cannot be opened</source>
        <translation>Dieses Bild lässt sich nicht öffnen</translation>
    </message>
    <message>
        <source>%1 cannot be opened</source>
        <translation>%1 lässt sich nicht öffnen</translation>
    </message>
</context>
<context>
    <name>Pressable</name>
    <message>
        <source>Not available</source>
        <translation>Nicht verfügbar</translation>
    </message>
</context>
</TS>
