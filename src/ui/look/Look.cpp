#include "ui/look/Look.h"

#include "settings/UserDefaultFunctions.h"
#include "ui/look/LookStyle.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QHash>
#include <QWidget>

namespace cantorel::ui {

namespace {

constexpr const char *kFilled = "filled", *kChip = "chip"; // a property of the widget
constexpr qreal kNormalLine = 19;                          // height of a line of text at the normal size
const QString kWasDark = QStringLiteral("desktopWasDark"); // at the last start; the first picture need not wait then

struct Shown {
    Tokens tokens = Tokens::light();
    bool hasMotion = true;
};

Shown &shown() {
    static Shown look;
    return look;
}

// What the desktop chose before any look; high contrast keeps it.
const QPalette &desktopPalette() {
    static const QPalette palette = QApplication::palette();
    return palette;
}

QPalette paletteOf(const Tokens &tokens) {
    QPalette palette(tokens.ground);
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QColor ink = group == QPalette::Disabled ? tokens.outline : tokens.text;
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(group, role, ink);
        palette.setColor(group, QPalette::Window, tokens.ground);
        palette.setColor(group, QPalette::Base, tokens.surface);
        palette.setColor(group, QPalette::AlternateBase, tokens.surface);
        palette.setColor(group, QPalette::Button, tokens.surface);
        palette.setColor(group, QPalette::ToolTipBase, tokens.surface);
        palette.setColor(group, QPalette::ToolTipText, tokens.text);
        palette.setColor(group, QPalette::PlaceholderText, tokens.text2);
        palette.setColor(group, QPalette::Highlight, tokens.soft);
        palette.setColor(group, QPalette::HighlightedText, tokens.text);
        palette.setColor(group, QPalette::Link, tokens.accent);
        palette.setColor(group, QPalette::LinkVisited, tokens.accent);
        palette.setColor(group, QPalette::Light, tokens.surface);
        palette.setColor(group, QPalette::Midlight, tokens.hover);
        palette.setColor(group, QPalette::Mid, tokens.line);
        palette.setColor(group, QPalette::Dark, tokens.outline);
        palette.setColor(group, QPalette::Shadow, tokens.line);
    }
    return palette;
}

} // namespace

void Look::prepare() { QApplication::setStyle(new LookStyle); } // which the application owns

Look::Look(desktop::Appearance *appearance) : mAppearance(appearance) {
    const bool desktopIsDark = desktopPalette().color(QPalette::Window).lightness() < 128;
    const bool isDark = ZQUserDefaultGetBoolValue(kWasDark, desktopIsDark);
    follow({isDark ? desktop::AppearanceState::Scheme::Dark : desktop::AppearanceState::Scheme::Light, false, false});
    if (mAppearance)
        mAppearance->listen([this](const desktop::AppearanceState &state) {
            if (state.scheme != desktop::AppearanceState::Scheme::Unknown)
                (void)ZQUserDefaultSetValue_BOOL(state.scheme == desktop::AppearanceState::Scheme::Dark, kWasDark);
            follow(state);
        });
}

Look::~Look() {
    if (mAppearance)
        mAppearance->listen({});
}

void Look::follow(const desktop::AppearanceState &state) {
    const QPalette &desktop = desktopPalette();
    const bool isDark = state.scheme == desktop::AppearanceState::Scheme::Unknown
                            ? desktop.color(QPalette::Window).lightness() < 128
                            : state.scheme == desktop::AppearanceState::Scheme::Dark;
    shown().hasMotion = !state.isMotionReduced;
    shown().tokens = state.isContrastHigh ? Tokens::highContrast(desktop) : isDark ? Tokens::dark() : Tokens::light();
    QPalette high = desktop;
    high.setColor(QPalette::PlaceholderText, shown().tokens.text); // second lines and labels
    QApplication::setPalette(state.isContrastHigh ? high : paletteOf(shown().tokens));
}

const Tokens &Look::tokens() { return shown().tokens; }

bool Look::hasMotion() { return shown().hasMotion; }

void Look::makeChip(QWidget &widget) { widget.setProperty(kChip, true); }

bool Look::isChip(const QWidget *widget) { return widget != nullptr && widget->property(kChip).toBool(); }

void Look::makeFilled(QWidget &widget) { widget.setProperty(kFilled, true); }

bool Look::isFilled(const QWidget *widget) { return widget != nullptr && widget->property(kFilled).toBool(); }

int Look::tall(const QWidget &widget, int height) {
    return height + qMax(0, qRound(widget.fontMetrics().height() - kNormalLine));
}

int Look::scaled(const QWidget &widget, int measure) {
    return qRound(measure * qMax(1.0, widget.fontMetrics().height() / kNormalLine));
}

qreal Look::digitWidth(const QFont &font) {
    static QHash<QString, qreal> known; // A time ticks twice a second, and a list has many figures.
    auto place = known.find(font.key());
    if (place == known.end()) {
        place = known.insert(font.key(), 0);
        const QFontMetricsF metrics(font);
        for (char digit = '0'; digit <= '9'; ++digit)
            *place = qMax(*place, metrics.horizontalAdvance(QLatin1Char(digit)));
    }
    return *place;
}

QFont Look::font(const QWidget &widget, qreal size, QFont::Weight weight) {
    QFont font = widget.font();
    const QFont normal = QApplication::font(&widget);
    if (normal.pixelSize() > 0)
        font.setPixelSize(qRound(normal.pixelSize() * size));
    else
        font.setPointSizeF(normal.pointSizeF() * size);
    font.setWeight(weight);
    return font;
}

} // namespace cantorel::ui
