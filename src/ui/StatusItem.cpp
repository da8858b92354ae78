#include "ui/StatusItem.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace cantorel::ui {

namespace {

// The program's icon with a dot of that colour in its corner.
QIcon badged(const QColor &colour) {
    QIcon icon;
    for (const int size : {16, 22, 32, 48}) {
        QPixmap pixmap = applicationIcon().pixmap(size, size);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Look::tokens().surface, size / 16.0));
        painter.setBrush(colour);
        const qreal side = size * 0.46;
        painter.drawEllipse(QRectF(size - side - 0.5, size - side - 0.5, side, side));
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

StatusItem::StatusItem(RecorderPanel &panel, Actions actions)
    : mPanel(panel),
      mActions(std::move(actions)),
      mItem(applicationIcon()),
      mIdle(applicationIcon()),
      mRecording(badged(Look::tokens().red)),
      mWaiting(badged(Look::tokens().amber)) {
    const auto add = [this](const std::function<void()> &action) {
        QAction *added = mMenu.addAction(QString());
        connect(added, &QAction::triggered, this, [&action] { action(); });
        return added;
    };
    mShow = add(mActions.showWindow);
    mMenu.addSeparator();
    mRecord = add(mActions.record);
    mPause = add(mActions.pause);
    mSplit = add(mActions.split);
    mMenu.addSeparator();
    mQuit = add(mActions.quit);
    mItem.setContextMenu(&mMenu);
    connect(&mItem, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            mActions.showOrHide();
    });
    showTexts();
    mItem.show();
}

StatusItem::~StatusItem() {
    mMenu.clear(); // The desktop's side of an action goes only with the action, not with the menu.
}

void StatusItem::showPanel() {
    const RecorderState state = mPanel.state();
    const bool isRunning = mPanel.controls().startShowsStop;
    mRecord->setText(isRunning ? Lang::btnStop() : Lang::windowRecord());
    mPause->setText(mPanel.controls().pauseShowsResume ? Lang::btnResume() : Lang::windowPause());
    mPause->setEnabled(mPanel.controls().pauseEnabled);
    mSplit->setEnabled(isRunning);
    // The desktop fetches an icon that is set again, the same or not.
    const QIcon &icon = !isRunning ? mIdle : state == RecorderState::Recording ? mRecording : mWaiting;
    if (icon.cacheKey() != mItem.icon().cacheKey())
        mItem.setIcon(icon);
    mItem.setToolTip(isRunning ? QStringLiteral("%1 %2").arg(mPanel.stateText(), mPanel.display().duration)
                               : AppSettings::appName());
}

void StatusItem::showTexts() {
    mShow->setText(Lang::menuShowMainWindow());
    mSplit->setText(Lang::windowSplitNow());
    mQuit->setText(Lang::btnExit());
    showPanel();
}

void StatusItem::notify(const QString &title, const QString &text) {
    if (isThere())
        mItem.showMessage(title, text, applicationIcon());
}

} // namespace cantorel::ui
