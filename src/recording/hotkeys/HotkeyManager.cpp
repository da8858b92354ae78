#include "recording/hotkeys/HotkeyManager.h"

#include <QHash>

namespace cantorel {

namespace {

using Words = QHash<QString, quint32>;

struct Row {
    const char *word;
    quint32 value;
};

template <std::size_t Count> Words wordsOf(const Row (&rows)[Count]) {
    Words words;
    for (const Row &row : rows)
        words.insert(QString::fromLatin1(row.word), row.value);
    return words;
}

const Words &modifierWords() {
    static const Words words = wordsOf({{"cmd", 256},
                                        {"command", 256},
                                        {"apple", 256},
                                        {"shift", 512},
                                        {"opt", 2048},
                                        {"option", 2048},
                                        {"alt", 2048},
                                        {"ctrl", 4096},
                                        {"ctl", 4096},
                                        {"control", 4096}});
    return words;
}

// Deliberate: "c" is 9 as "v" is, "k" is 41 and "f2" is 121. Stored settings and the desktop seam live by these codes.
const Words &keyWords() {
    static const Words words = wordsOf(
        {{"a", 0},       {"b", 11},    {"c", 9},     {"d", 2},          {"e", 14},     {"f", 3},      {"g", 5},
         {"h", 4},       {"i", 34},    {"j", 38},    {"k", 41},         {"l", 37},     {"m", 46},     {"n", 45},
         {"o", 31},      {"p", 35},    {"q", 12},    {"r", 15},         {"s", 1},      {"t", 17},     {"u", 32},
         {"v", 9},       {"w", 13},    {"x", 7},     {"y", 16},         {"z", 6},      {"0", 29},     {"1", 18},
         {"2", 19},      {"3", 20},    {"4", 21},    {"5", 23},         {"6", 22},     {"7", 26},     {"8", 28},
         {"9", 25},      {",", 43},    {".", 47},    {"/", 44},         {"f1", 122},   {"f2", 121},   {"f3", 99},
         {"f4", 118},    {"f5", 96},   {"f6", 97},   {"f7", 98},        {"f8", 100},   {"f9", 101},   {"f10", 109},
         {"f11", 103},   {"f12", 111}, {"f13", 105}, {"f14", 107},      {"f15", 113},  {"space", 49}, {"enter", 36},
         {"escape", 53}, {"esc", 53},  {"tab", 48},  {"backspace", 51}, {"bkspc", 51}, {"left", 123}, {"right", 124},
         {"down", 125},  {"up", 126}});
    return words;
}

} // namespace

desktop::HotKeyCombination HotkeyManager::combinationOf(const QString &hotkey) {
    desktop::HotKeyCombination combination;
    for (const QString &word : hotkey.toLower().split(QLatin1Char(' '))) {
        if (const auto modifier = modifierWords().constFind(word); modifier != modifierWords().constEnd())
            combination.modifiers += *modifier; // Deliberately added up, so that a doubled one is another mask.
        else if (const auto key = keyWords().constFind(word); key != keyWords().constEnd())
            combination.keyCode = *key;
    }
    return combination;
}

quint32 HotkeyManager::bind(const QString &hotkey, std::shared_ptr<HotkeyTarget> target, HotkeyAction action) {
    _hotkeyString = hotkey;
    const auto [keyCode, modifiers] = combinationOf(hotkey);
    return bindKeyRef(keyCode, modifiers, std::move(target), action);
}

quint32 HotkeyManager::bindKeyRef(quint32 keyRef, quint32 withModifiers, std::shared_ptr<HotkeyTarget> target,
                                  HotkeyAction action) {
    const quint32 identifier = _nextId++;
    auto record =
        std::make_unique<HotkeyRecord>(mHotKeys, identifier, keyRef, withModifiers, std::move(target), action, *this);
    record->setHotkey(_hotkeyString);
    _hotkeys[identifier] = std::move(record);
    return identifier;
}

void HotkeyManager::unbind(quint32 identifier) { _hotkeys.erase(identifier); }

void HotkeyManager::_dispatch(quint32 identifier) const {
    if (const auto record = _hotkeys.find(identifier); record != _hotkeys.end())
        record->second->invoke();
}

QString HotkeyManager::trigger(quint32 identifier) const {
    const auto record = _hotkeys.find(identifier);
    return record != _hotkeys.end() ? record->second->trigger() : QString();
}

void HotkeyManager::hotKeyPressed(const desktop::EventHotKeyID &identity) { (void)hotkeyHandler(identity, *this); }

bool hotkeyHandler(const desktop::EventHotKeyID &identity, const HotkeyManager &manager) {
    manager._dispatch(identity.id);
    return true;
}

} // namespace cantorel
