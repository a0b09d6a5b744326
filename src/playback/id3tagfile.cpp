#include "playback/id3tagfile.h"

#include <QFile>
#include <QFileInfo>

#include <taglib/aifffile.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2synchdata.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tbytevectorstream.h>
#include <taglib/wavfile.h>

namespace {

// TagLib 1.13 skips an extended header and then takes its size off the
// frames' length too, so the last frames of a tag with little padding are
// lost (and a 2.3 one's are misread). The tag it read, found in the file by
// its header, without the extended header; empty if it is not found.
TagLib::ByteVector withoutExtendedHeader(TagLib::File& file, const TagLib::ID3v2::Header& read)
{
    namespace SynchData = TagLib::ID3v2::SynchData;
    for (long at = file.find("ID3"); at >= 0; at = file.find("ID3", at + 1)) {
        file.seek(at);
        const TagLib::ByteVector tag = file.readBlock(read.completeTagSize());
        const unsigned size = SynchData::toUInt(tag.mid(6, 4));
        if (tag.size() < 14 || uchar(tag[3]) != read.majorVersion() || !(tag[5] & 0x40) || size != read.tagSize())
            continue;
        // 2.4 counts the whole extended header, 2.3 all but its size.
        const unsigned extended = read.majorVersion() == 4 ? SynchData::toUInt(tag.mid(10, 4)) : 4 + tag.mid(10, 4).toUInt();
        if (extended < 6 || extended > size)
            return {};
        TagLib::ByteVector whole = tag.mid(0, 5);
        whole.append(char(tag[5] & ~0x50)); // neither an extended header nor a footer
        whole.append(SynchData::fromUInt(size - extended));
        whole.append(tag.mid(10 + extended, size - extended));
        return whole;
    }
    return {};
}

} // namespace

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
    if (m_tag && m_tag->header()->extendedHeader()) {
        const TagLib::ByteVector whole = withoutExtendedHeader(*m_file, *m_tag->header());
        if (!whole.isEmpty()) {
            m_copy = std::make_unique<TagLib::ByteVectorStream>(whole);
            auto* copy = new TagLib::MPEG::File(m_copy.get(), TagLib::ID3v2::FrameFactory::instance(), false);
            m_file.reset(copy);
            m_tag = copy->hasID3v2Tag() ? copy->ID3v2Tag(false) : nullptr;
        }
    }
}

Id3TagFile::~Id3TagFile() = default;
