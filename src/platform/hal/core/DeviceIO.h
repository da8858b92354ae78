#pragma once

#include "platform/hal/core/DeviceTable.h"
#include "platform/hal/core/IOEngine.h"

#include <memory>
#include <utility>
#include <vector>

namespace cantorel::hal {

// The I/O procedures of one device: their registrations, and an engine for each combination of sides they take part in.
// Kept while the program runs, so that procedures outlive an absence of their device. Owned and locked by ObjectTable.
class DeviceIO {
public:
    struct Registration {
        AudioDeviceIOProcID id;
        AudioDeviceIOProc proc;
        void *clientData;
        bool input;
        bool output;
        IOEngine *engine = nullptr; // while started
        int slot = -1;
    };

    // streamEnded: called on any thread but a real-time one when a stream has ended by itself. flowChanged: called with
    // the table locked when the cycles of running procedures have ended by themselves, or could begin again.
    DeviceIO(AudioObjectID device, std::function<void()> streamEnded, std::function<void(Direction)> flowChanged);

    std::uint32_t blockFrames() const { return mBlockFrames; }
    void setBlockFrames(std::uint32_t frames); // clamped to what the engines can do

    // id: null names the registration by the procedure itself. Null when it has one of that name, or no side to take
    // part in.
    AudioDeviceIOProcID add(const Device &device, AudioDeviceIOProc proc, AudioDeviceIOProcID id, void *clientData);
    bool remove(AudioDeviceIOProcID id);
    Registration *find(AudioDeviceIOProcID id);

    // The device is null while it is absent. leader: the engine that this registration's cycles shall follow, or null.
    OSStatus start(Registration &registration, HardwareBackend &backend, const Device *device, IOEngine *leader,
                   AudioObjectID leaderDevice);
    void stop(Registration &registration);
    // Whether procedures on that side get their cycles.
    bool flows(Direction direction) const;
    // The engine of a running procedure of the group that only reads; null when there is none.
    IOEngine *readingEngineOf(const void *clientData) const;

    // Gives up streams that ended or that no procedure needs any more.
    void sweep();
    // Gives up streams that have brought nothing the last times that this was called, though nobody said that they had
    // ended: called at equal intervals. True while there are any to look at.
    bool watch();
    // Opens again what procedures wait for, and what lost the stream that it followed once that is there again.
    // readerOf: the engine whose stream reads the device of an identifier, or null. True while something is still
    // missing.
    bool takeUp(HardwareBackend &backend, const Device &device,
                const std::function<const IOEngine *(AudioObjectID)> &readerOf);
    // The engine that only reads, while it has a stream; else null.
    const IOEngine *reader() const;
    // Hands the loudness of a loopback device on to what is played from it.
    void followVolume(const Device &loopback);

private:
    struct Entry {
        std::unique_ptr<IOEngine> engine;
        bool input;
        bool output;
        int inputChannels;
        int outputChannels;
        AudioObjectID leaderDevice = kAudioObjectUnknown;
        std::uint32_t leaderOpening = 0; // of the leader's stream that it follows
        std::uint32_t cycles = 0;        // when they were looked at last
        int stillFor = 0;                // looks since then that saw no further one
        std::pair<int, int> misfit{};    // the channels that the device came back with, where they are others
    };
    void tellFlow(const Entry &entry) const;
    Entry *entryFor(bool input, bool output, const Device &device);

    const AudioObjectID mDevice;
    const std::function<void()> mStreamEnded;
    const std::function<void(Direction)> mFlowChanged;
    std::uint32_t mBlockFrames = 512;
    std::vector<Registration> mRegistrations;
    std::vector<Entry> mEntries;
};

} // namespace cantorel::hal
