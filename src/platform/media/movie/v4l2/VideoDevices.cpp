#include "platform/media/movie/v4l2/VideoDevices.h"

#include <QDir>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

#include <cerrno>

namespace cantorel::media {

namespace {

class SystemVideoDevices : public VideoDevices {
public:
    QStringList paths() const override {
        const QDir folder(QStringLiteral("/dev"));
        QStringList found;
        for (const QString &name : folder.entryList({QStringLiteral("video*")}, QDir::System))
            found << folder.filePath(name);
        return found;
    }
    foundation::FileDescriptor open(const QString &path) override {
        return foundation::FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    }
    int control(int device, unsigned long request, void *argument) override {
        int result = 0;
        do
            result = ::ioctl(device, request, argument);
        while (result < 0 && errno == EINTR);
        return result;
    }
    void *map(int device, std::size_t length, std::size_t offset) override {
        void *memory = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, device, static_cast<off_t>(offset));
        return memory != MAP_FAILED ? memory : nullptr;
    }
    void unmap(void *memory, std::size_t length) override { ::munmap(memory, length); }
};

} // namespace

VideoDevices &systemVideoDevices() {
    static SystemVideoDevices devices;
    return devices;
}

} // namespace cantorel::media
