#include "settings/UserDefaultFunctions.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "platform/foundation/KeyedArchiver.h"

#include <algorithm>

namespace cantorel {

namespace {

bool store(const QString &key, const QVariant &value) {
    auto &defaults = standardUserDefaults();
    return defaults.setObject(key, value) && defaults.synchronize();
}

// The stored data, or nothing when it is missing or something else is stored.
std::optional<QByteArray> storedData(const QString &key) {
    const QVariant value = standardUserDefaults().object(key);
    if (value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray();
}

} // namespace

foundation::DefaultsDomain &standardUserDefaults() {
    static foundation::DefaultsDomain domain(
        QString::fromLatin1(kBundleIdentifier),
        [](const foundation::Failure &failure) { Log(Lang::english(failure.sentence)); });
    return domain;
}

const foundation::DefaultsDomain &formerUserDefaults() {
    static const foundation::DefaultsDomain domain(QString::fromLatin1(AppOldBundleId));
    return domain;
}

void UserDefaultInit() {}

bool ZQUserDefaultSetValue_NSInteger(qint64 value, const QString &key) { return store(key, value); }

bool ZQUserDefaultSetValue_BOOL(bool value, const QString &key) { return store(key, value); }

bool ZQUserDefaultSetValue_Double(double value, const QString &key) { return store(key, value); }

bool ZQUserDefaultSetValue_NSRect(const QString &key, const QRectF &rect) {
    return store(key, foundation::archivedData(rect));
}

bool ZQUserDefaultSetValue_Array(const QVariantList &array, const QString &key) {
    return store(key, foundation::archivedData(array));
}

bool ZQUserDefaultSetValue_Object(const QVariant &object, const QString &key) { return store(key, object); }

QString ZQUserDefaultGetNSStringValue(const QString &key, const QString &defaultValue) {
    const QVariant value = standardUserDefaults().object(key);
    return value.isValid() ? value.toString() : defaultValue;
}

qint64 ZQUserDefaultGetNSIntegerValue(const QString &key, qint64 defaultValue) {
    const QVariant value = standardUserDefaults().object(key);
    if (!value.isValid())
        return defaultValue;
    // A real number is cut, not rounded.
    return value.typeId() == QMetaType::Double ? static_cast<qint64>(std::clamp(value.toDouble(), -9.2e18, 9.2e18))
                                               : value.toLongLong();
}

bool ZQUserDefaultGetBoolValue(const QString &key, bool defaultValue) {
    const QVariant value = standardUserDefaults().object(key);
    return value.isValid() ? value.toBool() : defaultValue;
}

double ZQUserDefaultGetDoubleValue(const QString &key, double defaultValue) {
    const QVariant value = standardUserDefaults().object(key);
    return value.isValid() ? value.toDouble() : defaultValue;
}

QVariantList ZQUserDefaultGetArray(const QString &key, const QVariantList &defaultValue) {
    const auto data = storedData(key);
    if (!data || data->isEmpty())
        return defaultValue;
    return foundation::unarchivedObject(*data).value_or(QVariant()).toList();
}

QRectF ZQUserDefaultGetRect(const QString &key, const QRectF &defaultValue) {
    const auto data = storedData(key);
    if (!data || data->isEmpty())
        return defaultValue;
    return foundation::unarchivedObject(*data).value_or(QVariant()).toRectF();
}

QByteArray ZQUserDefaultGetDataValue(const QString &key, const QByteArray &defaultValue) {
    return storedData(key).value_or(defaultValue);
}

QVariant ZQUserDefaultGetObjectValue(const QString &key, const QVariant &defaultValue) {
    const QVariant value = standardUserDefaults().object(key);
    return value.isValid() ? value : defaultValue;
}

} // namespace cantorel
