#pragma once

#include <QSignalBlocker>
#include <QStringList>

#include <algorithm>

namespace cantorel::ui {

// Shows what is stored, whatever it is, in the field of a number: only what a person changes is stored.
template <class Box, class Number> void showNumber(Box &box, Number value) {
    const QSignalBlocker untold(box);
    box.setRange(std::min(box.minimum(), value), std::max(box.maximum(), value));
    box.setValue(value);
}

// The same choices in other words: the one that is chosen stays.
template <class Box> void showChoices(Box &box, const QStringList &texts) {
    const QSignalBlocker untold(box);
    const int chosen = std::max(0, box.currentIndex());
    box.clear();
    box.addItems(texts);
    box.setCurrentIndex(chosen);
}

// text: with a marker where the number stands.
template <class Box> void showUnit(Box &box, const QString &text) {
    const QStringList around = text.split(QLatin1String("[#Count#]"), Qt::KeepEmptyParts, Qt::CaseInsensitive);
    box.setPrefix(around.constFirst());
    box.setSuffix(around.constLast());
}

} // namespace cantorel::ui
