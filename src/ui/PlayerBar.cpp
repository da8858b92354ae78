#include "ui/PlayerBar.h"

#include "lang/Lang.h"
#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordedList.h"
#include "ui/DigitLabel.h"
#include "ui/PlayButton.h"
#include "ui/RowDelegate.h"
#include "util/ToolString.h"

#include <QBoxLayout>
#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QSlider>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kHeight = 72, kNames = 160;
constexpr int kTicks = 10; // of the line in a second
constexpr int kStep = 5;   // seconds

} // namespace

PlayerBar::PlayerBar(LibraryPlayer &player, const RecordedList &list, QWidget *parent)
    : Deck(parent),
      mPlayer(player),
      mList(list),
      mPlay(new PlayButton(this)),
      mNames(new QWidget(this)),
      mTitle(new QLabel(mNames)),
      mSecond(new QLabel(mNames)),
      mTime(new DigitLabel(this)),
      mLength(new DigitLabel(this)),
      mSeek(new QSlider(Qt::Horizontal, this)) {
    setMinimumHeight(Look::tall(*this, kHeight));
    mPlay->setFocusPolicy(Qt::TabFocus); // A click leaves the focus with the list.
    mSeek->setFocusPolicy(Qt::TabFocus);
    mSeek->setObjectName(QStringLiteral("seek"));
    mSeek->setSingleStep(kStep * kTicks);
    connect(mPlay, &PlayButton::clicked, this, [this] {
        playOrPause();
        if (!mPlay->hasFocus())
            Q_EMIT clicked();
    });
    const auto seekThere = [this] { seek(static_cast<double>(mSeek->value()) / kTicks); };
    connect(mSeek, &QSlider::sliderReleased, this, [this, seekThere] {
        seekThere();
        if (!mSeek->hasFocus())
            Q_EMIT clicked();
    });
    connect(mSeek, &QSlider::actionTriggered, this, [this, seekThere](int action) {
        if (action != QAbstractSlider::SliderMove)
            QMetaObject::invokeMethod(this, seekThere, Qt::QueuedConnection); // once the value has changed
    });
    connect(&mPlayer, &LibraryPlayer::changed, this, [this] { showPlayer(); });
    mTitle->setTextFormat(Qt::PlainText);
    mSecond->setTextFormat(Qt::PlainText);
    for (QLabel *quiet : {mSecond, static_cast<QLabel *>(mTime), static_cast<QLabel *>(mLength)})
        quiet->setForegroundRole(QPalette::PlaceholderText); // that of second lines
    auto *names = new QVBoxLayout(mNames);
    names->setContentsMargins({});
    names->setSpacing(measure::kGap / 4);
    names->addStretch();
    names->addWidget(mTitle);
    names->addWidget(mSecond);
    names->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, measure::kGap);
    row->setSpacing(2 * measure::kGap);
    row->addWidget(mPlay);
    row->addWidget(mNames);
    row->addWidget(mTime);
    row->addWidget(mSeek, 1);
    row->addWidget(mLength);
    hide();
    showTexts();
}

QString PlayerBar::file() const { return mPlayer.isPlaying() || mChosen.isEmpty() ? mPlayer.file() : mChosen; }

void PlayerBar::choose(const QString &file) {
    if (std::exchange(mChosen, file) != file)
        showPlayer();
}

void PlayerBar::playOrPause() {
    if (mPlayer.isPlaying())
        mPlayer.pause();
    else if (!file().isEmpty())
        Q_EMIT playWanted(file());
}

void PlayerBar::step(int steps) {
    if (!file().isEmpty() && file() == mPlayer.file())
        seek(mPlayer.position() + steps * kStep);
}

void PlayerBar::seek(double seconds) {
    const QString there = file();
    if (there != mPlayer.file())
        Q_EMIT playWanted(there);
    if (there == mPlayer.file())
        mPlayer.seek(qBound(0.0, seconds, mPlayer.length()));
    showPlayer();
}

void PlayerBar::showPlayer() {
    const QString shown = file();
    setVisible(!shown.isEmpty());
    if (shown.isEmpty())
        return;
    if (std::exchange(mShown, shown) != shown)
        showNames();
    const bool isLoaded = shown == mPlayer.file();
    const double length = isLoaded && mPlayer.length() > 0 ? mPlayer.length() : mListed;
    const double position = isLoaded ? mPlayer.position() : 0;
    mPlay->setPlaying(mPlayer.isPlaying());
    mPlay->setToolTip(mPlayer.isPlaying() ? Lang::windowPause() : Lang::btnPlay());
    mPlay->setAccessibleName(mPlay->toolTip());
    if (!mSeek->isSliderDown()) {
        mSeek->setRange(0, static_cast<int>(length * kTicks));
        mSeek->setPageStep(qMax(1, mSeek->maximum() / 10));
        mSeek->setValue(static_cast<int>(position * kTicks));
    }
    mTime->setText(ToolString::stringFromDuration(position));
    mLength->setText(ToolString::stringFromDuration(length));
}

void PlayerBar::showNames() {
    const RecordedAudioInfo *item = mList.itemWithFile(mShown);
    mListed = item ? ToolString::secondFromString(item->duration()) : 0;
    const QString title = QFileInfo(mShown).fileName(), second = item ? whoOrWhere(*item) : QString();
    const int room = qMin(Look::scaled(*this, kNames), width() / 4);
    mNames->setFixedWidth(room);
    mTitle->setFont(Look::font(*this, text_size::kBody, QFont::Bold));
    mSecond->setFont(Look::font(*this, text_size::kSecondLine));
    mTitle->setText(mTitle->fontMetrics().elidedText(title, Qt::ElideMiddle, room));
    mSecond->setText(mSecond->fontMetrics().elidedText(second, Qt::ElideRight, room));
    mTitle->setToolTip(title);
}

void PlayerBar::showTexts() {
    mSeek->setAccessibleName(Lang::windowPosition());
    showPlayer();
}

void PlayerBar::resizeEvent(QResizeEvent *event) {
    Deck::resizeEvent(event);
    showNames();
}

void PlayerBar::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    Deck::changeEvent(event);
}

} // namespace cantorel::ui
