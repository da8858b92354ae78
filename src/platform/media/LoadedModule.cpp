#include "platform/media/LoadedModule.h"

#include "platform/media/MediaFailures.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace cantorel::media {

namespace {

std::string modulePath(const char *fileName) {
    if (const char *folder = std::getenv("CANTOREL_MODULES"); folder && *folder)
        return std::string(folder) + "/" + fileName;
    std::error_code ignored; // an unreadable link gives a path that does not exist, which is told below
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "lib/cantorel" / fileName).string();
}

} // namespace

foundation::Result<void *> loadEntryPoint(const char *fileName, const char *function) {
    const std::string path = modulePath(fileName);
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return failures::codecsMissing(QString::fromLocal8Bit(dlerror()));
    void *entry = dlsym(handle, function);
    if (!entry)
        return failures::codecsMissing(QStringLiteral("%1 has no entry point").arg(QString::fromStdString(path)));
    return entry;
}

} // namespace cantorel::media
