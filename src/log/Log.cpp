#include "log/Log.h"

#include "platform/foundation/Console.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/SearchPaths.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QDateTime>
#include <QFileInfo>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace cantorel {

namespace {

constexpr qint64 kLargestKept = 1'048'576; // bytes

foundation::Guarded<QString> _logFilePath;

QString classNameOf(const std::exception &exception) {
    int status = 0;
    const char *mangled = typeid(exception).name();
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                           &std::free);
    return QString::fromUtf8(status == 0 ? name.get() : mangled);
}

void appendToFile(const QString &text) { (void)ToolFile::writeData(text.toUtf8(), GetLogFilePath(), true); }

} // namespace

QString LogFilePath(const QString &fileName) {
    return QStringLiteral("%1/%2").arg(foundation::searchPath(foundation::SearchPath::Caches),
                                       ToolFile::pathWithExtension(fileName, QStringLiteral("log")));
}

void LogFileCheck(const QString &fileName) {
    const QString path = LogFilePath(fileName);
    if (!ToolFile::isFileExistsAtPath(path)) {
        (void)ToolFile::createFolderAtPath(QFileInfo(path).path()); // a failure shows in the next call alone
        (void)ToolFile::createFileAtPath(path);
    } else if (ToolFile::fileSizeAtPath(path) > kLargestKept) {
        (void)ToolFile::createFileAtPath(path);
    }
    _logFilePath.with([&](QString &current) { current = path; });
}

void LogStart() {
    appendToFile(QStringLiteral("\n================%1================\n")
                     .arg(ToolString::stringFromDateWithLocalization(QDateTime::currentDateTime())));
}

QString GetLogFilePath() {
    return _logFilePath.with([](const QString &current) { return current; });
}

void Log(const QString &message) {
    const QString line =
        QStringLiteral("[%1] ").arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")))
        + message + QLatin1Char('\n');
    foundation::printToConsole(line);
    appendToFile(line);
}

void LogException(const QString &name, const QString &reason) {
    Log(QStringLiteral("*NSException*\n %1 -> %2").arg(name, reason));
}

void LogException(const std::exception &exception) {
    LogException(classNameOf(exception), QString::fromUtf8(exception.what()));
}

void LogError(const ErrorDescription &error) {
    // Spelling is fixed: "resaon".
    Log(QStringLiteral("*NSError*\n  domain:%1\n  code:%2\n  userInfo:%3\n  description:%4\n  resaon:%5\n")
            .arg(error.domain, QString::number(error.code), error.userInfo, error.localizedDescription,
                 error.localizedFailureReason));
}

} // namespace cantorel
