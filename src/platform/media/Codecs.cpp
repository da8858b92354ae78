#include "platform/media/Codecs.h"

#include "platform/media/MediaFailures.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace cantorel::media {

namespace {

constexpr const char *kFileName = "cantorel-ffmpeg.so";

std::string modulePath() {
    if (const char *folder = std::getenv("CANTOREL_MODULES"); folder && *folder)
        return std::string(folder) + "/" + kFileName;
    std::error_code ignored; // an unreadable link gives a path that does not exist, which is told below
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "lib/cantorel" / kFileName).string();
}

foundation::Result<const Codecs *> load() {
    const std::string path = modulePath();
    // Never unloaded: its objects may live anywhere.
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return failures::codecsMissing(QString::fromLocal8Bit(dlerror()));
    const auto entry = reinterpret_cast<CodecsEntryPoint>(dlsym(handle, kCodecsEntryPoint));
    if (!entry)
        return failures::codecsMissing(QStringLiteral("%1 has no entry point").arg(QString::fromStdString(path)));
    return entry();
}

} // namespace

foundation::Result<const Codecs *> loadCodecs() {
    static const foundation::Result<const Codecs *> codecs = load();
    return codecs;
}

} // namespace cantorel::media
