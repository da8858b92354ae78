#pragma once

#include "platform/desktop/FileChooser.h"

class QMimeData;
class QWidget;

namespace cantorel::ui {

// Asks for files or a folder with the desktop's dialog, or with our own where it has none, while the window goes on.
// chosen: called with what was chosen, unless that is nothing or the widget that asks has gone.
void chooseFiles(QWidget &asking, const QString &title, std::function<void(const QStringList &)> chosen);
void chooseFolder(QWidget &asking, const QString &title, const QString &folder,
                  std::function<void(const QString &)> chosen);

// One file, in that folder at first; of the filter's types, unless the person wants to see all files.
void chooseFile(QWidget &asking, const QString &title, const QString &folder,
                const desktop::FileChooser::Filter &filter, std::function<void(const QString &)> chosen);
// Those that the editor opens.
desktop::FileChooser::Filter soundFiles();
// A name for a file that is to be made; one that is there is not replaced by its maker, so nothing is asked about it.
void chooseNewFile(QWidget &asking, const QString &title, const QString &folder, const QString &name,
                   std::function<void(const QString &)> chosen);

// The files and folders among what is dropped.
QStringList localFiles(const QMimeData &data);

} // namespace cantorel::ui
