#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

// Movies as ffmpeg decodes them.
namespace cantorel::test {

inline QByteArray outputOf(const QString &program, const QStringList &arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60000);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 ? process.readAllStandardOutput()
                                                                                   : QByteArray();
}

struct ShownPicture {
    double time = 0;       // seconds
    std::uint8_t grey = 0; // the mean of the part that was asked for
};

// part: a crop as ffmpeg takes it, "W:H:X:Y"; empty for all.
inline std::vector<ShownPicture> picturesOf(const QString &file, const QString &part = {}) {
    const QByteArray times = outputOf("ffprobe", {"-v", "error", "-select_streams", "v", "-show_entries",
                                                  "frame=best_effort_timestamp_time", "-of", "csv=p=0", file});
    const QString crop = part.isEmpty() ? QString() : "crop=" + part + ',';
    const QByteArray greys =
        outputOf("ffmpeg", {"-v", "error", "-i", file, "-vf", crop + "scale=1:1:flags=area,format=gray", "-vsync",
                            "passthrough", "-f", "rawvideo", "-"});
    std::vector<ShownPicture> pictures;
    for (const QByteArray &line : times.split('\n')) {
        const QByteArray time = line.split(',').value(0).trimmed();
        if (!time.isEmpty() && pictures.size() < static_cast<std::size_t>(greys.size()))
            pictures.push_back({time.toDouble(), static_cast<std::uint8_t>(greys[static_cast<int>(pictures.size())])});
    }
    return pictures;
}

// What of a stream or the whole file ffprobe says, such as "stream=width" of "v".
inline QString factOf(const QString &file, const QString &stream, const QString &entry) {
    QStringList arguments{"-v", "error"};
    if (!stream.isEmpty())
        arguments += {"-select_streams", stream};
    return QString::fromUtf8(
               outputOf("ffprobe", arguments + QStringList{"-show_entries", entry, "-of", "csv=p=0", file}))
        .trimmed();
}

// Where one becomes another, in seconds.
inline std::vector<double> flashesOf(const std::vector<ShownPicture> &pictures) {
    std::vector<double> flashes;
    for (std::size_t i = 1; i < pictures.size(); ++i)
        if (pictures[i].grey > 128 && pictures[i - 1].grey <= 128)
            flashes.push_back(pictures[i].time);
    return flashes;
}
// At 48,000 Hz, all channels in one.
inline std::vector<float> soundOf(const QString &file) {
    const QByteArray bytes =
        outputOf("ffmpeg", {"-v", "error", "-i", file, "-vn", "-ac", "1", "-ar", "48000", "-f", "f32le", "-"});
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(float));
    return samples;
}
inline std::vector<double> clicksOf(const QString &file) {
    const std::vector<float> samples = soundOf(file);
    std::vector<double> clicks;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (std::abs(samples[i]) > 0.3f && (clicks.empty() || static_cast<double>(i) / 48000 - clicks.back() > 0.2))
            clicks.push_back(static_cast<double>(i) / 48000);
    return clicks;
}

} // namespace cantorel::test
