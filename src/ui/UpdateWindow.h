#pragma once

#include "util/tools/UpdateCheck.h"

#include <QDialog>

namespace cantorel::ui {

// A newer version, what is new in it, and what the person wants to do about it. Deletes itself when it is closed.
class UpdateWindow : public QDialog {
public:
    // Shows nothing that the description does not say; its texts are plain whatever the server sends.
    explicit UpdateWindow(const UpdateDescription &description, QWidget *parent = nullptr);
};

} // namespace cantorel::ui
