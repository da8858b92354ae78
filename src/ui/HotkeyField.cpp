#include "ui/HotkeyField.h"

#include "platform/desktop/HotKeyTable.h"
#include "recording/hotkeys/HotKey.h"
#include "recording/hotkeys/HotkeyManager.h"

#include <QKeyEvent>

namespace cantorel::ui {

HotkeyField::HotkeyField(QWidget *parent) : QLineEdit(parent) {
    setReadOnly(true);
    setAlignment(Qt::AlignCenter);
    setContextMenuPolicy(Qt::NoContextMenu);
}

void HotkeyField::setHotkey(const QString &hotkey) {
    setText(desktop::shownCombination(HotkeyManager::combinationOf(hotkey)));
}

bool HotkeyField::event(QEvent *event) {
    // What may be meant as a hot key is meant for us even where it is a shortcut of the window; Escape and its like
    // are not.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->key() < Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void HotkeyField::keyPressEvent(QKeyEvent *event) {
    const int key = event->key();
    const auto modifiers = event->modifiers();
    const bool carries = modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (key < Qt::Key_A || key > Qt::Key_Z || !carries) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    const HotkeyCheckBoxes boxes{bool(modifiers & Qt::ShiftModifier), bool(modifiers & Qt::ControlModifier),
                                 bool(modifiers & Qt::AltModifier), bool(modifiers & Qt::MetaModifier)};
    Q_EMIT chosen(HotKey::getHotkeyFromCombox({HotKey::getAllValidKeys(), QString(QChar(key))}, boxes));
}

} // namespace cantorel::ui
