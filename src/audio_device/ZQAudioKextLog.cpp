#include "audio_device/ZQAudioKextLog.h"

#include "platform/foundation/Console.h"
#include "platform/foundation/Guarded.h"
#include "util/ToolFile.h"

#include <QDateTime>

namespace cantorel {

namespace {

foundation::Guarded<QString> &logPath() {
    static foundation::Guarded<QString> path;
    return path;
}

void write(const QString &format, const QString &message) {
    const QString line = format.arg(ZQAudioKextLog::GetTimeString(), message);
    foundation::printToConsole(line);
    (void)ZQAudioKextLog::writeData(line.toUtf8(), true); // Without a file the line is dropped, as it should.
}

const QString kInformation = QStringLiteral("[%1] INOF: %2\n");

} // namespace

void ZQAudioKextLog::initWithLogPath(const QString &path) {
    if (ToolFile::isFileExistsAtPath(path))
        logPath().with([&](QString &current) { current = path; });
}

QString ZQAudioKextLog::LogFilePath() {
    return logPath().with([](const QString &current) { return current; });
}

void ZQAudioKextLog::I(const QString &message) { write(kInformation, message); }

void ZQAudioKextLog::E(const QString &message) { write(QStringLiteral("[%1] ERROR: %2\n"), message); }

void ZQAudioKextLog::Ex(const QString &message) { write(kInformation, message); }

QString ZQAudioKextLog::GetTimeString() {
    const QDateTime now = QDateTime::currentDateTime();
    int weekYear = 0;
    (void)now.date().weekNumber(&weekYear);
    return QStringLiteral("%1-").arg(weekYear, 4, 10, QLatin1Char('0'))
           + now.toString(QStringLiteral("MM-dd HH:mm:ss"));
}

bool ZQAudioKextLog::writeData(const QByteArray &data, bool append) {
    const QString path = LogFilePath();
    return ToolFile::isFileExistsAtPath(path) && ToolFile::writeData(data, path, append);
}

} // namespace cantorel
