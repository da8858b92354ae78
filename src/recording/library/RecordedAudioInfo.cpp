#include "recording/library/RecordedAudioInfo.h"

#include "platform/foundation/KeyedArchiver.h"
#include "util/ToolFile.h"

#include <QCoreApplication>
#include <QStringEncoder>
#include <QVarLengthArray>

#include <unistd.h>

namespace cantorel {

namespace {

constexpr char kPart = '\xFF'; // no byte of UTF-8
const QString kClassName = QStringLiteral("RecordedAudioInfo");

struct StoredField {
    QString key;
    QString RecordedAudioFields::*member;
};
const StoredField kStoredFields[] = {{QStringLiteral("_fileName"), &RecordedAudioFields::_fileName},
                                     {QStringLiteral("_duration"), &RecordedAudioFields::_duration},
                                     {QStringLiteral("_size"), &RecordedAudioFields::_size},
                                     {QStringLiteral("_dateAdded"), &RecordedAudioFields::_dateAdded},
                                     {QStringLiteral("_artist"), &RecordedAudioFields::_artist},
                                     {QStringLiteral("_album"), &RecordedAudioFields::_album},
                                     {QStringLiteral("_year"), &RecordedAudioFields::_year}};

QString lastComponent(const QString &path) { return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1); }

} // namespace

QVariant archivedItem(const RecordedAudioFields &fields) {
    foundation::ArchivedObject object{kClassName, {}};
    object.values.reserve(std::size(kStoredFields));
    for (const StoredField &field : kStoredFields)
        object.values[field.key] = fields.*field.member;
    return QVariant::fromValue(object);
}

std::optional<RecordedAudioFields> recordedAudioFields(const QVariant &archivedItem) {
    const auto *object = archivedItem.metaType() == QMetaType::fromType<foundation::ArchivedObject>()
                             ? static_cast<const foundation::ArchivedObject *>(archivedItem.constData())
                             : nullptr;
    if (!object || object->className != kClassName)
        return {};
    RecordedAudioFields fields;
    for (const StoredField &field : kStoredFields) {
        const QVariant *value = object->values.find(field.key);
        if (value && value->typeId() == QMetaType::QString)
            fields.*field.member = value->toString();
    }
    if (fields._fileName.isEmpty())
        return {};
    return fields;
}

RecordedAudioInfo::RecordedAudioInfo(const QString &fileName)
    : RecordedAudioInfo(RecordedAudioFields{fileName, {}, {}, {}, {}, {}, {}}) {}

RecordedAudioInfo::RecordedAudioInfo(const RecordedAudioFields &fields) {
    QVarLengthArray<char, 512> stored; // one piece of memory for each of many
    for (const StoredField &field : kStoredFields) {
        const QString &text = fields.*field.member;
        if (&field != kStoredFields)
            stored.append(kPart);
        QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
        const qsizetype begin = stored.size();
        stored.resize(begin + encoder.requiredSpace(text.size()));
        stored.resize(encoder.appendToBuffer(stored.data() + begin, text) - stored.data());
    }
    mStored = QByteArray(stored.constData(), stored.size()); // without room to grow
}

RecordedAudioInfo::~RecordedAudioInfo() {
    if (mRare && mRare->place)
        *mRare->place = nullptr;
}

RecordedItemPointer::RecordedItemPointer(RecordedAudioInfo *item) {
    if (item == nullptr)
        return;
    auto &place = item->rare().place;
    if (!place)
        place = std::make_shared<RecordedAudioInfo *>(item);
    mPlace = place;
}

RecordedAudioInfo::Rare &RecordedAudioInfo::rare() {
    if (!mRare)
        mRare = std::make_unique<Rare>();
    return *mRare;
}

QByteArrayView RecordedAudioInfo::piece(Field field) const {
    qsizetype begin = 0;
    for (int before = 0; before < field; ++before)
        begin = mStored.indexOf(kPart, begin) + 1;
    const qsizetype end = mStored.indexOf(kPart, begin);
    return QByteArrayView(mStored).sliced(begin, (end < 0 ? mStored.size() : end) - begin);
}

void RecordedAudioInfo::setField(Field field, const QString &text) {
    const QByteArrayView before = piece(field);
    mStored.replace(before.data() - mStored.constData(), before.size(), text.toUtf8());
    mStored.squeeze();
    mSearchKey.clear();
}

RecordedAudioFields RecordedAudioInfo::fields() const {
    RecordedAudioFields fields;
    qsizetype begin = 0;
    for (const StoredField &field : kStoredFields) {
        const qsizetype end = mStored.indexOf(kPart, begin);
        fields.*field.member =
            QString::fromUtf8(QByteArrayView(mStored).sliced(begin, (end < 0 ? mStored.size() : end) - begin));
        begin = end + 1;
    }
    return fields;
}

bool RecordedAudioInfo::fileExists() const {
    return ::access(piece(FileNameField).toByteArray().constData(), F_OK) == 0;
}

QByteArrayView RecordedAudioInfo::folder() const {
    const QByteArrayView path = piece(FileNameField);
    return path.first(qMax<qsizetype>(0, path.lastIndexOf('/')));
}

QString RecordedAudioInfo::originalFileName() const {
    return mRare && !mRare->originalFileName.isEmpty() ? mRare->originalFileName : getFileName();
}

void RecordedAudioInfo::setFileName(const QString &path) {
    rare().originalFileName = originalFileName();
    setField(FileNameField, path);
    updateInfo();
}

void RecordedAudioInfo::updateInfo() {
    if (!mRare || !mRare->current)
        return; // Nobody would hear it.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [item = RecordedItemPointer(this)] {
            if (item)
                item->CurrentRecordedItemDelegate()->updateInfo();
        },
        Qt::QueuedConnection);
}

QString RecordedAudioInfo::getTitle() const {
    const QString title = lastComponent(getFileName());
    return isProcessing ? ToolFile::fileNameAtPath(title) : title;
}

const QByteArray &RecordedAudioInfo::searchKey() const {
    if (mSearchKey.isEmpty()) {
        const QString text = lastComponent(getFileName()) + QLatin1Char('\n') + artist() + QLatin1Char('\n') + album();
        mSearchKey = text.toCaseFolded().toUtf8();
        mSearchKey.squeeze();
    }
    return mSearchKey;
}

void RecordedAudioInfo::setDuration(const QString &text) {
    setField(DurationField, text);
    if (mRare)
        mRare->current->setDuration(text);
}

void RecordedAudioInfo::setStatus(const QString &status) {
    if (mRare || !status.isEmpty())
        rare().status = status;
    foundation::NotificationCenter::defaultCenter().post(kNotificationRecordedAudioInfoStatusDidChange,
                                                         RecordedStatusChange{});
}

} // namespace cantorel
