#pragma once

#include <QSignalBlocker>

#include <algorithm>

namespace cantorel::ui {

// Shows what is stored, whatever it is, in the field of a number: only what a person changes is stored.
template <class Box, class Number> void showNumber(Box &box, Number value) {
    const QSignalBlocker untold(box);
    box.setRange(std::min(box.minimum(), value), std::max(box.maximum(), value));
    box.setValue(value);
}

} // namespace cantorel::ui
