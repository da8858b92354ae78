#include "ui/Headline.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "recording/control/ScheduledSession.h"
#include "settings/AppSettings.h"
#include "ui/DigitLabel.h"
#include "ui/Fields.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/MovieChips.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"
#include "util/tools/Tools.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kDot = 8, kLeastFormat = 96;
constexpr QString (*kReady[])() = {Lang::windowReadySystem, Lang::windowReadyMicrophone, Lang::windowReadyBoth};

} // namespace

Headline::Headline(const RecorderPanel &panel, ScheduledSession &recorder, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mRecorder(recorder),
      mStateDot(new QLabel(this)),
      mState(new QLabel(this)),
      mElapsed(new DigitLabel(this)),
      mSize(new DigitLabel(this)),
      mTimeLeft(new DigitLabel(this)),
      mFileLine(new QWidget(this)),
      mFile(new QLabel(this)),
      mFileDetails(new QLabel(this)),
      mSilence(new QLabel(this)),
      mName(new QLineEdit(this)),
      mFormat(new QComboBox(this)),
      mMovie(recorder.movies() ? new MovieChips(*recorder.movies(), this) : nullptr),
      mFolder(new QToolButton(this)) {
    mState->setObjectName(QStringLiteral("state"));
    mElapsed->setObjectName(QStringLiteral("elapsed"));
    Look::makeChip(*mFormat);
    Look::makeChip(*mFolder);
    mFolder->setFocusPolicy(Qt::StrongFocus);
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setObjectName(QStringLiteral("folder"));
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    mName->setObjectName(QStringLiteral("recordingName"));
    mName->setAcceptDrops(false); // Files may be dropped here as well.
    connect(mName, &QLineEdit::returnPressed, this, &Headline::nameEntered);
    mSilence->setObjectName(QStringLiteral("silence"));
    mFormat->setObjectName(QStringLiteral("format"));
    mFormat->setMinimumWidth(Look::scaled(*this, kLeastFormat)); // It names less where there is no room.
    connect(mFormat, &QComboBox::activated, this, [this](int index) {
        AppSettings::setAudioFormat(index);
        Q_EMIT chosen();
    });

    auto *state = new QHBoxLayout;
    state->setSpacing(measure::kGap);
    state->addWidget(mStateDot);
    state->addWidget(mState, 1);
    auto *numbers = new QVBoxLayout;
    numbers->setSpacing(0);
    numbers->addStretch();
    numbers->addWidget(mSize, 0, Qt::AlignRight);
    numbers->addWidget(mTimeLeft, 0, Qt::AlignRight);
    auto *time = new QHBoxLayout;
    time->addWidget(mElapsed);
    time->addStretch();
    time->addLayout(numbers);
    auto *file = rowIn(mFileLine, measure::kGap);
    file->addWidget(mFile);
    file->addWidget(mFileDetails);
    file->addWidget(mName, 1);
    file->addWidget(mFormat);
    if (mMovie) {
        file->addWidget(mMovie);
        connect(recorder.movies(), &MovieSession::wishChanged, this, &Headline::chosen);
    }
    file->addWidget(mFolder);
    file->addWidget(mSilence);
    file->addStretch();
    auto *lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, measure::kGap, 0, measure::kGap);
    lines->setSpacing(2);
    lines->addLayout(state);
    lines->addLayout(time);
    lines->addWidget(mFileLine);
    showIcons();
}

bool Headline::isMovie() const {
    return mMovie && (mPanel.isRunning() ? mRecorder.recordsMovie() : mRecorder.movies()->isWanted());
}

QString Headline::readyText() const {
    if (isMovie())
        return mRecorder.movies()->wish().picture == MovieWish::Picture::Camera ? Lang::windowReadyCamera()
                                                                                : Lang::windowReadyScreen();
    return kReady[qBound(0, AppSettings::getAudioType(), int(std::size(kReady)) - 1)]();
}

void Headline::fit(int room, bool isLow) {
    if (std::exchange(mRoom, room) != room)
        showState();
    // The same with fields as with text, so that nothing jumps.
    mFileLine->setFixedHeight(qMax(Look::tall(*this, measure::kControl), mFormat->sizeHint().height()));
    mElapsed->setFont(Look::font(*this, isLow ? text_size::kLowTime : text_size::kTime, QFont::Light));
}

QString Headline::enteredName() const { return mName->text(); }

void Headline::askForName() { mName->setFocus(); }

void Headline::forgetName() { mName->clear(); }

void Headline::setFileShown(bool isShown) { mFileLine->setVisible(isShown); }

void Headline::chooseFolder() {
    ui::chooseFolder(*this, Lang::commSelectFolder(), AppSettings::outputPath(), [this](const QString &folder) {
        AppSettings::setOutputPath(folder);
        Q_EMIT chosen();
    });
}

void Headline::showNumbers() {
    const RecordingDisplay &display = mPanel.display();
    const bool isIdle = !mPanel.isRunning();
    const Tokens &tokens = Look::tokens();
    mElapsed->setText(display.duration);
    setInk(*mElapsed, !isIdle && display.seconds > 0 ? tokens.text : tokens.outline);
    mSize->setText(isIdle ? QString() : display.size);
    // How much room pictures take is known once they are recorded.
    mTimeLeft->setText(isIdle && isMovie() ? QString() : mPanel.timeLeftText());
    for (DigitLabel *number : {mSize, mTimeLeft}) {
        setInk(*number, tokens.text2);
        number->setVisible(mElapsed->sizeHint().width() + measure::kGap + number->sizeHint().width() <= mRoom);
        number->updateGeometry();
    }
}

void Headline::showState() {
    const RecorderState state = mPanel.state();
    const bool isIdle = !mPanel.isRunning();
    const Tokens &tokens = Look::tokens();
    const bool waits =
        state == RecorderState::Paused || state == RecorderState::WaitingForSound || state == RecorderState::DeviceLost;
    const QColor ink = waits ? tokens.amber : state == RecorderState::Recording ? tokens.red : tokens.text2;
    mState->setText(state == RecorderState::Idle ? readyText() : mPanel.stateText());
    mState->setFont(Look::font(*this, text_size::kSecondLine, isIdle ? QFont::Normal : QFont::Bold));
    // Only where it must: a page with text that wraps is laid out anew at more cost, and the time ticks twice a second.
    mState->setWordWrap(mState->fontMetrics().horizontalAdvance(mState->text()) > mRoom - kDot - measure::kGap);
    setInk(*mState, ink);
    mStateDot->setVisible(!isIdle);
    if (!isIdle)
        mStateDot->setPixmap(drawing(QStringLiteral("dot"), ink, kDot, devicePixelRatioF()));
    showFile();
    showNumbers();
}

void Headline::showFile() {
    const bool isIdle = !mPanel.isRunning();
    const Tokens &tokens = Look::tokens();
    mFormat->setVisible(isIdle && !isMovie());
    if (mMovie)
        mMovie->setVisible(isIdle && isMovie());
    mFolder->setVisible(isIdle);
    const QString file = isIdle ? QFileInfo(Tools::getAudioNameFromTrack()).completeBaseName()
                                : QFileInfo(mPanel.file()).completeBaseName();
    const bool isNamed = !isIdle || AppSettings::isAutoGenFileName();
    mFile->setFont(Look::font(*this, text_size::kBody, isIdle ? QFont::Normal : QFont::Bold));
    const QString named = isIdle ? Lang::windowNextFile().replace(QLatin1String("[#FileName#]"), file) : file;
    mFile->setText(mFile->fontMetrics().elidedText(named, Qt::ElideMiddle, mRoom / 3));
    mFile->setToolTip(file);
    mName->setVisible(!isNamed);
    mFile->setVisible(isNamed && !file.isEmpty());
    setInk(*mFile, isIdle ? tokens.text2 : tokens.text);
    const QString folder = QDir(AppSettings::outputPath()).dirName();
    mFolder->setText({});
    const int taken = (isNamed ? mFile : static_cast<QWidget *>(mName))->minimumSizeHint().width()
                      + qMin((isMovie() ? mMovie : static_cast<QWidget *>(mFormat))->sizeHint().width(), mRoom / 2)
                      + mFolder->sizeHint().width() + 3 * measure::kGap;
    mFolder->setText(
        mFolder->fontMetrics().elidedText(folder, Qt::ElideMiddle, qMin(qMin(width(), mRoom) / 4, mRoom - taken)));
    QString details = Lang::windowFormatInFolder()
                          .replace(QLatin1String("[#Format#]"),
                                   isMovie() ? QStringLiteral("MP4") : mFormat->currentText().simplified())
                          .replace(QLatin1String("[#Folder#]"), folder);
    const bool skipsSilence = AppSettings::isAutoSkipSilence() && !isMovie();
    if (skipsSilence)
        details += QLatin1Char(' ') + Lang::windowSilenceIsSkipped();
    const int left = mRoom - mFile->sizeHint().width() - measure::kGap;
    mFileDetails->setText(mFileDetails->fontMetrics().elidedText(details, Qt::ElideRight, left));
    mFileDetails->setToolTip(details);
    mFileDetails->setVisible(!isIdle);
    setInk(*mFileDetails, tokens.text2);
    // What it will do is said before it does it; where there is no room, the settings say it.
    mSilence->setText(Lang::windowSilenceIsSkipped());
    setInk(*mSilence, tokens.text2);
    mSilence->setVisible(isIdle && skipsSilence);
    mFileLine->layout()->invalidate();
    if (mFileLine->layout()->minimumSize().width() > mRoom)
        mSilence->hide();
}

void Headline::showSettings() {
    mFormat->setCurrentIndex(AppSettings::getAudioFormat());
    mFolder->setToolTip(QDir::toNativeSeparators(AppSettings::outputPath()));
}

void Headline::showTexts() {
    mFolder->setAccessibleName(Lang::windowOutputFolder());
    mName->setPlaceholderText(Lang::windowEnterRecordingName());
    mName->setAccessibleName(Lang::windowEnterRecordingName());
    mFormat->setAccessibleName(Lang::commFormat());
    showChoices(*mFormat, Tools::shownAudioFormats());
    if (mMovie)
        mMovie->showTexts();
}

void Headline::showIcons() {
    mFolder->setIconSize(QSize(1, 1) * Look::scaled(*this, measure::kIcon));
    mFolder->setIcon(icon(QStringLiteral("folder"), palette()));
}

void Headline::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
