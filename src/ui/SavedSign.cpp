#include "ui/SavedSign.h"

#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QPainter>

namespace cantorel::ui {

namespace {

constexpr int kSide = 96, kFadeIn = 500, kFadeOut = 1500; // pixels, milliseconds

} // namespace

SavedSign::SavedSign(QWidget *parent) : QWidget(parent) {
    setObjectName(QStringLiteral("savedOK"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    mFade.setDuration(kFadeIn + kFadeOut);
    mFade.setKeyValues({{0, 0.0}, {qreal(kFadeIn) / (kFadeIn + kFadeOut), 1.0}, {1, 0.0}});
    connect(&mFade, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&mFade, &QVariantAnimation::finished, this, &QWidget::hide);
    hide();
}

void SavedSign::play() {
    if (!Look::hasMotion())
        return;
    QRect place(QPoint(), QSize(1, 1) * Look::scaled(*this, kSide));
    place.moveCenter(parentWidget()->rect().center());
    setGeometry(place);
    show();
    raise();
    mFade.stop();
    mFade.start();
}

void SavedSign::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(mFade.currentValue().toReal());
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::tokens().soft);
    painter.drawRoundedRect(rect(), measure::kCardRadius, measure::kCardRadius);
    const int side = width() * 2 / 3;
    painter.drawPixmap((width() - side) / 2, (height() - side) / 2,
                       drawing(QStringLiteral("savedOK"), Look::tokens().accent, side, devicePixelRatioF()));
}

} // namespace cantorel::ui
