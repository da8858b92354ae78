#include "recording/ListJournal.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <fcntl.h>

namespace cantorel {

namespace {

const QString kArchiveKey = QStringLiteral("archive");

QByteArray digestOf(const QByteArray &archive) {
    return QCryptographicHash::hash(archive, QCryptographicHash::Sha1).toHex();
}

QByteArray lineOf(const QJsonObject &object) { return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n'; }

} // namespace

std::vector<QJsonObject> ListJournal::changesTo(const QByteArray &archive) const {
    QFile file(mFile);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::vector<QJsonObject> changes;
    bool isHeader = true;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (!line.endsWith('\n') || object.isEmpty())
            break;
        if (isHeader && object.value(kArchiveKey).toString().toLatin1() != digestOf(archive))
            break;
        if (!isHeader)
            changes.push_back(object);
        isHeader = false;
    }
    return changes;
}

void ListJournal::begin(const QByteArray &archive) {
    mDescriptor.reset();
    mSize = 0;
    if (QFile::exists(mFile))
        QFile::remove(mFile); // At worst a stale one stays, which its digest tells.
    mDigest = digestOf(archive);
}

bool ListJournal::create() {
    QDir().mkpath(QFileInfo(mFile).path());
    mDescriptor = foundation::FileDescriptor(
        ::open(QFile::encodeName(mFile).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
    const foundation::FileDescriptor folder(
        ::open(QFile::encodeName(QFileInfo(mFile).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return mDescriptor.isOpen() && ::fsync(folder.get()) == 0;
}

bool ListJournal::append(const QJsonObject &change) {
    QByteArray lines = lineOf(change);
    if (!mDescriptor.isOpen()) {
        if (!create())
            return false;
        lines.prepend(lineOf({{kArchiveKey, QString::fromLatin1(mDigest)}}));
    }
    mSize += lines.size();
    return ::write(mDescriptor.get(), lines.constData(), static_cast<std::size_t>(lines.size())) == lines.size()
           && ::fdatasync(mDescriptor.get()) == 0;
}

} // namespace cantorel
