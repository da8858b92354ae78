#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel {

// A list that is stored under a settings key as a keyed archive.
template <class Item> struct StoredList {
    std::vector<Item> items;
    QByteArray archive;  // the bytes that they were read from
    bool isWhole = true; // each stored item has become one of these
};

// Gives what is stored item by item, and answers the archive; nothing is stored where it is empty. False when it is
// damaged: what was given counts for nothing then. A damaged archive is copied into the folder once, said so in one log
// line, and left under its key until the list is saved the next time. One thread at a time.
std::pair<QByteArray, bool> readStoredList(const QString &key, const QString &folderForDamaged,
                                           const std::function<void(const QVariant &archived)> &take);

// What is stored, each item made by `make` from its archived form unless that gives nothing.
template <class Item>
StoredList<Item> loadStoredList(const QString &key, const QString &folderForDamaged,
                                const std::function<std::optional<Item>(const QVariant &archived)> &make) {
    StoredList<Item> stored;
    const auto [archive, isSound] = readStoredList(key, folderForDamaged, [&](const QVariant &archived) {
        if (auto item = make(archived))
            stored.items.push_back(*std::move(item));
        else
            stored.isWhole = false;
    });
    if (!isSound)
        stored = {};
    stored.archive = archive;
    return stored;
}

} // namespace cantorel
