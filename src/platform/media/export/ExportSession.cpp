#include "platform/media/export/ExportSession.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/SoundFacts.h"
#include "platform/media/asset/OpenAsset.h"
#include "platform/media/export/ItemList.h"
#include "platform/media/export/MovieSink.h"

#include <QFileInfo>
#include <QUrl>

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

// What the file lacks by what it says of itself.
QString lackOf(const QString &path, MediaTime wanted) {
    const auto asset = openAsset(QUrl::fromLocalFile(path));
    if (!asset)
        return asset.failure().detail;
    const MediaTime held = asset.value()->duration();
    return held.value == wanted.in(held.timescale).value
               ? QString()
               : QStringLiteral("%1 s of %2 s are in it").arg(held.seconds()).arg(wanted.seconds());
}

// The same of one that is going to stay, by what can be read.
QString lackOfLasting(const foundation::HiddenFile &file, MediaTime wanted) {
    if (const int error = file.flush())
        return QStringLiteral("flushing it: errno %1").arg(error);
    const auto facts = soundFacts(file.path());
    if (!facts)
        return facts.failure().detail;
    return std::abs(facts.value().seconds - wanted.seconds()) <= facts.value().padding
               ? QString()
               : QStringLiteral("%1 s of %2 s can be read").arg(facts.value().seconds).arg(wanted.seconds());
}

} // namespace

Result<ExportedFile> ExportSession::render(const QString &path, const std::stop_token &stop,
                                           const std::function<void(double)> &progress) const {
    const int rate = asset->format().rate;
    if (rate <= 0 || asset->hasProtectedContent())
        return Failure{kExportNothing(), QStringLiteral("no sound in the asset that can be read")};
    const QFileInfo target(path);
    const QString folder = target.absolutePath();
    const auto incomplete = [&](const QString &detail) {
        return Failure{kExportIncomplete(target.fileName()), detail};
    };
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
            return incomplete(QStringLiteral("%1 of %2 frames").arg(done).arg(frames));
        if (const auto taken = sink.append({block.data(), got.value() * 2}); !taken)
            return taken.failure();
        done += static_cast<std::int64_t>(got.value());
        progress(static_cast<double>(done) / static_cast<double>(frames));
    }
    if (const auto finished = sink.finish(frames, itemList(metadata).data()); !finished)
        return finished.failure();
    ExportedFile exported{std::move(sink).take(), frames, reader.limited()};
    QString lack = lackOf(exported.file.path(), {frames, rate});
    if (lack.isEmpty() && coding == ExportCoding::Aac)
        lack = lackOfLasting(exported.file, {frames, rate});
    return lack.isEmpty() ? Result(std::move(exported)) : incomplete(lack);
}

} // namespace cantorel::media
