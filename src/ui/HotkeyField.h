#pragma once

#include <QLineEdit>

#include <functional>

namespace cantorel::ui {

// Shows a hot key and takes another one from the keyboard while it has the focus: a letter with at least one of Ctrl,
// Alt and Super. Backspace and Delete leave it as it is; Tab goes on.
class HotkeyField : public QLineEdit {
    Q_OBJECT

public:
    explicit HotkeyField(QWidget *parent = nullptr);

    void setHotkey(const QString &hotkey);

Q_SIGNALS:
    // The text, such as "ctrl cmd s", that the pressed keys make.
    void chosen(const QString &hotkey);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
};

} // namespace cantorel::ui
