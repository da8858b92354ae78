#pragma once

#include <QButtonGroup>
#include <QWidget>

namespace cantorel::ui {

// Several choices side by side of which one is taken. Its buttons are called "source0", "source1" and so on.
class SourceSwitch : public QWidget {
public:
    SourceSwitch(int choices, QWidget *parent);

    QButtonGroup &choices() { return mChoices; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QButtonGroup mChoices;
};

} // namespace cantorel::ui
