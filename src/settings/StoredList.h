#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantList>

namespace cantorel {

// A list that is stored under a settings key as a keyed archive.
struct StoredList {
    QVariantList items;
    QByteArray archive; // the bytes that they were read from
};

// What is stored; empty when there is nothing. A damaged archive is copied into the folder once, said so in one log
// line, and left under its key until the list is saved the next time. Main thread.
StoredList loadStoredList(const QString &key, const QString &folderForDamaged);

} // namespace cantorel
