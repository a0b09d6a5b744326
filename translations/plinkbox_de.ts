<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>CommandMenu</name>
    <message>
        <source>Player</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Loop tracks</source>
        <translation>Titel wiederholen</translation>
    </message>
    <message>
        <source>Shuffle tracks</source>
        <translation>Zufallswiedergabe</translation>
    </message>
    <message>
        <source>Volume Up</source>
        <translation>Lauter</translation>
    </message>
    <message>
        <source>Volume Down</source>
        <translation>Leiser</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Wiedergabelisten</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Playlists…</source>
        <translation>Wiedergabelisten…</translation>
    </message>
    <message>
        <source>Tracks…</source>
        <translation>Titel…</translation>
    </message>
</context>
<context>
    <name>Config</name>
    <message>
        <source>Playlists</source>
        <extracomment>A folder&apos;s name on disk: keep it as it is, or another language would not find the playlists.</extracomment>
        <translation>Playlists</translation>
    </message>
    <message>
        <source>Untitled</source>
        <extracomment>The name of a new playlist</extracomment>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Themes</source>
        <extracomment>A folder&apos;s name on disk: keep it as it is, or another language would not find the themes.</extracomment>
        <translation>Themes</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Previous track</source>
        <translation>Vorheriger Titel</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Next track</source>
        <translation>Nächster Titel</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Wiedergabelisten</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Edit playlists</source>
        <translation>Listen bearbeiten</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Pausiert</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Angehalten</translation>
    </message>
</context>
<context>
    <name>FilterList</name>
    <message>
        <source>Filter</source>
        <translation>Filtern</translation>
    </message>
    <message>
        <source>Entries</source>
        <translation>Einträge</translation>
    </message>
</context>
<context>
    <name>GeneralSettingsView</name>
    <message>
        <source>Theme</source>
        <translation>Design</translation>
    </message>
    <message>
        <source>Play sounds</source>
        <translation>Klänge abspielen</translation>
    </message>
    <message>
        <source>Large-sized</source>
        <translation>Große Darstellung</translation>
    </message>
    <message>
        <source>Floating window</source>
        <translation>Immer im Vordergrund</translation>
    </message>
    <message>
        <source>Loop tracks</source>
        <translation>Titel wiederholen</translation>
    </message>
    <message>
        <source>Shuffle tracks</source>
        <translation>Zufallswiedergabe</translation>
    </message>
    <message>
        <source>Takes effect the next time plinkBox starts.</source>
        <translation>Gilt ab dem nächsten Start von plinkBox.</translation>
    </message>
    <message>
        <source>Themes</source>
        <translation>Designs</translation>
    </message>
</context>
<context>
    <name>PlaylistSettingsView</name>
    <message>
        <source>New playlist</source>
        <translation>Neue Wiedergabeliste</translation>
    </message>
    <message>
        <source>Playlist name</source>
        <translation>Name der Wiedergabeliste</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Remove the selected tracks</source>
        <translation>Ausgewählte Titel entfernen</translation>
    </message>
    <message>
        <source>Add tracks...</source>
        <translation>Titel hinzufügen …</translation>
    </message>
    <message>
        <source>Add track to playlist</source>
        <translation>Titel zur Wiedergabeliste hinzufügen</translation>
    </message>
    <message>
        <source>Are you sure?</source>
        <translation>Wirklich löschen?</translation>
    </message>
    <message>
        <source>Delete playlist...</source>
        <translation>Wiedergabeliste löschen …</translation>
    </message>
    <message>
        <source>Add folder...</source>
        <translation>Ordner hinzufügen …</translation>
    </message>
    <message>
        <source>Import...</source>
        <translation>Importieren …</translation>
    </message>
    <message>
        <source>Make a new playlist from an M3U, M3U8 or PLS file</source>
        <translation>Neue Wiedergabeliste aus einer M3U-, M3U8- oder PLS-Datei</translation>
    </message>
    <message>
        <source>Export...</source>
        <translation>Exportieren …</translation>
    </message>
    <message>
        <source>Save this playlist as an M3U8 file for other players</source>
        <translation>Diese Wiedergabeliste als M3U8-Datei für andere Player speichern</translation>
    </message>
    <message>
        <source>Adding %v of %m</source>
        <translation>%v von %m wird hinzugefügt</translation>
    </message>
    <message>
        <source>Adding tracks</source>
        <translation>Titel werden hinzugefügt</translation>
    </message>
    <message>
        <source>Drop files or folders here, or use the buttons below.</source>
        <translation>Dateien oder Ordner hierher ziehen oder die Knöpfe unten verwenden.</translation>
    </message>
    <message>
        <source>Add folder to playlist</source>
        <translation>Ordner zur Wiedergabeliste hinzufügen</translation>
    </message>
    <message>
        <source>Import playlist</source>
        <translation>Wiedergabeliste importieren</translation>
    </message>
    <message>
        <source>Playlists (*.m3u *.m3u8 *.pls)</source>
        <translation>Wiedergabelisten (*.m3u *.m3u8 *.pls)</translation>
    </message>
    <message>
        <source>Export playlist</source>
        <translation>Wiedergabeliste exportieren</translation>
    </message>
    <message>
        <source>M3U8 playlists (*.m3u8)</source>
        <translation>M3U8-Wiedergabelisten (*.m3u8)</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Wiedergabelisten</translation>
    </message>
    <message>
        <source>Playlist</source>
        <translation>Wiedergabeliste</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Titel</translation>
    </message>
</context>
<context>
    <name>SettingsView</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Wiedergabelisten</translation>
    </message>
</context>
<context>
    <name>SkinScrubBar</name>
    <message>
        <source>Scrub bar</source>
        <translation>Positionsregler</translation>
    </message>
</context>
<context>
    <name>TrackTableModel</name>
    <message>
        <source>Name</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Artist</source>
        <translation>Interpret</translation>
    </message>
</context>
</TS>
