#pragma once

#include <QString>

#include <memory>

namespace TagLib {
class ByteVectorStream;
class File;
namespace ID3v2 {
class Tag;
}
} // namespace TagLib

// What kind of file this is, judged by its first bytes rather than its name.
enum class AudioContainer { Mpeg, Wav, Aiff, Mp4, Flac, Ogg, Unreadable };
AudioContainer sniffContainer(const QString& path);

// A file's ID3v2 tag wherever its container keeps it: at the head of an MP3
// (or any file that is none of the others), or in a WAV or AIFF "ID3" chunk.
// tag() is null when the file has none; only the tag is read, never audio.
// A tag with an extended header is read from a copy without it, which
// TagLib 1.13 reads whole.
class Id3TagFile
{
public:
    explicit Id3TagFile(const QString& path);
    ~Id3TagFile();
    Id3TagFile(const Id3TagFile&) = delete;
    Id3TagFile& operator=(const Id3TagFile&) = delete;

    TagLib::ID3v2::Tag* tag() const { return m_tag; }

private:
    std::unique_ptr<TagLib::ByteVectorStream> m_copy; // outlives the file read from it
    std::unique_ptr<TagLib::File> m_file;
    TagLib::ID3v2::Tag* m_tag = nullptr;
};
