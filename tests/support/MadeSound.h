#pragma once

#include "platform/foundation/ChildProcess.h"
#include "tests/support/OrdinaryFile.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <cstring>
#include <vector>

// Sound files that ffmpeg makes, and what it decodes of any.
namespace cantorel::test {

inline bool ffmpeg(const QStringList &arguments) {
    const auto run =
        foundation::ChildProcess::run({"ffmpeg", QStringList{"-v", "error", "-nostdin", "-y"} + arguments, {}, {}});
    return run && run.value().ending.succeeded();
}

// As ffmpeg's input: a sweep beside noise, so that no two places are alike; up to four channels. The noise begins at
// that second.
inline QStringList variedSound(int frames, int rate, int channels, int noiseFrom = 0) {
    const QString source =
        QStringLiteral("aevalsrc='0.4*sin(t*t*900)+0.3*(random(0)-0.5)*gte(t,%3)|0.5*sin(t*t*700)|0.2*sin(t*900)|"
                       "0.1*sin(t*2000)':s=%1,atrim=end_sample=%2,asetpts=N/SR/TB")
            .arg(rate)
            .arg(frames)
            .arg(noiseFrom);
    QString mapped;
    for (int i = 0; i < channels; ++i)
        mapped += QStringLiteral("|c%1=c%1").arg(i);
    const char *layout = channels == 1 ? "mono" : channels == 2 ? "stereo" : "4.0";
    return {"-f", "lavfi", "-i", source + QStringLiteral(",pan=%1%2").arg(layout, mapped)};
}

// Interleaved samples of the first track of sound at its own rate.
inline std::vector<std::int16_t> decodedSamples(const QString &path) {
    const QString raw = path + ".raw";
    if (!ffmpeg({"-i", path, "-map", "0:a:0", "-f", "s16le", raw}))
        return {};
    const QByteArray bytes = contents(raw);
    QFile::remove(raw);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(bytes.size()) / 2);
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * 2);
    return samples;
}

} // namespace cantorel::test
