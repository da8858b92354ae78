#include "ui/LevelLanes.h"

#include "lang/Lang.h"
#include "recording/control/RecorderPanel.h"
#include "ui/MeterView.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QGridLayout>

namespace cantorel::ui {

namespace {

constexpr int kOne = 24, kTwo = 40; // high

} // namespace

LevelLanes::LevelLanes(RecorderPanel &panel, QWidget *parent)
    : QWidget(parent),
      mLanes{{new QLabel(this), new MeterView(panel.level(RecorderPanel::Lane::System), this)},
             {new QLabel(this), new MeterView(panel.level(RecorderPanel::Lane::Microphone), this)}} {
    mLanes[0].meter->setObjectName(QStringLiteral("meter"));
    mLanes[1].meter->setObjectName(QStringLiteral("microphoneMeter"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, measure::kGap); // above the deck
    grid->setHorizontalSpacing(2 * measure::kGap);
    grid->setVerticalSpacing(0);
    grid->setColumnStretch(1, 1);
    for (int row = 0; row < 2; ++row) {
        grid->addWidget(mLanes[row].name, row, 0);
        grid->addWidget(mLanes[row].meter, row, 1);
    }
    setBoth(false);
}

void LevelLanes::setBoth(bool areBoth) {
    mAreBoth = areBoth;
    mLanes[1].name->setVisible(areBoth);
    mLanes[1].meter->setVisible(areBoth);
    setMinimumHeight(Look::tall(*this, areBoth ? kTwo : kOne) + measure::kGap);
    showTexts();
}

void LevelLanes::wake() {
    mLanes[0].meter->wake();
    if (mAreBoth)
        mLanes[1].meter->wake();
}

void LevelLanes::showTexts() {
    const QString sources[] = {Lang::windowSystemLane(), Lang::windowMicrophone()};
    for (int row = 0; row < 2; ++row) {
        const auto &[name, meter] = mLanes[row];
        name->setText(mAreBoth ? sources[row] : Lang::windowMeterName());
        name->setFont(Look::font(*this, text_size::kLabel));
        setInk(*name, Look::tokens().text2);
        meter->setAccessibleName(mAreBoth ? Lang::windowMeterName() + QStringLiteral(", ") + sources[row]
                                          : Lang::windowMeterName());
    }
}

} // namespace cantorel::ui
