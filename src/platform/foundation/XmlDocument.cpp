#include "platform/foundation/XmlDocument.h"

#include "platform/foundation/XmlHandles.h"

#include <span>

namespace cantorel::foundation {

namespace {

constexpr qsizetype kLargest = 8 << 20; // bytes; the longest that is read here is a language file of 60 KB

const xmlChar *xmlName(const char *text) { return reinterpret_cast<const xmlChar *>(text); }

// A null text is a null string.
QString stringOf(const XmlText &text) {
    return text ? QString::fromUtf8(reinterpret_cast<const char *>(text.get())) : QString();
}

void refuse(void *parser) {
    static_cast<xmlParserCtxt *>(parser)->_private = parser;
    xmlStopParser(static_cast<xmlParserCtxt *>(parser));
}

bool isRefused(const XmlParser &parser) { return parser->_private != nullptr; }

xmlDoc *docOf(const std::shared_ptr<void> &document) { return static_cast<xmlDoc *>(document.get()); }

} // namespace

QString XmlElement::attribute(const char *name) const {
    return stringOf(XmlText(xmlGetProp(static_cast<xmlNode *>(mNode), xmlName(name))));
}

QString XmlElement::text() const { return stringOf(XmlText(xmlNodeGetContent(static_cast<xmlNode *>(mNode)))); }

Result<XmlDocument> XmlDocument::parse(const QByteArray &bytes, const char *encoding) {
    const auto failed = [](const QString &why) {
        return Failure{QStringLiteral("This is no XML document."), why.trimmed()};
    };
    if (bytes.size() > kLargest)
        return failed(QStringLiteral("too large"));
    const XmlParser parser(xmlNewParserCtxt());
    if (!parser)
        return failed(QStringLiteral("no memory"));
    // A few declared entities can stand for gigabytes.
    parser->sax->entityDecl = [](void *parser, auto...) { refuse(parser); };
    parser->sax->unparsedEntityDecl = [](void *parser, auto...) { refuse(parser); };
    constexpr int kOptions = XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    std::shared_ptr<void> document(
        xmlCtxtReadMemory(parser.get(), bytes.constData(), static_cast<int>(bytes.size()), nullptr, encoding, kOptions),
        [](void *held) { xmlFreeDoc(static_cast<xmlDoc *>(held)); });
    if (isRefused(parser))
        return failed(QStringLiteral("it declares entities"));
    if (!document || !xmlDocGetRootElement(docOf(document))) {
        const xmlError *error = xmlCtxtGetLastError(parser.get());
        return failed(error ? QString::fromUtf8(error->message) : QStringLiteral("empty"));
    }
    return XmlDocument(std::move(document));
}

std::optional<XmlElement> XmlDocument::first(const char *path) const {
    const std::vector<XmlElement> found = all(path);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<XmlElement> XmlDocument::all(const char *path) const {
    const XmlSearch search(xmlXPathNewContext(docOf(mDocument)));
    if (!search)
        return {};
    xmlXPathSetContextNode(xmlDocGetRootElement(docOf(mDocument)), search.get());
    search->error = [](void *, xmlErrorPtr) {}; // An invalid path finds nothing, silently.
    const XmlFound found(xmlXPathEvalExpression(xmlName(path), search.get()));
    if (!found || found->type != XPATH_NODESET || xmlXPathNodeSetIsEmpty(found->nodesetval))
        return {};
    std::vector<XmlElement> elements;
    for (xmlNode *node : std::span(found->nodesetval->nodeTab, static_cast<size_t>(found->nodesetval->nodeNr)))
        if (node->type == XML_ELEMENT_NODE)
            elements.push_back(XmlElement(node));
    return elements;
}

} // namespace cantorel::foundation
