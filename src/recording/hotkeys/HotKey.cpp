#include "recording/hotkeys/HotKey.h"

namespace cantorel {

namespace {

bool hotkeyChanged = false; // set on the main thread

} // namespace

QStringList HotKey::getAllValidKeys() {
    QStringList keys;
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        keys << QString(QLatin1Char(letter));
    return keys;
}

QStringList HotKey::getAllModifyKeys() {
    return {QStringLiteral("shift"), QStringLiteral("ctrl"), QStringLiteral("opt"), QStringLiteral("cmd")};
}

void HotKey::initHotkeyFromString(const QString &text, HotkeyCheckBoxes &withCheckBoxs, HotkeyComboBox &withComboBox) {
    withCheckBoxs.fill(false);
    const QStringList modifiers = getAllModifyKeys();
    QString key;
    for (const QString &word : text.split(QLatin1Char(' '))) {
        if (modifiers.contains(word))
            setCheckboxCheckedOnFromKey(word, withCheckBoxs);
        else
            key = word;
    }
    withComboBox.titles = getAllValidKeys();
    withComboBox.title = key.toUpper();
}

QString HotKey::getHotkeyFromCombox(const HotkeyComboBox &comboBox, const HotkeyCheckBoxes &withCheckBoxs) {
    const QStringList modifiers = getAllModifyKeys();
    QStringList words;
    for (qsizetype i = 0; i < modifiers.size(); ++i) {
        if (withCheckBoxs[static_cast<std::size_t>(i)])
            words << modifiers[i];
    }
    return (words << comboBox.title.toLower()).join(QLatin1Char(' '));
}

void HotKey::setCheckboxCheckedOnFromKey(const QString &key, HotkeyCheckBoxes &withCheckboxs) {
    if (const qsizetype index = getAllModifyKeys().indexOf(key); index >= 0)
        withCheckboxs[static_cast<std::size_t>(index)] = true;
}

bool HotKey::isChanged() { return hotkeyChanged; }

void HotKey::setHotkeyChanged(bool changed) { hotkeyChanged = changed; }

} // namespace cantorel
