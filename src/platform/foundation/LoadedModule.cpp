#include "platform/foundation/LoadedModule.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace cantorel::foundation {

namespace {

std::string modulePath(const char *fileName) {
    if (const char *folder = std::getenv("CANTOREL_MODULES"); folder && *folder)
        return std::string(folder) + "/" + fileName;
    std::error_code ignored; // an unreadable link gives a path that does not exist, which is told below
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "lib/cantorel" / fileName).string();
}

Failure missing(const char *fileName, const QString &detail) {
    return {QStringLiteral("A part of the program, %1, is missing or broken; install Cantorel again.")
                .arg(QString::fromUtf8(fileName)),
            detail};
}

} // namespace

Result<void *> loadEntryPoint(const char *fileName, const char *function) {
    const std::string path = modulePath(fileName);
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return missing(fileName, QString::fromLocal8Bit(dlerror()));
    void *entry = dlsym(handle, function);
    if (!entry)
        return missing(fileName, QStringLiteral("%1 has no entry point").arg(QString::fromStdString(path)));
    return entry;
}

} // namespace cantorel::foundation
