#include "platform/hal/core/DeviceTable.h"

#include <algorithm>

namespace cantorel::hal {

void DeviceTable::update(const std::vector<DeviceRecord> &records) {
    // Devices that play take their plain name first; a microphone of the same name is told apart by its suffix.
    for (const bool playing : {true, false}) {
        for (const DeviceRecord &record : records) {
            if ((record.output.channels > 0) == playing && !mNames.contains(record.uid))
                mNames.insert(record.uid, uniqueName(record));
        }
    }
    mPresent.clear();
    for (const DeviceRecord &record : records) {
        if (const AudioObjectID id = identify(record.uid); id != kAudioObjectUnknown)
            mPresent.push_back({id, mNames.value(record.uid), record});
    }
}

QString DeviceTable::uniqueName(const DeviceRecord &record) const {
    const auto taken = [this](const QString &name) {
        return std::any_of(mNames.begin(), mNames.end(), [&](const QString &other) { return other == name; });
    };
    const QString plain = record.name.isEmpty() ? record.uid : record.name;
    if (!taken(plain))
        return plain;
    const QString base = record.output.channels > 0 ? plain : plain + QStringLiteral(" (Input)");
    QString name = base;
    for (int number = 2; taken(name); ++number)
        name = QStringLiteral("%1 (%2)").arg(base).arg(number);
    return name;
}

const Device *DeviceTable::find(AudioObjectID id) const {
    const auto found = std::find_if(mPresent.begin(), mPresent.end(), [&](const Device &d) { return d.id == id; });
    return found == mPresent.end() ? nullptr : &*found;
}

const Device *DeviceTable::findByUid(const QString &uid) const {
    const auto found =
        std::find_if(mPresent.begin(), mPresent.end(), [&](const Device &d) { return d.record.uid == uid; });
    return found == mPresent.end() ? nullptr : &*found;
}

AudioObjectID DeviceTable::identify(const QString &uid) {
    const auto known = mIds.constFind(uid);
    if (known != mIds.constEnd())
        return *known;
    const AudioObjectID id = kFirstDevice + static_cast<AudioObjectID>(mIds.size());
    if (uid.isEmpty() || id >= kFirstStream / 2)
        return kAudioObjectUnknown;
    mIds.insert(uid, id);
    return id;
}

QString DeviceTable::uidOf(AudioObjectID id) const { return mIds.key(id); }

} // namespace cantorel::hal
