#include "ui/RecordStrips.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "settings/AppSettings.h"
#include "ui/Strip.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

RecordStrips::RecordStrips(RecorderPanel &panel, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mTrouble(new Strip(this)),
      mResult(new Strip(this)),
      mAdvice(new Strip(this)),
      mPlay(&mResult->addAction(QStringLiteral("playResult"), true)),
      mReveal(&mResult->addAction(QStringLiteral("revealResult"), false)),
      mMend(&mAdvice->addAction(QStringLiteral("mend"), false)) {
    mTrouble->text().setObjectName(QStringLiteral("sentence"));
    connect(mTrouble, &Strip::closed, this, [this] { mPanel.setSentence({}); });
    mResult->text().setObjectName(QStringLiteral("result"));
    connect(mPlay, &QPushButton::clicked, this, [this] { Q_EMIT playWanted(mFinished->file); });
    connect(mReveal, &QPushButton::clicked, this, [this] { Q_EMIT revealWanted(mFinished->file); });
    connect(mResult, &Strip::closed, this, [this] {
        mFinished.reset();
        showState();
    });
    mAdvice->text().setObjectName(QStringLiteral("advice"));
    mAdvice->close().hide(); // it stays as long as it holds
    connect(mMend, &QPushButton::clicked, this, [this] { mend(); });
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    for (Strip *strip : {mTrouble, mResult, mAdvice})
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
    const QString trouble = mPanel.sentence(), result = trouble.isEmpty() ? resultText() : QString(),
                  advice = trouble.isEmpty() && result.isEmpty() ? Lang::sentence(mLack.sentence) : QString();
    mTrouble->tell(isIdle ? Strip::Kind::Error : Strip::Kind::Warning, trouble);
    mResult->tell(Strip::Kind::Result, result);
    const bool lacksServer = mLack.lack == RecordingAdvice::Lack::SoundServer;
    mMend->setText(lacksServer ? Lang::windowTryAgain() : Lang::windowInstall());
    mMend->setEnabled(lacksServer || isIdle);
    mAdvice->tell(lacksServer ? Strip::Kind::Warning : Strip::Kind::Hint, advice);
}

void RecordStrips::showResult(const FinishedRecording &recording) {
    mFinished = recording;
    showState();
}

QString RecordStrips::resultText() const {
    if (!mFinished)
        return {};
    const QFileInfo file(mFinished->file);
    const QStringList parts{file.fileName(), ToolString::stringFromDuration(mFinished->seconds),
                            ToolFile::fileSizeFormatterToString(mFinished->bytes).trimmed(),
                            QDir(file.path()).dirName()};
    return parts.join(QStringLiteral("   "));
}

void RecordStrips::showTexts() {
    mPlay->setText(Lang::btnPlay());
    mReveal->setText(Lang::btnShowInFinder());
    mResult->setAccessibleName(Lang::windowFileReady());
    for (Strip *strip : {mTrouble, mResult})
        strip->close().setToolTip(Lang::btnClose());
}

} // namespace cantorel::ui
