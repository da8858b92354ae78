#include "ui/UpdateWindow.h"

#include "lang/Lang.h"
#include "settings/AppSettings.h"

#include <QBoxLayout>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>

namespace cantorel::ui {

UpdateWindow::UpdateWindow(const UpdateDescription &description, QWidget *parent) : QDialog(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(AppSettings::appName());
    QString text = Lang::updateNewVersionIsAvailable();
    text.replace(QLatin1String("[#AppName#]"), AppSettings::appName());
    text.replace(QLatin1String("[#NewLine#]"), QStringLiteral("\n"));
    auto *question = new QLabel(text, this);
    auto *version = new QLabel(Lang::windowVersion().replace(QLatin1String("[#Count#]"), description.AppVersion), this);
    for (QLabel *label : {question, version})
        label->setTextFormat(Qt::PlainText);
    auto *changes = new QPlainTextEdit(description.AppChangeLogs, this);
    changes->setReadOnly(true);
    changes->setObjectName(QStringLiteral("changes"));
    changes->setAccessibleName(Lang::windowWhatIsNew());
    changes->setVisible(!description.AppChangeLogs.isEmpty());

    auto *buttons = new QDialogButtonBox(this);
    auto *download = buttons->addButton(Lang::windowDownload(), QDialogButtonBox::AcceptRole);
    auto *skip = buttons->addButton(Lang::windowSkipVersion(), QDialogButtonBox::DestructiveRole);
    buttons->addButton(Lang::windowLater(), QDialogButtonBox::RejectRole);
    download->setObjectName(QStringLiteral("download"));
    skip->setObjectName(QStringLiteral("skip"));
    // Only pages of the web are opened, whatever the server names.
    const QUrl address(description.AppUpdateAddress);
    const bool isPage = address.scheme() == QLatin1String("https") || address.scheme() == QLatin1String("http");
    download->setEnabled(isPage);
    connect(buttons, &QDialogButtonBox::accepted, this, [this, address] {
        QDesktopServices::openUrl(address);
        close();
    });
    connect(skip, &QPushButton::clicked, this, [this, version = description.versionID()] {
        AppSettings::setUpdateSkipVersionID(version);
        close();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *column = new QVBoxLayout(this);
    column->addWidget(question);
    column->addWidget(version);
    column->addWidget(changes, 1);
    column->addWidget(buttons);
}

} // namespace cantorel::ui
