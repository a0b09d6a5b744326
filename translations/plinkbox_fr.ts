<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>CommandMenu</name>
    <message>
        <source>Player</source>
        <translation>Lecteur</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>Loop tracks</source>
        <translation>Répéter les pistes</translation>
    </message>
    <message>
        <source>Shuffle tracks</source>
        <translation>Lecture aléatoire</translation>
    </message>
    <message>
        <source>Volume Up</source>
        <translation>Monter le volume</translation>
    </message>
    <message>
        <source>Volume Down</source>
        <translation>Baisser le volume</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Listes de lecture</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Pistes</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Paramètres…</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Playlists…</source>
        <translation>Listes de lecture…</translation>
    </message>
    <message>
        <source>Tracks…</source>
        <translation>Pistes…</translation>
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
        <translation>Sans titre</translation>
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
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Minimise</source>
        <translation>Réduire</translation>
    </message>
    <message>
        <source>Previous track</source>
        <translation>Piste précédente</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>Next track</source>
        <translation>Piste suivante</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Listes de lecture</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Pistes</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Edit playlists</source>
        <translation>Modifier les listes</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>En pause</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Arrêté</translation>
    </message>
</context>
<context>
    <name>FilterList</name>
    <message>
        <source>Filter</source>
        <translation>Filtrer</translation>
    </message>
    <message>
        <source>Entries</source>
        <translation>Entrées</translation>
    </message>
</context>
<context>
    <name>GeneralSettingsView</name>
    <message>
        <source>Theme</source>
        <translation>Thème</translation>
    </message>
    <message>
        <source>Play sounds</source>
        <translation>Activer les sons</translation>
    </message>
    <message>
        <source>Large-sized</source>
        <translation>Grande taille</translation>
    </message>
    <message>
        <source>Floating window</source>
        <translation>Toujours au premier plan</translation>
    </message>
    <message>
        <source>Loop tracks</source>
        <translation>Répéter les pistes</translation>
    </message>
    <message>
        <source>Shuffle tracks</source>
        <translation>Lecture aléatoire</translation>
    </message>
    <message>
        <source>Takes effect the next time plinkBox starts.</source>
        <translation>Prend effet au prochain démarrage.</translation>
    </message>
    <message>
        <source>Themes</source>
        <translation>Thèmes</translation>
    </message>
</context>
<context>
    <name>PlaylistSettingsView</name>
    <message>
        <source>New playlist</source>
        <translation>Nouvelle liste de lecture</translation>
    </message>
    <message>
        <source>Playlist name</source>
        <translation>Nom de la liste de lecture</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Remove the selected tracks</source>
        <translation>Retirer les pistes sélectionnées</translation>
    </message>
    <message>
        <source>Add tracks...</source>
        <translation>Ajouter des pistes…</translation>
    </message>
    <message>
        <source>Add track to playlist</source>
        <translation>Ajouter des pistes à la liste de lecture</translation>
    </message>
    <message>
        <source>Are you sure?</source>
        <translation>Vraiment supprimer&#xa0;?</translation>
    </message>
    <message>
        <source>Delete playlist...</source>
        <translation>Supprimer la liste…</translation>
    </message>
    <message>
        <source>Add folder...</source>
        <translation>Ajouter un dossier…</translation>
    </message>
    <message>
        <source>Import...</source>
        <translation>Importer…</translation>
    </message>
    <message>
        <source>Make a new playlist from an M3U, M3U8 or PLS file</source>
        <translation>Créer une liste de lecture à partir d’un fichier M3U, M3U8 ou PLS</translation>
    </message>
    <message>
        <source>Export...</source>
        <translation>Exporter…</translation>
    </message>
    <message>
        <source>Save this playlist as an M3U8 file for other players</source>
        <translation>Enregistrer cette liste en fichier M3U8 pour d’autres lecteurs</translation>
    </message>
    <message>
        <source>Adding %v of %m</source>
        <translation>Ajout de %v sur %m</translation>
    </message>
    <message>
        <source>Adding tracks</source>
        <translation>Ajout de pistes</translation>
    </message>
    <message>
        <source>Drop files or folders here, or use the buttons below.</source>
        <translation>Déposez des fichiers ou des dossiers ici, ou utilisez les boutons ci-dessous.</translation>
    </message>
    <message>
        <source>Add folder to playlist</source>
        <translation>Ajouter un dossier à la liste de lecture</translation>
    </message>
    <message>
        <source>Import playlist</source>
        <translation>Importer une liste de lecture</translation>
    </message>
    <message>
        <source>Playlists (*.m3u *.m3u8 *.pls)</source>
        <translation>Listes de lecture (*.m3u *.m3u8 *.pls)</translation>
    </message>
    <message>
        <source>Export playlist</source>
        <translation>Exporter la liste de lecture</translation>
    </message>
    <message>
        <source>M3U8 playlists (*.m3u8)</source>
        <translation>Listes de lecture M3U8 (*.m3u8)</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Listes de lecture</translation>
    </message>
    <message>
        <source>Playlist</source>
        <translation>Liste de lecture</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Pistes</translation>
    </message>
</context>
<context>
    <name>SettingsView</name>
    <message>
        <source>Settings</source>
        <translation>Paramètres</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Général</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Listes de lecture</translation>
    </message>
</context>
<context>
    <name>SkinScrubBar</name>
    <message>
        <source>Scrub bar</source>
        <translation>Barre de progression</translation>
    </message>
</context>
<context>
    <name>TrackTableModel</name>
    <message>
        <source>Name</source>
        <translation>Titre</translation>
    </message>
    <message>
        <source>Artist</source>
        <translation>Artiste</translation>
    </message>
</context>
</TS>
