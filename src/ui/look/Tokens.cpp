#include "ui/look/Tokens.h"

#include <QPalette>

#include <algorithm>
#include <cmath>

namespace cantorel::ui {

const Tokens &Tokens::light() {
    static const Tokens tokens{
        .ground = 0xF3F4F6,
        .surface = 0xFFFFFF,
        .sunken = 0xE6E9EE,
        .track = 0xE6E9EE,
        .hover = 0xECEEF2,
        .line = 0xD9DDE4,
        .outline = 0x747D8B,
        .text = 0x1B2230,
        .text2 = 0x566070,
        .accent = 0x0B66A8,
        .onAccent = 0xFFFFFF,
        .soft = 0xDCEAF6,
        .red = 0xC4202F,
        .redFill = 0xD42B3A,
        .redSoft = 0xFBE6E8,
        .amber = 0x8A5300,
        .amberFill = 0xB87400,
        .amberSoft = 0xFBF0DC,
        .wave = 0x0B66A8,
        .waveRest = 0x747D8B,
        .focus = 0x0B66A8,
    };
    return tokens;
}

const Tokens &Tokens::dark() {
    static const Tokens tokens{
        .ground = 0x1A1D23,
        .surface = 0x242830,
        .sunken = 0x121419,
        .track = 0x363D48,
        .hover = 0x2C313A,
        .line = 0x353B45,
        .outline = 0x8A93A1,
        .text = 0xECEEF2,
        .text2 = 0xA9B1BE,
        .accent = 0x5DBBF0,
        .onAccent = 0x08212F,
        .soft = 0x1E3B50,
        .red = 0xFF7A80,
        .redFill = 0xE5484D,
        .redSoft = 0x42262B,
        .amber = 0xEFB548,
        .amberFill = 0xEFB548,
        .amberSoft = 0x3B301B,
        .wave = 0x4CC2F5,
        .waveRest = 0x79828F,
        .focus = 0x8CD0F7,
    };
    return tokens;
}

namespace {

// As the eye weighs the parts of a colour, 0 to 1.
double luminance(const QColor &colour) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &ink, const QColor &ground) {
    const double one = luminance(ink), other = luminance(ground);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

// From the ground towards the text, no further than it takes to be seen.
QColor faintest(const QColor &ground, const QColor &text) {
    const auto mixed = [&](float part) {
        const auto between = [part](float one, float other) { return one + (other - one) * part; };
        return QColor::fromRgbF(between(ground.redF(), text.redF()), between(ground.greenF(), text.greenF()),
                                between(ground.blueF(), text.blueF()));
    };
    float part = 0;
    while (part < 1 && contrast(mixed(part), ground) < 3)
        part += 0.05F;
    return mixed(std::min(part, 1.0F));
}

} // namespace

Tokens Tokens::highContrast(const QPalette &desktop) {
    const QColor ground = desktop.color(QPalette::Window), text = desktop.color(QPalette::WindowText);
    const QColor highlight = desktop.color(QPalette::Highlight);
    const Tokens &nearest = ground.lightness() < 128 ? dark() : light();
    return {
        .ground = ground,
        .surface = desktop.color(QPalette::Base),
        .sunken = ground,
        .track = faintest(ground, text),
        .hover = desktop.color(QPalette::Button),
        .line = text,
        .outline = text,
        .text = text,
        .text2 = text,
        .accent = text,
        .onAccent = desktop.color(QPalette::Base),
        .soft = contrast(text, highlight) >= 4.5 ? highlight : desktop.color(QPalette::Button), // text stands on it
        .red = nearest.red,
        .redFill = nearest.redFill,
        .redSoft = ground,
        .amber = nearest.amber,
        .amberFill = nearest.amberFill,
        .amberSoft = ground,
        .wave = text,
        .waveRest = text,
        .focus = highlight,
    };
}

} // namespace cantorel::ui
