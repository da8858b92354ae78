#include "settings/AppSettings.h"

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/SearchPaths.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace cantorel {
namespace {

using test::touch;

// A value of the row's kind that is not its default and that its getter hands back unchanged.
QVariant otherValue(const SettingRow &row) {
    switch (row.kind) {
    case SettingKind::Integer:
        return row.fallback.toInt() + 1;
    case SettingKind::Boolean:
        return !row.fallback.toBool();
    case SettingKind::Text:
        return "other text";
    case SettingKind::Folder:
        return QDir::homePath();
    }
    return {};
}

TEST(SettingsTable, EveryOptionBeginsWithItsDefaultAndKeepsWhatIsSet) {
    std::set<QString> keys;
    for (const SettingRow &row : settingRows()) {
        EXPECT_TRUE(keys.insert(row.key).second) << row.key.toStdString();
        if (row.key == "isBeep" || row.key == "isBeepBeforeRecording")
            continue;
        EXPECT_EQ(row.get(), row.fallback) << row.key.toStdString();
        const QVariant other = otherValue(row);
        row.set(other);
        EXPECT_EQ(row.get(), other) << row.key.toStdString();
        EXPECT_EQ(row.get().typeId(), row.fallback.typeId()) << row.key.toStdString();
        EXPECT_EQ(foundation::DefaultsDomain(kBundleIdentifier).ownObject(row.key), other)
            << row.key.toStdString() << " is not stored under its key";
    }
    EXPECT_EQ(keys.size(), 38U);
}

TEST(SettingsTable, TheResourceOfRegisteredDefaultsAgreesWithTheTable) {
    const auto defaults = foundation::parsePropertyList(test::contents(foundation::resourcePath("UserDefaults.plist")));
    ASSERT_TRUE(defaults.ok());
    const QVariantMap map = defaults.value().toMap();
    EXPECT_FALSE(map.isEmpty());
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        const SettingRow *row = settingRow(entry.key());
        ASSERT_NE(row, nullptr) << entry.key().toStdString();
        EXPECT_EQ(entry.value(), row->fallback) << entry.key().toStdString();
    }
    AppSettings::initSettingInNeed();
    EXPECT_EQ(standardUserDefaults().object(map.firstKey()), map.first());
}

TEST(AppSettings, ABeepChoiceIsDeliberatelyWrittenWhereNothingReadsItAndOnlyWithTheNextSetting) {
    AppSettings::setIsBeepBeforeRecording(false);
    EXPECT_TRUE(AppSettings::isBeepBeforeRecording());
    const QString key = "isBeep";
    EXPECT_FALSE(foundation::DefaultsDomain(kBundleIdentifier).ownObject(key).isValid());
    AppSettings::setAudioFormat(1);
    EXPECT_EQ(foundation::DefaultsDomain(kBundleIdentifier).ownObject(key), false);
}

TEST(AppSettings, AFolderThatIsGoneOrAFileIsAnsweredByTheMusicFolderAndStaysStored) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("file");
    touch(file);
    for (const QString &stored : {QString(), folder.filePath("gone"), file}) {
        AppSettings::setOutputPath(stored);
        AppSettings::setConvertOutputPath(stored);
        EXPECT_EQ(AppSettings::outputPath(), AppSettings::defaultMusicDirectoryPath());
        EXPECT_EQ(AppSettings::convertOutputPath(), AppSettings::defaultMusicDirectoryPath());
        EXPECT_EQ(standardUserDefaults().object("outputFolderPath"), stored);
    }
}

TEST(AppSettings, HotKeysAreAnsweredInLowerCase) {
    AppSettings::setHotkeyStartRecording("CTRL CMD S");
    EXPECT_EQ(AppSettings::hotkeyStartRecording(), "ctrl cmd s");
    EXPECT_EQ(standardUserDefaults().object("hotkeyStartRecording"), "CTRL CMD S");
}

TEST(AppSettings, TheOldNamesOfPortugueseAreStoredAnew) {
    for (const char *old : {"Portugese", "Portuguese"}) {
        ASSERT_TRUE(ZQUserDefaultSetValue_Object(old, "Language"));
        EXPECT_EQ(AppSettings::appLanguage(), "PortugueseBrazil");
        EXPECT_EQ(standardUserDefaults().object("Language"), "PortugueseBrazil");
    }
}

TEST(AppSettings, TheOnlineLanguageIsAnsweredFirstAndFollowsTheChoice) {
    AppSettings::setOnlineLanguage("German");
    EXPECT_EQ(AppSettings::appLanguage(), "German");
    AppSettings::setAppLanguage("French");
    EXPECT_EQ(AppSettings::onlineLanguage(), "French");
    AppSettings::setOnlineLanguage({});
    AppSettings::setAppLanguage("Greek");
    EXPECT_EQ(AppSettings::onlineLanguage(), QString());
    EXPECT_EQ(AppSettings::appLanguage(), "Greek");
}

TEST(FreeFileName, TheNumberAtTheEndOfTheNameIsCountedUp) {
    const struct {
        const char *taken, *free;
    } cases[] = {
        {"Track3.mp3", "Track3-2.mp3"},
        {"Take-7.m4a", "Take-8.m4a"},
        {"Live-1999-Remix.mp3", "Live-1999-Remix-2.mp3"}, // "-1" is in it, and nothing is counted
        {"a-0-b.mp3", "a-1-b.mp3"},                       // deliberately: "-0" is counted
        {"a-10-1.mp3", "a-20-2.mp3"},                     // deliberately: every occurrence
        {"-.mp3", "--2.mp3"},
        {"n-9223372036854775807.mp3", "n-9223372036854775807-2.mp3"},
        {".hidden", ".hidden-2"},
    };
    for (const auto &c : cases) {
        const QTemporaryDir folder(QDir::tempPath() + "/zz");
        const QString path = folder.filePath(c.taken);
        EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace(path), path);
        touch(path);
        EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace(path), folder.filePath(c.free)) << c.taken;
    }
}

TEST(FreeFileName, ItIsCountedUntilItIsFreeAndAlwaysEnds) {
    const QTemporaryDir folder(QDir::tempPath() + "/zz");
    for (const char *name : {"Track", "Track-2", "Track-3", "Live-1999-Remix", "Live-1999-Remix-2"})
        touch(folder.filePath(name));
    const auto freeOf = [&](const char *name) {
        return AppSettings::checkFilePathIsExistAndAutoReplace(folder.filePath(name));
    };
    EXPECT_EQ(freeOf("Track"), folder.filePath("Track-4"));
    EXPECT_EQ(freeOf("Live-1999-Remix"), folder.filePath("Live-1999-Remix-3"));
    EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace({}), QString());
    EXPECT_NE(AppSettings::checkFilePathIsExistAndAutoReplace("/"), "/");
}

TEST(ChangeFileToExtension, TakesAFreeNameAndNeverLosesTheFile) {
    const QTemporaryDir folder(QDir::tempPath() + "/zz");
    const QString song = folder.filePath("Song.m4a");
    touch(song);
    touch(folder.filePath("Song.mp3"));
    EXPECT_EQ(AppSettings::changeFileToExtension("mp3", song), folder.filePath("Song-2.mp3"));
    EXPECT_EQ(AppSettings::changeFileToExtension("mp3", song), QString());
    EXPECT_FALSE(QFile::exists(song));
}

TEST(AppSettings, TheNumberOfTheNextRecordingCanAlwaysBeCountedUp) {
    AppSettings::setrecordNameBaseOn(std::numeric_limits<int>::max());
    AppSettings::setrecordNameBaseOn(AppSettings::recordNameBaseOn() + 1);
    EXPECT_GT(AppSettings::recordNameBaseOn(), 0);
}

} // namespace
} // namespace cantorel
