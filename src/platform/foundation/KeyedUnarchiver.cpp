#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/KeyedArchiver.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace cantorel::foundation {

namespace {

constexpr int kDeepest = 100;

const QString kItems = QStringLiteral("NS.objects");

// Makes objects as they are named. One that is named again is made a second time and kept from then on, so that an
// archive whose objects are named once, as almost all are, is read without keeping any.
class Unarchiver {
public:
    explicit Unarchiver(BinaryPlistReader &reader) : mReader(reader) {}

    std::optional<QVariant> unarchive() { return referenced(root(), 0); }

    bool unarchiveItems(const std::function<void(const QVariant &)> &take) {
        const Item list = root();
        if (list.kind != Kind::Uid || list.uid >= mObjects.size())
            return false;
        const auto number = static_cast<std::size_t>(list.uid);
        mState[number] = State::Open;
        const auto values = fields(mReader.item(mObjects[number]));
        const auto className = values ? classNameOf(*values) : std::nullopt;
        return className && isList(*className) && eachItem(*values, kItems, 0, take);
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
    enum class State : std::uint8_t { Unread, Open, NamedOnce, Kept };

    // The reference to the object that was archived; invalid when there is none.
    Item root() {
        const auto whole = fields(mReader.item(mReader.top()));
        if (!whole)
            return {};
        auto objects = itemAt(*whole, QStringLiteral("$objects"));
        const auto top = fields(itemAt(*whole, QStringLiteral("$top")));
        if (objects.kind != Kind::Array || !top)
            return {};
        mObjects = std::move(objects.refs);
        mState.assign(mObjects.size(), State::Unread);
        return itemAt(*top, QStringLiteral("root"));
    }

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
        if (mState[number] == State::Kept)
            return mKept.value(number);
        const State before = std::exchange(mState[number], State::Open);
        auto value = before == State::Open ? std::nullopt : object(mReader.item(mObjects[number]), depth);
        if (!value)
            return std::nullopt;
        if (before == State::NamedOnce)
            mKept.insert(number, *value);
        mState[number] = before == State::NamedOnce ? State::Kept : State::NamedOnce;
        return value;
    }

    static bool isOneOf(const QString &className, std::initializer_list<const char *> names) {
        return std::any_of(names.begin(), names.end(),
                           [&](const char *name) { return className == QLatin1String(name); });
    }

    static bool isList(const QString &className) {
        return isOneOf(className, {"NSArray", "NSMutableArray", "NSSet", "NSMutableSet"});
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
        if (isList(*className))
            return list(*values, kItems, depth);
        if (isOneOf(*className, {"NSDictionary", "NSMutableDictionary"}))
            return map(*values, depth);
        if (isOneOf(*className, {"NSDate"})) {
            const auto time = scalar(*values, QStringLiteral("NS.time"), QMetaType::Double);
            return time ? std::optional<QVariant>(dateFromReference(time->toDouble())) : std::nullopt;
        }
        if (isOneOf(*className, {"NSString", "NSMutableString"}))
            return scalar(*values, QStringLiteral("NS.string"), QMetaType::QString);
        if (isOneOf(*className, {"NSData", "NSMutableData"}))
            return scalar(*values, QStringLiteral("NS.data"), QMetaType::QByteArray);
        if (isOneOf(*className, {"NSValue"}))
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

    // Whether there is a list under the key and all its items could be made; those before the first that could not were
    // given.
    bool eachItem(const Fields &values, const QString &key, int depth,
                  const std::function<void(const QVariant &)> &take) {
        const Item items = itemAt(values, key);
        if (items.kind != Kind::Array)
            return false;
        for (const Ref ref : items.refs) {
            const auto value = referenced(mReader.item(ref), depth + 1);
            if (!value)
                return false;
            take(*value);
        }
        return true;
    }

    std::optional<QVariantList> list(const Fields &values, const QString &key, int depth) {
        QVariantList result;
        const bool isWhole = eachItem(values, key, depth, [&](const QVariant &value) { result << value; });
        return isWhole ? std::optional(result) : std::nullopt;
    }

    std::optional<QVariant> map(const Fields &values, int depth) {
        const auto keys = list(values, QStringLiteral("NS.keys"), depth);
        const auto items = list(values, kItems, depth);
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
        return QVariant::fromValue(result);
    }

    BinaryPlistReader &mReader;
    std::vector<Ref> mObjects;
    std::vector<State> mState;
    QHash<std::size_t, QVariant> mKept;
    QHash<Ref, QString> mClassNames;
};

} // namespace

std::optional<QVariant> unarchivedObject(const QByteArray &archive) {
    auto reader = BinaryPlistReader::open(archive);
    return reader ? Unarchiver(*reader).unarchive() : std::nullopt;
}

bool unarchiveItems(const QByteArray &archive, const std::function<void(const QVariant &item)> &take) {
    auto reader = BinaryPlistReader::open(archive);
    return reader && Unarchiver(*reader).unarchiveItems(take);
}

} // namespace cantorel::foundation
