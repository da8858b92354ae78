#include "ui/RecordStrips.h"

#include "lang/Lang.h"
#include "recording/control/ListRequests.h"
#include "recording/control/RecorderPanel.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/Strip.h"
#include "ui/look/Look.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QBoxLayout>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

RecordStrips::RecordStrips(RecorderPanel &panel, RecordedList &list, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mList(list),
      mTrouble(new Strip(this)),
      mShutdown(new Strip(this)),
      mSoon(new Strip(this)),
      mSkipped(new Strip(this)),
      mWaiting(new Strip(this)),
      mResult(new Strip(this, Strip::Form::Card)),
      mAdvice(new Strip(this)),
      mCancel(&mShutdown->addAction(QStringLiteral("cancelShutdown"), true)),
      mSkip(&mSoon->addAction(QStringLiteral("skipTask"), false)),
      mUndoSkip(&mSkipped->addAction(QStringLiteral("undoSkip"), false)),
      mKeepSilence(&mWaiting->addAction(QStringLiteral("keepSilence"), false)),
      mPlay(&mResult->addAction(QStringLiteral("playResult"), true)),
      mRename(&mResult->addAction(QStringLiteral("renameResult"), false)),
      mReveal(&mResult->addAction(QStringLiteral("revealResult"), false)),
      mEdit(&mResult->addAction(QStringLiteral("editResult"), false)),
      mMend(&mAdvice->addAction(QStringLiteral("mend"), false)),
      mName(&mResult->addField(QStringLiteral("resultName"))) {
    mTrouble->text().setObjectName(QStringLiteral("sentence"));
    connect(mTrouble, &Strip::closed, this, [this] { mPanel.setSentence({}); });
    mShutdown->text().setObjectName(QStringLiteral("shutdown"));
    mShutdown->close().hide(); // its button says what it does
    connect(mCancel, &QPushButton::clicked, this, &RecordStrips::shutdownCancelled);
    mSoon->text().setObjectName(QStringLiteral("taskSoon"));
    mSoon->close().hide(); // it stays until the task begins
    connect(mSkip, &QPushButton::clicked, this, &RecordStrips::taskCancelled);
    mSkipped->text().setObjectName(QStringLiteral("taskSkipped"));
    mSkipped->close().hide(); // it stays until it is too late
    connect(mUndoSkip, &QPushButton::clicked, this, &RecordStrips::taskWanted);
    mWaiting->text().setObjectName(QStringLiteral("waiting"));
    mWaiting->close().hide(); // it stays as long as it is silent
    connect(mKeepSilence, &QPushButton::clicked, this, [this] {
        AppSettings::setAutoSkipSilence(false);
        Q_EMIT silenceKept();
    });
    mResult->title().setObjectName(QStringLiteral("result"));
    mResult->text().setObjectName(QStringLiteral("resultDetails"));
    mResult->close().setObjectName(QStringLiteral("resultClose"));
    connect(mPlay, &QPushButton::clicked, this, [this] { Q_EMIT playWanted(mFinished->file); });
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT revealWanted(mFinished->file); });
    connect(mEdit, &QPushButton::clicked, this, [this] { Q_EMIT editWanted(mFinished->file); });
    connect(mRename, &QPushButton::clicked, this, [this] { editName(mName->isHidden()); });
    connect(mName, &QLineEdit::returnPressed, this, [this] { rename(); });
    connect(mResult, &Strip::closed, this, [this] {
        mFinished.reset();
        showState();
    });
    mAdvice->text().setObjectName(QStringLiteral("advice"));
    mAdvice->close().hide(); // it stays as long as it holds
    connect(mMend, &QPushButton::clicked, this, [this] { mend(); });
    showIcons();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    for (Strip *strip : {mTrouble, mShutdown, mSoon, mSkipped, mWaiting, mResult, mAdvice})
        column->addWidget(strip);
}

void RecordStrips::mend() {
    if (mLack.lack == RecordingAdvice::Lack::SoundServer)
        RecordingAdvice::lookForServer();
    else
        Q_EMIT virtualDeviceWanted();
    Q_EMIT mended();
}

void RecordStrips::showAdvice() {
    mLack = RecordingAdvice::of(recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound));
    showState();
}

void RecordStrips::showState() {
    const bool isIdle = !mPanel.isRunning();
    if (!isIdle)
        mFinished.reset();
    const bool lacksServer = mLack.lack == RecordingAdvice::Lack::SoundServer;
    mMend->setText(lacksServer ? Lang::windowTryAgain() : Lang::windowInstall());
    mMend->setEnabled(lacksServer || isIdle);
    mRename->setVisible(mFinished && mList.itemWithFile(mFinished->file));
    const struct {
        Strip *strip;
        Strip::Kind kind;
        QString text, title = {};
    } news[] = {
        {mTrouble, isIdle ? Strip::Kind::Error : Strip::Kind::Warning, mPanel.sentence()},
        {mShutdown, Strip::Kind::Waiting, shutdownText()},
        {mSoon, Strip::Kind::Waiting, mPanel.taskSoonText()},
        {mSkipped, Strip::Kind::Hint, skippedText()},
        {mWaiting, Strip::Kind::Waiting,
         mPanel.state() == RecorderState::WaitingForSound
             ? Lang::windowSilenceIsSkipped() + QLatin1Char(' ') + Lang::windowGoesOnWithSound()
             : QString()},
        {mResult, Strip::Kind::Result, resultText(), mFinished ? QFileInfo(mFinished->file).fileName() : QString()},
        {mAdvice, lacksServer ? Strip::Kind::Warning : Strip::Kind::Hint,
         mIsAdviceShown ? Lang::sentence(mLack.sentence) : QString()}};
    bool isTold = false, wasTold = false;
    for (const auto &[strip, kind, text, title] : news)
        wasTold |= !strip->isHidden();
    for (const auto &[strip, kind, text, title] : news) {
        strip->tell(kind, isTold ? QString() : text, title);
        isTold |= !text.isEmpty();
        if (wasTold && !strip->isHidden())
            strip->unfoldAtOnce(); // in the place of another
    }
}

void RecordStrips::showResult(const FinishedRecording &recording) {
    mFinished = recording;
    editName(false);
}

void RecordStrips::editName(bool isEdited) {
    mNameTrouble.clear();
    mName->setVisible(isEdited);
    mResult->title().setVisible(!isEdited); // No name stands there twice.
    if (isEdited) {
        mName->setText(QFileInfo(mFinished->file).completeBaseName());
        mName->selectAll();
        mName->setFocus();
    }
    showState();
}

void RecordStrips::rename() {
    const QString name = mName->text().trimmed();
    if (name != QFileInfo(mFinished->file).completeBaseName()) {
        const auto renamed = renameRecording(mList, mFinished->file, name);
        if (!renamed) {
            mNameTrouble = Lang::sentence(renamed.failure().sentence);
            showState();
            return;
        }
        mFinished->file = renamed.value();
    }
    editName(false);
}

void RecordStrips::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape && !mName->isHidden())
        editName(false);
    else
        QWidget::keyPressEvent(event);
}

bool RecordStrips::showShutdown(int seconds) {
    const bool isNews = seconds >= 0 && mSecondsToShutdown < 0;
    mSecondsToShutdown = seconds;
    showState();
    return isNews;
}

QString RecordStrips::shutdownText() const {
    if (mSecondsToShutdown < 0 || mPanel.isRunning()) // What is recorded meanwhile comes first.
        return {};
    return Lang::windowShutdownIn(mSecondsToShutdown);
}

QString RecordStrips::skippedText() const {
    const QString name = mPanel.countdown().skippedName;
    return name.isEmpty() ? QString() : Lang::windowTaskSkipped().replace(QLatin1String("[#TaskName#]"), name);
}

QString RecordStrips::resultText() const {
    if (!mFinished)
        return {};
    if (!mNameTrouble.isEmpty())
        return mNameTrouble;
    const QFileInfo file(mFinished->file);
    const QString numbers = ToolString::stringFromDuration(mFinished->seconds) + QStringLiteral(", ")
                            + ToolFile::fileSizeFormatterToString(mFinished->bytes).trimmed();
    return Lang::windowFormatInFolder()
        .replace(QLatin1String("[#Format#]"), numbers)
        .replace(QLatin1String("[#Folder#]"), QDir(file.path()).dirName());
}

void RecordStrips::showIcons() {
    QPalette filled = palette();
    filled.setColor(QPalette::ButtonText, Look::tokens().onAccent);
    mPlay->setIcon(icon(QStringLiteral("play"), filled));
    mRename->setIcon(icon(QStringLiteral("rename"), palette()));
    mReveal->setIcon(icon(QStringLiteral("folder"), palette()));
    mEdit->setIcon(icon(QStringLiteral("edit"), palette()));
}

void RecordStrips::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    QWidget::changeEvent(event);
}

void RecordStrips::showTexts() {
    for (QPushButton *button : {mCancel, mSkip})
        button->setText(Lang::btnCancel());
    mUndoSkip->setText(Lang::windowUndo());
    mKeepSilence->setText(Lang::windowKeepSilence());
    mResult->setWord(*mRename, Lang::btnRename());
    mName->setAccessibleName(Lang::commFileName());
    mPlay->setText(Lang::btnPlay());
    mResult->setWord(*mReveal, Lang::btnShowInFinder());
    mResult->setWord(*mEdit, Lang::btnEdit());
    mResult->setAccessibleName(Lang::windowFileReady());
    for (Strip *strip : {mTrouble, mResult})
        strip->close().setToolTip(Lang::btnClose());
}

} // namespace cantorel::ui
