#pragma once

#include "platform/foundation/Result.h"
#include "recording/library/ListJournal.h"
#include "recording/library/RecordedAudioInfo.h"

#include <QJsonObject>
#include <QString>

#include <cstddef>
#include <memory>
#include <vector>

namespace cantorel {

// The list of recordings on the disk: an archive in the settings and, where that is long, a journal of what has changed
// since. A change is on the disk before the call returns, or unsaved() says why not. One thread at a time.
class ListStore {
public:
    using Items = std::vector<std::unique_ptr<RecordedAudioInfo>>;
    enum class Change { Insert, Remove, Set };

    // stateFolder: for the journal and for copies of damaged lists.
    explicit ListStore(const QString &stateFolder);

    // What is stored, without the items whose files are no longer there. Changes nothing.
    Items load();
    // Stores the whole list.
    void save(const Items &items);
    // Stores changes of one kind, one after the other, that have led to these items: in the journal, or with all of
    // them where that is as quick or must be. An item that was removed stood there.
    void save(const Items &items, Change change, const std::vector<std::size_t> &places);
    // One sentence on why the disk lacks the latest changes; empty if it has them. What is missing is stored with the
    // next change.
    const foundation::Sentence &unsaved() const { return mUnsaved; }

private:
    const QString mStateFolder;
    ListJournal mJournal;
    qint64 mArchiveSize = 0;
    bool mJournalFits = false; // the archive and the journal give the list as it is
    foundation::Sentence mUnsaved;
};

} // namespace cantorel
