#include "platform/media/asset/OpenAsset.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/asset/AssetFailures.h"
#include "platform/media/asset/WaveFile.h"

#include <mutex>
#include <optional>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr const char *kModule = "cantorel-ffmpeg-reader.so";

// What one of the module's functions answers of a file.
template <class Function>
auto askModule(const char *name, std::shared_ptr<const SourceFile> file) -> decltype(std::declval<Function>()(file)) {
    static const auto entry = foundation::loadFunction<Function>(kModule, name);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    return entry.value()(std::move(file));
}

Result<std::shared_ptr<const SourceFile>> openFile(const QUrl &url) {
    if (!url.isLocalFile())
        return failures::notSound(url.toDisplayString(), QStringLiteral("no file of this machine"));
    return SourceFile::open(url.toLocalFile());
}

// Samples that are read as they lie in their file. All else is the module's business, once it is wanted.
class PlainAsset : public Asset {
public:
    PlainAsset(std::shared_ptr<const SourceFile> file, PlainSound sound) : mFile(std::move(file)), mSound(sound) {}

    QUrl url() const override { return QUrl::fromLocalFile(mFile->path()); }
    MediaTime duration() const override { return {mSound.frames, mSound.format.rate}; }
    SoundFormat format() const override { return mSound.format; }
    bool isPlayable() const override { return true; }
    bool hasProtectedContent() const override { return false; }
    QList<MetadataItem> metadata() const override {
        return decoded() ? decoded().value()->metadata() : QList<MetadataItem>();
    }
    std::int64_t soundBytes() const override { return mSound.frames * mSound.frameBytes(); }
    Result<std::unique_ptr<FrameReader>> openReader(SoundFormat format) const override {
        if (!decoded())
            return decoded().failure();
        return decoded().value()->openReader(format);
    }
    Result<std::unique_ptr<SampleReader>> openSampleReader() const override {
        return std::unique_ptr<SampleReader>(std::make_unique<PlainSamples>(mFile, mSound));
    }

private:
    const Result<AssetPointer> &decoded() const {
        std::call_once(mIsAsked, [this] { mDecoded = askModule<AssetEntryPoint>(kAssetEntryPoint, mFile); });
        return *mDecoded;
    }

    const std::shared_ptr<const SourceFile> mFile;
    const PlainSound mSound;
    mutable std::once_flag mIsAsked;
    mutable std::optional<Result<AssetPointer>> mDecoded; // written once
};

} // namespace

Result<AssetPointer> openAsset(const QUrl &url) {
    auto file = openFile(url);
    if (!file)
        return file.failure();
    if (const auto sound = findWaveSound(*file.value()))
        return AssetPointer(std::make_shared<PlainAsset>(std::move(file).value(), *sound));
    return askModule<AssetEntryPoint>(kAssetEntryPoint, std::move(file).value());
}

Result<QList<MetadataItem>> readMetadata(const QUrl &url) {
    auto file = openFile(url);
    if (!file)
        return file.failure();
    return askModule<MetadataEntryPoint>(kMetadataEntryPoint, std::move(file).value());
}

} // namespace cantorel::media
