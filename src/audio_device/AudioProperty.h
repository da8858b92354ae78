#pragma once

#include "platform/hal/AudioHardware.h"
#include "platform/hal/ExtendedAudioFile.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace cantorel {

// Reads and writes device and system properties by the older calls or, with the flag set, by the newer object calls.
// Synchronous, without state of their own; any thread but a real-time one. Each answers the hardware's status, 0 for
// done.

// Moves every function below to the newer calls. Nothing sets it; a test that does puts it back. Spelling is fixed.
extern bool g_isAudioFuncDeprecaited;

OSStatus PDAudioDeviceGetProperty(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                  AudioObjectPropertySelector property, std::uint32_t *size, void *data);
// The newer call does not fill the writable flag.
OSStatus PDAudioDeviceGetPropertyInfo(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                      AudioObjectPropertySelector property, std::uint32_t *size, bool *writable);
OSStatus PDAudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp *when, std::uint32_t channel, bool isInput,
                                  AudioObjectPropertySelector property, std::uint32_t size, const void *data);

// The newer calls of these three deliberately ignore the property and address the device list.
OSStatus PDAudioHardwareGetProperty(AudioObjectPropertySelector property, std::uint32_t *size, void *data);
OSStatus PDAudioHardwareSetProperty(AudioObjectPropertySelector property, std::uint32_t size, const void *data);
OSStatus PDAudioHardwareGetPropertyInfo(AudioObjectPropertySelector property, std::uint32_t *size, bool *writable);

// The identifier is written by the newer call only; with the older one the procedure names itself.
OSStatus PDAudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void *clientData,
                                AudioDeviceIOProcID *procID);
OSStatus PDAudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProcID proc);

// The same call either way.
OSStatus PDExtAudioFileCreateNew(const FSRef *parentFolder, CFStringRef fileName, AudioFileTypeID type,
                                 const AudioStreamBasicDescription *format, const AudioChannelLayout *layout,
                                 ExtAudioFileRef *file);

// The device of a UID; 0 when none has it.
AudioDeviceID PDAudioDeviceGetObjectID(const QString &uid);

// Empty for device 0; the platform's text for no object when the device does not answer.
QString getDevice_UID_FromDevice(AudioDeviceID device);
QString getDevice_Name_FromDevice(AudioDeviceID device);

// Keys of a device information dictionary. The identifier is a 16-bit signed number, the channel counts are 32-bit.
inline constexpr const char *kAudioDeviceInfoId = "AudioDevice_id";
inline constexpr const char *kAudioDeviceInfoName = "AudioDevice_name";
inline constexpr const char *kAudioDeviceInfoInputChannels = "AudioDevice_ich";
inline constexpr const char *kAudioDeviceInfoOutputChannels = "AudioDevice_och";

// What is known of a device; empty for device 0, which is logged.
QVariantMap GetDeviceInfo(AudioDeviceID device);

// The channels of all buffers of one side; nothing when the device does not say.
std::optional<std::uint32_t> channelsOfSide(AudioDeviceID device, bool isInput);
// The number of buffers of one side; nothing when the device does not say.
std::optional<std::uint32_t> buffersOfSide(AudioDeviceID device, bool isInput);

// Deliberately does nothing: callers say what failed, and it is not reported.
inline void CHECK_ERR(OSStatus, const char *) {}

} // namespace cantorel
