#include "playback/id3tagfile.h"

#include <QFile>
#include <QFileInfo>

#include <taglib/aifffile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/wavfile.h>

AudioContainer sniffContainer(const QString& path)
{
    // Only regular files: opening a named pipe waits for a writer, and a
    // device such as /dev/zero never ends.
    if (!QFileInfo(path).isFile())
        return AudioContainer::Unreadable;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return AudioContainer::Unreadable;
    const QByteArray head = file.read(12);
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WAVE")
        return AudioContainer::Wav;
    if (head.startsWith("FORM") && (head.mid(8, 4) == "AIFF" || head.mid(8, 4) == "AIFC"))
        return AudioContainer::Aiff;
    if (head.mid(4, 4) == "ftyp")
        return AudioContainer::Mp4;
    if (head.startsWith("fLaC"))
        return AudioContainer::Flac;
    if (head.startsWith("OggS"))
        return AudioContainer::Ogg;
    return AudioContainer::Mpeg;
}

Id3TagFile::Id3TagFile(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    switch (sniffContainer(path)) {
    case AudioContainer::Wav: {
        auto* wav = new TagLib::RIFF::WAV::File(name.constData(), false);
        m_file.reset(wav);
        if (wav->isValid() && wav->hasID3v2Tag())
            m_tag = wav->ID3v2Tag();
        break;
    }
    case AudioContainer::Aiff: {
        auto* aiff = new TagLib::RIFF::AIFF::File(name.constData(), false);
        m_file.reset(aiff);
        if (aiff->isValid() && aiff->hasID3v2Tag())
            m_tag = aiff->tag();
        break;
    }
    case AudioContainer::Mpeg: {
        // isValid() holds even for random bytes, and ID3v2Tag() hands out an
        // empty tag of its own: what counts is whether the file has one.
        auto* mpeg = new TagLib::MPEG::File(name.constData(), false);
        m_file.reset(mpeg);
        if (mpeg->isValid() && mpeg->hasID3v2Tag())
            m_tag = mpeg->ID3v2Tag(false);
        break;
    }
    default:
        break;
    }
}

Id3TagFile::~Id3TagFile() = default;
