#include "ui/WindowLeaving.h"

#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/RecordingNotices.h"
#include "recording/control/ScheduledSession.h"
#include "ui/LibraryTab.h"
#include "ui/MainWindow.h"
#include "ui/RecordCards.h"
#include "ui/RecordingTab.h"
#include "ui/StatusItem.h"
#include "ui/ZQAudioConvertController.h"
#include "util/tools/Tools.h"

#include <utility>

namespace cantorel::ui {

WindowLeaving::WindowLeaving(MainWindow &window, const RecorderPanel &panel, ScheduledSession &recorder,
                             const ZQAudioConvertManager &converter, RecordingNotices &notices)
    : mWindow(window), mPanel(panel), mRecorder(recorder), mConverter(converter), mNotices(notices) {}

RecordCards &WindowLeaving::cards() const { return mWindow.recordPage().cards(); }

void WindowLeaving::close() {
    if (cards().keepToLeave()) // Who closes it again means that it goes on.
        return;
    const QString ahead = mPanel.taskAheadText();
    if (ahead.isEmpty() || mWindow.isRecording() || !mWindow.statusItem().isThere()) {
        leave();
        return;
    }
    mWindow.hide(); // It waits for the task in the tray.
    if (!std::exchange(mHasToldOfWaiting, true))
        mNotices.tell(Tools::fillTextMarkers(Lang::windowWaitsHidden()), ahead);
}

void WindowLeaving::leave() {
    if (mState == State::Leaving)
        endOnceSettled();
    else if (mWindow.library().showUnsavedTags()) {
        mWindow.bringToFront();
        mWindow.showLibrary(); // Who leaves once more means it.
    } else if (mWindow.isRecording() || !mPanel.taskAheadText().isEmpty() || mConverter.isConverting())
        ask();
    else
        stopAndQuit();
}

void WindowLeaving::ask() {
    mWindow.bringToFront();
    mWindow.showRecordPage();
    const auto texts = [this] {
        const bool records = mWindow.isRecording();
        return Card::Texts{QStringLiteral("wave"),
                           Tools::fillTextMarkers(Lang::commExitConfirm()),
                           records                     ? Lang::windowStillRecording()
                           : mConverter.isConverting() ? mWindow.convertPage().progressText()
                                                       : mPanel.taskAheadText(),
                           {records ? Lang::windowKeepRecording() : Lang::windowKeepWaiting(),
                            records ? Lang::windowStopAndQuit() : Lang::btnExit()}};
    };
    cards().askToLeave(texts, [this](int answer) {
        if (answer == 0)
            stayHidden();
        else if (answer == 1)
            stopAndQuit();
    });
}

// Without a tray it stays in sight: as a minimised window, or as a message of the desktop that ends the recording.
void WindowLeaving::stayHidden() {
    if (mWindow.statusItem().isThere()) {
        mWindow.hide();
        return;
    }
    mWindow.showMinimized();
    if (!mWindow.isRecording())
        return;
    mState = State::Signed;
    mNotices.showSign([this](bool isThere) { signDidChange(isThere); });
}

void WindowLeaving::signDidChange(bool isThere) {
    if (mState != State::Signed)
        return;
    if (isThere) {
        if (mWindow.isMinimized())
            mWindow.hide();
        return;
    }
    mState = State::Here;
    if (!mWindow.isVisible())
        mWindow.showMinimized();
}

void WindowLeaving::recordingDidChange() {
    if (mState != State::Signed || mWindow.isRecording())
        return;
    mNotices.endSign();
    signDidChange(false);
}

void WindowLeaving::endSign() {
    if (mState == State::Signed)
        mState = State::Here;
    mNotices.endSign();
}

void WindowLeaving::stay() {
    if (mState == State::Leaving)
        mState = State::Here;
}

void WindowLeaving::stopAndQuit() {
    endSign();
    mState = State::Leaving;
    mRecorder.stopByHand();
    endOnceSettled();
}

void WindowLeaving::endOnceSettled() {
    if (mState != State::Leaving)
        return;
    mWindow.rememberPlace();
    mWindow.hide();
    if (mWindow.isSettled())
        Q_EMIT mayEnd();
}

} // namespace cantorel::ui
