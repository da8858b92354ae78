#include "platform/desktop/portal/PortalFileChooser.h"

#include "platform/desktop/portal/PortalCall.h"
#include "platform/desktop/portal/PortalFilter.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace cantorel::desktop {

namespace {

const QString kFileChooser = QStringLiteral("org.freedesktop.portal.FileChooser");
constexpr int kPatience = 3000; // milliseconds until the portal has begun to ask

QStringList localPaths(const QStringList &uris, FileChooser::Question::What what) {
    QStringList paths;
    for (const QUrl &url : QUrl::fromStringList(uris))
        if (url.isLocalFile())
            paths << url.toLocalFile();
    if (what == FileChooser::Question::What::Folder) // An old portal asks for a file all the same.
        for (QString &path : paths)
            path = QFileInfo(path).isDir() ? path : QFileInfo(path).path();
    return paths;
}

// The portal tells capital letters from small ones.
QString patternOf(const QString &extension) {
    QString pattern = QStringLiteral("*.");
    for (const QChar letter : extension)
        pattern += letter.isLetter() ? QStringLiteral("[%1%2]").arg(letter, letter.toUpper()) : QString(letter);
    return pattern;
}

QVariant filtersOf(const QList<FileChooser::Filter> &asked) {
    QList<PortalFilter> filters;
    for (const FileChooser::Filter &filter : asked) {
        filters.append({filter.name, {}});
        for (const QString &extension : filter.extensions)
            filters.last().patterns.append({0, patternOf(extension)});
        if (filter.extensions.isEmpty())
            filters.last().patterns.append({0, QStringLiteral("*")});
    }
    return QVariant::fromValue(filters);
}

} // namespace

PortalFileChooser::PortalFileChooser(std::function<QDBusConnection()> bus) : mBus(std::move(bus)) {
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
}

void PortalFileChooser::ask(const Question &question, Answer answered) {
    QDBusConnection bus = mBus();
    if (!bus.isConnected())
        return answered({});
    const QString token = QStringLiteral("cantorel_files_%1").arg(++mTokens);
    const QString request = portal::requestPath(bus, token);
    mAsked.insert(request, {question.what, std::move(answered)});
    bus.connect(portal::kService, request, portal::kRequest, QStringLiteral("Response"), this,
                SLOT(requestDidRespond(QDBusMessage)));
    const bool isNew = question.what == Question::What::NewFile;
    QVariantMap options{{QStringLiteral("handle_token"), token}, {QStringLiteral("modal"), true}};
    if (isNew)
        options.insert(QStringLiteral("current_name"), question.name);
    else {
        options.insert(QStringLiteral("multiple"), question.what == Question::What::Files);
        options.insert(QStringLiteral("directory"), question.what == Question::What::Folder);
    }
    if (!question.filters.isEmpty())
        options.insert(QStringLiteral("filters"), filtersOf(question.filters));
    if (!question.folder.isEmpty()) // in bytes that end with a zero
        options.insert(QStringLiteral("current_folder"), QFile::encodeName(question.folder) + '\0');
    const QString parent =
        question.x11Parent == 0 ? QString() : QStringLiteral("x11:%1").arg(question.x11Parent, 0, 16);
    auto *watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(portal::callTo(kFileChooser, isNew ? QStringLiteral("SaveFile") : QStringLiteral("OpenFile"),
                                     {parent, question.title, options}),
                      kPatience),
        this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, request] {
        watcher->deleteLater();
        if (!watcher->isError() || !mAsked.contains(request))
            return;
        // So that it does not ask once it has woken up.
        mBus().send(portal::callTo(portal::kRequest, QStringLiteral("Close"), {}, request));
        answer(request, {});
    });
}

void PortalFileChooser::requestDidRespond(const QDBusMessage &signal) {
    const auto asked = mAsked.constFind(signal.path());
    const QVariantList arguments = signal.arguments();
    if (asked == mAsked.constEnd() || arguments.size() < 2)
        return;
    const bool isChosen = arguments[0].toUInt() == 0;
    const QStringList uris = qdbus_cast<QVariantMap>(arguments[1]).value(QStringLiteral("uris")).toStringList();
    answer(signal.path(), isChosen ? localPaths(uris, asked->what) : QStringList());
}

void PortalFileChooser::answer(const QString &request, const std::optional<QStringList> &paths) {
    mBus().disconnect(portal::kService, request, portal::kRequest, QStringLiteral("Response"), this,
                      SLOT(requestDidRespond(QDBusMessage)));
    mAsked.take(request).answered(paths);
}

} // namespace cantorel::desktop
