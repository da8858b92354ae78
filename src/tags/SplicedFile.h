#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <vector>

namespace cantorel {

// A stretch of a file, or new bytes.
struct FilePiece {
    std::int64_t at = -1; // where in the file it begins; below 0 for new bytes
    std::int64_t length = 0;
    QByteArray bytes; // the new ones
};

// A file as it is to become: stretches of what it is, and new bytes between them. Changing it moves nothing and writes
// nothing. One thread.
class SplicedFile {
public:
    // Reads through the descriptor, which outlives this.
    explicit SplicedFile(const foundation::FileDescriptor &file);

    // The file as it is.
    SplicedFile original() const;

    const std::vector<FilePiece> &pieces() const { return mPieces; }
    // Whether what it was read from could not be read.
    bool hasFailed() const { return mHasFailed; }

    std::int64_t size() const { return mSize; }
    // As many bytes as there are; fewer at the end. The first answers how many.
    std::int64_t readTo(char *to, std::int64_t at, std::int64_t count) const;
    QByteArray read(std::int64_t at, std::int64_t count) const;
    // The bytes take the place of `replaced` others.
    void splice(std::int64_t at, std::int64_t replaced, const QByteArray &bytes);
    // Reads both, unless it is one stretch of the file that both are made from.
    friend bool haveSameBytes(const SplicedFile &one, std::int64_t oneAt, const SplicedFile &other,
                              std::int64_t otherAt, std::int64_t count);

private:
    std::int64_t oldPlace(std::int64_t at, std::int64_t count) const;
    std::int64_t readOld(char *to, std::int64_t at, std::int64_t count) const;
    std::size_t cutAt(std::int64_t at);

    const foundation::FileDescriptor &mFile;
    std::vector<FilePiece> mPieces;
    std::int64_t mSize = 0;
    mutable bool mHasFailed = false;
    // Stretches of the file as it is, the last one used first: most reads are short, at its start or near its end.
    struct Window {
        QByteArray bytes;
        std::int64_t at = 0;
    };
    mutable std::array<Window, 2> mWindows;
};

// Up to the end of the file, or to a fault of the disk.
std::int64_t readAll(const foundation::FileDescriptor &file, char *to, std::int64_t at, std::int64_t count);

// What makes the file of before from the one that is made of these pieces of it. `before` is the file that the pieces
// were taken from.
std::vector<FilePiece> inversePieces(const std::vector<FilePiece> &pieces, const SplicedFile &before);

} // namespace cantorel
