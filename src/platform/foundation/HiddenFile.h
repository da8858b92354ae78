#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileIdentity.h"

#include <QString>

#include <sys/types.h>

#include <optional>

namespace cantorel::foundation {

// A file that grows under a hidden name of ours and takes its true name once it is whole. It is locked while somebody
// makes it; when it has not taken a name by its end it is removed, and after a crash sweep() does that. Numbers that
// are answered are 0 or an errno. One thread at a time.
class HiddenFile {
public:
    // A new and empty one. The extension goes without its full stop. Nothing, with an errno in `error`, when the folder
    // does not take it. rights: what the person's umask takes from is left.
    static std::optional<HiddenFile> create(const QString &folder, const QString &extension, int &error,
                                            mode_t rights = 0666);
    HiddenFile(HiddenFile &&other) noexcept;
    HiddenFile &operator=(HiddenFile &&) = delete;
    ~HiddenFile();

    const QString &path() const { return mPath; }
    // Open to read and write.
    const FileDescriptor &descriptor() const { return mFile; }

    // Waits until all of it is on the disk. EIO when another file stands under its name by now.
    int flush() const;
    // Takes the name unless there is a file of that name already: EEXIST.
    int take(const QString &path);
    // Takes the place of that very file. ESTALE when another one stands there.
    int replace(const QString &path, const FileIdentity &old);

    // Removes what ended programs of ours have left in the folder. What a living one makes stays.
    static void sweep(const QString &folder);

private:
    HiddenFile(QString path, FileDescriptor file);
    int taken(const QString &path);

    QString mPath; // empty once it has taken its name
    FileDescriptor mFile;
};

} // namespace cantorel::foundation
