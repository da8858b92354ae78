#include "ui/AlertAsker.h"

#include "lang/Lang.h"

#include <QMessageBox>
#include <QPushButton>

namespace cantorel::ui {

namespace {

// The buttons in the order in which they are named; Return presses the first, Escape the last.
std::vector<QPushButton *> addButtons(QMessageBox &box, const QStringList &texts) {
    std::vector<QPushButton *> buttons;
    for (const QString &text : texts)
        buttons.push_back(box.addButton(text, buttons.empty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    if (!buttons.empty()) {
        box.setDefaultButton(buttons.front());
        box.setEscapeButton(buttons.back());
    }
    return buttons;
}

int indexOf(const std::vector<QPushButton *> &buttons, const QAbstractButton *pressed) {
    const auto found = std::find(buttons.begin(), buttons.end(), pressed);
    return static_cast<int>((found == buttons.end() ? buttons.end() - 1 : found) - buttons.begin());
}

void describe(QMessageBox &box, const QString &title, const QString &message, AlertStyle style) {
    box.setIcon(style == AlertStyle::Informational ? QMessageBox::Information : QMessageBox::Warning);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(title);
    box.setText(message);
}

} // namespace

void AlertAsker::beginSheet(const AlertSheet &sheet, std::function<void(int)> completion) {
    mWaiting.push_back({sheet, std::move(completion)});
    if (!isShowingSheet())
        showNext();
}

void AlertAsker::showNext() {
    if (mWaiting.empty())
        return;
    const Waiting next = std::move(mWaiting.front());
    mWaiting.pop_front();
    mOpen = new QMessageBox(&mWindow); // deletes itself when it is closed
    mOpen->setAttribute(Qt::WA_DeleteOnClose);
    mOpen->setObjectName(QStringLiteral("sheet"));
    describe(*mOpen, next.sheet.messageText, next.sheet.informativeText, next.sheet.style);
    const auto buttons = addButtons(*mOpen, next.sheet.buttons);
    QMessageBox *box = mOpen;
    QObject::connect(box, &QDialog::finished, &mWindow, [this, box, buttons, completion = next.completion] {
        const int returnCode = MainWindowFace::kFirstButton + indexOf(buttons, box->clickedButton());
        mOpen.clear();
        if (completion)
            completion(returnCode);
        if (!isShowingSheet())
            showNext();
    });
    mOpen->open();
}

void AlertAsker::tell(const QString &title, const QString &message, AlertStyle style, QObject *window) {
    QMessageBox box(qobject_cast<QWidget *>(window) ? static_cast<QWidget *>(window) : &mWindow);
    describe(box, title, message, style);
    addButtons(box, {Lang::btnOK()});
    box.exec();
}

int AlertAsker::ask(const QString &title, const QString &message, const QStringList &choices, QObject *window) {
    QMessageBox box(qobject_cast<QWidget *>(window) ? static_cast<QWidget *>(window) : &mWindow);
    describe(box, title, message, AlertStyle::Informational);
    const auto buttons = addButtons(box, choices);
    box.exec();
    return indexOf(buttons, box.clickedButton());
}

QString AlertAsker::askForNewFile(const QString &folder, const QString &extension) {
    return nameNewFile ? nameNewFile(folder, extension) : QString();
}

} // namespace cantorel::ui
