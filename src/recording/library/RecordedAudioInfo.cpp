#include "recording/library/RecordedAudioInfo.h"

#include "platform/foundation/KeyedArchiver.h"
#include "util/ToolFile.h"

namespace cantorel {

namespace {

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

RecordedAudioInfo::RecordedAudioInfo(RecordedAudioFields fields)
    : mFields(std::move(fields)), _originalFileName(mFields._fileName), _title(lastComponent(mFields._fileName)) {}

void RecordedAudioInfo::setFileName(const QString &path) {
    mFields._fileName = path;
    _title = lastComponent(path);
    mSearchKey.clear();
    updateInfo();
}

void RecordedAudioInfo::updateInfo() {
    QMetaObject::invokeMethod(
        this, [this] { CurrentRecordedItemDelegate->updateInfo(); }, Qt::QueuedConnection);
}

QString RecordedAudioInfo::getTitle() const { return isProcessing ? ToolFile::fileNameAtPath(_title) : _title; }

const QByteArray &RecordedAudioInfo::searchKey() const {
    if (mSearchKey.isEmpty())
        mSearchKey = QString(_title + QLatin1Char('\n') + mFields._artist + QLatin1Char('\n') + mFields._album)
                         .toCaseFolded()
                         .toUtf8();
    return mSearchKey;
}

void RecordedAudioInfo::setDuration(const QString &text) {
    mFields._duration = text;
    CurrentRecordedItemDelegate->setDuration(text);
}

void RecordedAudioInfo::setStatus(const QString &status) {
    _status = status;
    foundation::NotificationCenter::defaultCenter().post(kNotificationRecordedAudioInfoStatusDidChange,
                                                         RecordedStatusChange{});
}

} // namespace cantorel
