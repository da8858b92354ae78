#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QStringList>

#include <cstddef>

namespace cantorel::media {

// The system calls behind a camera of Video4Linux, so that tests can bring a device in software. Those that fail set
// errno. Any thread.
class VideoDevices {
public:
    virtual ~VideoDevices() = default;

    // Paths of what may be cameras.
    virtual QStringList paths() const = 0;
    virtual foundation::FileDescriptor open(const QString &path) = 0;
    virtual int control(int device, unsigned long request, void *argument) = 0;
    // Null where it fails.
    virtual void *map(int device, std::size_t length, std::size_t offset) = 0;
    virtual void unmap(void *memory, std::size_t length) = 0;
};

// Those of the machine, in /dev.
VideoDevices &systemVideoDevices();

} // namespace cantorel::media
