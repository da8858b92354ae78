#include "ui/FileDialogs.h"

#include "lang/Lang.h"
#include "platform/desktop/Services.h"
#include "settings/AppSettings.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QUrl>

#include <utility>

namespace cantorel::ui {

namespace {

using desktop::FileChooser;
using What = FileChooser::Question::What;
using Chosen = std::function<void(const QStringList &)>;

void chooseHere(QWidget &asking, const FileChooser::Question &question, const Chosen &chosen) {
    auto *dialog = new QFileDialog(&asking, question.title, question.folder);
    dialog->setObjectName(QStringLiteral("fileDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(question.what == What::Files     ? QFileDialog::ExistingFiles
                        : question.what == What::OneFile ? QFileDialog::ExistingFile
                        : question.what == What::NewFile ? QFileDialog::AnyFile
                                                         : QFileDialog::Directory);
    QStringList filters;
    for (const FileChooser::Filter &filter : question.filters) {
        const QString patterns = QStringLiteral("*.") + filter.extensions.join(QLatin1String(" *."));
        filters << QStringLiteral("%1 (%2)").arg(filter.name,
                                                 filter.extensions.isEmpty() ? QStringLiteral("*") : patterns);
    }
    if (!filters.isEmpty())
        dialog->setNameFilters(filters);
    if (question.what == What::NewFile) {
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setOption(QFileDialog::DontConfirmOverwrite);
        dialog->selectFile(question.name);
    }
    QObject::connect(dialog, &QFileDialog::filesSelected, &asking, chosen);
    dialog->open();
}

void choose(QWidget &asking, FileChooser::Question question, Chosen chosen) {
    FileChooser *chooser = desktop::InstalledServices::current().chooser.get();
    if (chooser == nullptr)
        return chooseHere(asking, question, chosen);
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        question.x11Parent = asking.window()->winId();
    const QPointer<QWidget> self(&asking);
    chooser->ask(question, [self, question, chosen = std::move(chosen)](const std::optional<QStringList> &paths) {
        if (!self)
            return;
        if (!paths)
            chooseHere(*self, question, chosen);
        else if (!paths->isEmpty())
            chosen(*paths);
    });
}

} // namespace

void chooseFiles(QWidget &asking, const QString &title, std::function<void(const QStringList &)> chosen) {
    choose(asking, {.what = What::Files, .title = title}, std::move(chosen));
}

void chooseFolder(QWidget &asking, const QString &title, const QString &folder,
                  std::function<void(const QString &)> chosen) {
    choose(asking, {.what = What::Folder, .title = title, .folder = folder},
           [chosen = std::move(chosen)](const QStringList &paths) { chosen(paths.constFirst()); });
}

void chooseFile(QWidget &asking, const QString &title, const QString &folder, const FileChooser::Filter &filter,
                std::function<void(const QString &)> chosen) {
    choose(asking,
           {.what = What::OneFile, .title = title, .folder = folder, .filters = {filter, {Lang::windowAllFiles(), {}}}},
           [chosen = std::move(chosen)](const QStringList &paths) { chosen(paths.constFirst()); });
}

FileChooser::Filter soundFiles() { return {Lang::windowSoundFiles(), AppSettings::supportAudioTypes()}; }

void chooseNewFile(QWidget &asking, const QString &title, const QString &folder, const QString &name,
                   std::function<void(const QString &)> chosen) {
    choose(asking, {.what = What::NewFile, .title = title, .folder = folder, .name = name},
           [chosen = std::move(chosen)](const QStringList &paths) { chosen(paths.constFirst()); });
}

QStringList localFiles(const QMimeData &data) {
    QStringList files;
    for (const QUrl &url : data.urls())
        if (url.isLocalFile())
            files << url.toLocalFile();
    return files;
}

} // namespace cantorel::ui
