#include "ui/SourceSwitch.h"

#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QPainter>
#include <QStyleOptionToolButton>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kInset = 3;
constexpr int kBeside = 12; // left and right of a choice

class Choice : public QToolButton {
public:
    using QToolButton::QToolButton;

    // As wide with the bold text of the chosen one, so that nothing moves.
    QSize sizeHint() const override {
        const int icon = iconSize().width() + (text().isEmpty() ? 0 : measure::kGap);
        return {bold(true).horizontalAdvance(text()) + icon + 2 * kBeside,
                Look::tall(*this, measure::kSwitch) - 2 * kInset};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override {
        QStyleOptionToolButton option;
        initStyleOption(&option);
        const Tokens &tokens = Look::tokens();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool isHovered = option.state & QStyle::State_MouseOver && isEnabled();
        const QRectF place = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.setPen(isChecked() ? QPen(tokens.line) : QPen(Qt::NoPen));
        painter.setBrush(isChecked() ? tokens.surface : isHovered ? tokens.hover : QColor(Qt::transparent));
        painter.drawRoundedRect(place, measure::kFieldRadius, measure::kFieldRadius);
        if (hasFocus() && option.state & QStyle::State_KeyboardFocusChange) {
            painter.setPen(QPen(tokens.focus, measure::kFocus));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(place.adjusted(1, 1, -1, -1), measure::kFieldRadius, measure::kFieldRadius);
        }
        const int side = iconSize().width();
        const QRect content = style()->visualRect(layoutDirection(), rect(), rect().adjusted(kBeside, 0, -kBeside, 0));
        const QRect sign(content.left(), (height() - side) / 2, side, side);
        icon().paint(&painter, style()->visualRect(layoutDirection(), rect(), sign));
        QFont font = this->font();
        font.setBold(isChecked());
        painter.setFont(font);
        painter.setPen(isChecked() || isHovered ? tokens.text : tokens.text2);
        painter.drawText(content.adjusted(side + measure::kGap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text());
    }

private:
    QFontMetrics bold(bool isBold) const {
        QFont font = this->font();
        font.setBold(isBold);
        return QFontMetrics(font);
    }
};

} // namespace

SourceSwitch::SourceSwitch(int choices, QWidget *parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(kInset, kInset, kInset, kInset);
    row->setSpacing(kInset);
    for (int i = 0; i < choices; ++i) {
        auto *button = new Choice(this);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIconSize(QSize(1, 1) * Look::scaled(*this, measure::kIcon));
        button->setObjectName(QStringLiteral("source%1").arg(i));
        mChoices.addButton(button, i);
        row->addWidget(button);
    }
}

void SourceSwitch::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::tokens().sunken);
    painter.drawRoundedRect(rect(), measure::kButtonRadius, measure::kButtonRadius);
}

} // namespace cantorel::ui
