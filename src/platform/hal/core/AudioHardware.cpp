#include "platform/hal/AudioHardware.h"

#include "platform/hal/CurrentObjects.h"
#include "platform/hal/core/ObjectTable.h"

using cantorel::hal::currentObjects;

namespace {

AudioObjectPropertyAddress deviceAddress(AudioObjectPropertySelector selector, std::uint32_t channel, bool isInput) {
    return {selector, isInput ? kAudioDevicePropertyScopeInput : kAudioDevicePropertyScopeOutput, channel};
}

AudioObjectPropertyAddress systemAddress(AudioObjectPropertySelector selector) {
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster};
}

OSStatus propertyInfo(AudioObjectID object, const AudioObjectPropertyAddress &address, std::uint32_t *size,
                      bool *writable) {
    std::uint32_t found = 0;
    const OSStatus status = AudioObjectGetPropertyDataSize(object, &address, 0, nullptr, &found);
    if (status != kAudioHardwareNoError)
        return status;
    if (size)
        *size = found;
    return writable ? AudioObjectIsPropertySettable(object, &address, writable) : kAudioHardwareNoError;
}

} // namespace

bool AudioObjectHasProperty(AudioObjectID object, const AudioObjectPropertyAddress *address) {
    std::uint32_t size = 0;
    return AudioObjectGetPropertyDataSize(object, address, 0, nullptr, &size) == kAudioHardwareNoError;
}

OSStatus AudioObjectIsPropertySettable(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                       bool *settable) {
    auto *objects = currentObjects();
    return objects ? objects->settable(object, *address, *settable) : kAudioHardwareNotRunningError;
}

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress *address, std::uint32_t,
                                        const void *, std::uint32_t *size) {
    auto *objects = currentObjects();
    return objects ? objects->size(object, *address, *size) : kAudioHardwareNotRunningError;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                    std::uint32_t qualifierSize, const void *qualifier, std::uint32_t *size,
                                    void *data) {
    auto *objects = currentObjects();
    return objects ? objects->get(object, *address, qualifierSize, qualifier, size, data)
                   : kAudioHardwareNotRunningError;
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address, std::uint32_t,
                                    const void *, std::uint32_t size, const void *data) {
    auto *objects = currentObjects();
    return objects ? objects->set(object, *address, size, data) : kAudioHardwareNotRunningError;
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                        AudioObjectPropertyListenerProc listener, void *clientData) {
    auto *objects = currentObjects();
    return objects ? objects->addListener({object, *address, listener, clientData}) : kAudioHardwareNotRunningError;
}

OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                           AudioObjectPropertyListenerProc listener, void *clientData) {
    auto *objects = currentObjects();
    return objects ? objects->removeListener({object, *address, listener, clientData}) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void *clientData,
                                   AudioDeviceIOProcID *procID) {
    auto *objects = currentObjects();
    return objects ? objects->addProc(device, proc, clientData, true, procID) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID) {
    auto *objects = currentObjects();
    return objects ? objects->removeProc(device, procID) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID) {
    auto *objects = currentObjects();
    return objects ? objects->start(device, procID) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID) {
    auto *objects = currentObjects();
    return objects ? objects->stop(device, procID) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                AudioObjectPropertySelector selector, std::uint32_t *size, void *data) {
    const auto address = deviceAddress(selector, channel, isInput);
    return AudioObjectGetPropertyData(device, &address, 0, nullptr, size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, std::uint32_t channel, bool isInput,
                                    AudioObjectPropertySelector selector, std::uint32_t *size, bool *writable) {
    return propertyInfo(device, deviceAddress(selector, channel, isInput), size, writable);
}

OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp *, std::uint32_t channel, bool isInput,
                                AudioObjectPropertySelector selector, std::uint32_t size, const void *data) {
    const auto address = deviceAddress(selector, channel, isInput);
    return AudioObjectSetPropertyData(device, &address, 0, nullptr, size, data);
}

OSStatus AudioHardwareGetProperty(AudioObjectPropertySelector selector, std::uint32_t *size, void *data) {
    const auto address = systemAddress(selector);
    return AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, size, data);
}

OSStatus AudioHardwareGetPropertyInfo(AudioObjectPropertySelector selector, std::uint32_t *size, bool *writable) {
    return propertyInfo(kAudioObjectSystemObject, systemAddress(selector), size, writable);
}

OSStatus AudioHardwareSetProperty(AudioObjectPropertySelector selector, std::uint32_t size, const void *data) {
    const auto address = systemAddress(selector);
    return AudioObjectSetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, size, data);
}

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void *clientData) {
    auto *objects = currentObjects();
    return objects ? objects->addProc(device, proc, clientData, false, nullptr) : kAudioHardwareNotRunningError;
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc proc) {
    return AudioDeviceDestroyIOProcID(device, proc);
}

bool AudioHardwareServiceHasProperty(AudioObjectID object, const AudioObjectPropertyAddress *address) {
    return AudioObjectHasProperty(object, address);
}

OSStatus AudioHardwareServiceIsPropertySettable(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                                bool *settable) {
    return AudioObjectIsPropertySettable(object, address, settable);
}

OSStatus AudioHardwareServiceGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                             std::uint32_t qualifierSize, const void *qualifier, std::uint32_t *size,
                                             void *data) {
    return AudioObjectGetPropertyData(object, address, qualifierSize, qualifier, size, data);
}

OSStatus AudioHardwareServiceSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress *address,
                                             std::uint32_t qualifierSize, const void *qualifier, std::uint32_t size,
                                             const void *data) {
    return AudioObjectSetPropertyData(object, address, qualifierSize, qualifier, size, data);
}
