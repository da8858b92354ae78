#include "ui/PlayButton.h"

#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QPainter>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kSide = 44, kIcon = 22;

} // namespace

PlayButton::PlayButton(QWidget *parent) : QAbstractButton(parent) {
    setObjectName(QStringLiteral("play"));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PlayButton::setPlaying(bool isPlaying) {
    if (std::exchange(mIsPlaying, isPlaying) != isPlaying)
        update();
}

QSize PlayButton::sizeHint() const { return QSize(1, 1) * Look::scaled(*this, kSide); }

void PlayButton::paintEvent(QPaintEvent *) {
    const Tokens &tokens = Look::tokens();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? QPen(tokens.text, measure::kFocus) : QPen(Qt::NoPen));
    painter.setBrush(isDown() ? tokens.accent.darker(115) : underMouse() ? tokens.accent.lighter(108) : tokens.accent);
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
    const int side = Look::scaled(*this, kIcon);
    painter.drawPixmap((width() - side) / 2, (height() - side) / 2,
                       drawing(mIsPlaying ? QStringLiteral("pause") : QStringLiteral("play"), tokens.onAccent, side,
                               devicePixelRatioF()));
}

} // namespace cantorel::ui
