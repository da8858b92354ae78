#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace cantorel::foundation {

// One element of a document, which must outlive it.
class XmlElement {
public:
    // Null when the element does not have it; empty when it is empty.
    QString attribute(const char *name) const;
    // Its text and the text of all elements in it.
    QString text() const;

private:
    friend class XmlDocument;
    explicit XmlElement(void *node) : mNode(node) {}
    void *mNode;
};

// An XML text, read tolerantly: broken parts are skipped where possible. Loads nothing from outside the text, and
// refuses a text that declares entities. One thread at a time.
class XmlDocument {
public:
    // Fails when there is nothing that could be read; the failure's detail says why. An encoding named here
    // overrides the one that the document declares.
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
