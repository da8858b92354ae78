#include "platform/media/ffmpeg/reader/Demuxer.h"

#include "platform/media/asset/AssetFailures.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr int kBufferBytes = 64 * 1024;

int refuseOthers(AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **) { return AVERROR(EACCES); }

} // namespace

int Demuxer::readBytes(void *self, std::uint8_t *into, int size) {
    auto *demuxer = static_cast<Demuxer *>(self);
    const auto got = demuxer->mFile->read(demuxer->mPosition, {into, static_cast<std::size_t>(size)});
    if (!got) {
        demuxer->mFailure = got.failure();
        return AVERROR(EIO);
    }
    demuxer->mPosition += static_cast<std::int64_t>(got.value());
    return got.value() == 0 ? AVERROR_EOF : static_cast<int>(got.value());
}

std::int64_t Demuxer::seekBytes(void *self, std::int64_t offset, int whence) {
    auto *demuxer = static_cast<Demuxer *>(self);
    const std::int64_t size = demuxer->mFile->size();
    if (whence == AVSEEK_SIZE)
        return size;
    std::int64_t base = 0;
    if ((whence & ~AVSEEK_FORCE) == SEEK_CUR)
        base = demuxer->mPosition;
    else if ((whence & ~AVSEEK_FORCE) == SEEK_END)
        base = size;
    if (offset < -base || offset > INT64_MAX - base)
        return AVERROR(EINVAL);
    return demuxer->mPosition = base + offset;
}

Result<std::unique_ptr<Demuxer>> Demuxer::open(std::shared_ptr<const SourceFile> file, Edits edits) {
    const QString path = file->path();
    std::unique_ptr<Demuxer> demuxer(new Demuxer(std::move(file))); // Its constructor is private.
    auto *buffer = static_cast<std::uint8_t *>(av_malloc(kBufferBytes));
    demuxer->mStream.reset(avio_alloc_context(buffer, kBufferBytes, 0, demuxer.get(), readBytes, nullptr, seekBytes));
    AVFormatContext *context = avformat_alloc_context();
    context->pb = demuxer->mStream.get();
    context->io_open = refuseOthers;
    AVDictionary *options = nullptr;
    av_dict_set_int(&options, "ignore_editlist", edits == Edits::Ignored, 0);
    // The name helps to tell what it is; nothing is opened by it.
    const int error = avformat_open_input(&context, QFile::encodeName(path).constData(), nullptr, &options);
    const OptionsHandle unknown{options}; // those that its format does not have
    demuxer->mContext.reset(context);     // null when it failed
    const int found = error < 0 ? error : avformat_find_stream_info(context, nullptr);
    if (demuxer->mFailure)
        return *demuxer->mFailure;
    if (found < 0)
        return failures::notSound(path, ffmpegError(found));
    return demuxer;
}

AVStream *Demuxer::sound() {
    for (unsigned i = 0; i < mContext->nb_streams; ++i)
        if (mContext->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            return mContext->streams[i];
    return nullptr;
}

void Demuxer::select(const AVStream &stream) {
    for (unsigned i = 0; i < mContext->nb_streams; ++i)
        mContext->streams[i]->discard = mContext->streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

Result<bool> Demuxer::next(AVPacket &packet) {
    av_packet_unref(&packet);
    const int error = av_read_frame(mContext.get(), &packet);
    if (mFailure)
        return *mFailure;
    return error >= 0;
}

} // namespace cantorel::media
