#pragma once

class QWidget;

namespace cantorel::ui {

// Gives the focus to the first control of the next region of the window, in the order of the Tab key: header, page,
// strip, panel, deck.
void focusNextRegion(QWidget &window);

} // namespace cantorel::ui
