#pragma once

#include "platform/foundation/DefaultsDomain.h"

#include <QByteArray>
#include <QRectF>
#include <QString>
#include <QVariant>

namespace cantorel {

// The typed layer over the application's defaults domain. Setters save at once and answer whether that succeeded;
// getters answer the default when nothing is stored. Any thread. A save that fails is logged once.

// The identifiers under which the settings are stored, now and by the application's former version.
inline constexpr const char *kBundleIdentifier = "com.tessolar.Cantorel";
inline constexpr const char *AppOldBundleId = "com.tessolar.CantorelClassic";

// The application's own domain; lives as long as the process.
foundation::DefaultsDomain &standardUserDefaults();
// What the former version left behind; only read.
const foundation::DefaultsDomain &formerUserDefaults();

// An empty hook, called once at start-up.
void UserDefaultInit();

bool ZQUserDefaultSetValue_NSInteger(qint64 value, const QString &key);
bool ZQUserDefaultSetValue_BOOL(bool value, const QString &key);
bool ZQUserDefaultSetValue_Double(double value, const QString &key);
bool ZQUserDefaultSetValue_NSRect(const QString &key, const QRectF &rect); // the key comes first, as fixed
bool ZQUserDefaultSetValue_Array(const QVariantList &array, const QString &key);
bool ZQUserDefaultSetValue_Object(const QVariant &object, const QString &key);

QString ZQUserDefaultGetNSStringValue(const QString &key, const QString &defaultValue);
qint64 ZQUserDefaultGetNSIntegerValue(const QString &key, qint64 defaultValue);
bool ZQUserDefaultGetBoolValue(const QString &key, bool defaultValue);
double ZQUserDefaultGetDoubleValue(const QString &key, double defaultValue);
// The elements are property-list values or foundation::ArchivedObject. Empty data is the default; a damaged archive is
// an empty array.
QVariantList ZQUserDefaultGetArray(const QString &key, const QVariantList &defaultValue);
QRectF ZQUserDefaultGetRect(const QString &key, const QRectF &defaultValue);
QByteArray ZQUserDefaultGetDataValue(const QString &key, const QByteArray &defaultValue);
QVariant ZQUserDefaultGetObjectValue(const QString &key, const QVariant &defaultValue);

} // namespace cantorel
