#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <QString>

#include <optional>

namespace cantorel::hal {

// A default device that the person chose and that a device of this program replaces for now.
struct DisplacedDefault {
    std::optional<QString> choice; // what the person had chosen
    QString device;                // what that choice amounted to
    QString instead;               // what we chose
};

// Keeps a displaced choice on disk until it is seen to be back, so that it outlives this program, the server and the
// machine. A lock beside the file says that its program lives. Owned and locked by ObjectTable.
class DisplacedDefaultFile {
public:
    explicit DisplacedDefaultFile(QString path) : mPath(std::move(path)) {}

    // What a program left that lives no more; from here on it is this program's. Nothing while another one has it.
    enum class Found { Nothing, Left, InUse };
    Found claim(DisplacedDefault &left);
    // False when it could not be written, or another program has the file; the choice is kept in memory all the same.
    bool write(const DisplacedDefault &displaced);
    void remove();

private:
    bool lock();

    QString mPath;
    foundation::FileDescriptor mLock;
};

} // namespace cantorel::hal
