#pragma once

#include "platform/hal/AudioHardwareTypes.h"
#include "platform/hal/HardwareBackend.h"

#include <QHash>

#include <map>
#include <optional>
#include <vector>

namespace cantorel::hal {

// One device under its identifier and its unique name.
struct Device {
    AudioObjectID id = kAudioObjectUnknown;
    QString name;
    DeviceRecord record;

    bool operator==(const Device &) const = default;
};

// Gives devices their identifiers and names. A device that returns gets its own again; neither is ever given to another
// one while the program runs. Owned and locked by ObjectTable.
class DeviceTable {
public:
    // Identifiers start here, above the objects that are no devices, and stay below 32,768 with those of the streams.
    static constexpr AudioObjectID kFirstDevice = 16;
    static constexpr AudioObjectID kFirstStream = 16384;

    // Takes a new snapshot of what the backend has.
    void update(const std::vector<DeviceRecord> &records);

    // Those present, in the backend's order.
    const std::vector<Device> &present() const { return mPresent; }
    const Device *find(AudioObjectID id) const;
    const Device *findByUid(const QString &uid) const;

    // The identifier of a UID, present or not; made when it is new. 0 when all are used up.
    AudioObjectID identify(const QString &uid);
    // The UID of an identifier that was ever given, present or not.
    QString uidOf(AudioObjectID id) const;

private:
    QString uniqueName(const DeviceRecord &record) const;

    std::vector<Device> mPresent;
    QHash<QString, AudioObjectID> mIds;
    QHash<QString, QString> mNames; // by UID
};

} // namespace cantorel::hal
