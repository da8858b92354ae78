#include "ui/RecordCards.h"

#include "audio_device/ZQAudioKextKit.h"
#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "settings/AppSettings.h"
#include "ui/look/Tokens.h"
#include "util/tools/Tools.h"

#include <QBoxLayout>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kMicrophone = 1; // as source

} // namespace

RecordCards::RecordCards(const RecorderPanel &panel, QWidget *parent)
    : QWidget(parent),
      mPanel(panel),
      mLeave(new Card(QStringLiteral("leave"), this)),
      mLeftovers(new Card(QStringLiteral("leftovers"), this)),
      mDevice(new Card(QStringLiteral("deviceOffer"), this)),
      mEdit(new Card(QStringLiteral("edit"), this)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 2 * measure::kGap, 0, measure::kGap);
    column->setSpacing(0);
    for (Card *card : {mLeave, mLeftovers, mDevice, mEdit}) {
        column->addWidget(card);
        connect(card, &Card::changed, this, &RecordCards::showState);
    }
    hide();
}

void RecordCards::askToLeave(std::function<Card::Texts()> texts, std::function<void(int)> answered) {
    mLeave->ask(std::move(texts), std::move(answered), true);
}

bool RecordCards::keepToLeave() {
    const bool isAsked = mLeave->isAsking();
    mLeave->answer(0);
    return isAsked;
}

void RecordCards::offerVirtualDevice(std::function<void(bool)> answered) {
    const auto texts = [] {
        return Card::Texts{QStringLiteral("system"),
                           Lang::windowFirstRunTitle(),
                           Tools::fillTextMarkers(Lang::windowFirstRunText()),
                           {Lang::windowSetUp(), Lang::windowUseMicrophone()}};
    };
    mDevice->ask(texts, [this, answered = std::move(answered)](int answer) {
        if (answer == 0) {
            install(answered);
            return;
        }
        if (answer == 1) {
            AppSettings::setAudioType(kMicrophone);
            Q_EMIT microphoneChosen();
        }
        answered(false);
    });
}

void RecordCards::install(const std::function<void(bool)> &answered) {
    mDevice->ask(
        [] {
            return Card::Texts{
                QStringLiteral("system"), Lang::windowFirstRunTitle(), Lang::commInstalling(), {}, false};
        },
        {});
    // Nothing is painted while it is installed.
    window()->repaint();
    answered(true);
    if (!ZQAudioKextKit::availableSVAD())
        mDevice->putAway();
}

bool RecordCards::isOfferingDevice() const { return !mDevice->isHidden() && !ZQAudioKextKit::availableSVAD(); }

void RecordCards::tellVirtualDeviceInstalled() {
    mDevice->ask(
        [] {
            return Card::Texts{
                QStringLiteral("tick"), Lang::commInstalledSuccess() + QLatin1Char('.'), Lang::windowReadySystem(), {}};
        },
        {});
}

void RecordCards::showState() {
    const bool isRunning = mPanel.isRunning();
    if (std::exchange(mIsRunning, isRunning) != isRunning) {
        if (isRunning)
            mLeave->showTexts(); // It is about the recording now.
        else
            mLeave->putAway();
    }
    if (isRunning && ZQAudioKextKit::availableSVAD())
        mDevice->putAway(); // that it is there has been read
    const Card *first = mLeave->isAsking()                  ? mLeave
                        : mLeftovers->isAsking()            ? mLeftovers
                        : mDevice->isAsking() && !isRunning ? mDevice
                        : mEdit->isAsking()                 ? mEdit
                                                            : nullptr;
    setVisible(first != nullptr);
    for (Card *card : {mLeave, mLeftovers, mDevice, mEdit})
        card->setInSight(card == first);
    Q_EMIT changed();
}

void RecordCards::showTexts() {
    for (Card *card : {mLeave, mLeftovers, mDevice, mEdit})
        card->showTexts();
}

void RecordCards::close() {
    for (Card *card : {mLeave, mLeftovers, mDevice, mEdit})
        if (!card->isHidden()) {
            card->answer(Card::kClosed);
            return;
        }
}

} // namespace cantorel::ui
