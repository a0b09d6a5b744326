#include "playback/albumart.h"

#include "playback/id3tagfile.h"

#include <QFile>

#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/opusfile.h>
#include <taglib/vorbisfile.h>
#include <taglib/xiphcomment.h>

namespace {

QByteArray bytes(const TagLib::ByteVector& data)
{
    return QByteArray(data.data(), qsizetype(data.size()));
}

QByteArray firstPicture(const TagLib::List<TagLib::FLAC::Picture*>& pictures)
{
    return pictures.isEmpty() ? QByteArray() : bytes(pictures.front()->data());
}

QByteArray xiphPicture(TagLib::Ogg::XiphComment* comment)
{
    return comment ? firstPicture(comment->pictureList()) : QByteArray();
}

} // namespace

QByteArray embeddedPicture(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    switch (sniffContainer(path)) {
    case AudioContainer::Mpeg:
    case AudioContainer::Wav:
    case AudioContainer::Aiff: {
        const Id3TagFile file(path);
        if (!file.tag())
            return {};
        const TagLib::ID3v2::FrameList& frames = file.tag()->frameListMap()["APIC"];
        for (TagLib::ID3v2::Frame* frame : frames) {
            if (auto* picture = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame))
                return bytes(picture->picture());
        }
        return {};
    }
    case AudioContainer::Mp4: {
        TagLib::MP4::File file(name.constData(), false);
        if (!file.isValid() || !file.tag())
            return {};
        const TagLib::MP4::CoverArtList covers = file.tag()->item("covr").toCoverArtList();
        return covers.isEmpty() ? QByteArray() : bytes(covers.front().data());
    }
    case AudioContainer::Flac: {
        TagLib::FLAC::File file(name.constData(), false);
        return file.isValid() ? firstPicture(file.pictureList()) : QByteArray();
    }
    case AudioContainer::Ogg: {
        TagLib::Ogg::Vorbis::File vorbis(name.constData(), false);
        if (vorbis.isValid())
            return xiphPicture(vorbis.tag());
        TagLib::Ogg::Opus::File opus(name.constData(), false);
        return opus.isValid() ? xiphPicture(opus.tag()) : QByteArray();
    }
    case AudioContainer::Unreadable:
        break;
    }
    return {};
}

QImage readAlbumArt(const QString& path)
{
    const QByteArray data = embeddedPicture(path);
    return data.isEmpty() ? QImage() : QImage::fromData(data);
}
