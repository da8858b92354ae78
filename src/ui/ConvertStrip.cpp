#include "ui/ConvertStrip.h"

#include "lang/Lang.h"
#include "ui/ZQAudioConvertController.h"

#include <QEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

ConvertStrip::ConvertStrip(ZQAudioConvertController &page, QWidget *parent)
    : Strip(parent),
      mPage(page),
      mBar(&addBar()),
      mShow(&addAction(QStringLiteral("showConvert"), false)),
      mStop(&addAction(QStringLiteral("stopConvert"), false)),
      mReveal(&addAction(QStringLiteral("revealResults"), false)) {
    setObjectName(QStringLiteral("convertStrip"));
    text().setObjectName(QStringLiteral("convertStripText"));
    close().setObjectName(QStringLiteral("convertStripClose"));
    connect(mShow, &QPushButton::clicked, this, &ConvertStrip::showWanted);
    connect(mStop, &QPushButton::clicked, &mPage, &ZQAudioConvertController::stop);
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT mPage.revealWanted(mPage.results()); });
    connect(this, &Strip::closed, this, [this] {
        mIsSeen = true;
        showState();
    });
    connect(&mPage, &ZQAudioConvertController::progressed, this, [this] {
        mIsSeen = false;
        showState();
    });
    connect(&mPage, &ZQAudioConvertController::ended, this, [this] { showState(); });
    showTexts();
}

void ConvertStrip::setElsewhere(bool isElsewhere) {
    mIsElsewhere = isElsewhere;
    mIsSeen |= !isElsewhere && !mPage.queue().isConverting(); // on the page itself
    showState();
}

void ConvertStrip::showState() {
    const bool isRunning = mPage.queue().isConverting();
    mBar->setVisible(isRunning);
    mBar->setValue(static_cast<int>(mPage.queue().progress().percent));
    for (QPushButton *button : {mShow, mStop})
        button->setVisible(isRunning);
    mReveal->setVisible(!isRunning && !mPage.results().isEmpty());
    close().setVisible(!isRunning);
    const QString text = !mIsElsewhere ? QString() : isRunning ? mPage.progressText() : mPage.summaryText();
    tell(isRunning ? Kind::Progress : Kind::Result, mIsSeen && !isRunning ? QString() : text);
}

void ConvertStrip::showTexts() {
    mShow->setText(Lang::windowShow());
    mStop->setText(Lang::btnStop());
    mReveal->setText(Lang::btnShowInFinder());
    mBar->setAccessibleName(Lang::commProcess());
    close().setToolTip(Lang::btnClose());
    close().setAccessibleName(Lang::btnClose());
    showState();
}

void ConvertStrip::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    Strip::changeEvent(event);
}

} // namespace cantorel::ui
