#include "platform/foundation/XmlPropertyList.h"

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/XmlHandles.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel::foundation {

namespace {

constexpr std::size_t kDeepest = 200; // containers in each other
const QByteArray kHead =
    QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n");

bool isSpace(QByteArrayView text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

// All of the text as a number, or nothing.
template <class Number> std::optional<Number> numberOf(QByteArrayView text, auto... base) {
    Number number{};
    const auto [end, error] = std::from_chars(text.begin(), text.end(), number, base...);
    return error == std::errc() && end == text.end() ? std::optional(number) : std::nullopt;
}

std::optional<QVariant> integerOf(QByteArrayView text) {
    const bool isNegative = text.startsWith('-');
    if (isNegative || text.startsWith('+'))
        text = text.sliced(1);
    const bool isHex = text.startsWith("0x") || text.startsWith("0X");
    const auto number = numberOf<quint64>(isHex ? text.sliced(2) : text, isHex ? 16 : 10);
    constexpr quint64 kMost = std::numeric_limits<qint64>::max();
    if (!number || (isNegative && *number > kMost + 1))
        return {};
    if (isNegative)
        return QVariant(static_cast<qlonglong>(0 - *number));
    return *number > kMost ? QVariant(qulonglong(*number)) : QVariant(static_cast<qlonglong>(*number));
}

// The value of an element that holds only text; nothing if it is not such an element.
std::optional<QVariant> scalarOf(QByteArrayView element, const QByteArray &text) {
    const QByteArray trimmed = text.trimmed();
    if (element == "string")
        return QString::fromUtf8(text);
    if (element == "data")
        return QByteArray::fromBase64(text);
    if (element == "true" || element == "false")
        return trimmed.isEmpty() ? std::optional(QVariant(element == "true")) : std::nullopt;
    if (element == "integer")
        return integerOf(trimmed);
    if (element == "real") {
        const auto number = numberOf<double>(QByteArrayView(trimmed).sliced(trimmed.startsWith('+') ? 1 : 0));
        return number ? std::optional(QVariant(*number)) : std::nullopt;
    }
    if (element == "date") {
        const auto date = QDateTime::fromString(QString::fromLatin1(trimmed), Qt::ISODate);
        return date.isValid() ? std::optional(QVariant(date.toUTC())) : std::nullopt;
    }
    return {};
}

// Takes what the parser meets and makes the value of it.
class ListBuilder {
public:
    explicit ListBuilder(xmlParserCtxt *parser) : mParser(parser) {
        xmlSAXHandler handler = {};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = [](void *self, const xmlChar *name, auto...) { of(self).begin(viewOf(name)); };
        handler.endElementNs = [](void *self, const xmlChar *, auto...) { of(self).end(); };
        handler.characters = handler.ignorableWhitespace =
            handler.cdataBlock = [](void *self, const xmlChar *text, int length) {
                of(self).text({reinterpret_cast<const char *>(text), length}); // no end is marked there
            };
        handler.reference = [](void *self, const xmlChar *) { of(self).refuse("an entity"); };
        handler.entityDecl = [](void *self, auto...) { of(self).refuse("a declared entity"); };
        handler.unparsedEntityDecl = [](void *self, auto...) { of(self).refuse("a declared entity"); };
        *parser->sax = handler;
        parser->userData = this;
    }

    const char *trouble() const { return mTrouble; }
    std::optional<QVariant> value;

private:
    struct Container {
        QVariantMap map;
        QVariantList list;
        bool isMap = false;
        std::optional<QString> key; // of the value that comes next
    };

    static ListBuilder &of(void *self) { return *static_cast<ListBuilder *>(self); }
    static QByteArrayView viewOf(const xmlChar *text) { return reinterpret_cast<const char *>(text); }

    void refuse(const char *why) {
        if (mTrouble == nullptr)
            mTrouble = why;
        xmlStopParser(mParser);
    }

    void begin(QByteArrayView name) {
        if (!mElement.isEmpty()) {
            refuse("an element within a value");
        } else if (name == "plist") {
            if (mIsPlist || value || !mOpen.empty())
                refuse("a list within a list");
            mIsPlist = true;
        } else if (name == "dict" || name == "array") {
            if (mOpen.size() >= kDeepest)
                refuse("nested too deeply");
            mOpen.push_back({{}, {}, name == "dict", {}});
        } else {
            mElement = name.toByteArray();
        }
    }

    void text(QByteArrayView text) {
        if (!mElement.isEmpty())
            mText += text;
        else if (!isSpace(text))
            refuse("text outside of a value");
    }

    void end() {
        if (!mElement.isEmpty()) {
            const QByteArray element = std::exchange(mElement, {}), text = std::exchange(mText, {});
            Container *const map = !mOpen.empty() && mOpen.back().isMap ? &mOpen.back() : nullptr;
            if (element == "key" && map != nullptr && !map->key)
                map->key = QString::fromUtf8(text);
            else if (auto scalar = scalarOf(element, text))
                put(*std::move(scalar));
            else
                refuse("an element that is no value");
        } else if (!mOpen.empty()) {
            const Container whole = std::move(mOpen.back());
            mOpen.pop_back();
            if (whole.key)
                refuse("a key without a value");
            put(whole.isMap ? QVariant(whole.map) : QVariant(whole.list));
        }
    }

    void put(QVariant made) {
        if (mOpen.empty()) {
            if (value)
                refuse("several values");
            value = std::move(made);
        } else if (Container &into = mOpen.back(); !into.isMap) {
            into.list.append(std::move(made));
        } else if (!into.key) {
            refuse("a value without a key");
        } else {
            into.map.insert(*into.key, std::move(made));
            into.key.reset();
        }
    }

    xmlParserCtxt *const mParser;
    bool mIsPlist = false;
    std::vector<Container> mOpen;
    QByteArray mElement, mText; // of the value that is open
    const char *mTrouble = nullptr;
};

void writeText(QByteArray &xml, const QString &text) {
    QString clean;
    clean.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            clean.append(c).append(text[++i]);
        else if (c == QLatin1Char('&'))
            clean.append(QLatin1String("&amp;"));
        else if (c == QLatin1Char('<'))
            clean.append(QLatin1String("&lt;"));
        else if (c == QLatin1Char('>'))
            clean.append(QLatin1String("&gt;"));
        else if (c == QLatin1Char('\r')) // as itself it would be read as a line feed
            clean.append(QLatin1String("&#13;"));
        else if ((c >= QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n')) && !c.isSurrogate()
                 && c.unicode() < 0xFFFE)
            clean.append(c);
    }
    xml += clean.toUtf8();
}

void writeElement(QByteArray &xml, const char *name, const QByteArray &text) {
    xml.append('<').append(name).append('>').append(text).append("</").append(name).append(">\n");
}

void writeValue(QByteArray &xml, const QVariant &value, int depth) {
    if (value.metaType() == QMetaType::fromType<PropertyListUid>()) { // as other tools write it
        writeValue(xml, QVariantMap{{QStringLiteral("CF$UID"), value.value<PropertyListUid>().value}}, depth);
        return;
    }
    xml.append(depth, '\t');
    switch (value.typeId()) {
    case QMetaType::Bool:
        xml += value.toBool() ? "<true/>\n" : "<false/>\n";
        return;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        writeElement(xml, "integer", QByteArray::number(value.toLongLong()));
        return;
    case QMetaType::ULongLong:
        writeElement(xml, "integer", QByteArray::number(value.toULongLong()));
        return;
    case QMetaType::Float:
    case QMetaType::Double:
        writeElement(xml, "real", QByteArray::number(value.toDouble(), 'g', QLocale::FloatingPointShortest));
        return;
    case QMetaType::QByteArray:
        writeElement(xml, "data", value.toByteArray().toBase64());
        return;
    case QMetaType::QDateTime:
        writeElement(xml, "date", value.toDateTime().toUTC().toString(Qt::ISODate).toLatin1());
        return;
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        xml += "<array>\n";
        for (const QVariant &item : value.toList())
            writeValue(xml, item, depth + 1);
        xml.append(depth, '\t').append("</array>\n");
        return;
    }
    case QMetaType::QVariantMap: {
        xml += "<dict>\n";
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            xml.append(depth + 1, '\t').append("<key>");
            writeText(xml, entry.key());
            xml += "</key>\n";
            writeValue(xml, *entry, depth + 1);
        }
        xml.append(depth, '\t').append("</dict>\n");
        return;
    }
    default:
        xml += "<string>";
        writeText(xml, value.toString());
        xml += "</string>\n";
    }
}

} // namespace

Result<QVariant> readXmlPropertyList(const QByteArray &bytes) {
    const auto broken = [](const char *why) {
        return Failure{QStringLiteral("This is no property list."), QString::fromLatin1(why)};
    };
    if (bytes.size() > std::numeric_limits<int>::max())
        return broken("too large");
    const XmlParser parser(xmlNewParserCtxt());
    if (!parser)
        return broken("no memory");
    ListBuilder builder(parser.get());
    // No limit of the library's own on what a comment may hold; depth is ours to count, and there are no entities.
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    // The builder has the value. The document is empty; the library makes one for a declaration.
    const XmlTree document(
        xmlCtxtReadMemory(parser.get(), bytes.constData(), static_cast<int>(bytes.size()), nullptr, nullptr, kOptions));
    if (builder.trouble() != nullptr)
        return broken(builder.trouble());
    if (parser->wellFormed == 0 || !builder.value)
        return broken("damaged XML property list");
    return *std::move(builder.value);
}

QByteArray propertyListXml(const QVariant &value) {
    QByteArray xml = kHead;
    writeValue(xml, value, 0);
    return xml + "</plist>\n";
}

} // namespace cantorel::foundation
