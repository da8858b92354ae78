#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace cantorel::foundation {

// One element of a document, and as long as that.
class XmlElement {
public:
    // Null when the element does not have it; empty when it is empty.
    QString attribute(const char *name) const;
    // What stands in it and in all that it holds.
    QString text() const;

private:
    friend class XmlDocument;
    explicit XmlElement(void *node) : mNode(node) {}
    void *mNode;
};

// An XML text, read tolerantly: what is broken in it is passed over as far as that can be. Reaches for nothing outside
// the text, and reads none that declares entities. One thread at a time.
class XmlDocument {
public:
    // Fails when there is nothing that could be read; the failure's detail says why. An encoding that is named here
    // counts, whatever the document says of its own.
    static Result<XmlDocument> parse(const QByteArray &bytes, const char *encoding = nullptr);

    // The first element that the path finds from the root; nothing for a path that finds none or is no path.
    std::optional<XmlElement> first(const char *path) const;
    // All that it finds, in the order of the document.
    std::vector<XmlElement> all(const char *path) const;

private:
    explicit XmlDocument(std::shared_ptr<void> document) : mDocument(std::move(document)) {}
    std::shared_ptr<void> mDocument;
};

} // namespace cantorel::foundation
