#include "platform/hal/core/AggregateStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace cantorel::hal {

AggregateStore::AggregateStore(const QString &file) : mFile(file) {
    QFile stored(mFile);
    if (!stored.open(QIODevice::ReadOnly))
        return;
    const QJsonArray entries = QJsonDocument::fromJson(stored.readAll()).array();
    for (const QJsonValue &entry : entries) {
        AggregateSpec spec;
        spec.uid = entry[QStringLiteral("uid")].toString();
        spec.name = entry[QStringLiteral("name")].toString();
        spec.masterUid = entry[QStringLiteral("master")].toString();
        const QJsonArray subDevices = entry[QStringLiteral("subDevices")].toArray();
        for (const QJsonValue &subDevice : subDevices)
            spec.subDeviceUids.append(subDevice.toString());
        if (!spec.uid.isEmpty())
            mSpecs.push_back(spec);
    }
}

const AggregateSpec *AggregateStore::find(const QString &uid) const {
    const auto found = std::find_if(mSpecs.begin(), mSpecs.end(), [&](const AggregateSpec &s) { return s.uid == uid; });
    return found == mSpecs.end() ? nullptr : &*found;
}

bool AggregateStore::put(const AggregateSpec &spec) {
    const auto found =
        std::find_if(mSpecs.begin(), mSpecs.end(), [&](const AggregateSpec &s) { return s.uid == spec.uid; });
    if (found == mSpecs.end())
        mSpecs.push_back(spec);
    else
        *found = spec;
    return save();
}

void AggregateStore::remove(const QString &uid) {
    std::erase_if(mSpecs, [&](const AggregateSpec &spec) { return spec.uid == uid; });
    (void)save(); // At worst the device is made once more at the next start and destroyed again.
}

bool AggregateStore::save() const {
    QJsonArray entries;
    for (const AggregateSpec &spec : mSpecs) {
        entries.append(QJsonObject{{QStringLiteral("uid"), spec.uid},
                                   {QStringLiteral("name"), spec.name},
                                   {QStringLiteral("master"), spec.masterUid},
                                   {QStringLiteral("subDevices"), QJsonArray::fromStringList(spec.subDeviceUids)}});
    }
    if (!QDir().mkpath(QFileInfo(mFile).path()))
        return false;
    QSaveFile file(mFile);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(entries).toJson()) >= 0 && file.commit();
}

} // namespace cantorel::hal
