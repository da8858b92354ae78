#include "ui/SourceLine.h"

#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/SourceSwitch.h"
#include "ui/look/Look.h"

#include <QButtonGroup>
#include <QEvent>
#include <QMenu>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

struct Source {
    const char *icon;
    QString (*text)();
    QString (*shortText)();
    QString (*tip)();
};
constexpr Source kSources[] = {
    {"system", Lang::settingsRecordSystemSound, Lang::settingsRecordSystemSound,
     Lang::settingsRecordAudioSourceTipsSystemSound},
    {"microphone", Lang::windowMicrophone, Lang::windowMicrophone, Lang::settingsRecordAudioSourceTipsMic},
    {"both", Lang::settingsRecordBoth, Lang::windowBoth, Lang::settingsRecordAudioSourceTipsBoth},
};
constexpr int kCount = static_cast<int>(std::size(kSources));

int chosenType() { return qBound(0, AppSettings::getAudioType(), kCount - 1); }

} // namespace

SourceLine::SourceLine(MovieSession *movies, QWidget *parent)
    : QWidget(parent),
      mMovies(movies),
      mSources(new SourceSwitch(kCount, this)),
      mScreen(new QToolButton(this)),
      mIcon(new QLabel(this)),
      mSource(new QLabel(this)),
      mDevice(new QLabel(this)),
      mMicrophone(new QToolButton(this)) {
    mDevice->setObjectName(QStringLiteral("device"));
    mMicrophone->setObjectName(QStringLiteral("microphone"));
    mMicrophone->setAutoRaise(true);
    mMicrophone->setFocusPolicy(Qt::StrongFocus);
    mMicrophone->setPopupMode(QToolButton::InstantPopup);
    mScreen->setObjectName(QStringLiteral("screenToggle"));
    mScreen->setCheckable(true);
    mScreen->setAutoRaise(true);
    mScreen->setFocusPolicy(Qt::StrongFocus);
    mScreen->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(mScreen, &QToolButton::clicked, this, [this](bool isOn) { wantScreen(isOn); });
    auto *menu = new QMenu(mMicrophone);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { offerMicrophones(*menu); });
    mMicrophone->setMenu(menu);
    auto *row = rowIn(this, measure::kGap);
    row->addWidget(mSources);
    row->addWidget(mScreen);
    row->addWidget(mIcon);
    row->addWidget(mSource);
    row->addStretch();
    row->addWidget(mDevice);
    row->addWidget(mMicrophone);
    connect(&mSources->choices(), &QButtonGroup::idClicked, this, [this](int type) {
        AppSettings::setAudioType(type);
        Q_EMIT chosen();
    });
    setRecording(false);
    showIcons();
}

// What was shown last is shown again; without a display, a camera.
void SourceLine::wantScreen(bool isOn) {
    MovieWish wish = mMovies->wish();
    if (!isOn) {
        mLastPicture = wish.picture;
        wish.picture = MovieWish::Picture::None;
    } else {
        wish.picture = mLastPicture;
        if (const auto cameras = mMovies->cameras(); mMovies->displays().empty() && !cameras.empty()) {
            wish.picture = MovieWish::Picture::Camera;
            wish.camera = cameras.front().uniqueID;
        }
    }
    mMovies->setWish(wish);
}

// The microphone that is recorded is the desktop's own choice, so another one is chosen there.
void SourceLine::offerMicrophones(QMenu &menu) {
    menu.clear();
    const QString current = ZQAudioKextKit::getDefaultAudioInputName();
    for (const QString &name : ZQAudioKextKit::getAllAudioInputDeviceNames()) {
        QAction *action =
            menu.addAction(QString(name).replace(QLatin1Char('&'), QStringLiteral("&&")), this, [this, name] {
                if (ZQAudioKextKit::changeAudioInputDeviceWithName(name))
                    AppSettings::setMicrophone(name);
                Q_EMIT chosen();
            });
        action->setCheckable(true);
        action->setChecked(name == current);
    }
}

void SourceLine::showSource() {
    const int type = chosenType();
    mSources->choices().button(type)->setChecked(true);
    const bool isScreen = mMovies && mMovies->isRecording() && mMovies->wish().picture != MovieWish::Picture::Camera;
    mSource->setText((isScreen ? Lang::windowScreen() + QStringLiteral(" + ") : QString()) + kSources[type].text());
    mDevice->setText(type == 2 && !mOutput.isEmpty() ? mOutput + QStringLiteral(" + ") : mOutput);
    mDevice->setVisible(type != 1);
    mMicrophone->setVisible(type != 0);
    mScreen->setChecked(mMovies && mMovies->isWanted());
    showColours();
}

void SourceLine::showColours() {
    setInk(*mDevice, Look::tokens().text2);
    mIcon->setPixmap(drawing(QString::fromLatin1(kSources[chosenType()].icon), Look::tokens().text2,
                             Look::scaled(*this, measure::kIcon), devicePixelRatioF()));
}

void SourceLine::showSettings() {
    if (mIsRecording)
        return;
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName(),
                  input = ZQAudioKextKit::getDefaultAudioInputName();
    mOutput = elided(output);
    mDevice->setToolTip(output);
    mMicrophone->setText(input.isEmpty() ? Lang::tabRecordNoInputDeviceDetected() : elided(input));
    showSource();
    showNames();
}

void SourceLine::setRecording(bool isRecording) {
    mIsRecording = isRecording;
    mSources->setVisible(!isRecording);
    mScreen->setVisible(!isRecording && mMovies);
    mIcon->setVisible(isRecording);
    mSource->setVisible(isRecording);
    mMicrophone->setEnabled(!isRecording);
}

void SourceLine::showTexts() {
    for (int type = 0; type < kCount; ++type) {
        QAbstractButton *choice = mSources->choices().button(type);
        choice->setAccessibleName(kSources[type].shortText());
        choice->setToolTip(kSources[type].tip());
    }
    mMicrophone->setToolTip(Lang::windowMicrophone());
    mScreen->setToolTip(Lang::windowScreenTip());
    mScreen->setAccessibleName(Lang::windowScreen());
    showNames();
}

void SourceLine::fit(int room) {
    if (std::exchange(mRoom, room) != room)
        showSettings();
}

// What lacks room goes: the names of what is not chosen, then the word beside the switch.
void SourceLine::showNames() {
    for (const int words : {kCount + 1, 2, 1}) {
        for (int type = 0; type < kCount; ++type) {
            QAbstractButton *choice = mSources->choices().button(type);
            choice->setText(words > kCount || choice->isChecked() ? kSources[type].shortText() : QString());
        }
        mScreen->setText(words > 1 ? Lang::windowScreen() : QString());
        mSources->updateGeometry();
        layout()->invalidate();
        if (layout()->minimumSize().width() <= mRoom)
            return;
    }
    mDevice->hide(); // Where even that has no room; the sound settings say it.
}

QString SourceLine::elided(const QString &device) const {
    return fontMetrics().elidedText(device, Qt::ElideMiddle, mRoom / 3);
}

void SourceLine::showIcons() {
    for (int type = 0; type < kCount; ++type)
        mSources->choices().button(type)->setIcon(icon(QString::fromLatin1(kSources[type].icon), palette()));
    mScreen->setIcon(icon(QStringLiteral("screen"), palette()));
}

void SourceLine::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange) {
        showIcons();
        showColours();
    }
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
