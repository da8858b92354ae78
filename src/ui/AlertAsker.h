#pragma once

#include "app/start/MainWindowFace.h"
#include "util/Asker.h"

#include <QPointer>

#include <deque>
#include <functional>

class QMessageBox;
class QWidget;

namespace cantorel::ui {

// Shows alerts as sheets of the window, one after the other. Owned by the application; main thread.
class AlertAsker : public Asker {
public:
    // The window outlives the asker.
    explicit AlertAsker(QWidget &window) : mWindow(window) {}

    // Returns at once; the completion is called when the sheet is closed.
    void beginSheet(const AlertSheet &sheet, std::function<void(int returnCode)> completion);
    // Where the window lets a new file be named.
    std::function<QString(const QString &folder, const QString &extension)> nameNewFile;

    bool isShowingSheet() const { return !mOpen.isNull(); }

    void tell(const QString &title, const QString &message, AlertStyle style, QObject *window) override;
    int ask(const QString &title, const QString &message, const QStringList &choices, QObject *window) override;
    QString askForNewFile(const QString &folder, const QString &extension) override;

private:
    struct Waiting {
        AlertSheet sheet;
        std::function<void(int)> completion;
    };
    void showNext();

    QWidget &mWindow;
    std::deque<Waiting> mWaiting;
    QPointer<QMessageBox> mOpen;
};

} // namespace cantorel::ui
