#pragma once

#include "platform/desktop/Appearance.h"
#include "ui/look/Tokens.h"

#include <QFont>

class QFontMetricsF;
class QWidget;

namespace cantorel::ui {

// How the window looks: its colours, which follow the desktop's scheme while the program runs, and its measures, which
// grow with the text. Made before the windows and outlives them. One at a
// time; main thread.
class Look {
public:
    // Sets the style; before the application object, which then loads no other.
    static void prepare();
    // appearance: where the desktop tells of its scheme; may be null.
    explicit Look(desktop::Appearance *appearance);
    ~Look();
    Look(const Look &) = delete;
    Look &operator=(const Look &) = delete;

    // Shows the window as the desktop is set. Widgets hear of it by QEvent::PaletteChange.
    void follow(const desktop::AppearanceState &state);

    // Those in force; light where no look has been made.
    static const Tokens &tokens();
    static bool hasMotion();

    // Has a button or a choice drawn as a chip, which stands within a line of text.
    static void makeChip(QWidget &widget);
    static bool isChip(const QWidget *widget);

    // Has a tool button filled, as the one that leads on.
    static void makeFilled(QWidget &widget);
    static bool isFilled(const QWidget *widget);

    // The height of a control: the text in it grows, and what is above and below it stays.
    static int tall(const QWidget &widget, int height);
    // A measure that grows with the text of the widget.
    static int scaled(const QWidget &widget, int measure);
    // The widest digit's width: the cell of each where figures stand in columns.
    static qreal digitWidth(const QFont &font);
    // The widget's font, larger or smaller; sizes are in multiples of the desktop's.
    static QFont font(const QWidget &widget, qreal size, QFont::Weight weight = QFont::Normal);

private:
    desktop::Appearance *const mAppearance;
};

namespace text_size {
inline constexpr qreal kLabel = 0.86, kSecondLine = 0.93, kBody = 1, kTitle = 1.07, kTime = 3.4, kLowTime = 2.9;
} // namespace text_size

} // namespace cantorel::ui
