#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"
#include "tags/SplicedFile.h"
#include "tags/id3Tag.h"

#include <QString>

#include <sys/types.h>

#include <ctime>
#include <utility>
#include <vector>

namespace cantorel {

// One file and what of its tags is to change, or the whole record that it is to have.
struct TagsOfFile {
    TagsOfFile(QString file, id3TagEdit changes) : path(std::move(file)), edit(std::move(changes)) {}
    TagsOfFile(QString file, const id3Tag &whole)
        : path(std::move(file)), edit{whole.id3Title, whole.id3Artist, whole.id3Album,
                                      whole.id3Genre, whole.id3Year,   whole.id3Image} {}

    QString path;
    id3TagEdit edit;
};

// What makes files again what they were before their tags were written. A value, as long as anybody wants to keep it.
struct TagUndo {
    // Which file, and in which state, as far as that shows without reading it.
    struct Version {
        dev_t device = 0;
        ino_t number = 0;
        off_t size = 0;
        timespec modified{};
        bool operator==(const Version &other) const;
    };
    struct File {
        QString path;
        std::vector<FilePiece> pieces; // of the file as it was, in that as it is
        Version written;
        timespec modified{}; // before
    };
    std::vector<File> files;
};

// What has come of several files: each is done or is as it was.
struct TagsWritten {
    struct Failed {
        QString path;
        foundation::Failure failure; // logged already
    };
    TagUndo undo;
    std::vector<Failed> failures;
};

// Writes the tags of files, each for itself. A file is replaced by a copy that has been read back, with the same sound,
// rights, owner and attributes; who kills us in the middle finds the old one or the new one. A file that stays the same
// is not touched. What a link leads to is written; other hard links keep the old tags, which is logged. Any thread.
TagsWritten writeTags(const std::vector<TagsOfFile> &files);

// Whether the file there has the sound of the one that is open, and other tags at most. Any thread.
bool hasSoundOf(const foundation::FileDescriptor &before, const QString &path);

// Makes the files again what they were, byte for byte, unless somebody has changed one since.
std::vector<TagsWritten::Failed> undoTags(const TagUndo &undo);

} // namespace cantorel
