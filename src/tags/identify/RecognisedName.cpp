#include "tags/identify/RecognisedName.h"

#include "util/ToolFile.h"

#include <QFileInfo>

namespace cantorel {

namespace {

constexpr int kMostAttempts = 99; // to find a name that nobody takes meanwhile

} // namespace

QString recognisedName(const QString &filePath, const RecognisedMusic &music) {
    const QString title = music.Title().normalized(QString::NormalizationForm_C);
    const QString name = ToolFile::fileNameAtPath(filePath).normalized(QString::NormalizationForm_C);
    // No file name has a stroke, and "1/2" is another one than "12".
    const QString clean = ToolFile::cleanFileName(QString(title).replace(QLatin1Char('/'), QLatin1Char('-')));
    return clean.isEmpty() || name.contains(title) || name.contains(clean) ? QString() : clean;
}

QString renamedFreely(const QString &filePath, const QString &base,
                      const std::function<bool(const QString &)> &rename) {
    const QFileInfo file(filePath);
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    QString name = base;
    for (int n = 1; n < kMostAttempts; ++n) {
        const QString path = file.path() + QLatin1Char('/') + name + suffix;
        if (rename(name))
            return path;
        if (!QFileInfo::exists(path))
            break;
        name = QStringLiteral("%1(%2)").arg(base).arg(n);
    }
    return filePath;
}

id3TagEdit recognisedTags(const RecognisedMusic &music) {
    const auto known = [](const auto &value) { return value.isEmpty() ? std::nullopt : std::optional(value); };
    return {known(music.Title()), known(music.Artist()), known(music.Album()),
            known(music.Gener()), known(music.Year()),   known(music.CoverImage())};
}

} // namespace cantorel
