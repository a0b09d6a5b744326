#include "store/fileio.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

QString quoted(const QString& path)
{
    return QLatin1Char('"') + path + QLatin1Char('"');
}

QString systemError(int code)
{
    return QString::fromStdString(std::system_category().message(code));
}

int s_failingStep = 0; // the test hook: see failNthWrite

// True, with errno set as on a full disk, for the write or sync the test hook chose.
bool failsForTest()
{
    if (s_failingStep <= 0 || --s_failingStep > 0)
        return false;
    errno = ENOSPC;
    return true;
}

} // namespace

QString makeFolder(const QString& path)
{
    std::error_code ec;
    const std::filesystem::path fsPath(path.toStdString());
    std::filesystem::create_directories(fsPath, ec);
    if (!ec && std::filesystem::is_directory(fsPath, ec))
        return {};
    if (!ec)
        ec = std::make_error_code(std::errc::not_a_directory);
    return QStringLiteral("Could not create the folder %1: %2")
        .arg(quoted(path), QString::fromStdString(ec.message()));
}

QString writeFileAtomic(const QString& path, const QByteArray& bytes)
{
    // Unbuffered, so that a failed write shows here: QSaveFile (Qt 6.4) puts its
    // temporary file in place even when the flush at its commit failed. Synced
    // here, because its own sync does not report a failure.
    const QString cannot = QStringLiteral("Could not write %1: ").arg(quoted(path));
    const QFileInfo before(path);
    if (before.exists() && !before.isFile())
        return cannot + QStringLiteral("it is not a regular file");
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return cannot + file.errorString();
    if (failsForTest() || file.write(bytes) != bytes.size() || failsForTest() || ::fsync(file.handle()) != 0) {
        const QString error = file.error() == QFileDevice::NoError ? systemError(errno) : file.errorString();
        file.cancelWriting();
        return cannot + error;
    }
    if (!file.commit())
        return cannot + file.errorString();
    // The rename is not on the disk before its folder is.
    const QByteArray folder = QFile::encodeName(QFileInfo(path).canonicalPath());
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool synced = fd >= 0 && (::fsync(fd) == 0 || errno == EINVAL); // EINVAL: cannot sync folders
    const QString error = synced ? QString() : cannot + systemError(errno);
    if (fd >= 0)
        ::close(fd);
    return error;
}

void failNthWrite(int n)
{
    s_failingStep = n;
}

QString removeFile(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir())
        return QStringLiteral("Could not remove %1: it is a folder").arg(quoted(path));
    if (!file.remove())
        return QStringLiteral("Could not remove %1: %2").arg(quoted(path), file.errorString());
    return {};
}

FileBytes readWholeFile(const QString& path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return {std::nullopt, QStringLiteral("Could not read %1: it is a folder").arg(quoted(path))};
    // A named pipe would wait for a writer, a device may never end.
    if (info.exists() && !info.isFile())
        return {std::nullopt, QStringLiteral("Could not read %1: it is not a regular file").arg(quoted(path))};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {std::nullopt, QStringLiteral("Could not read %1: %2").arg(quoted(path), file.errorString())};
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return {std::nullopt, QStringLiteral("Could not read %1: %2").arg(quoted(path), file.errorString())};
    return {std::move(bytes), {}};
}

FileStamp fileStamp(const QString& path)
{
    // One stat, and no local-time conversion: it is asked often.
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    const auto nanoseconds = [](const timespec& time) { return qint64(time.tv_sec) * 1'000'000'000 + time.tv_nsec; };
    return {nanoseconds(info.st_mtim), nanoseconds(info.st_ctim), qint64(info.st_size)};
}

bool existsAt(const QString& path)
{
    return QFileInfo::exists(path);
}

QString keepBrokenCopy(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return {};
    QString target = path + QLatin1String(".broken");
    for (int n = 2; existsAt(target) && n < 1000; ++n)
        target = path + QLatin1String(".broken-") + QString::number(n);
    // As careful as the write that follows it, so that no power cut keeps the
    // new file and loses the copy.
    const FileBytes old = readWholeFile(path);
    if (existsAt(target) || !old.bytes || !writeFileAtomic(target, *old.bytes).isEmpty())
        return {};
    return target;
}
