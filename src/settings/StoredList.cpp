#include "settings/StoredList.h"

#include "log/Log.h"
#include "platform/foundation/KeyedArchiver.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>

namespace cantorel {

std::pair<QByteArray, bool> readStoredList(const QString &key, const QString &folderForDamaged,
                                           const std::function<void(const QVariant &archived)> &take) {
    const QByteArray archive = AppSettings::getFromUserDefaults_Data(key);
    if (archive.isEmpty() || foundation::unarchiveItems(archive, take))
        return {archive, true};
    const std::pair damaged(archive, false);
    const QString last = folderForDamaged + QLatin1Char('/') + key + QStringLiteral(".damaged");
    if (QFile copy(last); copy.open(QIODevice::ReadOnly) && copy.readAll() == archive)
        return damaged; // A start before has copied it.
    const QString aside = ToolString::renameFromFilePath(last, 0);
    const bool copied = ToolFile::createFolderAtPath(folderForDamaged) && ToolFile::writeData(archive, aside, false);
    Log(QStringLiteral("the stored list \"%1\" is damaged and starts empty; %2")
            .arg(key, copied ? QStringLiteral("a copy is kept in \"%1\"").arg(aside)
                             : QStringLiteral("no copy of it could be made")));
    return damaged;
}

} // namespace cantorel
