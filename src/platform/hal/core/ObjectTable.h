#pragma once

#include "platform/hal/core/AggregateStore.h"
#include "platform/hal/core/DefaultChoice.h"
#include "platform/hal/core/DeviceIO.h"
#include "platform/hal/core/DeviceProperties.h"
#include "platform/hal/core/ListenerList.h"

#include <QObject>

#include <atomic>
#include <map>
#include <mutex>

namespace cantorel::hal {

// Answers the hardware API from a backend: looks up the object and forwards. Owned by HardwareSystem; its functions may
// be called from any thread and lock the table, except stop(), which an I/O procedure may call as well, without any
// lock. Listeners are called without the lock, on the thread that made the table.
class ObjectTable : public QObject {
public:
    static constexpr AudioObjectID kAggregatePlugIn = 2;

    ObjectTable(HardwareBackend &backend, const QString &stateFolder);
    ~ObjectTable() override;

    OSStatus settable(AudioObjectID object, const AudioObjectPropertyAddress &address, bool &settable);
    OSStatus size(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t &size);
    OSStatus get(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t qualifierSize,
                 const void *qualifier, std::uint32_t *size, void *data);
    OSStatus set(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t size, const void *data);

    OSStatus addListener(const ListenerList::Listener &listener);
    OSStatus removeListener(const ListenerList::Listener &listener);

    // id: null registers the procedure under its own name.
    OSStatus addProc(AudioObjectID device, AudioDeviceIOProc proc, void *clientData, bool named,
                     AudioDeviceIOProcID *id);
    OSStatus removeProc(AudioObjectID device, AudioDeviceIOProcID id);
    OSStatus start(AudioObjectID device, AudioDeviceIOProcID id);
    OSStatus stop(AudioObjectID device, AudioDeviceIOProcID id);

    // See HardwareSystem.
    OSStatus borrowDefault(Direction direction, AudioObjectID device);
    void giveBackDefault(Direction direction, AudioObjectID otherwise);
    AudioObjectID displacedDefault(Direction direction);
    LeftDefault leftDefault(Direction direction);
    void deliver();

private:
    // All below expect the lock to be held, but for schedule().
    void sync();
    std::vector<DeviceRecord> records() const;
    void announceDifferences(const std::vector<Device> &before);
    void announceServer();
    void announce(AudioObjectID object, AudioObjectPropertySelector selector,
                  AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                  AudioObjectPropertyElement element = 0);
    void schedule();
    bool takeUpStreams();
    void watchStreams();

    std::optional<PropertyValue> systemProperty(const AudioObjectPropertyAddress &address);
    OSStatus translate(AudioObjectPropertySelector selector, AudioValueTranslation &translation);
    OSStatus setDefault(Direction direction, std::uint32_t size, const void *data);
    OSStatus setDefault(Direction direction, AudioObjectID device, bool borrowed);
    OSStatus plugInOperation(AudioObjectPropertySelector selector, std::uint32_t qualifierSize, const void *qualifier,
                             std::uint32_t *size, void *data);
    OSStatus setAggregate(const AggregateSpec &spec, AudioObjectPropertySelector selector, std::uint32_t size,
                          const void *data);
    std::optional<PropertyValue> property(AudioObjectID object, const AudioObjectPropertyAddress &address,
                                          OSStatus &status);
    DeviceState stateOf(const Device &device);
    DeviceIO &ioOf(AudioObjectID device);
    DefaultChoice &choiceOf(Direction direction) {
        return direction == Direction::Input ? mInputChoice : mOutputChoice;
    }

    std::recursive_mutex mMutex;
    HardwareBackend &mBackend;
    DeviceTable mDevices;
    AggregateStore mAggregates;
    DefaultChoice mInputChoice;
    DefaultChoice mOutputChoice;
    ListenerList mListeners;
    std::map<AudioObjectID, DeviceIO> mIO;
    AudioObjectID mDefaults[2] = {0, 0};       // as last told: input, output
    std::unique_ptr<foundation::Timer> mWatch; // while procedures run
    QString mTrouble;                          // why there is no sound, as last told; empty while a server carries it
    bool mSynced = false;
    std::uintptr_t mNextProcID = 1;
    std::atomic<bool> mScheduled{false};
};

} // namespace cantorel::hal
