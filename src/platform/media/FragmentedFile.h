#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"
#include "platform/media/Codecs.h"
#include "platform/media/MovieFormat.h"
#include "platform/media/SampleTable.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace cantorel::media {

// What a recording has become when it is closed. Both play.
enum class FileForm {
    Ordinary, // one index at the end, as every player expects it
    Fragments // the index did not fit on the disk
};

// An M4A or MP4 file that can be played after every append(), also when the program or the machine ends there, and that
// becomes an ordinary one in place when it is finished. Owned and used by one thread at a time.
class FragmentedFile {
public:
    enum class Taken { IsReplaced, Fails };
    // What becomes of a file that has the name already.
    static foundation::Result<std::unique_ptr<FragmentedFile>> create(const QString &path, const MovieFormat &format,
                                                                      Taken taken = Taken::IsReplaced);
    // Goes on behind the whole fragments of a file that ends at `end`; for a copy that is being repaired.
    static std::unique_ptr<FragmentedFile> resume(const QString &path, foundation::FileDescriptor file,
                                                  const MovieFormat &format, MovieTable table, std::uint64_t end);

    // One fragment, in one write. After a failure the file ends with the fragment before, and takes no more.
    foundation::Result<void> append(const PacketRun &packets, const PictureRun &pictures = {});

    // Closes the file; validFrames is what is to be heard, where there is sound. Possible after a failed append().
    foundation::Result<FileForm> finish(std::int64_t validFrames);

    // Whether the file was removed together with its folder, so that no path leads to it.
    bool isLost() const;
    // Where the file lies now, also when its folder was renamed; empty when no path leads to it.
    QString place() const;
    // Copies what was written, also of a lost file; nothing is replaced, and nothing is left of a copy that fails.
    foundation::Result<void> copyTo(const QString &path) const;

    bool isEmpty() const { return mFragments == 0; } // nothing was appended yet
    std::uint64_t bytes() const { return mEnd; }
    std::size_t packets() const { return mTable.sound.packets(); }

private:
    FragmentedFile(QString path, foundation::FileDescriptor file, const MovieFormat &format);
    double seconds() const;                                                   // that were written
    int writeAt(std::uint64_t position, std::span<const std::uint8_t> bytes); // 0 or an errno
    void cutBack();

    const QString mPath;
    foundation::FileDescriptor mFile;
    const MovieFormat mFormat;
    MovieTable mTable;
    std::uint32_t mFragments = 0;
    std::uint64_t mEnd = 0; // bytes up to the end of the last whole fragment
    double mSyncedSeconds = 0;
    int mError = 0; // of the write that failed; nothing is written after it
};

} // namespace cantorel::media
