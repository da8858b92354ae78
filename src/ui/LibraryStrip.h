#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Sentence.h"
#include "recording/library/ID3EditWindowController.h"
#include "recording/library/RecordingsAdding.h"
#include "ui/Strip.h"

#include <QString>

#include <functional>
#include <vector>

class QPushButton;

namespace cantorel {
class RecordingIdentification;
class RecordingsRemoval;
} // namespace cantorel

namespace cantorel::ui {

// What the library tells, one thing at a time, and what can be done about it: the last step taken back, music that was
// recognised taken over, tags saved that were left. Owned by the library tab.
class LibraryStrip : public Strip {
    Q_OBJECT

public:
    // tags: outlives it.
    LibraryStrip(ID3EditWindowController &tags, QWidget *parent);

    // Who recognises music, and tells what became of it; outlives the strip.
    void setIdentification(RecordingIdentification &identification);
    // undo: takes back what is told; empty where nothing can be.
    void report(Kind kind, const QString &text, std::function<void()> undo);
    void report(const foundation::Sentence &trouble);
    // What became of these; both outlive the strip.
    void reportRemoved(RecordingsRemoval &removal, const foundation::Result<void> &removed);
    void reportAdded(RecordingsAdding &adding, const RecordingsAdding::Added &added);
    // Clears what is told, unless it can be taken back.
    void clear();
    void undo();

private:
    void reportWritten(const TagsWritten &written, const ID3EditWindowController::Unsaved &unsaved, bool isYearKept);
    void showTexts();
    void changeEvent(QEvent *event) override;

    ID3EditWindowController &mTags;
    RecordingIdentification *mIdentification = nullptr;
    QPushButton &mUndo, &mUse, &mAgree, &mSave;
    std::function<void()> mUndoes;                       // what is told; empty for nothing
    std::function<void()> mUseProposal;                  // where one is shown
    std::vector<ID3EditWindowController::Unsaved> mLeft; // tags that may still be saved
};

} // namespace cantorel::ui
