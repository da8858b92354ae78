#include "settings/UserDefaultFunctions.h"

#include "platform/foundation/KeyedArchiver.h"
#include "platform/foundation/PropertyList.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/AppSettings.h"
#include "tests/support/OrdinaryFile.h"

#include <gtest/gtest.h>

#include <limits>

namespace cantorel {
namespace {

const QString kKey = "someKey";

void storeFormer(const QVariantMap &content) {
    test::store(foundation::configurationFolder() + "/com.tessolar.CantorelClassic.plist",
                foundation::propertyListXml(content));
}

TEST(UserDefaultFunctions, ValuesLieInTheFileOfTheIdentifierAsSoonAsTheyAreSet) {
    EXPECT_TRUE(ZQUserDefaultSetValue_NSInteger(std::numeric_limits<qint64>::min(), kKey));
    EXPECT_TRUE(test::contents(foundation::configurationFolder() + "/com.tessolar.Cantorel.plist")
                    .contains("<integer>-9223372036854775808</integer>"));
    EXPECT_EQ(ZQUserDefaultGetNSIntegerValue(kKey, 0), std::numeric_limits<qint64>::min());
    EXPECT_TRUE(ZQUserDefaultSetValue_Double(0.1, kKey));
    EXPECT_EQ(ZQUserDefaultGetDoubleValue(kKey, 0), 0.1);
    EXPECT_TRUE(ZQUserDefaultSetValue_Double(-2.75, kKey));
    EXPECT_EQ(ZQUserDefaultGetNSIntegerValue(kKey, 0), -2); // cut, not rounded
    EXPECT_TRUE(ZQUserDefaultSetValue_BOOL(false, kKey));
    EXPECT_FALSE(ZQUserDefaultGetBoolValue(kKey, true));
    EXPECT_TRUE(ZQUserDefaultSetValue_Object("é", kKey));
    EXPECT_EQ(ZQUserDefaultGetNSStringValue(kKey, {}), "é");
}

TEST(UserDefaultFunctions, EmptyDataIsTheDefaultAndADamagedArchiveIsNothing) {
    const QVariantList fallback{1};
    EXPECT_EQ(ZQUserDefaultGetArray(kKey, fallback), fallback);
    ASSERT_TRUE(ZQUserDefaultSetValue_Object(QByteArray(), kKey));
    EXPECT_EQ(ZQUserDefaultGetArray(kKey, fallback), fallback);
    ASSERT_TRUE(ZQUserDefaultSetValue_Object(QByteArray("damaged"), kKey));
    EXPECT_EQ(ZQUserDefaultGetArray(kKey, fallback), QVariantList());
    EXPECT_EQ(ZQUserDefaultGetRect(kKey, QRectF(1, 2, 3, 4)), QRectF());
    ASSERT_TRUE(ZQUserDefaultSetValue_Array({}, kKey));
    EXPECT_EQ(ZQUserDefaultGetArray(kKey, fallback), QVariantList());
}

TEST(UserDefaultFunctions, ArraysOfObjectsAndRectanglesAreKeyedArchives) {
    const foundation::ArchivedObject object{"ScheduleTaskInfo", {{"name", "x"}}};
    const QVariantList list{QVariant::fromValue(object)};
    EXPECT_TRUE(ZQUserDefaultSetValue_Array(list, kKey));
    EXPECT_EQ(ZQUserDefaultGetArray(kKey, {}), list);
    EXPECT_TRUE(ZQUserDefaultGetDataValue(kKey, {}).startsWith("bplist00"));
    EXPECT_EQ(ZQUserDefaultGetRect("missing", QRectF(1, 2, 3, 4)), QRectF(1, 2, 3, 4));
    EXPECT_TRUE(ZQUserDefaultSetValue_NSRect(kKey, QRectF(-1, 2.5, 3, 4)));
    EXPECT_EQ(ZQUserDefaultGetRect(kKey, {}), QRectF(-1, 2.5, 3, 4));
}

TEST(MigratingRead, TheFormerVersionIsReadUntilTheFirstWriteOfTheKey) {
    storeFormer({{"autoFilterSeconds", 77},
                 {"convertOutputFolder", "/tmp"},
                 {"recordedList", foundation::archivedData(QVariantList{"old"})}});
    AppSettings::initSettingInNeed(); // registered defaults come last, though one names the key
    EXPECT_EQ(AppSettings::autoFilterSeconds(), 77);
    EXPECT_EQ(AppSettings::recordedMovieList(), QVariantList{"old"});
    EXPECT_NE(AppSettings::convertOutputPath(), "/tmp");
    EXPECT_TRUE(standardUserDefaults().storedObjects().isEmpty()); // read, not copied
    AppSettings::setAutoFilterSeconds(8);
    EXPECT_EQ(AppSettings::autoFilterSeconds(), 8);
    EXPECT_EQ(formerUserDefaults().ownObject("autoFilterSeconds"), 77);
}

TEST(MigratingRead, ValuesAreReadFromTheirDescription) {
    const auto stored = [](const QVariant &value) { ASSERT_TRUE(ZQUserDefaultSetValue_Object(value, kKey)); };
    const struct {
        QVariant value;
        int integer;
        bool boolean;
        double real;
    } cases[] = {{"12", 12, true, 12},          {"yes", 0, true, 0},
                 {" -007x", -7, true, -7},      {true, 1, true, 1},
                 {2.75, 2, true, 2.75},         {qlonglong(1) << 40, 2147483647, true, 1099511627776.0},
                 {"0.5", 0, false, 0.5},        {QByteArray("\x01"), 0, false, 0},
                 {QVariantList{1}, 0, false, 0}};
    for (const auto &c : cases) {
        stored(c.value);
        EXPECT_EQ(AppSettings::getFromUserDefaults_Integer(kKey, -1), c.integer) << c.value.typeName();
        EXPECT_EQ(AppSettings::getFromUserDefaults_BOOL(kKey, !c.boolean), c.boolean) << c.value.typeName();
        EXPECT_EQ(AppSettings::getFromUserDefaults_Double(kKey, -1), c.real) << c.value.typeName();
    }
    EXPECT_EQ(AppSettings::getFromUserDefaults_Integer("missing", -1), -1);
    stored(5);
    EXPECT_EQ(AppSettings::getFromUserDefaults_String(kKey, {}), "5");
}

} // namespace
} // namespace cantorel
