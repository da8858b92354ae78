#pragma once

#include "platform/desktop/FileManagerReveal.h"
#include "platform/desktop/MediaControls.h"
#include "platform/foundation/Sentence.h"
#include "recording/library/ID3EditWindowController.h"
#include "recording/library/LibraryMedia.h"
#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordingsAdding.h"
#include "recording/library/RecordingsModel.h"
#include "recording/library/RecordingsRemoval.h"
#include "ui/CoverPictures.h"
#include "ui/PlayingConsent.h"
#include "ui/Strip.h"

#include <QWidget>

#include <functional>
#include <unordered_set>
#include <vector>

class QAction;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedLayout;
class QToolButton;

namespace cantorel {
class RecordedList;
}

namespace cantorel {
class RecordingIdentification;
}

namespace cantorel::ui {

class DetailsPanel;
class PlayerBar;
class RecordingsTable;

// The recordings: a table to search, sort, play, rename, drag from, drop on and clear up in.
class LibraryTab : public QWidget {
    Q_OBJECT

public:
    // media, files: null where the desktop has no media controls or file manager. All outlive the tab.
    LibraryTab(RecordedList &list, desktop::MediaControls *media, desktop::FileManagerReveal *files, QWidget *parent);

    // The focus goes to where one begins.
    void begin();
    // The items of the list have come or gone; what is shown of all, or of one, has changed.
    void listDidChange();
    void itemsDidChange() { mModel.itemsDidChange(); }
    void itemDidChange(const RecordedAudioInfo &item) { mModel.itemDidChange(item); }
    // So that it is not recorded.
    void stopPlayback() { mPlayer.stop(); }
    // While system sound is recorded, playing would be recorded too: play() then emits playsIntoRecording() instead,
    // once for each recording.
    void setRecordsSystemSound(bool records);
    void play(const QString &file);
    void playAllTheSame(const QString &file);
    // The strip of what goes on elsewhere stands above the player.
    void takeStrip(QWidget &strip);
    // Files and folders join the list.
    void add(const QStringList &paths);
    LibraryPlayer &player() { return mPlayer; }
    LibraryMedia &media() { return mMedia; }
    // Who recognises music when it is asked to, and tells what became of it; outlives the tab.
    void setIdentification(RecordingIdentification &identification);
    // Shows tags that were typed and not saved, with a way to save them; false when there are none.
    bool showUnsavedTags() { return mTags.leave(); }

Q_SIGNALS:
    void playsIntoRecording(const QString &file);
    void convertWanted(const QStringList &files);
    void editWanted(const QString &file);

private:
    QWidget *makeTools();
    QWidget *makeTable();
    QWidget *makeNotice();
    std::vector<RecordedAudioInfo *> selected() const;
    RecordedAudioInfo *chosen() const;
    void showMenu(const QPoint &position);
    void watch(const QString &file);
    void playTile(int row);
    void rename();
    void reveal();
    void convert();
    void edit();
    void chooseFiles();
    void showAdded(const RecordingsAdding::Added &added);
    void toggleDetails();
    void arrangeDetails();
    void showDetails();
    void showChoice();
    void remove(RecordingsRemoval::Files files);
    void onIdentifyID3tagsRecordedItem();
    void undo();
    // undo: takes back what is told; empty where nothing can be.
    void tell(Strip::Kind kind, const QString &text, std::function<void()> undo);
    void notice(const foundation::Sentence &trouble);
    void tellWritten(const TagsWritten &written, const ID3EditWindowController::Unsaved &unsaved);
    void remember();
    void restore();
    int listWidth() const;
    void fitColumns();
    void fitTools();
    QString longestDate() const;
    void showEmptiness();
    void showIcons();
    void showTexts();
    bool isWide() const;
    bool escape();
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

    RecordedList &mList;
    RecordingsModel mModel;
    CoverPictures mPictures;
    RecordingsRemoval mRemoval;
    RecordingsAdding mAdding;
    ID3EditWindowController mTags;
    LibraryPlayer mPlayer;
    LibraryMedia mMedia;
    desktop::FileManagerReveal *const mFiles;
    // The items of the rows before a change; may be deleted by then, and are only compared.
    struct {
        std::unordered_set<const RecordedAudioInfo *> selected;
        const RecordedAudioInfo *current = nullptr, *top = nullptr;
        int column = 0;
    } mBefore;
    // The panel stands beside the list in a wide window, and covers it in a narrow one.
    enum class Details { Closed, Beside, Covering } mDetails = Details::Closed;
    QWidget *mPage = nullptr, *mTools = nullptr; // tools and list; tools
    DetailsPanel *mPanel = nullptr;
    QLineEdit *mSearch;
    QAction *mGlass, *mClearSearch;
    QStackedLayout *mStack = nullptr;
    RecordingsTable *mTable;
    QLabel *mEmpty;
    Strip *mNotice = nullptr;
    QPushButton *mUse = nullptr, *mAgree = nullptr, *mUndo = nullptr, *mSave = nullptr;
    std::function<void()> mUndoes;      // what the strip tells of; empty for nothing
    std::function<void()> mUseProposal; // where one is shown
    RecordingIdentification *mIdentification = nullptr;
    std::vector<ID3EditWindowController::Unsaved> mLeft; // tags that may still be saved
    PlayerBar *mPlayerBar;
    QToolButton *mAdd, *mEdit, *mConvert, *mReveal, *mToggle;
    PlayingConsent mConsent;
};

} // namespace cantorel::ui
