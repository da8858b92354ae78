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
        return QStringLiteral("other text");
    case SettingKind::Folder:
        return QDir::homePath();
    }
    return {};
}

TEST(SettingsTable, EveryOptionBeginsWithItsDefaultAndKeepsWhatIsSet) {
    std::set<QString> keys;
    for (const SettingRow &row : settingRows()) {
        EXPECT_TRUE(keys.insert(row.key).second) << row.key.toStdString();
        if (row.key == QStringLiteral("isBeep") || row.key == QStringLiteral("isBeepBeforeRecording"))
            continue;
        EXPECT_EQ(row.get(), row.fallback) << row.key.toStdString();
        const QVariant other = otherValue(row);
        row.set(other);
        EXPECT_EQ(row.get(), other) << row.key.toStdString();
        EXPECT_EQ(row.get().typeId(), row.fallback.typeId()) << row.key.toStdString();
        EXPECT_EQ(foundation::DefaultsDomain(QString::fromLatin1(kBundleIdentifier)).ownObject(row.key), other)
            << row.key.toStdString() << " is not stored under its key";
    }
    EXPECT_EQ(keys.size(), 31U);
}

TEST(SettingsTable, TheResourceOfRegisteredDefaultsAgreesWithTheTable) {
    QFile file(foundation::resourcePath(QStringLiteral("UserDefaults.plist")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto defaults = foundation::parsePropertyList(file.readAll());
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
    const QString key = QStringLiteral("isBeep");
    EXPECT_FALSE(foundation::DefaultsDomain(QString::fromLatin1(kBundleIdentifier)).ownObject(key).isValid());
    AppSettings::setAudioFormat(1);
    EXPECT_EQ(foundation::DefaultsDomain(QString::fromLatin1(kBundleIdentifier)).ownObject(key), false);
}

TEST(AppSettings, AFolderThatIsGoneOrAFileIsAnsweredByTheMusicFolderAndStaysStored) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("file"));
    touch(file);
    for (const QString &stored : {QString(), folder.filePath(QStringLiteral("gone")), file}) {
        AppSettings::setOutputPath(stored);
        AppSettings::setConvertOutputPath(stored);
        EXPECT_EQ(AppSettings::outputPath(), AppSettings::defaultMusicDirectoryPath());
        EXPECT_EQ(AppSettings::convertOutputPath(), AppSettings::defaultMusicDirectoryPath());
        EXPECT_EQ(standardUserDefaults().object(QStringLiteral("outputFolderPath")), stored);
    }
}

TEST(AppSettings, HotKeysAreAnsweredInLowerCase) {
    AppSettings::setHotkeyStartRecording(QStringLiteral("CTRL CMD S"));
    EXPECT_EQ(AppSettings::hotkeyStartRecording(), QStringLiteral("ctrl cmd s"));
    EXPECT_EQ(standardUserDefaults().object(QStringLiteral("hotkeyStartRecording")), QStringLiteral("CTRL CMD S"));
}

TEST(AppSettings, TheOldNamesOfPortugueseAreStoredAnew) {
    for (const char *old : {"Portugese", "Portuguese"}) {
        ASSERT_TRUE(ZQUserDefaultSetValue_Object(QString::fromLatin1(old), QStringLiteral("Language")));
        EXPECT_EQ(AppSettings::appLanguage(), QStringLiteral("PortugueseBrazil"));
        EXPECT_EQ(standardUserDefaults().object(QStringLiteral("Language")), QStringLiteral("PortugueseBrazil"));
    }
}

TEST(AppSettings, TheOnlineLanguageIsAnsweredFirstAndFollowsTheChoice) {
    AppSettings::setOnlineLanguage(QStringLiteral("German"));
    EXPECT_EQ(AppSettings::appLanguage(), QStringLiteral("German"));
    AppSettings::setAppLanguage(QStringLiteral("French"));
    EXPECT_EQ(AppSettings::onlineLanguage(), QStringLiteral("French"));
    AppSettings::setOnlineLanguage({});
    AppSettings::setAppLanguage(QStringLiteral("Greek"));
    EXPECT_EQ(AppSettings::onlineLanguage(), QString());
    EXPECT_EQ(AppSettings::appLanguage(), QStringLiteral("Greek"));
}

TEST(AppSettings, FormatsAreDeliberatelyFoundInsideTheJoinedList) {
    for (const char *extension : {"wav", "FLAC", "fla", "wa", "e f"})
        EXPECT_TRUE(AppSettings::isLosslessAudioFormat(QString::fromLatin1(extension))) << extension;
    for (const char *extension : {"mp3", "", "wavv"})
        EXPECT_FALSE(AppSettings::isLosslessAudioFormat(QString::fromLatin1(extension))) << extension;
    EXPECT_TRUE(AppSettings::isSuportIntoConvertFileFormat(QStringLiteral("M4")));
    EXPECT_FALSE(AppSettings::isSuportIntoConvertFileFormat(QStringLiteral("txt")));
}

TEST(FreeFileName, TheNumberAtTheEndOfTheNameIsCountedUp) {
    const struct {
        const char *taken, *free;
    } cases[] = {
        {"Track3.mp3", "Track3-2.mp3"},
        {"Take-7.m4a", "Take-8.m4a"},
        {"Take-x.m4a", "Take-x-2.m4a"},
        {"a-b.mp3", "a-b-2.mp3"},
        {"Live-1999-Remix.mp3", "Live-1999-Remix-2.mp3"}, // "-1" is in it, and nothing is counted
        {"a-9-08.mp3", "a-9-08-2.mp3"},                   // "-9" is in it, and "-8" is not
        {"a-0-b.mp3", "a-1-b.mp3"},                       // deliberately: "-0" is counted
        {"a-10-1.mp3", "a-20-2.mp3"},                     // deliberately: every occurrence
        {"x-.mp3", "x--2.mp3"},
        {"-.mp3", "--2.mp3"},
        {"n-9223372036854775807.mp3", "n-9223372036854775807-2.mp3"},
        {"n-99999999999999999999.mp3", "n-99999999999999999999-2.mp3"},
        {".hidden", ".hidden-2"},
        {"no extension", "no extension-2"},
    };
    for (const auto &c : cases) {
        const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/zz"));
        const QString path = folder.filePath(QString::fromLatin1(c.taken));
        EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace(path), path);
        touch(path);
        EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace(path), folder.filePath(QString::fromLatin1(c.free)))
            << c.taken;
    }
}

TEST(FreeFileName, ItIsCountedUntilItIsFreeAndAlwaysEnds) {
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/zz"));
    for (const char *name :
         {"Track", "Track-2", "Track-3", "Live-1999-Remix", "Live-1999-Remix-2", "a-9-08", "a-9-08-2"})
        touch(folder.filePath(QString::fromLatin1(name)));
    const auto freeOf = [&](const char *name) {
        return AppSettings::checkFilePathIsExistAndAutoReplace(folder.filePath(QString::fromLatin1(name)));
    };
    EXPECT_EQ(freeOf("Track"), folder.filePath(QStringLiteral("Track-4")));
    EXPECT_EQ(freeOf("Live-1999-Remix"), folder.filePath(QStringLiteral("Live-1999-Remix-3")));
    EXPECT_EQ(freeOf("a-9-08"), folder.filePath(QStringLiteral("a-9-08-3")));
    EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace({}), QString());
    EXPECT_NE(AppSettings::checkFilePathIsExistAndAutoReplace(QStringLiteral("/")), QStringLiteral("/"));
}

TEST(FreeFileName, ANameIsDeliberatelyReplacedInTheFolderToo) {
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/zz"));
    const QString album = folder.filePath(QStringLiteral("Album"));
    ASSERT_TRUE(QDir().mkpath(album));
    touch(album + QStringLiteral("/Album.mp3"));
    EXPECT_EQ(AppSettings::checkFilePathIsExistAndAutoReplace(album + QStringLiteral("/Album.mp3")),
              folder.filePath(QStringLiteral("Album-2/Album-2.mp3")));
}

TEST(ChangeFileToExtension, TakesAFreeNameAndNeverLosesTheFile) {
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/zz"));
    const QString song = folder.filePath(QStringLiteral("Song.m4a"));
    touch(song);
    touch(folder.filePath(QStringLiteral("Song.mp3")));
    EXPECT_EQ(AppSettings::changeFileToExtension(QStringLiteral("mp3"), song),
              folder.filePath(QStringLiteral("Song-2.mp3")));
    EXPECT_EQ(AppSettings::changeFileToExtension(QStringLiteral("mp3"), song), QString());
    const QString deep = folder.filePath(QStringLiteral("X/X.m4a"));
    ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("X"))));
    touch(deep);
    touch(folder.filePath(QStringLiteral("X/X.mp3")));
    EXPECT_EQ(AppSettings::changeFileToExtension(QStringLiteral("mp3"), deep), QString()); // its folder does not exist
    EXPECT_TRUE(QFile::exists(deep));
}

TEST(AppSettings, CommonDirectoriesAreMadeWithTheFoldersAboveThem) {
    const QString path = AppSettings::getApplicationDirectory();
    EXPECT_TRUE(path.endsWith(QStringLiteral("/Cantorel")));
    EXPECT_TRUE(QDir(path).exists());
    EXPECT_EQ(AppSettings::logFile(), path + QStringLiteral("/log.log"));
}

TEST(AppSettings, TheNumberOfTheNextRecordingCanAlwaysBeCountedUp) {
    AppSettings::setrecordNameBaseOn(std::numeric_limits<int>::max());
    AppSettings::setrecordNameBaseOn(AppSettings::recordNameBaseOn() + 1);
    EXPECT_GT(AppSettings::recordNameBaseOn(), 0);
}

} // namespace
} // namespace cantorel
