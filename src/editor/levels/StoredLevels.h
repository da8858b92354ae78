#pragma once

#include "editor/levels/LevelSeries.h"
#include "platform/media/asset/Asset.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace cantorel {

// The series that were read before, in a folder of their own. A file is known again by its size, time, inode and three
// parts of its bytes, whatever it is called. Any thread.
class StoredLevels {
public:
    explicit StoredLevels(QString folder) : mFolder(std::move(folder)) {}

    const QString &folder() const { return mFolder; }
    // Of the file of an asset as it is now; empty for one that is no single file.
    static QByteArray keyOf(const media::Asset &asset);
    // Null where it was not kept, or does not fit the asset.
    std::shared_ptr<LevelSeries> find(const QByteArray &key, const media::Asset &asset) const;
    // Keeps a long one; those that were not asked for the longest go when all take too much room.
    void keep(const QByteArray &key, const media::Asset &asset, LevelSeries &series) const;

private:
    QString pathOf(const QByteArray &key) const;
    void makeRoom() const;

    const QString mFolder;
};

} // namespace cantorel
