#pragma once

#include "platform/foundation/HiddenFile.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace cantorel {

// A series of levels: in memory, or where it is long in a file of which memory shows what is looked at. Several threads
// may write different parts of it.
class LevelSeries {
public:
    // In front of the values in a file; what it says is the keeper's matter.
    static constexpr std::size_t kHeaderBytes = 4096;

    // With room for that many values, all 0. A long one lies in a new hidden file of that folder where the disk has
    // room for it.
    static std::shared_ptr<LevelSeries> make(std::size_t values, const QString &folder);
    // One that was kept; null where there is none such.
    static std::shared_ptr<LevelSeries> open(const QString &path);
    ~LevelSeries();
    LevelSeries(const LevelSeries &) = delete;
    LevelSeries &operator=(const LevelSeries &) = delete;

    std::span<std::int16_t> values() { return mValues; }
    // The first of them, as bytes in the order of the machine. Valid as long as the series lives.
    QByteArray bytes(std::size_t values) const;
    // Empty where it lies in no file.
    std::span<std::uint8_t> header();
    // Has its file stay under that name once it is on the disk. False where it lies in no file, or the name is taken.
    bool keep(const QString &path);

private:
    LevelSeries() = default;
    bool map(int file, std::size_t bytes, bool isNew);

    std::optional<foundation::HiddenFile> mFile;
    std::vector<std::int16_t> mMemory;
    void *mMapped = nullptr;
    std::size_t mMappedBytes = 0;
    std::span<std::int16_t> mValues;
};

} // namespace cantorel
