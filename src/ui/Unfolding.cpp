#include "ui/Unfolding.h"

#include "ui/look/Look.h"

#include <QEvent>

namespace cantorel::ui {

namespace {

constexpr int kUnfold = 160; // milliseconds

} // namespace

Unfolding::Unfolding(Edge edge, QWidget *parent) : QWidget(parent), mEdge(edge), mBody(new QWidget(this)) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    mUnfold.setStartValue(0.0);
    mUnfold.setEndValue(1.0);
    mUnfold.setEasingCurve(QEasingCurve::OutCubic);
    connect(&mUnfold, &QVariantAnimation::valueChanged, this, [this] { updateGeometry(); });
    hide();
}

void Unfolding::setInSight(bool isInSight) {
    if (isInSight == !isHidden())
        return;
    mUnfold.stop();
    mUnfold.setDuration(Look::hasMotion() && parentWidget()->isVisible() ? kUnfold : 0);
    setVisible(isInSight);
    if (isInSight)
        mUnfold.start();
}

int Unfolding::heightForWidth(int width) const {
    const int whole = mBody->hasHeightForWidth() ? mBody->heightForWidth(width) : mBody->sizeHint().height();
    return qRound(unfolded() * whole);
}

QSize Unfolding::sizeHint() const {
    const QSize whole = mBody->sizeHint();
    return {whole.width(), qRound(unfolded() * whole.height())};
}

bool Unfolding::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest) // The body is of another size.
        updateGeometry();
    return QWidget::event(event);
}

void Unfolding::resizeEvent(QResizeEvent *event) {
    const int whole =
        qMax(height(), mBody->hasHeightForWidth() ? mBody->heightForWidth(width()) : mBody->sizeHint().height());
    mBody->setGeometry(0, mEdge == Edge::Above ? height() - whole : 0, width(), whole);
    QWidget::resizeEvent(event);
}

} // namespace cantorel::ui
