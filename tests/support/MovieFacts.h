#pragma once

#include "tests/support/VideoNode.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <vector>

namespace cantorel::test {

// A movie as ffprobe and ffmpeg read it.
struct MovieFacts {
    QByteArray pictures; // "h264 640x360"
    QByteArray sound;    // "aac 48000"; empty without
    double seconds = 0;
};

inline QByteArray answerOf(const QString &program, const QStringList &arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(program, arguments);
    process.waitForFinished(30000);
    return process.readAllStandardOutput();
}

inline MovieFacts movieFacts(const QString &file) {
    const auto ask = [&](const char *stream, const char *entries) {
        return answerOf("ffprobe", {"-v", "error", "-select_streams", stream, "-show_entries", entries, "-of",
                                    "default=noprint_wrappers=1:nokey=1", file})
            .trimmed()
            .split('\n');
    };
    MovieFacts facts;
    if (const auto told = ask("v", "stream=codec_name,width,height"); told.size() == 3)
        facts.pictures = told[0] + ' ' + told[1] + 'x' + told[2];
    if (const auto told = ask("a", "stream=codec_name,sample_rate"); told.size() == 2)
        facts.sound = told[0] + ' ' + told[1];
    facts.seconds = ask("v", "format=duration").first().toDouble();
    return facts;
}

// The numbers of a VideoNode's pictures, in the order in which they are shown.
inline std::vector<int> numbersIn(const QString &file, int width) {
    const QByteArray lines = answerOf("ffmpeg", {"-v", "error", "-i", file, "-vf", "format=bgr0,crop=iw:1:0:8", "-f", "rawvideo",
                                                 "-pix_fmt", "bgr0", "-fps_mode", "passthrough", "-"});
    std::vector<int> numbers;
    for (qsizetype at = 0; at + width * 4 <= lines.size(); at += width * 4)
        numbers.push_back(VideoNode::numberOf(reinterpret_cast<const std::uint8_t *>(lines.constData() + at)));
    return numbers;
}

} // namespace cantorel::test
