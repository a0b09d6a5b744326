// plinksoundprep decodes the interface sounds once, at build time, into the
// samples the sound player plays: interleaved stereo 32-bit floats at its
// rate, in this machine's byte order. A running player then never loads
// FFmpeg for them.
//
//   plinksoundprep OUTDIR FILE.m4a...   writes OUTDIR/<name>.pcm

#include "playback/audiodecoder.h"
#include "playback/soundplayer.h"
#include "store/console.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    if (arguments.size() < 2) {
        printLine(QStringLiteral("Usage: plinksoundprep OUTDIR FILE.m4a..."));
        return 2;
    }
    QDir().mkpath(arguments.first());
    for (const QString& path : arguments.mid(1)) {
        QFile input(path);
        QString error;
        std::vector<float> samples;
        if (input.open(QIODevice::ReadOnly))
            samples = AudioDecoder::decodeAll(input.readAll(), SoundPlayer::rate, &error);
        else
            error = input.errorString();
        QSaveFile output(arguments.first() + '/' + QFileInfo(path).completeBaseName() + QStringLiteral(".pcm"));
        const auto size = qint64(samples.size() * sizeof(float));
        if (samples.empty() || !output.open(QIODevice::WriteOnly) ||
            output.write(reinterpret_cast<const char*>(samples.data()), size) != size || !output.commit()) {
            printLine(QStringLiteral("Could not decode %1: %2").arg(path, samples.empty() ? error : output.errorString()));
            return 1;
        }
    }
    return 0;
}
