#pragma once

#include <QWidget>

class QLabel;

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

class MeterView;

// The level of what is recorded; of each source in a lane of its own while both are.
class LevelLanes : public QWidget {
public:
    // The panel outlives it.
    LevelLanes(RecorderPanel &panel, QWidget *parent);

    void setBoth(bool areBoth);
    // A level has come.
    void wake();
    void showTexts();

private:
    struct Lane {
        QLabel *name;
        MeterView *meter;
    };
    Lane mLanes[2];
    bool mAreBoth = false;
};

} // namespace cantorel::ui
