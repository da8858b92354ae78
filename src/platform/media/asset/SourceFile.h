#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"

#include <QString>

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace cantorel::media {

// A file that is held open and remembers its size and time. Whatever becomes of its name, this is what is read. Any
// number of threads at once.
class SourceFile {
public:
    static foundation::Result<std::shared_ptr<const SourceFile>> open(const QString &path);

    const QString &path() const { return mPath; }
    std::int64_t size() const { return mWas.st_size; }
    // How many bytes were read, less than asked for only at the end. Fails when the file is not what it was.
    foundation::Result<std::size_t> read(std::int64_t position, std::span<std::uint8_t> into) const;

private:
    SourceFile() = default;

    QString mPath;
    foundation::FileDescriptor mFile;
    struct stat mWas {};
};

} // namespace cantorel::media
