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

id3Tag recognisedTags(id3Tag tags, const RecognisedMusic &music) {
    const auto take = [](QString &field, const QString &text) {
        if (!text.isEmpty())
            field = text;
    };
    take(tags.id3Title, music.Title());
    take(tags.id3Artist, music.Artist());
    take(tags.id3Album, music.Album());
    take(tags.id3Genre, music.Gener());
    take(tags.id3Year, music.Year());
    if (!music.CoverImage().isEmpty())
        tags.id3Image = music.CoverImage();
    return tags;
}

} // namespace cantorel
