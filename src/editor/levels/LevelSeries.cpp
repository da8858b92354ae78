#include "editor/levels/LevelSeries.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace cantorel {

namespace {

constexpr std::size_t kLongBytes = 256 * 1024;           // about a minute of sound
constexpr qint64 kRoomLeft = qint64(1024) * 1024 * 1024; // for recordings

} // namespace

std::shared_ptr<LevelSeries> LevelSeries::make(std::size_t values, const QString &folder) {
    const std::shared_ptr<LevelSeries> series(new LevelSeries); // Its constructor is private.
    const std::size_t bytes = values * sizeof(std::int16_t);
    int error = 0;
    if (bytes >= kLongBytes && QDir().mkpath(folder)
        && QStorageInfo(folder).bytesAvailable() > static_cast<qint64>(bytes) + kRoomLeft)
        if (auto file = foundation::HiddenFile::create(folder, QStringLiteral("levels"), error))
            series->mFile.emplace(std::move(*file));
    if (series->mFile) {
        const foundation::FileDescriptor &file = series->mFile->descriptor();
        // With its room reserved no write to the memory can fail.
        if (::posix_fallocate(file.get(), 0, static_cast<off_t>(kHeaderBytes + bytes)) == 0
            && series->map(file.get(), kHeaderBytes + bytes, true))
            return series;
        series->mFile.reset();
    }
    series->mMemory.resize(values);
    series->mValues = series->mMemory;
    return series;
}

std::shared_ptr<LevelSeries> LevelSeries::open(const QString &path) {
    const std::shared_ptr<LevelSeries> series(new LevelSeries); // Its constructor is private.
    const foundation::FileDescriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat facts {};
    if (!file.isOpen() || ::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode)
        || facts.st_size < static_cast<off_t>(kHeaderBytes)
        || !series->map(file.get(), static_cast<std::size_t>(facts.st_size), false))
        return nullptr;
    return series;
}

LevelSeries::~LevelSeries() {
    if (mMapped)
        ::munmap(mMapped, mMappedBytes);
}

bool LevelSeries::map(int file, std::size_t bytes, bool isNew) {
    void *mapped =
        ::mmap(nullptr, bytes, isNew ? PROT_READ | PROT_WRITE : PROT_READ, isNew ? MAP_SHARED : MAP_PRIVATE, file, 0);
    if (mapped == MAP_FAILED)
        return false;
    mMapped = mapped;
    mMappedBytes = bytes;
    mValues = {reinterpret_cast<std::int16_t *>(static_cast<char *>(mapped) + kHeaderBytes),
               (bytes - kHeaderBytes) / sizeof(std::int16_t)};
    return true;
}

QByteArray LevelSeries::bytes(std::size_t values) const {
    return QByteArray::fromRawData(reinterpret_cast<const char *>(mValues.data()),
                                   static_cast<qsizetype>(std::min(values, mValues.size()) * sizeof(std::int16_t)));
}

std::span<std::uint8_t> LevelSeries::header() {
    if (!mMapped)
        return {};
    return {static_cast<std::uint8_t *>(mMapped), kHeaderBytes};
}

bool LevelSeries::keep(const QString &path) {
    // The file goes on to be shown in memory under whatever name.
    return mFile && ::msync(mMapped, mMappedBytes, MS_SYNC) == 0 && mFile->flush() == 0 && mFile->take(path) == 0;
}

} // namespace cantorel
