#pragma once

#include "platform/desktop/FileChooser.h"

class QWidget;

namespace cantorel::ui {

// Asks for files or a folder with the desktop's dialog, or with our own where it has none, while the window goes on.
// chosen: called with what was chosen, unless that is nothing or the widget that asks has gone.
void chooseFiles(QWidget &asking, const QString &title, std::function<void(const QStringList &)> chosen);
void chooseFolder(QWidget &asking, const QString &title, const QString &folder,
                  std::function<void(const QString &)> chosen);

} // namespace cantorel::ui
