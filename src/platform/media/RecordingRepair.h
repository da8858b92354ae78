#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"

#include <QString>

#include <cstdint>
#include <optional>

// Recordings whose program ended before they were closed.
namespace cantorel::media {

struct RepairedFile {
    double durationSeconds = 0;
    std::uint64_t bytes = 0;
};

// Whether the file is a recording of ours that was not closed. Reads a few hundred bytes; false for what it cannot
// read.
bool isUnfinished(const QString &path);
bool isUnfinished(const foundation::FileDescriptor &file);

// What such a file holds.
enum class UnfinishedSound {
    None,  // its program ended before the first sound, or it is another file
    Lost,  // something, but no whole fragment
    Whole, // enough to repair it
};
UnfinishedSound unfinishedSound(const QString &path);

// The approximate length of an unfinished file, estimated from about its first minute and its size; exact for a file
// that short. 0 for any other file. Takes the same time for every size.
double unfinishedSeconds(const QString &path);

// The length of a movie of ours that was closed; nothing for any other file. Reads a few bytes.
std::optional<double> movieSeconds(const QString &path);

// Makes an ordinary M4A or MP4 at copyPath of all whole fragments of the file; what is damaged between them is passed
// over, but every byte of it stays in the copy. The copy appears under its name only when it is whole and on the disk.
// A file of that name is replaced, also the one that is repaired; a failure leaves it as it was and nothing else. Time
// grows with the size, memory by two bytes a packet. Any thread.
foundation::Result<RepairedFile> repairUnfinished(const QString &path, const QString &copyPath);

} // namespace cantorel::media
