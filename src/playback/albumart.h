#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// The bytes of the first picture embedded in an audio file: an ID3v2 "APIC"
// frame (MP3, WAV, AIFF), an MP4 "covr" atom, a FLAC picture block or an Ogg
// Vorbis/Opus picture comment. Empty when there is none or the file cannot be
// read. Safe to call on any thread.
QByteArray embeddedPicture(const QString& path);

// The same picture decoded; null when there is none or it does not decode.
QImage readAlbumArt(const QString& path);
