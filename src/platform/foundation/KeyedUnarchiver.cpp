#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/KeyedArchiver.h"

#include <QDateTime>
#include <QStringList>

namespace cantorel::foundation {

namespace {

constexpr int kDeepest = 100;

class Unarchiver {
public:
    explicit Unarchiver(BinaryPlistReader &reader) : mReader(reader) {}

    std::optional<QVariant> unarchive() {
        const auto whole = fields(mReader.item(mReader.top()));
        if (!whole)
            return std::nullopt;
        const auto objects = itemAt(*whole, QStringLiteral("$objects"));
        const auto top = fields(itemAt(*whole, QStringLiteral("$top")));
        if (objects.kind != Kind::Array || !top)
            return std::nullopt;
        mObjects = objects.refs;
        mDone.resize(mObjects.size());
        mState.assign(mObjects.size(), State::Unread);
        return referenced(itemAt(*top, QStringLiteral("root")), 0);
    }

private:
    using Ref = BinaryPlistReader::Ref;
    using Item = BinaryPlistReader::Item;
    using Kind = BinaryPlistReader::Item::Kind;
    // What a dictionary holds, in its own order: mostly a handful, which is walked faster than looked up.
    struct Fields {
        std::vector<std::pair<QString, Ref>> entries;

        std::optional<Ref> find(const QString &key) const {
            for (const auto &[name, ref] : entries)
                if (name == key)
                    return ref;
            return std::nullopt;
        }
    };
    enum class State : std::uint8_t { Unread, Open, Done };

    std::optional<Fields> fields(const Item &item) {
        if (item.kind != Kind::Dictionary)
            return std::nullopt;
        Fields result;
        const std::size_t count = item.refs.size() / 2;
        result.entries.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const auto key = mReader.keyText(item.refs[i]);
            if (!key)
                return std::nullopt;
            result.entries.emplace_back(*key, item.refs[count + i]);
        }
        return result;
    }

    // What a dictionary holds under a key; invalid when it does not.
    Item itemAt(const Fields &fields, const QString &key) {
        const auto ref = fields.find(key);
        return ref ? mReader.item(*ref) : Item{};
    }

    // The object that a reference names.
    std::optional<QVariant> referenced(const Item &item, int depth) {
        if (item.kind != Kind::Uid || item.uid >= mObjects.size() || depth > kDeepest)
            return std::nullopt;
        const auto number = static_cast<std::size_t>(item.uid);
        if (number == 0)
            return QVariant();
        if (mState[number] == State::Open)
            return std::nullopt;
        if (mState[number] == State::Unread) {
            mState[number] = State::Open;
            auto value = object(mReader.item(mObjects[number]), depth);
            if (!value)
                return std::nullopt;
            mDone[number] = *std::move(value);
            mState[number] = State::Done;
        }
        return mDone[number];
    }

    std::optional<QVariant> object(const Item &item, int depth) {
        if (item.kind == Kind::Scalar)
            return item.value;
        const auto values = fields(item);
        if (!values)
            return std::nullopt;
        const auto className = classNameOf(*values);
        if (!className)
            return std::nullopt;
        const auto isOneOf = [&](std::initializer_list<const char *> names) {
            return std::any_of(names.begin(), names.end(),
                               [&](const char *name) { return *className == QLatin1String(name); });
        };
        if (isOneOf({"NSArray", "NSMutableArray", "NSSet", "NSMutableSet"}))
            return list(*values, QStringLiteral("NS.objects"), depth);
        if (isOneOf({"NSDictionary", "NSMutableDictionary"}))
            return map(*values, depth);
        if (isOneOf({"NSDate"})) {
            const auto time = scalar(*values, QStringLiteral("NS.time"), QMetaType::Double);
            return time ? std::optional<QVariant>(dateFromReference(time->toDouble())) : std::nullopt;
        }
        if (isOneOf({"NSString", "NSMutableString"}))
            return scalar(*values, QStringLiteral("NS.string"), QMetaType::QString);
        if (isOneOf({"NSData", "NSMutableData"}))
            return scalar(*values, QStringLiteral("NS.data"), QMetaType::QByteArray);
        if (isOneOf({"NSValue"}))
            return rectangle(*values, depth);
        return archivedObject(*className, *values, depth);
    }

    std::optional<QString> classNameOf(const Fields &values) {
        const Item reference = itemAt(values, QStringLiteral("$class"));
        if (reference.kind != Kind::Uid || reference.uid >= mObjects.size())
            return std::nullopt;
        const Ref described = mObjects[static_cast<std::size_t>(reference.uid)];
        if (const auto known = mClassNames.constFind(described); known != mClassNames.constEnd())
            return *known;
        const auto description = fields(mReader.item(described));
        const auto named = description ? description->find(QStringLiteral("$classname")) : std::nullopt;
        const auto name = named ? mReader.keyText(*named) : std::nullopt;
        if (name)
            mClassNames.insert(described, *name);
        return name;
    }

    std::optional<QVariant> scalar(const Fields &values, const QString &key, QMetaType::Type type) {
        const Item item = itemAt(values, key);
        if (item.kind != Kind::Scalar || item.value.typeId() != type)
            return std::nullopt;
        return item.value;
    }

    std::optional<QVariantList> list(const Fields &values, const QString &key, int depth) {
        const Item items = itemAt(values, key);
        if (items.kind != Kind::Array)
            return std::nullopt;
        QVariantList result;
        for (const Ref ref : items.refs) {
            auto value = referenced(mReader.item(ref), depth + 1);
            if (!value)
                return std::nullopt;
            result << *std::move(value);
        }
        return result;
    }

    std::optional<QVariant> map(const Fields &values, int depth) {
        const auto keys = list(values, QStringLiteral("NS.keys"), depth);
        const auto items = list(values, QStringLiteral("NS.objects"), depth);
        if (!keys || !items || keys->size() != items->size())
            return std::nullopt;
        QVariantMap result;
        for (qsizetype i = 0; i < keys->size(); ++i) {
            if ((*keys)[i].typeId() != QMetaType::QString)
                return std::nullopt;
            result.insert((*keys)[i].toString(), (*items)[i]);
        }
        return result;
    }

    std::optional<QVariant> rectangle(const Fields &values, int depth) {
        const auto text = referenced(itemAt(values, QStringLiteral("NS.rectval")), depth + 1);
        if (!text || text->typeId() != QMetaType::QString)
            return std::nullopt;
        QString numbers = text->toString();
        numbers.remove(QLatin1Char('{')).remove(QLatin1Char('}'));
        double sides[4];
        const QStringList parts = numbers.split(QLatin1Char(','));
        if (parts.size() != 4)
            return std::nullopt;
        for (int i = 0; i < 4; ++i) {
            bool isNumber = false;
            sides[i] = parts[i].trimmed().toDouble(&isNumber);
            if (!isNumber)
                return std::nullopt;
        }
        return QRectF(sides[0], sides[1], sides[2], sides[3]);
    }

    std::optional<QVariant> archivedObject(const QString &className, const Fields &values, int depth) {
        ArchivedObject result{className, {}};
        result.values.reserve(values.entries.size());
        for (const auto &[key, ref] : values.entries) {
            if (key == QLatin1String("$class"))
                continue;
            const Item item = mReader.item(ref);
            auto value = item.kind == Kind::Scalar ? std::optional(item.value) : referenced(item, depth + 1);
            if (!value)
                return std::nullopt;
            result.values[key] = *std::move(value);
        }
        return QVariant::fromValue(std::move(result));
    }

    BinaryPlistReader &mReader;
    std::vector<Ref> mObjects;
    std::vector<QVariant> mDone;
    std::vector<State> mState;
    QHash<Ref, QString> mClassNames;
};

} // namespace

std::optional<QVariant> unarchivedObject(const QByteArray &archive) {
    auto reader = BinaryPlistReader::open(archive);
    return reader ? Unarchiver(*reader).unarchive() : std::nullopt;
}

} // namespace cantorel::foundation
