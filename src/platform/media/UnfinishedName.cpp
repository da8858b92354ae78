#include "platform/media/UnfinishedName.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace cantorel::media {

namespace {

constexpr qsizetype kLongestName = 255; // bytes
constexpr qsizetype kOurPart = 24;      // bytes, with a number
constexpr const char *kEnd = ".unfinished";

} // namespace

QString unfinishedName(const QString &path) {
    const QFileInfo file(path);
    QString base = file.completeBaseName();
    const QString extension = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    while (QFile::encodeName(base + extension).size() > kLongestName - kOurPart && !base.isEmpty())
        base.chop(1);
    for (int number = 1;; ++number) {
        const QString distinct = number == 1 ? QString() : QStringLiteral(".%1").arg(number);
        const QString name = QStringLiteral("%1/.%2%3%4%5")
                                 .arg(file.absolutePath(), base, extension, distinct, QString::fromLatin1(kEnd));
        if (!QFileInfo::exists(name))
            return name;
    }
}

QString finishedName(const QString &unfinished) {
    static const QRegularExpression pattern(QStringLiteral("\\A\\.(.+?)(\\.[0-9]+)?\\.unfinished\\z"),
                                            QRegularExpression::DotMatchesEverythingOption);
    const QFileInfo file(unfinished);
    const auto match = pattern.match(file.fileName());
    return match.hasMatch() ? file.path() + QLatin1Char('/') + match.captured(1) : QString();
}

} // namespace cantorel::media
