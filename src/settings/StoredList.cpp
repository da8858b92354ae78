#include "settings/StoredList.h"

#include "log/Log.h"
#include "platform/foundation/KeyedArchiver.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QFile>

namespace cantorel {

StoredList loadStoredList(const QString &key, const QString &folderForDamaged) {
    StoredList stored;
    stored.archive = AppSettings::getFromUserDefaults_Data(key);
    if (stored.archive.isEmpty())
        return stored;
    const auto value = foundation::unarchivedObject(stored.archive);
    if (value && value->typeId() == QMetaType::QVariantList) {
        stored.items = value->toList();
        return stored;
    }
    const QString last = folderForDamaged + QLatin1Char('/') + key + QStringLiteral(".damaged");
    if (QFile copy(last); copy.open(QIODevice::ReadOnly) && copy.readAll() == stored.archive)
        return stored; // A start before has copied it.
    const QString aside = ToolString::renameFromFilePath(last, 0);
    const bool copied =
        ToolFile::createFolderAtPath(folderForDamaged) && ToolFile::writeData(stored.archive, aside, false);
    Log(QStringLiteral("the stored list \"%1\" is damaged and starts empty; %2")
            .arg(key, copied ? QStringLiteral("a copy is kept in \"%1\"").arg(aside)
                             : QStringLiteral("no copy of it could be made")));
    return stored;
}

} // namespace cantorel
