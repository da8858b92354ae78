#include "recording/library/RecordingsRemoval.h"

#include "recording/library/RecordedList.h"

#include <QFile>
#include <QFileInfo>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNotBack("NotBack", "FileName");

// The wastebasket keeps a note beside what is in it.
void forget(const QString &inWastebasket) {
    const QFileInfo file(inWastebasket);
    QFile::remove(QStringLiteral("%1/../info/%2.trashinfo").arg(file.path(), file.fileName()));
}

} // namespace

foundation::Result<void> RecordingsRemoval::remove(const std::vector<RecordedAudioInfo *> &items, Files files) {
    mRemoved.clear();
    mHasMovedFiles = files == Files::IntoWastebasket;
    QString failed;
    for (RecordedAudioInfo *item : items) {
        if (item->isInUse())
            continue;
        QString moved;
        const QString path = item->getFileName();
        if (mHasMovedFiles && QFile::exists(path) && !QFile::moveToTrash(path, &moved)) {
            failed = failed.isEmpty() ? path : failed;
            continue;
        }
        mRemoved.push_back({mList.indexOf(*item), item->fields(), moved});
        mList.remove(*item);
    }
    if (failed.isEmpty() && !mList.unsaved().isEmpty())
        return foundation::Failure{mList.unsaved(), QStringLiteral("the list was not saved")};
    if (failed.isEmpty())
        return {};
    return foundation::Failure{kNotToWastebasket(failed), {}};
}

QString RecordingsRemoval::firstName() const {
    return mRemoved.empty() ? QString() : QFileInfo(mRemoved.front().fields._fileName).fileName();
}

foundation::Result<void> RecordingsRemoval::undo() {
    QString failed;
    // The last one removed first, so that the places are those of its time.
    while (!mRemoved.empty()) {
        const Removed removed = mRemoved.back();
        mRemoved.pop_back();
        if (!removed.inWastebasket.isEmpty()) {
            if (!QFile::rename(removed.inWastebasket, removed.fields._fileName)) {
                failed = removed.inWastebasket;
                continue;
            }
            forget(removed.inWastebasket);
        }
        mList.insert(removed.place, removed.fields);
    }
    if (failed.isEmpty())
        return {};
    return foundation::Failure{kNotBack(failed), {}};
}

} // namespace cantorel
