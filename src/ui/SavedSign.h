#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace cantorel::ui {

// The sign "savedOK" in the middle of another widget: it comes and goes within two seconds, and takes neither clicks
// nor the focus. Nothing is seen where motion is reduced.
class SavedSign : public QWidget {
    Q_OBJECT

public:
    explicit SavedSign(QWidget *parent);

    void play();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVariantAnimation mFade;
};

} // namespace cantorel::ui
