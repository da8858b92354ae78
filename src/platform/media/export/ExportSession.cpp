#include "platform/media/export/ExportSession.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/SoundReader.h"
#include "platform/media/export/ItemList.h"
#include "platform/media/export/MovieSink.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kExportNothing("ExportNothing");
constexpr foundation::SentenceKey kExportIncomplete("ExportIncomplete", "FileName");

constexpr std::size_t kBlock = 32768; // frames

double bytesPerFrame(ExportCoding coding, int rate) {
    return coding == ExportCoding::Aac ? recordingBytesPerSecond(rate) / rate : coding == ExportCoding::Pcm16 ? 4 : 8;
}

Result<void> proved(const foundation::HiddenFile &file, std::int64_t frames, int rate, const QString &name) {
    if (const int error = file.flush())
        return Failure{kExportIncomplete(name), QStringLiteral("flushing %1: errno %2").arg(file.path()).arg(error)};
    const auto facts = soundFacts(file.path());
    const double seconds = static_cast<double>(frames) / rate;
    if (facts && std::abs(facts.value().seconds - seconds) <= facts.value().padding)
        return {};
    return Failure{kExportIncomplete(name),
                   facts ? QStringLiteral("%1 s of %2 s are in it").arg(facts.value().seconds).arg(seconds)
                         : facts.failure().detail};
}

} // namespace

Result<ExportedFile> ExportSession::render(const QString &folder, const std::stop_token &stop,
                                           const std::function<void(double)> &progress) const {
    const int rate = asset->format().rate;
    if (rate <= 0)
        return Failure{kExportNothing(), QStringLiteral("no sound in the asset")};
    auto opened = asset->openReader({rate, 2});
    if (!opened)
        return opened.failure();
    FrameReader &reader = *opened.value();
    const std::int64_t from = range ? std::min(frameAt(rate, range->start), reader.frames()) : 0;
    const std::int64_t to =
        range ? std::min(frameAt(rate, range->start, range->duration), reader.frames()) : reader.frames();
    const std::int64_t frames = to - from;
    if (frames <= 0)
        return Failure{kExportNothing(), QStringLiteral("frames %1 to %2").arg(from).arg(to)};
    if (const auto room = freeBytes(folder);
        room && static_cast<double>(frames) * bytesPerFrame(coding, rate) > static_cast<double>(*room))
        return Failure{kDiskFull(folder), QStringLiteral("%1 frames in %2 bytes").arg(frames).arg(*room)};

    auto made = coding == ExportCoding::Aac ? MovieSink::aac(folder, rate)
                                            : MovieSink::pcm(folder, rate, coding == ExportCoding::PcmFloat);
    if (!made)
        return made.failure();
    MovieSink &sink = *made.value();
    std::vector<float> block(kBlock * 2);
    if (from > 0)
        reader.seek(from);
    for (std::int64_t done = 0; done < frames;) {
        if (stop.stop_requested())
            return Failure{kExportStopped(), QStringLiteral("stopped")};
        const auto got =
            reader.read(block.data(), static_cast<std::size_t>(std::min<std::int64_t>(kBlock, frames - done)));
        if (!got)
            return got.failure();
        if (got.value() == 0)
            return Failure{kExportIncomplete(asset->url().fileName()),
                           QStringLiteral("%1 of %2 frames").arg(done).arg(frames)};
        if (const auto taken = sink.append({block.data(), got.value() * 2}); !taken)
            return taken.failure();
        done += static_cast<std::int64_t>(got.value());
        progress(static_cast<double>(done) / static_cast<double>(frames));
    }
    if (const auto finished = sink.finish(frames, itemList(metadata).data()); !finished)
        return finished.failure();
    ExportedFile exported{std::move(sink).take(), frames, reader.limited()};
    const auto proof = proved(exported.file, frames, rate, asset->url().fileName());
    return proof ? Result(std::move(exported)) : proof.failure();
}

} // namespace cantorel::media
