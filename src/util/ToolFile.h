#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace cantorel {

// Class operations on files and folders. Stateless; any thread. What fails answers false, 0, nothing or an empty text,
// and says why in the error text where one is given.
class ToolFile {
public:
    ToolFile() = delete;

    // A file or a folder; a dangling link does not exist.
    static bool isFileExistsAtPath(const QString &path);
    static bool isFolderExistsAtPath(const QString &path);

    // Makes an empty file; empties an existing one.
    static bool createFileAtPath(const QString &path); // for its owner alone, where it is new
    // With the folders above it; also true if it exists already.
    static bool createFolderAtPath(const QString &path);

    // Only when the source exists; nothing is overwritten. A move across file systems copies first.
    static bool moveFileFromPath(const QString &path, const QString &toPath, QString *error = nullptr);
    static bool copyFileFormPath(const QString &path, const QString &toPath, QString *error = nullptr); // Spelling is
                                                                                                        // fixed.
    // A folder goes with all that is in it.
    static bool removeFileAtPath(const QString &path, QString *error = nullptr);

    // What a folder holds, hidden files too, sorted by name.
    static QStringList subFileNamesWithFolderPath(const QString &path);
    static QStringList subFilePathsWithFolderPath(const QString &path);

    static std::optional<QFileInfo> getFileAttributesAtPath(const QString &path, QString *error = nullptr);
    static QDateTime fileCreateDateAtPath(const QString &path, QString *error = nullptr);
    static QDateTime fileModificationDateAtPath(const QString &path, QString *error = nullptr);
    static qint64 fileSizeAtPath(const QString &path, QString *error = nullptr); // bytes

    // The text behind the last full stop of the name; empty when there is none or the name begins with it.
    static QString fileExtensionAtPath(const QString &path);
    // The last component without its extension.
    static QString fileNameAtPath(const QString &path);
    // The text as the base name of a file: without "/" and control characters, short enough for "(n)" and an extension
    // behind it. Empty when nothing is left that can be a name.
    static QString cleanFileName(const QString &text);
    // The path with another extension, or with none for an empty one.
    static QString pathWithExtension(const QString &path, const QString &extension);

    // Binary units from "KB" to "TB"; never bytes.
    static QString fileSizeFormatterToString(qint64 bytes, int decimals = 2);

    // Through the desktop; false when it has no such service.
    static bool showFileInFinder(const QString &path);
    static bool showMultipleFilesInFinder(const QStringList &paths);
    static bool openFileAtURL(const QUrl &url);
    static bool openFileAtURL(const QUrl &url, const QString &withApplication);

    // With append the bytes go to the end in one piece, and a missing file is made; without, they replace the file
    // whole or not at all. A file that is made is its owner's alone. An empty path writes nothing.
    static bool writeData(const QByteArray &data, const QString &toFile, bool append);
};

} // namespace cantorel
