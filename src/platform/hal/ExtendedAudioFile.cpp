#include "platform/hal/ExtendedAudioFile.h"

#include <QFile>
#include <QtEndian>

#include <memory>

namespace {

constexpr std::uint32_t kSignedInteger = 4;
constexpr std::uint32_t kPacked = 8;
constexpr std::uint16_t kWaveInteger = 1;
constexpr std::uint16_t kWaveFloat = 3;
constexpr std::uint32_t kMaxChannels = 8;
constexpr qint64 kHeaderBytes = 44;

bool isFloat(const AudioStreamBasicDescription &format) {
    return format.mFormatFlags == kAudioFormatFlagsNativeFloatPacked && format.mBitsPerChannel == 32;
}

bool isSupported(const AudioStreamBasicDescription &format) {
    const bool integer = format.mFormatFlags == (kSignedInteger | kPacked) && format.mBitsPerChannel == 16;
    return format.mFormatID == kAudioFormatLinearPCM && (isFloat(format) || integer) && format.mChannelsPerFrame >= 1
           && format.mChannelsPerFrame <= kMaxChannels && format.mSampleRate >= 1 && format.mSampleRate <= 1e6
           && format.mBytesPerFrame == format.mChannelsPerFrame * format.mBitsPerChannel / 8;
}

template <class T> void append(QByteArray &bytes, T value) {
    const T little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
}

QByteArray header(const AudioStreamBasicDescription &format, qint64 dataBytes) {
    const auto data = static_cast<std::uint32_t>(std::min<qint64>(dataBytes, 0xFFFFFFFF - kHeaderBytes));
    const auto rate = static_cast<std::uint32_t>(format.mSampleRate);
    QByteArray bytes("RIFF");
    append<std::uint32_t>(bytes, data + kHeaderBytes - 8);
    bytes += "WAVEfmt ";
    append<std::uint32_t>(bytes, 16);
    append<std::uint16_t>(bytes, isFloat(format) ? kWaveFloat : kWaveInteger);
    append<std::uint16_t>(bytes, static_cast<std::uint16_t>(format.mChannelsPerFrame));
    append<std::uint32_t>(bytes, rate);
    append<std::uint32_t>(bytes, rate * format.mBytesPerFrame);
    append<std::uint16_t>(bytes, static_cast<std::uint16_t>(format.mBytesPerFrame));
    append<std::uint16_t>(bytes, static_cast<std::uint16_t>(format.mBitsPerChannel));
    bytes += "data";
    append<std::uint32_t>(bytes, data);
    return bytes;
}

} // namespace

struct OpaqueExtAudioFile {
    QFile file;
    AudioStreamBasicDescription format = {};
};

OSStatus ExtAudioFileCreateNew(const FSRef *parentFolder, CFStringRef fileName, AudioFileTypeID type,
                               const AudioStreamBasicDescription *format, const AudioChannelLayout *,
                               ExtAudioFileRef *file) {
    if (!parentFolder || !fileName || fileName->isEmpty() || !format || !file)
        return kAudioFileUnspecifiedError;
    if (type != kAudioFileWAVEType)
        return kAudioFileUnsupportedFileTypeError;
    if (!isSupported(*format))
        return kAudioFileUnsupportedDataFormatError;
    auto made = std::make_unique<OpaqueExtAudioFile>();
    made->format = *format;
    made->file.setFileName(parentFolder->path + QLatin1Char('/') + *fileName);
    const QByteArray begin = header(*format, 0);
    if (!made->file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || made->file.write(begin) != begin.size())
        return kAudioFilePermissionsError;
    *file = made.release(); // The caller's, until it is disposed of.
    return kAudioHardwareNoError;
}

OSStatus ExtAudioFileWrite(ExtAudioFileRef file, std::uint32_t frames, const AudioBufferList *data) {
    const auto bytes = static_cast<qint64>(frames) * file->format.mBytesPerFrame;
    if (!data || data->mNumberBuffers != 1 || data->mBuffers[0].mDataByteSize < bytes)
        return kAudioFileUnspecifiedError;
    const auto *samples = static_cast<const char *>(data->mBuffers[0].mData);
    return file->file.write(samples, bytes) == bytes ? kAudioHardwareNoError : kAudioFileUnspecifiedError;
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef file) {
    const std::unique_ptr<OpaqueExtAudioFile> owned(file);
    const QByteArray begin = header(owned->format, owned->file.size() - kHeaderBytes);
    const bool done =
        owned->file.flush() && owned->file.seek(0) && owned->file.write(begin) == begin.size() && owned->file.flush();
    return done ? kAudioHardwareNoError : kAudioFileUnspecifiedError;
}
