#include "store/records.h"

#include "store/jsonreader.h"
#include "store/jsonwriter.h"

Track Track::make(QString urlString, QString trackName, QString artist)
{
    // The texts come from outside (tags, file names) and must survive the
    // playlist file unchanged.
    return {QUuid::createUuid(), withPairedSurrogates(std::move(urlString)),
            withPairedSurrogates(std::move(trackName)), withPairedSurrogates(std::move(artist))};
}

QByteArray toJson(const PlaylistData& data)
{
    JsonWriter json;
    json.beginObject();
    json.key(u"tracks");
    json.beginArray();
    for (const Track& track : data.tracks) {
        json.beginObject();
        json.key(u"id");
        json.value(uuidText(track.id));
        json.key(u"urlString");
        json.value(track.urlString);
        json.key(u"trackName");
        json.value(track.trackName);
        json.key(u"artist");
        json.value(track.artist);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

QByteArray toJson(const SettingsData& data)
{
    JsonWriter json;
    json.beginObject();
    json.key(u"currentTheme");
    json.value(data.currentTheme);
    json.key(u"availableThemes");
    json.beginArray();
    for (const QString& theme : data.availableThemes)
        json.value(theme);
    json.endArray();
    json.key(u"playsSounds");
    json.value(data.playsSounds);
    json.key(u"superSized");
    json.value(data.superSized);
    json.key(u"isFloating");
    json.value(data.isFloating);
    json.key(u"shuffleTracks");
    json.value(data.shuffleTracks);
    json.key(u"loopTracks");
    json.value(data.loopTracks);
    if (data.lastSelectedPlaylistID) {
        json.key(u"lastSelectedPlaylistID");
        json.value(*data.lastSelectedPlaylistID);
    }
    json.key(u"playlists");
    json.beginArray();
    for (const Playlist& playlist : data.playlists) {
        json.beginObject();
        json.key(u"id");
        json.value(uuidText(playlist.id));
        json.key(u"name");
        json.value(playlist.name);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

Decoded<Track> trackFromJson(const QJsonObject& object, qsizetype index)
{
    JsonObjectReader fields(object, QStringLiteral("track %1").arg(index));
    Track track;
    track.id = fields.uuid(QStringLiteral("id"));
    track.urlString = fields.string(QStringLiteral("urlString"));
    track.trackName = fields.string(QStringLiteral("trackName"));
    track.artist = fields.string(QStringLiteral("artist"));
    if (!fields.ok())
        return {std::nullopt, fields.error()};
    return {std::move(track), {}};
}

Decoded<PlaylistData> playlistDataFromJson(const QByteArray& bytes)
{
    QString error;
    const auto object = parseJsonObject(bytes, error);
    if (!object)
        return {std::nullopt, error};
    JsonObjectReader reader(*object, {});
    const QJsonArray list = reader.array(QStringLiteral("tracks"));
    PlaylistData data;
    data.tracks.reserve(list.size());
    for (qsizetype i = 0; i < list.size() && reader.ok(); ++i) {
        const auto item = reader.objectAt(list, i, QStringLiteral("tracks"));
        if (!item)
            break;
        Decoded<Track> track = trackFromJson(*item, i);
        if (!track)
            return {std::nullopt, track.error};
        data.tracks.append(std::move(*track.value));
    }
    if (!reader.ok())
        return {std::nullopt, reader.error()};
    return {std::move(data), {}};
}

Decoded<SettingsData> settingsDataFromJson(const QByteArray& bytes)
{
    QString error;
    const auto object = parseJsonObject(bytes, error);
    if (!object)
        return {std::nullopt, error};
    JsonObjectReader reader(*object, {});
    SettingsData data;
    data.currentTheme = reader.string(QStringLiteral("currentTheme"));
    data.availableThemes = reader.strings(QStringLiteral("availableThemes"));
    data.playsSounds = reader.boolean(QStringLiteral("playsSounds"));
    data.superSized = reader.boolean(QStringLiteral("superSized"));
    data.isFloating = reader.boolean(QStringLiteral("isFloating"));
    data.shuffleTracks = reader.boolean(QStringLiteral("shuffleTracks"));
    data.loopTracks = reader.boolean(QStringLiteral("loopTracks"));
    data.lastSelectedPlaylistID = reader.optionalInteger(QStringLiteral("lastSelectedPlaylistID"));
    const QJsonArray list = reader.array(QStringLiteral("playlists"));
    for (qsizetype i = 0; i < list.size() && reader.ok(); ++i) {
        const auto item = reader.objectAt(list, i, QStringLiteral("playlists"));
        if (!item)
            break;
        JsonObjectReader fields(*item, QStringLiteral("playlist %1").arg(i));
        Playlist playlist;
        playlist.id = fields.uuid(QStringLiteral("id"));
        playlist.name = fields.string(QStringLiteral("name"));
        if (!fields.ok())
            return {std::nullopt, fields.error()};
        data.playlists.append(std::move(playlist));
    }
    if (!reader.ok())
        return {std::nullopt, reader.error()};
    return {std::move(data), {}};
}
