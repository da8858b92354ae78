#pragma once

#include <QString>
#include <QStringList>

#include <array>

namespace cantorel {

// What the settings window shows of one combination: a box for each of HotKey::getAllModifyKeys(), and a chooser.
using HotkeyCheckBoxes = std::array<bool, 4>;
struct HotkeyComboBox {
    QStringList titles;
    QString title; // the chosen one; a key that is not offered is shown all the same
};

// Class operations behind the edit controls of hot keys. Main thread.
class HotKey {
public:
    HotKey() = delete;

    static QStringList getAllValidKeys();  // those of the chooser: "A" to "Z"
    static QStringList getAllModifyKeys(); // "shift", "ctrl", "opt", "cmd"
    static void initHotkeyFromString(const QString &text, HotkeyCheckBoxes &withCheckBoxs,
                                     HotkeyComboBox &withComboBox);
    // The text of what is ticked and chosen, modifiers in the order of getAllModifyKeys().
    static QString getHotkeyFromCombox(const HotkeyComboBox &comboBox, const HotkeyCheckBoxes &withCheckBoxs);
    // Ticks the box of a modifier word; nothing for another word.
    static void setCheckboxCheckedOnFromKey(const QString &key, HotkeyCheckBoxes &withCheckboxs);

    // Whether a combination was edited; for the whole process.
    static bool isChanged();
    static void setHotkeyChanged(bool changed);
};

} // namespace cantorel
