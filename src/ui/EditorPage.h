#pragma once

#include "editor/ZQAudioEditorManager.h"
#include "ui/Page.h"
#include "ui/PlayingConsent.h"
#include "ui/Strip.h"
#include "ui/ZQAudioHeaderView.h"

#include <functional>
#include <memory>
#include <optional>

class QLabel;
class QMenu;
class QPushButton;

namespace cantorel::ui {

class DigitLabel;
class EditorPanel;
class PlayButton;
class WaveArea;
class WaveOverview;
class ZQAudioCutInfoView;

// The editor: the wave of a file with its selections, what is played of it, what is put into it, and what is exported
// from it. It shows what the manager tells.
class EditorPage : public Page {
    Q_OBJECT

public:
    // clock: outlives the page.
    EditorPage(foundation::Clock &clock, std::shared_ptr<KeptEdit> kept, QWidget *parent);
    ~EditorPage() override;

    ZQAudioEditorManager &manager() { return mManager; }
    void edit(const QString &file);
    void begin() override;
    void setRecordsSystemSound(bool records) { mConsent.setRecordsSystemSound(records); }

Q_SIGNALS:
    // An export has made these.
    void exported(const QStringList &files);
    void revealWanted(const QStringList &files);
    // What is played would be recorded: it begins with that call, if the person agrees.
    void playsIntoRecording(const std::function<void()> &play);

private:
    void makeActions();
    QWidget *makeUpper();
    QWidget *makeLead();
    void listen();
    void open();
    void play(std::function<void()> begin);
    void chooseInsert(InsertType type);
    void askForName();
    void showState();
    void showCuts();
    void showHead();
    void showView();
    void showReadout(std::optional<QPointF> point);
    void tell(Strip::Kind kind, const QString &text, bool canUndo, const QStringList &files = {});
    void showIcons() final;
    void showTexts() final;
    void fit();
    bool act(const QKeyEvent &event);

    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    ZQAudioEditorManager mManager;
    PlayingConsent mConsent;
    QToolButton *mOpen, *mInsert, *mExport;
    ZQAudioHeaderView mHeader;
    QMenu *mInsertMenu;
    WaveArea *mWave;
    WaveOverview *mOverview;
    QToolButton *mZoomOut, *mZoomIn;
    DigitLabel *mFrom, *mReadout, *mTo, *mPosition, *mLength;
    PlayButton *mPlay;
    QPushButton *mPlayCuts;
    QLabel *mWhich, *mHint;
    Strip *mNews;
    QPushButton *mUndo, *mReveal;
    ZQAudioCutInfoView *mCutInfo = nullptr;
    EditorPanel *mPanel;
    QStringList mMade; // what the strip tells of
};

} // namespace cantorel::ui
