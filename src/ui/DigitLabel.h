#pragma once

#include <QLabel>

namespace cantorel::ui {

// A line of text in which every digit takes as much room as the widest, so that nothing moves while figures change.
class DigitLabel : public QLabel {
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont unshaped() const;
    // Where each character stands, and behind them the whole width.
    QVector<qreal> positions() const;
};

} // namespace cantorel::ui
