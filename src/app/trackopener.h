#pragma once

#include "playback/tagreader.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>

class AudioPlayer;
class Config;
class Transport;

// Files, folders and playlist files handed to plinkBox from outside: the
// command line, a file manager's "Open With", a later launch, a drop on the
// player window, or the desktop controls' OpenUri. The audio files found join
// the current playlist at its end, with their tags read as the playlist editor
// reads them, in one write, and the first of them plays.
class TrackOpener : public QObject
{
    Q_OBJECT

public:
    TrackOpener(Config& config, AudioPlayer& audioPlayer, Transport& transport, QObject* parent = nullptr);

    // The types the desktop entry and the desktop controls offer us.
    static QStringList supportedMimeTypes();
    // A command-line argument as a URL: a file URL as given, a path made
    // absolute against the working folder.
    static QUrl fromArgument(const QString& argument);

    // done: called once the files are in the playlist, or were refused.
    void open(const QList<QUrl>& urls, std::function<void()> done = {});

signals:
    // The files have been added and the first one asked to play.
    void opened(int count);

private:
    void addAndPlay(const QList<QUrl>& files, const QList<TrackTags>& tags);

    Config& m_config;
    AudioPlayer& m_audioPlayer;
    Transport& m_transport;
};
