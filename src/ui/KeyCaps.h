#pragma once

#include <QWidget>

namespace cantorel::ui {

// A combination of keys as they are pressed, each in a frame of its own.
class KeyCaps : public QWidget {
public:
    using QWidget::QWidget;

    // keys: "Ctrl+Super+S"; empty shows nothing.
    void setKeys(const QString &keys);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont capFont() const;

    QStringList mKeys;
};

} // namespace cantorel::ui
