#pragma once

#include <QColor>

class QPalette;

namespace cantorel::ui {

// Every colour of the window by what it is for. Sound is blue, recording is red, waiting is amber, the rest is ink.
struct Tokens {
    QColor ground;  // window, header, stage
    QColor surface; // deck, cards, lists
    QColor sunken;  // behind the choices of a switch
    QColor track;   // unlit steps, troughs
    QColor hover;   // under the pointer
    QColor line;    // hairlines
    QColor outline; // edges of fields, the time at rest
    QColor text;
    QColor text2; // second lines, labels
    QColor accent;
    QColor onAccent; // text on it
    QColor soft;     // selected rows
    QColor red;      // recording, errors: text, dot
    QColor redFill;  // button, line, hot steps
    QColor redSoft;  // ground of an error
    QColor amber;    // paused, waiting: text, dot
    QColor amberFill;
    QColor amberSoft; // ground of a warning
    QColor wave;      // recorded sound
    QColor waveRest;  // sound that is not recorded
    QColor focus;

    static const Tokens &light();
    static const Tokens &dark();
    // The desktop's own colours; sound and lines in the colour of the text.
    static Tokens highContrast(const QPalette &desktop);
};

// Measures, in points at the normal size of text; what stands beside text grows with it by Look::scaled().
namespace measure {
inline constexpr int kMargin = 24, kNarrowMargin = 16; // of a page
inline constexpr int kGap = 8;
inline constexpr int kControl = 36, kField = 32, kTarget = 32, kSwitch = 40;
inline constexpr int kHeader = 48, kRow = 56;
inline constexpr int kCardBelow = 16; // from a card to what is below it
inline constexpr int kFieldRadius = 6, kButtonRadius = 8, kCardRadius = 12;
inline constexpr int kIcon = 20;
inline constexpr int kFocus = 2; // width of the ring
inline constexpr int kRing = 4;  // room for it, around a switch
} // namespace measure

} // namespace cantorel::ui
