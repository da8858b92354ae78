#include "platform/desktop/HotKeyTable.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace cantorel::desktop {

namespace {

constexpr foundation::SentenceKey kKeyForTyping("KeyForTyping", "Keys");

// Codes 41 and 121 are what the words "k" and "f2" deliberately stand for, so here they are just these keys.
constexpr PlatformKey kKeys[] = {
    {0, 'a', "a"},          {1, 's', "s"},         {2, 'd', "d"},
    {3, 'f', "f"},          {4, 'h', "h"},         {5, 'g', "g"},
    {6, 'z', "z"},          {7, 'x', "x"},         {9, 'v', "v"},
    {11, 'b', "b"},         {12, 'q', "q"},        {13, 'w', "w"},
    {14, 'e', "e"},         {15, 'r', "r"},        {16, 'y', "y"},
    {17, 't', "t"},         {18, '1', "1"},        {19, '2', "2"},
    {20, '3', "3"},         {21, '4', "4"},        {22, '6', "6"},
    {23, '5', "5"},         {25, '9', "9"},        {26, '7', "7"},
    {28, '8', "8"},         {29, '0', "0"},        {31, 'o', "o"},
    {32, 'u', "u"},         {34, 'i', "i"},        {35, 'p', "p"},
    {36, 0xff0d, "Return"}, {37, 'l', "l"},        {38, 'j', "j"},
    {41, 'k', "k"},         {43, ',', "comma"},    {44, '/', "slash"},
    {45, 'n', "n"},         {46, 'm', "m"},        {47, '.', "period"},
    {48, 0xff09, "Tab"},    {49, ' ', "space"},    {51, 0xff08, "BackSpace"},
    {53, 0xff1b, "Escape"}, {96, 0xffc2, "F5"},    {97, 0xffc3, "F6"},
    {98, 0xffc4, "F7"},     {99, 0xffc0, "F3"},    {100, 0xffc5, "F8"},
    {101, 0xffc6, "F9"},    {103, 0xffc8, "F11"},  {105, 0xffca, "F13"},
    {107, 0xffcb, "F14"},   {109, 0xffc7, "F10"},  {111, 0xffc9, "F12"},
    {113, 0xffcc, "F15"},   {118, 0xffc1, "F4"},   {121, 0xffbf, "F2"},
    {122, 0xffbe, "F1"},    {123, 0xff51, "Left"}, {124, 0xff53, "Right"},
    {125, 0xff54, "Down"},  {126, 0xff52, "Up"},
};

struct ModifierName {
    std::uint32_t bit;
    const char *shown, *portal;
};
constexpr ModifierName kModifiers[] = {{kControlModifier, "Ctrl", "CTRL"},
                                       {kOptionModifier, "Alt", "ALT"},
                                       {kShiftModifier, "Shift", "SHIFT"},
                                       {kCommandModifier, "Super", "LOGO"}};

QString joined(const HotKeyCombination &combination, const char *ModifierName::*name, bool capital) {
    const PlatformKey *key = platformKey(combination.keyCode);
    if (key == nullptr)
        return {};
    QStringList parts;
    for (const ModifierName &modifier : kModifiers) {
        if ((combination.modifiers & modifier.bit) != 0)
            parts << QString::fromLatin1(modifier.*name);
    }
    QString keyName = QString::fromLatin1(key->name);
    if (capital)
        keyName[0] = keyName[0].toUpper();
    return (parts << keyName).join(QLatin1Char('+'));
}

} // namespace

const PlatformKey *platformKey(std::uint32_t keyCode) {
    const auto *found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                     [&](const PlatformKey &key) { return key.keyCode == keyCode; });
    return found == std::end(kKeys) ? nullptr : found;
}

bool isHotKey(const HotKeyCombination &combination) {
    constexpr std::uint32_t kFunctionKey1 = 0xffbe, kFunctionKey15 = 0xffcc;
    const PlatformKey *key = platformKey(combination.keyCode);
    return key != nullptr
           && ((key->keysym >= kFunctionKey1 && key->keysym <= kFunctionKey15)
               || (combination.modifiers & (kCommandModifier | kOptionModifier | kControlModifier)) != 0);
}

QString shownCombination(const HotKeyCombination &combination) {
    return joined(combination, &ModifierName::shown, true);
}

foundation::Sentence typingKeySentence(const HotKeyCombination &combination) {
    return kKeyForTyping(shownCombination(combination));
}

QString portalTrigger(const HotKeyCombination &combination) {
    return joined(combination, &ModifierName::portal, false);
}

} // namespace cantorel::desktop
