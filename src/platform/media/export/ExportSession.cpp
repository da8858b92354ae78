#include "platform/media/export/ExportSession.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/SoundFacts.h"
#include "platform/media/asset/OpenAsset.h"
#include "platform/media/export/ItemList.h"
#include "platform/media/export/MovieSink.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <future>
#include <memory>
#include <utility>
#include <vector>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kExportNothing("ExportNothing");
constexpr foundation::SentenceKey kExportIncomplete("ExportIncomplete", "FileName");

constexpr std::size_t kBlock = 32768;               // frames
constexpr std::int64_t kWorthSharing = 16 * kBlock; // frames

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

// A stretch of sound on its way into a file. Threads render parts of it; where one fails, the others end.
class Rendering {
public:
    // from: the frame of the sound that is the first of the stretch. incomplete: what is said where it ends early.
    Rendering(MovieSink &sink, std::int64_t from, std::stop_token stop, foundation::Sentence incomplete)
        : mSink(sink), mFrom(from), mStop(std::move(stop)), mIncomplete(std::move(incomplete)) {}

    // The frames of the stretch from first up to end. Tells how many all threads have done.
    Result<void> render(const Result<std::unique_ptr<FrameReader>> &reader, std::int64_t first, std::int64_t end,
                        const std::function<void(std::int64_t done)> &progressed) {
        auto rendered = reader ? read(*reader.value(), first, end, progressed) : reader.failure();
        mIsFailed = mIsFailed || !rendered;
        return rendered;
    }

private:
    Result<void> read(FrameReader &reader, std::int64_t first, std::int64_t end,
                      const std::function<void(std::int64_t done)> &progressed) {
        std::vector<float> block(kBlock * 2);
        if (mFrom + first > 0)
            reader.seek(mFrom + first);
        while (first < end && !mIsFailed) {
            if (mStop.stop_requested())
                return Failure{kExportStopped(), QStringLiteral("stopped")};
            const auto got =
                reader.read(block.data(), static_cast<std::size_t>(std::min<std::int64_t>(kBlock, end - first)));
            if (!got)
                return got.failure();
            if (got.value() == 0)
                return Failure{mIncomplete, QStringLiteral("%1 of %2 frames").arg(first).arg(end)};
            if (auto taken = mSink.put(first, {block.data(), got.value() * 2}); !taken)
                return taken;
            const auto frames = static_cast<std::int64_t>(got.value());
            first += frames;
            progressed(mDone += frames);
        }
        return {};
    }

    MovieSink &mSink;
    const std::int64_t mFrom;
    const std::stop_token mStop;
    const foundation::Sentence mIncomplete;
    std::atomic<std::int64_t> mDone = 0;
    std::atomic<bool> mIsFailed = false;
};

} // namespace

Result<ExportedFile> ExportSession::render(const QString &path, const std::stop_token &stop,
                                           const std::function<void(double)> &progress) const {
    const int rate = asset->format().rate;
    if (rate <= 0 || asset->hasProtectedContent())
        return Failure{kExportNothing(), QStringLiteral("no sound in the asset that can be read")};
    const QFileInfo target(path);
    const QString folder = target.absolutePath();
    const foundation::Sentence incomplete = kExportIncomplete(target.fileName());
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
    // Bare samples have their places, so that another thread begins in the middle.
    const bool isShared = coding != ExportCoding::Aac && frames >= kWorthSharing;
    const std::int64_t middle = isShared ? frames / 2 : frames;
    Rendering rendering(sink, from, stop, incomplete);
    std::int64_t limited = 0;
    std::future<Result<void>> second;
    if (isShared)
        second = std::async(std::launch::async, [&] {
            const auto other = asset->openReader({rate, 2});
            auto rendered = rendering.render(other, middle, frames, [](std::int64_t) {});
            limited = other ? other.value()->limited() : 0;
            return rendered;
        });
    auto rendered = rendering.render(opened, 0, middle, [&](std::int64_t done) {
        progress(static_cast<double>(done) / static_cast<double>(frames));
    });
    if (isShared) {
        const auto rest = second.get();
        if (rendered)
            rendered = rest;
        progress(1);
    }
    if (!rendered)
        return rendered.failure();
    if (const auto finished = sink.finish(frames, itemList(metadata).data()); !finished)
        return finished.failure();
    ExportedFile exported{std::move(sink).take(), frames, reader.limited() + limited};
    QString lack = lackOf(exported.file.path(), {frames, rate});
    if (lack.isEmpty() && coding == ExportCoding::Aac)
        lack = lackOfLasting(exported.file, {frames, rate});
    return lack.isEmpty() ? Result(std::move(exported)) : Failure{incomplete, lack};
}

} // namespace cantorel::media
