#include "util/tools/Link.h"

#include "log/Log.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/SearchPaths.h"
#include "platform/foundation/XmlDocument.h"

#include <QFile>
#include <QHash>

namespace cantorel {

namespace {

using Table = QHash<QString, QUrl>;

foundation::Guarded<Table> gLinks;

bool isOfTheWeb(const QUrl &url) {
    return url.isValid() && !url.host().isEmpty()
           && (url.scheme() == QStringLiteral("https") || url.scheme() == QStringLiteral("http"));
}

} // namespace

QString Link::resource() { return foundation::resourcePath(QStringLiteral("Link.xml")); }

bool Link::parseLinkWithFilePath(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const auto document = foundation::XmlDocument::parse(file.readAll());
    if (!document) {
        Log(QStringLiteral("Link: %1").arg(document.failure().detail));
        return false;
    }
    Table table;
    for (const foundation::XmlElement &element : document.value().all("//link")) {
        const QUrl url(element.attribute("url"), QUrl::StrictMode);
        if (isOfTheWeb(url))
            table.insert(element.attribute("name"), url);
    }
    gLinks.with([&](Table &links) { links = std::move(table); });
    return true;
}

QUrl Link::address(const QString &name) {
    return gLinks.with([&](const Table &links) { return links.value(name); });
}

} // namespace cantorel
