#pragma once

// The hardware API: the part of Core Audio's that this program calls, older and newer calls both. Every call answers a
// status (0 done) and may be made from any thread but a real-time one; from an I/O procedure only AudioDeviceStop is
// allowed. Without a hardware system (HardwareSystem.h) every call answers kAudioHardwareNotRunningError.

#include "platform/hal/AudioHardwareTypes.h"

// --- Object properties
// ---------------------------------------------------------------------------------------------------
bool AudioObjectHasProperty(AudioObjectID object, const AudioObjectPropertyAddress *address);
OSStatus AudioObjectIsPropertySettable(AudioObjectID object, const AudioObjectPropertyAddress *address, bool *settable);
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                        std::uint32_t qualifierSize, const void *qualifier, std::uint32_t *size);
// size: in the room at data, out the bytes written. Too little room is an error, but for "name", which is cut.
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                    std::uint32_t qualifierSize, const void *qualifier, std::uint32_t *size,
                                    void *data);
OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                    std::uint32_t qualifierSize, const void *qualifier, std::uint32_t size,
                                    const void *data);
// Listeners are called from the event loop of the thread that made the hardware system, never from within a call.
OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                        AudioObjectPropertyListenerProc listener, void *clientData);
OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                           AudioObjectPropertyListenerProc listener, void *clientData);

// --- Input and output
// ----------------------------------------------------------------------------------------------------
OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void *clientData,
                                   AudioDeviceIOProcID *procID);
OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID);
// Procedures that share their client data form a group: within one cycle those that read run before those that play.
OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID);
// From the procedure itself this only marks it: it is not called again. From elsewhere it returns after the last call.
OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID);

// --- Older calls
// ---------------------------------------------------------------------------------------------------------
OSStatus AudioDeviceGetProperty(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                AudioObjectPropertySelector selector, std::uint32_t *size, void *data);
OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                    AudioObjectPropertySelector selector, std::uint32_t *size, bool *writable);
OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp *when, std::uint32_t channel, bool isInput,
                                AudioObjectPropertySelector selector, std::uint32_t size, const void *data);
OSStatus AudioHardwareGetProperty(AudioObjectPropertySelector selector, std::uint32_t *size, void *data);
OSStatus AudioHardwareGetPropertyInfo(AudioObjectPropertySelector selector, std::uint32_t *size, bool *writable);
OSStatus AudioHardwareSetProperty(AudioObjectPropertySelector selector, std::uint32_t size, const void *data);
OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void *clientData);
OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc proc);

// --- Hardware service: the volume of a device as one control
// ------------------------------------------------------------------
bool AudioHardwareServiceHasProperty(AudioObjectID object, const AudioObjectPropertyAddress *address);
OSStatus AudioHardwareServiceIsPropertySettable(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                                bool *settable);
OSStatus AudioHardwareServiceGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                             std::uint32_t qualifierSize, const void *qualifier, std::uint32_t *size,
                                             void *data);
OSStatus AudioHardwareServiceSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                             std::uint32_t qualifierSize, const void *qualifier, std::uint32_t size,
                                             const void *data);
