#include "playback/mediabackend.h"

#include <QByteArray>
#include <QtGlobal>

// Qt 6.4 on Debian ships two backends. Measured at a PulseAudio null sink with
// bench_mediabackend (MP3 tone, median of 5 runs):
//
//                                   FFmpeg      GStreamer
//   play() of a new file to sound    11 ms        188 ms
//   resume after a 2 s pause         11 ms         11 ms
//   silence after a seek             10 ms        990 ms (stalls)
//   end of media vs. last sound     -75 ms         +8 ms
//   resident memory while playing    47 MiB        67 MiB (35 MiB with the
//                                                  rank tweak below)
//
// (11 ms is the recorder's own resolution.) The FFmpeg backend starts and
// seeks without an audible gap, which a scrub bar and interface clicks need,
// so it is our choice. It reports the end of media while the last ~75 ms are
// still in the sound server's buffer, early enough for the next track to
// follow without a pause. Its one quirk, a corrupt file ending right after
// the start instead of failing, is handled by AudioPlayer.
void chooseMediaBackend()
{
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", QByteArrayLiteral("ffmpeg"));

    // Someone who picks GStreamer gets its mpg123 MP3 decoder rather than
    // gst-libav's, which pulls libavfilter and some 30 MiB with it.
    if (qgetenv("QT_MEDIA_BACKEND") == "gstreamer" && !qEnvironmentVariableIsSet("GST_PLUGIN_FEATURE_RANK"))
        qputenv("GST_PLUGIN_FEATURE_RANK", QByteArrayLiteral("avdec_mp3float:NONE,avdec_mp3:NONE"));
}
