#pragma once

#include <QAbstractButton>

namespace cantorel::ui {

// The one unmistakable button: a red disc that begins a recording, and a square in it that ends one. Its text is what
// it does, for those who cannot see it.
class RecordButton : public QAbstractButton {
public:
    explicit RecordButton(QWidget *parent = nullptr);

    void setRecording(bool recording);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override;

private:
    QRectF disc() const;

    bool mIsRecording = false;
    bool mTellsFrame = qEnvironmentVariableIsSet("CANTOREL_SHOW_FRAME"); // for measuring the start
};

} // namespace cantorel::ui
