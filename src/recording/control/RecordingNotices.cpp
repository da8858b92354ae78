#include "recording/control/RecordingNotices.h"

#include "lang/Lang.h"

#include <QFileInfo>
#include <QPointer>

namespace cantorel {

using desktop::Notification;

namespace {

const QString kReady = QStringLiteral("ready"), kTold = QStringLiteral("told"), kSign = QStringLiteral("sign");
const QString kShowInFolder = QStringLiteral("show-in-folder"), kStop = QStringLiteral("stop");

Notification::Action click() { return {Notification::click(), Lang::menuShowMainWindow()}; }

} // namespace

RecordingNotices::~RecordingNotices() { endSign(); }

void RecordingNotices::show(const QString &tag, const Notification &notification) const {
    if (mNotifications != nullptr)
        mNotifications->show(tag, notification);
    else if (notification.refused)
        notification.refused();
}

void RecordingNotices::ready(const QString &file) {
    const QString name = QFileInfo(file).fileName();
    // The messages may stay longer than the window.
    const QPointer<RecordingNotices> self(this);
    show(kReady, {.title = Lang::windowFileReady(),
                  .text = name,
                  .actions = {click(), {kShowInFolder, Lang::btnShowInFinder()}},
                  .refused =
                      [self, name] {
                          if (self)
                              self->mActions.tellOtherwise(Lang::windowFileReady(), name);
                      },
                  .pressed =
                      [self, file](const QString &action) {
                          if (!self)
                              return;
                          if (action == kShowInFolder)
                              self->reveal(file);
                          else
                              self->mActions.showWindow();
                      }});
}

void RecordingNotices::tell(const QString &title, const QString &text) {
    const QPointer<RecordingNotices> self(this);
    show(kTold, {.title = title,
                 .text = text,
                 .actions = {click()},
                 .refused =
                     [self, title, text] {
                         if (self)
                             self->mActions.tellOtherwise(title, text);
                     },
                 .pressed =
                     [self](const QString &) {
                         if (self)
                             self->mActions.showWindow();
                     }});
}

void RecordingNotices::showSign(std::function<void(bool)> isThere) {
    show(kSign, {.title = Lang::tabRecordStatusRecording(),
                 .text = Lang::windowGoesOnHidden(),
                 .actions = {click(), {kStop, Lang::btnStop()}},
                 .isLasting = true,
                 .shown = [isThere] { isThere(true); },
                 .refused = [isThere] { isThere(false); },
                 .pressed =
                     [this](const QString &action) {
                         if (action == kStop)
                             mActions.stopRecording();
                         else
                             mActions.showWindow();
                     },
                 .ended = [isThere] { isThere(false); }});
}

void RecordingNotices::endSign() {
    if (mNotifications != nullptr)
        mNotifications->close(kSign);
}

// A file that has gone meanwhile is in the wastebasket or has another name: the library knows.
void RecordingNotices::reveal(const QString &file) const {
    if (mFiles == nullptr || !QFileInfo::exists(file))
        mActions.showWindow();
    else if (const auto revealed = mFiles->reveal({file}); !revealed)
        mActions.tellOtherwise(QFileInfo(file).fileName(), Lang::sentence(revealed.failure().sentence));
}

} // namespace cantorel
