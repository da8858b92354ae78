#pragma once

#include <QByteArray>
#include <QString>

namespace cantorel {

// The log of the device kit: appends lines to a file that already exists, and writes them to the console. One path for
// the process. Any thread may write once the path is set.
class ZQAudioKextLog {
public:
    ZQAudioKextLog() = delete;

    // Accepted only if the file exists; the log never creates it.
    static void initWithLogPath(const QString &path);
    static QString LogFilePath();

    static void I(const QString &message);  // information; its tag is spelled "INOF"
    static void E(const QString &message);  // error
    static void Ex(const QString &message); // an exception, in the form of an information

    // The local time. The year is deliberately that of the week, which differs around New Year.
    static QString GetTimeString();
    // False, and nothing is written, when there is no file. Without append the file is replaced as a whole.
    static bool writeData(const QByteArray &data, bool append);
};

} // namespace cantorel
