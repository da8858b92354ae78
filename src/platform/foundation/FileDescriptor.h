#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace cantorel::foundation {

// Owns a file descriptor of the system and closes it.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : mDescriptor(descriptor) {}
    FileDescriptor(FileDescriptor &&other) noexcept : mDescriptor(std::exchange(other.mDescriptor, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept {
        std::swap(mDescriptor, other.mDescriptor);
        return *this;
    }
    ~FileDescriptor() { reset(); }

    void reset() {
        if (mDescriptor >= 0)
            ::close(std::exchange(mDescriptor, -1));
    }
    bool isOpen() const { return mDescriptor >= 0; }
    int get() const { return mDescriptor; }
    // Another one of the same open file.
    FileDescriptor duplicate() const { return FileDescriptor(::fcntl(mDescriptor, F_DUPFD_CLOEXEC, 0)); }

private:
    int mDescriptor = -1;
};

} // namespace cantorel::foundation
