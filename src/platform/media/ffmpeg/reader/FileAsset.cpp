#include "platform/media/ffmpeg/reader/FileAsset.h"

#include "platform/media/asset/OpenAsset.h"
#include "platform/media/asset/PlainSamples.h"
#include "platform/media/ffmpeg/reader/ConvertedSound.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

class FileFrames : public FrameReader {
public:
    FileFrames(std::shared_ptr<const SoundTrack> track, std::unique_ptr<ConvertedSound> sound)
        : mTrack(std::move(track)), mSound(std::move(sound)) {
        mSound->setExact(true);
    }

    SoundFormat format() const override { return mSound->format(); }
    std::int64_t frames() const override { return mSound->frames(); }
    Result<std::size_t> read(float *interleaved, std::size_t frames) override {
        return mSound->read(interleaved, frames);
    }
    void seek(std::int64_t frame) override { mSound->seek(frame); }
    void hurry() override { mSound->setExact(false); }

private:
    std::shared_ptr<const SoundTrack> mTrack; // the sound refers to it
    std::unique_ptr<ConvertedSound> mSound;
};

class FileSamples : public SampleReader {
public:
    FileSamples(std::shared_ptr<const SoundTrack> track, std::unique_ptr<ConvertedSound> sound)
        : mTrack(std::move(track)), mSound(std::move(sound)) {}

    SoundFormat format() const override { return mSound->format(); }
    std::int64_t frames() const override { return mSound->frames(); }
    Result<std::size_t> read(std::int16_t *interleaved, std::size_t frames) override {
        return mSound->read(interleaved, frames);
    }
    void seek(std::int64_t frame) override { mSound->seek(frame); }
    bool needsAllBefore() override { return mSound->needsAllBefore(); }

private:
    std::shared_ptr<const SoundTrack> mTrack; // the sound refers to it
    std::unique_ptr<ConvertedSound> mSound;
};

template <class Reader, class Interface>
Result<std::unique_ptr<Interface>> opened(const std::shared_ptr<const SoundTrack> &track, AVSampleFormat sample,
                                          SoundFormat format) {
    auto sound = ConvertedSound::open(*track, sample, format);
    if (!sound)
        return sound.failure();
    return std::unique_ptr<Interface>(std::make_unique<Reader>(track, std::move(sound).value()));
}

struct CommonKey {
    const char *name; // libavformat's
    const char *common;
};

constexpr CommonKey kCommonKeys[] = {
    {"title", "title"}, {"artist", "artist"}, {"album", "album"}, {"genre", "type"}, {"date", "creationDate"}};

QString keySpaceOf(const AVFormatContext &context) {
    const std::string_view name = context.iformat->name;
    if (name == "mp3" || name == "aac" || name == "aiff")
        return QStringLiteral("id3");
    if (name.find("mp4") != std::string_view::npos)
        return QStringLiteral("itunes");
    if (name == "flac" || name == "ogg")
        return QStringLiteral("vorbis");
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

// By its first bytes: what a file calls its picture is often wrong.
QString pictureType(const QByteArray &data) {
    if (data.startsWith("\xFF\xD8\xFF"))
        return QStringLiteral("image/jpeg");
    if (data.startsWith("\x89PNG\r\n\x1A\n"))
        return QStringLiteral("image/png");
    if (data.startsWith("GIF8"))
        return QStringLiteral("image/gif");
    if (data.startsWith("BM"))
        return QStringLiteral("image/bmp");
    if (data.startsWith("RIFF") && data.mid(8, 4) == "WEBP")
        return QStringLiteral("image/webp");
    return {};
}

void addTexts(const AVDictionary *texts, const QString &keySpace, QList<MetadataItem> &items) {
    const AVDictionaryEntry *entry = nullptr;
    while ((entry = av_dict_get(texts, "", entry, AV_DICT_IGNORE_SUFFIX))) {
        MetadataItem item{keySpace, {}, QString::fromUtf8(entry->value), {}};
        for (const CommonKey &key : kCommonKeys)
            if (qstricmp(entry->key, key.name) == 0)
                item.commonKey = QString::fromLatin1(key.common);
        if (!item.text.isEmpty())
            items.append(item);
    }
}

QList<MetadataItem> metadataOf(const AVFormatContext &context) {
    QList<MetadataItem> items;
    const QString keySpace = keySpaceOf(context);
    addTexts(context.metadata, keySpace, items);
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        const AVStream &stream = *context.streams[i];
        if (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) {
            const QByteArray data(reinterpret_cast<const char *>(stream.attached_pic.data), stream.attached_pic.size);
            items.append({keySpace, QStringLiteral("artwork"), pictureType(data), data});
        } else if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            addTexts(stream.metadata, keySpace, items);
        }
    }
    return items;
}

} // namespace

Result<AssetPointer> FileAsset::open(std::shared_ptr<const SourceFile> file) {
    auto demuxer = Demuxer::open(file, Edits::Applied);
    if (!demuxer)
        return demuxer.failure();
    QList<MetadataItem> metadata = metadataOf(demuxer.value()->context());
    auto track = readTrack(std::move(file), std::move(demuxer).value());
    if (!track)
        return track.failure();
    return AssetPointer(new FileAsset(std::move(track).value(), std::move(metadata))); // Its constructor is private.
}

Result<QList<MetadataItem>> readMetadataOf(std::shared_ptr<const SourceFile> file) {
    auto demuxer = Demuxer::open(std::move(file), Edits::Applied);
    if (!demuxer)
        return demuxer.failure();
    return metadataOf(demuxer.value()->context());
}

MediaTime FileAsset::duration() const { return {mTrack->frames, std::max(mTrack->format.rate, 1)}; }

Result<std::unique_ptr<FrameReader>> FileAsset::openReader(SoundFormat format) const {
    return opened<FileFrames, FrameReader>(mTrack, AV_SAMPLE_FMT_FLT, format);
}

Result<std::unique_ptr<SampleReader>> FileAsset::openSampleReader() const {
    if (mTrack->isPlain())
        return std::unique_ptr<SampleReader>(std::make_unique<PlainSamples>(
            mTrack->file,
            PlainSound{mTrack->format, int(sizeof(std::int16_t)), mTrack->packets.packet(0).position, mTrack->frames}));
    return opened<FileSamples, SampleReader>(mTrack, AV_SAMPLE_FMT_S16, mTrack->format);
}

} // namespace cantorel::media

namespace {

void prepareLibraries() {
    constexpr std::size_t kLargestBlock = std::size_t(512) * 1024 * 1024; // of memory: a file may promise anything
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(kLargestBlock);
}

} // namespace

extern "C" __attribute__((visibility("default"))) cantorel::foundation::Result<cantorel::media::AssetPointer>
cantorel_open_asset(std::shared_ptr<const cantorel::media::SourceFile> file) {
    prepareLibraries();
    return cantorel::media::FileAsset::open(std::move(file));
}

extern "C" __attribute__((visibility("default"))) cantorel::foundation::Result<QList<cantorel::media::MetadataItem>>
cantorel_read_metadata(std::shared_ptr<const cantorel::media::SourceFile> file) {
    prepareLibraries();
    return cantorel::media::readMetadataOf(std::move(file));
}
