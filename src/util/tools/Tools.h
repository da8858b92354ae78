#pragma once

#include "util/Asker.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <exception>
#include <optional>

namespace cantorel {

// The general set of class operations; the one that knows settings, texts and the log. Stateless. Alerts, sounds and
// scripts go through the installed asker and services, on the main thread; the rest on any.
class Tools {
public:
    Tools() = delete;

    // The path if it is free, else the first free "name(n).ext" beside it, n from 1.
    static QString getNonDuplicateFileName(const QString &path);
    static QString getUniqeNameInTempDirWithExtenionName(const QString &ext); // Spelling is fixed.
    // "Track<n>.m4a" in the output folder, by the number in the settings.
    static QString getAudioNameFromTrack();
    // What the person chose, or empty.
    static QString getAudioNameFromDialog();

    // "hh:mm:ss", or "mm:ss" below an hour when asked for.
    static QString formatDurationFromInteger(int seconds, bool showMMSS = false);
    // Seconds of "hh:mm:ss" or "mm:ss"; 0 for any other count of parts.
    static int getSecondsFromString(const QString &text);
    static QString stringFromDate(const QDateTime &date); // "MM/dd HH:mm"

    // Binary units from "KB" to "TB" with one decimal; never bytes.
    static QString formatSizeFromByte(qint64 bytes);
    static qint64 getFileSizeByteCountFromFileName(const QString &path);
    static QString getFileSizeStringFromFileName(const QString &path);

    // The fixed titles of AppSettings::audioFormats(), their qualities in the language in force.
    static QStringList shownAudioFormats();

    // Only digits, and at least one. Spelling is fixed.
    static bool isNumerice(const QString &text);
    static bool isContainsString(const QString &text, const QString &containString);
    static QString strReplace(const QString &text, const QString &fromString, const QString &toString);
    // A text of the language table as a person reads it: with the product's name and line breaks for their markers.
    static QString fillTextMarkers(const QString &text);
    static std::optional<QString> regexGetStringFromString(const QString &text, const QString &withRegExpression);
    static QStringList regexGetArrayFromString(const QString &text, const QString &withRegExpression);

    // Without append the start of an existing file is overwritten in place, deliberately without truncating it.
    static bool writeToFile(const QString &text, const QString &filePath, bool append);
    static QString getFileContent(const QString &path);

    static void playSoundStartRecording();
    static void playSoundStopRecording();

    // Alerts; without a title, under the application's name.
    static void showAlertMessage(const QString &message, const QString &title, QObject *modalForWindow,
                                 AlertStyle alertType);
    static void showErrorMessage(const QString &message, QObject *modalForWindow);
    static void showErrorMessage(const QString &message, const QString &title, QObject *modalForWindow = nullptr);
    static void showInformationMessage(const QString &message, QObject *modalForWindow);
    static void showInformationMessage(const QString &message, const QString &title, QObject *modalForWindow);

    static bool openURL(const QUrl &url);
    static bool openFile(const QString &path);
    static bool showInFinderWithFileName(const QString &path);
    static bool showInFinderWithFileNames(const QStringList &paths);

    static QString getOSversion();  // "Mac version: 10.15.7"
    static QString getOSLanguage(); // the first of the user's languages
    // Blocks until the machine has taken the wish.
    static void ShutdownSystem();

    // Into the application's log, which is made when it is missing.
    static void log(const QString &text);
    static void logException(const std::exception &exception);

    // Always false: covers are not written into M4A files.
    static bool canEditM4ACover() { return false; }
};

} // namespace cantorel
