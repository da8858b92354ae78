#pragma once

#include "platform/desktop/FileManagerReveal.h"
#include "platform/desktop/MediaControls.h"
#include "recording/library/ID3EditWindowController.h"
#include "recording/library/LibraryMedia.h"
#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordingsAdding.h"
#include "recording/library/RecordingsModel.h"
#include "recording/library/RecordingsRemoval.h"
#include "ui/CoverPictures.h"
#include "ui/PlayingConsent.h"

#include <QWidget>

class QLabel;
class QStackedLayout;

namespace cantorel {
class RecordedList;
class RecordingIdentification;
} // namespace cantorel

namespace cantorel::ui {

class DetailsPanel;
class LibraryStrip;
class LibraryTable;
class LibraryTools;
class PlayerBar;

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
    // Its row is the one that is chosen.
    void choose(const QString &file);
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
    void listen();
    void makeKeys();
    void showMenu(const QPoint &position);
    void watch(const QString &file);
    void reveal();
    void convert();
    void edit();
    void chooseFiles();
    void toggleDetails();
    void arrangeDetails();
    void showDetails();
    void showChoice();
    void remove(RecordingsRemoval::Files files);
    void onIdentifyID3tagsRecordedItem();
    int listWidth() const;
    void showEmptiness();
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
    // The panel stands beside the list in a wide window, and covers it in a narrow one.
    enum class Details { Closed, Beside, Covering } mDetails = Details::Closed;
    QWidget *mPage; // tools and list
    LibraryTools *mTools;
    QStackedLayout *mStack;
    LibraryTable *mTable;
    QLabel *mEmpty;
    DetailsPanel *mPanel;
    LibraryStrip *mStrip;
    PlayerBar *mPlayerBar;
    RecordingIdentification *mIdentification = nullptr;
    PlayingConsent mConsent;
};

} // namespace cantorel::ui
