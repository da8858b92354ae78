#include "recording/library/ListJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QtEndian>

#include <fcntl.h>

namespace cantorel {

namespace {

const QString kArchiveKey = QStringLiteral("archive");

// Tells archives apart, no more: a multiplicative hash of eight bytes a step, since lists of tens of megabytes pass
// here with each save.
QByteArray digestOf(const QByteArray &archive) {
    constexpr quint64 kFactor = 0x9E37'79B9'7F4A'7C15; // 2^64 by the golden ratio
    quint64 digest = static_cast<quint64>(archive.size());
    const auto mix = [&digest](quint64 word) {
        digest = (digest ^ word) * kFactor;
        digest ^= digest >> 32;
    };
    qsizetype at = 0;
    for (; at + 8 <= archive.size(); at += 8)
        mix(qFromLittleEndian<quint64>(archive.constData() + at));
    for (; at < archive.size(); ++at)
        mix(static_cast<quint8>(archive[at]));
    return QByteArray::number(digest, 16);
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
    mDigest = digestOf(archive);
}

void ListJournal::remove() {
    mDescriptor.reset();
    if (QFile::exists(mFile))
        QFile::remove(mFile); // At worst a stale one stays, which its digest tells.
}

bool ListJournal::create() {
    QDir().mkpath(QFileInfo(mFile).path());
    mDescriptor = foundation::FileDescriptor(
        ::open(QFile::encodeName(mFile).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
    const foundation::FileDescriptor folder(
        ::open(QFile::encodeName(QFileInfo(mFile).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return mDescriptor.isOpen() && ::fsync(folder.get()) == 0;
}

bool ListJournal::append(const std::vector<QJsonObject> &changes) {
    QByteArray lines;
    if (!mDescriptor.isOpen()) {
        if (!create())
            return false;
        lines = lineOf({{kArchiveKey, QString::fromLatin1(mDigest)}});
    }
    for (const QJsonObject &change : changes)
        lines += lineOf(change);
    mSize += lines.size();
    return ::write(mDescriptor.get(), lines.constData(), static_cast<std::size_t>(lines.size())) == lines.size()
           && ::fdatasync(mDescriptor.get()) == 0;
}

} // namespace cantorel
