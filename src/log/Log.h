#pragma once

#include <QString>

#include <exception>

namespace cantorel {

// The application's log: one text file in the caches folder, chosen and trimmed once at start-up, then only appended
// to. Any thread may write; lines of several threads may change places but are never split. Failures are ignored.

inline constexpr const char *kApplicationLogName = "tessolar-cantorel-log.log";

// Where a log of that name lies: in the caches folder, with the extension "log" whatever the name's own.
QString LogFilePath(const QString &fileName);

// Chooses the file of that name, makes it when it is missing and empties it when it has more than 1 MiB.
void LogFileCheck(const QString &fileName);

// Appends the banner of a new session to the file.
void LogStart();

// The chosen file; empty before LogFileCheck.
QString GetLogFilePath();

// Writes "[time] message" to the console and to the file.
void Log(const QString &message);

// An exception: by its name and reason, or as the language has it.
void LogException(const QString &name, const QString &reason);
void LogException(const std::exception &exception);

// What is known of an error; texts may be empty.
struct ErrorDescription {
    QString domain;
    qint64 code = 0;
    QString userInfo;
    QString localizedDescription;
    QString localizedFailureReason;
};
void LogError(const ErrorDescription &error);

} // namespace cantorel
