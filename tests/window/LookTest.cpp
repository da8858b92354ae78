#include "ui/look/Look.h"

#include "tests/window/WindowFixture.h"

#include <cmath>

namespace cantorel {
namespace {

using ui::Look;
using ui::Tokens;
using Scheme = desktop::AppearanceState::Scheme;

// WCAG 2.1, relative luminance and contrast ratio.
double luminance(const QColor &colour) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}
double contrast(const QColor &one, const QColor &other) {
    const double a = luminance(one), b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

struct Pair {
    const char *name;
    QColor Tokens::*ink;
    std::vector<QColor Tokens::*> grounds;
    double least;
};
const Pair kPairs[] = {
    {"text", &Tokens::text, {&Tokens::ground, &Tokens::surface, &Tokens::sunken, &Tokens::hover, &Tokens::soft}, 4.5},
    {"text2", &Tokens::text2, {&Tokens::ground, &Tokens::surface, &Tokens::soft}, 4.5},
    {"accent", &Tokens::accent, {&Tokens::ground, &Tokens::surface, &Tokens::soft}, 4.5},
    {"onAccent", &Tokens::onAccent, {&Tokens::accent}, 4.5},
    {"red", &Tokens::red, {&Tokens::ground, &Tokens::surface, &Tokens::redSoft}, 4.5},
    {"amber", &Tokens::amber, {&Tokens::ground, &Tokens::surface, &Tokens::amberSoft}, 4.5},
    {"outline", &Tokens::outline, {&Tokens::ground, &Tokens::surface}, 3},
    {"redFill", &Tokens::redFill, {&Tokens::ground, &Tokens::surface}, 3},
    {"amberFill", &Tokens::amberFill, {&Tokens::ground, &Tokens::track}, 3},
    {"wave", &Tokens::wave, {&Tokens::ground, &Tokens::track}, 3},
    {"waveRest", &Tokens::waveRest, {&Tokens::ground}, 3},
    {"focus", &Tokens::focus, {&Tokens::ground, &Tokens::surface}, 3},
};

} // namespace

TEST(Look, EveryColourStandsOutFromItsGround) {
    for (const Tokens *tokens : {&Tokens::light(), &Tokens::dark()})
        for (const Pair &pair : kPairs)
            for (const auto ground : pair.grounds)
                EXPECT_GE(contrast(tokens->*pair.ink, tokens->*ground), pair.least)
                    << pair.name << " on " << (tokens->*ground).name().toStdString();
}

TEST(Look, TheWindowFollowsTheDesktopWhileItIsShown) {
    Look look(nullptr);
    QWidget window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const auto isGround = [&](const QColor &ground) {
        return QTest::qWaitFor([&] { return window.grab().toImage().pixelColor(5, 5) == ground; });
    };
    EXPECT_TRUE(isGround(Tokens::light().ground));
    look.follow({Scheme::Dark, false, true});
    EXPECT_TRUE(isGround(Tokens::dark().ground));
    EXPECT_FALSE(Look::hasMotion());
    look.follow({Scheme::Dark, true, false});
    EXPECT_EQ(Look::tokens().wave, Look::tokens().text) << "high contrast keeps the desktop's colours";
    look.follow({});
    EXPECT_TRUE(Look::hasMotion());
}

} // namespace cantorel
