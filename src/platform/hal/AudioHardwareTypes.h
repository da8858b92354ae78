#pragma once

// Types and numbers of the hardware API. Names, sizes and four-character codes are Core Audio's own; every property's
// format, unit and ownership stands beside its selector.

#include <QStringList>
#include <QVariantMap>

#include <cstdint>

using OSStatus = std::int32_t;
using AudioObjectID = std::uint32_t;
using AudioDeviceID = AudioObjectID;
using AudioObjectPropertySelector = std::uint32_t;
using AudioObjectPropertyScope = std::uint32_t;
using AudioObjectPropertyElement = std::uint32_t;

// The value of four characters as one big-endian number: fourCharCode("dev#").
consteval std::uint32_t fourCharCode(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i)
        code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

// String, dictionary and array objects cross the API as 8-byte references. A reference that a property hands out
// belongs to the caller, who wraps it with adoptRef(); one that is passed in stays the caller's.
using CFStringRef = const QString *;
using CFDictionaryRef = const QVariantMap *;
using CFArrayRef = const QStringList *;
constexpr std::uint32_t kReferenceSize = sizeof(void *); // bytes

// Takes the object out of a reference that a property handed out, and releases the reference. Null gives an empty
// object.
template <class T> T adoptRef(const T *reference) {
    if (!reference)
        return T();
    T value = *reference;
    delete reference;
    return value;
}

struct AudioObjectPropertyAddress {
    AudioObjectPropertySelector mSelector;
    AudioObjectPropertyScope mScope;
    AudioObjectPropertyElement mElement;

    bool operator==(const AudioObjectPropertyAddress &) const = default;
};

struct AudioBuffer {
    std::uint32_t mNumberChannels;
    std::uint32_t mDataByteSize; // bytes
    void *mData;                 // interleaved 32-bit floats
};

// A variable-length structure: mNumberBuffers entries follow. Its size is audioBufferListSize().
struct AudioBufferList {
    std::uint32_t mNumberBuffers;
    AudioBuffer mBuffers[1];
};

constexpr std::uint32_t audioBufferListSize(std::uint32_t buffers) {
    return static_cast<std::uint32_t>(offsetof(AudioBufferList, mBuffers) + buffers * sizeof(AudioBuffer));
}

// A linear format; mFormatID is kAudioFormatLinearPCM here. 40 bytes.
struct AudioStreamBasicDescription {
    double mSampleRate; // frames a second
    std::uint32_t mFormatID;
    std::uint32_t mFormatFlags;
    std::uint32_t mBytesPerPacket;
    std::uint32_t mFramesPerPacket;
    std::uint32_t mBytesPerFrame;
    std::uint32_t mChannelsPerFrame;
    std::uint32_t mBitsPerChannel;
    std::uint32_t mReserved;

    bool operator==(const AudioStreamBasicDescription &) const = default;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

constexpr std::uint32_t kAudioFormatLinearPCM = fourCharCode("lpcm");
constexpr std::uint32_t kAudioFormatFlagsNativeFloatPacked = 1 | 8; // float, packed

// When a cycle happens. mSampleTime counts the frames that the device has delivered since its I/O started and never
// jumps; mHostTime is nanoseconds on the monotonic clock.
struct AudioTimeStamp {
    double mSampleTime;
    std::uint64_t mHostTime; // ns
    double mRateScalar;
    std::uint32_t mFlags; // kAudioTimeStamp...Valid
    std::uint32_t mReserved;
};
constexpr std::uint32_t kAudioTimeStampSampleTimeValid = 1;
constexpr std::uint32_t kAudioTimeStampHostTimeValid = 2;
// Set with the two above when frames were lost between the last cycle and this one.
constexpr std::uint32_t kAudioTimeStampDiscontinuity = 1u << 16;

// Translates mInputData (a CFStringRef) to mOutputData (an AudioObjectID).
struct AudioValueTranslation {
    void *mInputData;
    std::uint32_t mInputDataSize; // bytes
    void *mOutputData;
    std::uint32_t mOutputDataSize; // bytes
};

// The I/O procedure of a device: one call a cycle, on the real-time thread. Input and output always hold exactly the
// buffer size in force ("fsiz"); output arrives zeroed and is mixed with what the other procedures add. Its result is
// ignored.
using AudioDeviceIOProc = OSStatus (*)(AudioObjectID device, const AudioTimeStamp *now,
                                       const AudioBufferList *inputData, const AudioTimeStamp *inputTime,
                                       AudioBufferList *outputData, const AudioTimeStamp *outputTime, void *clientData);

// Names one registration of an I/O procedure. The procedure itself names its own registration that has no identifier.
using AudioDeviceIOProcID = AudioDeviceIOProc;

using AudioObjectPropertyListenerProc = OSStatus (*)(AudioObjectID object, std::uint32_t addressCount,
                                                     const AudioObjectPropertyAddress *addresses, void *clientData);

// Statuses.
constexpr OSStatus kAudioHardwareNoError = 0;
constexpr OSStatus kAudioHardwareNotRunningError = static_cast<OSStatus>(fourCharCode("stop"));
constexpr OSStatus kAudioHardwareUnspecifiedError = static_cast<OSStatus>(fourCharCode("what"));
constexpr OSStatus kAudioHardwareUnknownPropertyError = static_cast<OSStatus>(fourCharCode("who?"));
constexpr OSStatus kAudioHardwareBadPropertySizeError = static_cast<OSStatus>(fourCharCode("!siz"));
constexpr OSStatus kAudioHardwareIllegalOperationError = static_cast<OSStatus>(fourCharCode("nope"));
constexpr OSStatus kAudioHardwareBadObjectError = static_cast<OSStatus>(fourCharCode("!obj"));
constexpr OSStatus kAudioHardwareBadDeviceError = static_cast<OSStatus>(fourCharCode("!dev"));
constexpr OSStatus kAudioHardwareUnsupportedOperationError = static_cast<OSStatus>(fourCharCode("unop"));
constexpr OSStatus kAudioDeviceUnsupportedFormatError = static_cast<OSStatus>(fourCharCode("!dat"));

constexpr AudioObjectID kAudioObjectUnknown = 0;
constexpr AudioObjectID kAudioObjectSystemObject = 1;

// Scopes and elements. Element 0 is the device as a whole, 1 and up its channels.
constexpr AudioObjectPropertyScope kAudioObjectPropertyScopeGlobal = fourCharCode("glob");
constexpr AudioObjectPropertyScope kAudioDevicePropertyScopeInput = fourCharCode("inpt");
constexpr AudioObjectPropertyScope kAudioDevicePropertyScopeOutput = fourCharCode("outp");
constexpr AudioObjectPropertyElement kAudioObjectPropertyElementMaster = 0;

// --- Properties of the system object
// ------------------------------------------------------------------------------------- AudioDeviceID[]; every device
// and aggregate, in a stable order. Announced.
constexpr AudioObjectPropertySelector kAudioHardwarePropertyDevices = fourCharCode("dev#");
// AudioDeviceID, settable, 0 when there is none (never a monitor in place of a microphone). Announced. Setting the
// device that was the default before this program displaced it puts the person's own choice back, absence of a choice
// included.
constexpr AudioObjectPropertySelector kAudioHardwarePropertyDefaultInputDevice = fourCharCode("dIn ");
constexpr AudioObjectPropertySelector kAudioHardwarePropertyDefaultOutputDevice = fourCharCode("dOut");
// AudioValueTranslation: CFStringRef bundle identifier to AudioObjectID of the plug-in that makes aggregates.
constexpr AudioObjectPropertySelector kAudioHardwarePropertyPlugInForBundleID = fourCharCode("pibi");
// AudioValueTranslation: CFStringRef device UID to AudioDeviceID (0 when no device has it).
constexpr AudioObjectPropertySelector kAudioHardwarePropertyDeviceForUID = fourCharCode("duid");
// Has no value. Announced when a sound server has come or gone, or there is another reason why none carries sound.
constexpr AudioObjectPropertySelector kAudioHardwarePropertyServiceRestarted = fourCharCode("srst");

// --- Properties of a device
// ---------------------------------------------------------------------------------------------- char[], UTF-8 with an
// end mark, cut at the size given. Unique among the devices and stable while the program runs.
constexpr AudioObjectPropertySelector kAudioDevicePropertyDeviceName = fourCharCode("name");
// CFStringRef, the caller's; the same name.
constexpr AudioObjectPropertySelector kAudioObjectPropertyName = fourCharCode("lnam");
// CFStringRef, the caller's; the same from one start to the next.
constexpr AudioObjectPropertySelector kAudioDevicePropertyDeviceUID = fourCharCode("uid ");
// UInt32 frames; holds what re-blocking to the buffer size adds.
constexpr AudioObjectPropertySelector kAudioDevicePropertySafetyOffset = fourCharCode("saft");
// UInt32 frames, settable: rounded to what the device can do; I/O procedures get exactly the size that is then read.
constexpr AudioObjectPropertySelector kAudioDevicePropertyBufferFrameSize = fourCharCode("fsiz");
// AudioStreamBasicDescription of the side, settable in its rate. Interleaved 32-bit floats.
constexpr AudioObjectPropertySelector kAudioDevicePropertyStreamFormat = fourCharCode("sfmt");
// AudioBufferList with null data: the channels of each buffer that an I/O procedure gets on the side.
constexpr AudioObjectPropertySelector kAudioDevicePropertyStreamConfiguration = fourCharCode("slay");
// AudioObjectID[] of the side; the identifiers only count the streams.
constexpr AudioObjectPropertySelector kAudioDevicePropertyStreams = fourCharCode("stm#");
// Float32 0..1 (the cube root of the gain) of a channel, settable. Element 0 exists only where one control moves all.
constexpr AudioObjectPropertySelector kAudioDevicePropertyVolumeScalar = fourCharCode("volm");
// Float32 decibels of a channel.
constexpr AudioObjectPropertySelector kAudioDevicePropertyVolumeDecibels = fourCharCode("vold");
// UInt32[2]: the channel numbers (from 1) of left and right.
constexpr AudioObjectPropertySelector kAudioDevicePropertyPreferredChannelsForStereo = fourCharCode("dch2");
// UInt32 0 or 1, settable, element 0.
constexpr AudioObjectPropertySelector kAudioDevicePropertyMute = fourCharCode("mute");
// Float32 0..1, hardware service only, settable: one value for all channels of the side; reads their mean.
constexpr AudioObjectPropertySelector kAudioHardwareServiceDeviceProperty_VirtualMasterVolume = fourCharCode("vmvc");
// UInt32: 1 while the device exists. Announced when it disappears and when it is back.
constexpr AudioObjectPropertySelector kAudioDevicePropertyDeviceIsAlive = fourCharCode("livn");
// UInt32: 1 while an I/O procedure of this program runs on that side of it (global: on any) and gets its cycles.
// Announced for a side when the cycles end by themselves, and when they could begin again: from then on its sample
// times cannot be compared with those of other devices.
constexpr AudioObjectPropertySelector kAudioDevicePropertyDeviceIsRunning = fourCharCode("goin");
// UInt32: 1 for a loopback device, whose input side gives back what programs play into its output side.
constexpr AudioObjectPropertySelector kAudioDevicePropertyIsLoopback = fourCharCode("loop");
// AudioDeviceIOProcStreamUsage, settable before the procedure starts: which sides it takes part in. By default all
// sides of a device, but only the input side of a loopback device, so that nothing is fed back into it by accident.
constexpr AudioObjectPropertySelector kAudioDevicePropertyIOProcStreamUsage = fourCharCode("suse");

struct AudioDeviceIOProcStreamUsage {
    AudioDeviceIOProcID mIOProc;
    std::uint32_t mInput;  // 0 or 1
    std::uint32_t mOutput; // 0 or 1
};

// --- Properties of the plug-in and of an aggregate device
// ------------------------------------------------------------------- Get on the plug-in, the qualifier is a
// CFDictionaryRef with "name" and "uid": makes the aggregate, answers AudioObjectID.
constexpr AudioObjectPropertySelector kAudioPlugInCreateAggregateDevice = fourCharCode("cagg");
// Get on the plug-in, the data is the AudioObjectID of the aggregate to destroy (in and out).
constexpr AudioObjectPropertySelector kAudioPlugInDestroyAggregateDevice = fourCharCode("dagg");
// CFArrayRef of sub-device UIDs, settable; the getter's is the caller's. Input channels follow the order of the list.
constexpr AudioObjectPropertySelector kAudioAggregateDevicePropertyFullSubDeviceList = fourCharCode("grup");
// CFStringRef: UID of the sub-device whose clock leads, settable; the getter's is the caller's.
constexpr AudioObjectPropertySelector kAudioAggregateDevicePropertyMasterSubDevice = fourCharCode("amst");
