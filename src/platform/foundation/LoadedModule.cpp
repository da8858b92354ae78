#include "platform/foundation/LoadedModule.h"

#include <QFile>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

namespace cantorel::foundation {

namespace {

Failure missing(const char *fileName, const QString &detail) {
    return {QStringLiteral("A part of the program, %1, is missing or broken; install Cantorel again.")
                .arg(QString::fromUtf8(fileName)),
            detail};
}

} // namespace

QString partPath(const char *fileName) {
    if (const char *folder = std::getenv("CANTOREL_MODULES"); folder && *folder)
        return QFile::decodeName(folder) + QLatin1Char('/') + QFile::decodeName(fileName);
    std::error_code
        ignored; // an unreadable link gives a path that does not exist, and loading from it fails with a reason
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return QFile::decodeName((program.parent_path().parent_path() / "lib/cantorel" / fileName).c_str());
}

Result<void *> loadEntryPoint(const char *fileName, const char *function) {
    const QString path = partPath(fileName);
    void *handle = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return missing(fileName, QString::fromLocal8Bit(dlerror()));
    void *entry = dlsym(handle, function);
    if (!entry)
        return missing(fileName, QStringLiteral("%1 has no entry point").arg(path));
    return entry;
}

} // namespace cantorel::foundation
