#pragma once

#include <QFile>
#include <QString>

#include <functional>

namespace cantorel {

// Of one file, as a rename that was killed leaves it. Where upper and lower case are one, there is but one name.
bool areTwoNames(const QString &one, const QString &other);

// A file in the state folder that holds both names while one is renamed. What is left of it by a program that was
// killed tells the next one which name is to go.
class NotedRename {
public:
    NotedRename(const QString &stateFolder, const QString &before, const QString &after);
    ~NotedRename() { mFile.remove(); }
    NotedRename(const NotedRename &) = delete;
    NotedRename &operator=(const NotedRename &) = delete;

    // Only the name that the stored list does not know any more goes: its owner may be at it right now.
    static void finish(const QString &stateFolder, const std::function<bool(const QString &)> &isListed);

private:
    QFile mFile;
};

} // namespace cantorel
