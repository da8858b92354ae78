#include "ui/WindowMenu.h"

#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "ui/Icons.h"
#include "ui/WindowKeys.h"
#include "ui/look/Look.h"
#include "util/tools/Tools.h"

#include <QAction>
#include <QMessageBox>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kAboutIcon = 96;

} // namespace

WindowMenu::WindowMenu(QWidget *window)
    : QMenu(window),
      mButton(new QToolButton(window)),
      mTasks(addAction(QString(), this, &WindowMenu::tasksWanted)),
      mSettings(addAction(QString(), this, &WindowMenu::settingsWanted)),
      mUpdates(addAction(QString(), this, &WindowMenu::updatesWanted)),
      mAbout(addAction(QString(), this, [this] { showAbout(); })),
      mQuit(addAction(QString(), this, &WindowMenu::quitWanted)) {
    insertSeparator(mUpdates);
    mButton->setPopupMode(QToolButton::InstantPopup);
    mButton->setAutoRaise(true);
    mButton->setIconSize(textIconSize(*window));
    mButton->setFocusPolicy(Qt::StrongFocus);
    mButton->setObjectName(QStringLiteral("menu"));
    mButton->setMenu(this);
}

QAction *WindowMenu::actionOf(Command command) const {
    return command == Command::Settings ? mSettings : command == Command::Quit ? mQuit : nullptr;
}

void WindowMenu::open(const QWidget &page) {
    const QWidget &below = mButton->isVisible() ? *static_cast<QWidget *>(mButton) : page;
    const int height = mButton->isVisible() ? below.height() : Look::tall(page, measure::kHeader);
    popup(below.mapToGlobal(QPoint(below.width() - sizeHint().width(), height)));
}

void WindowMenu::showAbout() {
    QMessageBox about(parentWidget());
    about.setIconPixmap(applicationIcon().pixmap(kAboutIcon, kAboutIcon));
    about.setWindowTitle(Tools::fillTextMarkers(Lang::menuAbout()));
    about.setText(QStringLiteral("<h2>%1</h2>").arg(AppSettings::appName())
                  + Lang::windowVersion().replace(QLatin1String("[#Count#]"), AppSettings::appVersion()));
    about.setInformativeText(Lang::windowAbout() + QStringLiteral("\n\n") + Lang::windowLicense());
    about.addButton(Lang::btnClose(), QMessageBox::RejectRole);
    about.exec();
}

void WindowMenu::showTexts() {
    mTasks->setText(Lang::toolsScheduleTaskTitle());
    mSettings->setText(Lang::menuSettings());
    mUpdates->setText(Lang::menuCheckforUpdates());
    mAbout->setText(Tools::fillTextMarkers(Lang::menuAbout()));
    mQuit->setText(Lang::btnExit());
    mButton->setAccessibleName(Lang::menuTools());
    mButton->setToolTip(Lang::menuTools());
}

void WindowMenu::showIcons(const QPalette &palette) {
    mTasks->setIcon(ui::icon(QStringLiteral("tasks"), palette));
    mSettings->setIcon(ui::icon(QStringLiteral("settings"), palette));
    mButton->setIcon(ui::icon(QStringLiteral("menu"), palette));
}

} // namespace cantorel::ui
