#include "platform/hal/core/DisplacedDefault.h"

#include "platform/foundation/FileLock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace cantorel::hal {

bool DisplacedDefaultFile::lock() {
    if (mLock.isOpen())
        return true;
    if (!QDir().mkpath(QFileInfo(mPath).path()))
        return false;
    mLock = foundation::lockFile(mPath + QStringLiteral(".lock"));
    return mLock.isOpen();
}

DisplacedDefaultFile::Found DisplacedDefaultFile::claim(DisplacedDefault &left) {
    QFile file(mPath);
    if (!file.exists())
        return Found::Nothing;
    if (!lock())
        return Found::InUse;
    const QJsonObject object =
        file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
    const QJsonValue choice = object[QStringLiteral("choice")];
    left.choice = choice.isString() ? std::optional(choice.toString()) : std::nullopt;
    left.device = object[QStringLiteral("device")].toString();
    left.instead = object[QStringLiteral("instead")].toString();
    if (!left.instead.isEmpty())
        return Found::Left;
    remove(); // Damaged: it says nothing.
    return Found::Nothing;
}

bool DisplacedDefaultFile::write(const DisplacedDefault &displaced) {
    QJsonObject object{{QStringLiteral("device"), displaced.device}, {QStringLiteral("instead"), displaced.instead}};
    if (displaced.choice)
        object[QStringLiteral("choice")] = *displaced.choice;
    QSaveFile file(mPath);
    return lock() && file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(object).toJson()) >= 0
           && file.commit();
}

void DisplacedDefaultFile::remove() {
    if (!mLock.isOpen())
        return;
    (void)QFile::remove(mPath); // What stays is found to be restored already by the next start.
    mLock.reset();
}

} // namespace cantorel::hal
