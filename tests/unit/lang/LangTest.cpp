#include "lang/Lang.h"

#include "lang/LangTable.h"
#include "platform/foundation/ErrorReason.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

namespace cantorel {
namespace {

// A folder of language files that the program takes for its own.
class LanguageFiles : public testing::Test {
public:
    void SetUp() override {
        ASSERT_TRUE(QDir(mFolder.path()).mkdir("lang"));
        qputenv("CANTOREL_RESOURCES", mFolder.path().toUtf8());
    }
    void TearDown() override { qunsetenv("CANTOREL_RESOURCES"); }
    void put(const char *name, const QByteArray &content) const {
        test::store(mFolder.filePath(QStringLiteral("lang/%1.xml").arg(name)), content);
    }
    const QTemporaryDir mFolder;
};

TEST_F(LanguageFiles, AFileIsUtf8WhateverItDeclaresAndChangesNothingWhereItIsNot) {
    put("German", "<?xml version='1.0' encoding='ISO-8859-1'?><l><common Title='gr\xC3\xB6\xC3\x9F'/></l>");
    Lang::ChangeLanguage("German");
    EXPECT_EQ(Lang::commTitle(), "größ");
    put("French", "<?xml version='1.0' encoding='ISO-8859-1'?><l><common Title='\xE9'/></l>");
    put("Danish", "<!DOCTYPE l [<!ENTITY e 'x'>]><l><common Title='&e;'/></l>");
    for (const char *name : {"French", "Danish"})
        Lang::ChangeLanguage(name);
    EXPECT_EQ(Lang::commTitle(), "größ");
}

TEST_F(LanguageFiles, AFileReplacesAllTextsByItsFixedPairingsAndWhatItLacksIsNoText) {
    put("German", R"(<l><common Title="Tytul" AppName="Nein"/><common Title="Zweiter"/>
        <settings><General EnableHotkeys="An" ConfigureDidChange="x"/></settings>
        <tools><ScheduleTask StopTime="Kraj" Sleep="Schlaf"/><Editor EditorInsert="Ein" EditorInsertSettings="Wie"/></tools></l>)");
    Lang::ChangeLanguage("German");
    const struct {
        const char *key, *text; // null: no text
    } cases[] = {{"commTitle", "Tytul"},
                 {"commSize", nullptr},
                 {"settingsEnableHotkeys", "An"},
                 {"settingsGeneralEnableHotkeys", "Enable hot keys"}, // a twin that is never loaded
                 {"settingsConfigureDidChange", nullptr},             // stands in another group
                 {"toolsScheduleTaskToTime", "Kraj"},
                 {"toolsScheduleSleep", "Schlaf"},
                 {"toolsEditorButtonInsert", "Ein"},
                 {"toolsEditorLabelInsertSettings", "Wie"},
                 {"commAppName", "Cantorel"}, // never loaded, even where a file has it
                 {"btnSave", nullptr},        // a group that is missing
                 {"windowUndo", "Undo"}};     // deliberately kept where the file does not know our windows
    for (const auto &c : cases) {
        const QString text = Lang::text(c.key);
        EXPECT_EQ(text.isNull(), c.text == nullptr) << c.key;
        EXPECT_EQ(text, c.text) << c.key;
    }
}

TEST_F(LanguageFiles, WhatCannotBeReadChangesNothing) {
    put("German", "<l><common Title='Tytul'/></l>");
    Lang::ChangeLanguage("German");
    put("French", "");
    put("Polish", "no document");
    put("Secret", "<l><common Title='Secret'/></l>");
    for (const char *name : {"French", "Polish", "Greek", "Secret", "../German", ""}) {
        Lang::ChangeLanguage(name);
        EXPECT_EQ(Lang::commTitle(), "Tytul") << name;
    }
    put("English", "<l><common Title='Broken'><button OK='Yes'</l>");
    Lang::ChangeLanguage({}); // English
    EXPECT_EQ(Lang::commTitle(), "Broken");
}

// Each language that has a file has it whole, with the markers of the English text.
TEST(LanguageFile, HasEveryTextWithItsMarkers) {
    const QRegularExpression marker("\\[#.*?#\\]|#\\w+#");
    const auto markersOf = [&](const QString &text) {
        QStringList found;
        for (const auto &match : marker.globalMatch(text))
            found << match.captured();
        found.sort();
        return found;
    };
    for (const LanguageInfo &language : Lang::languages()) {
        Lang::ChangeLanguage(language.name);
        QSet<QString> different;
        for (const TextGroup &group : textGroups())
            for (const TextRow &row : group.rows) {
                const QString text = Lang::text(row.key), english = row.builtIn;
                if (QByteArrayView(row.key).contains('.'))
                    continue; // a form, which may lack
                EXPECT_FALSE(text.trimmed().isEmpty()) << language.name.toStdString() << " " << row.key;
                EXPECT_EQ(markersOf(text), markersOf(english)) << language.name.toStdString() << " " << row.key;
                if (text != english)
                    different.insert(row.key);
            }
        EXPECT_EQ(Lang::toolsScheduleWeeks().split(',').size(), 7) << language.name.toStdString();
        const bool isEnglish = language.name == "English";
        EXPECT_TRUE(!isEnglish || different.isEmpty()) << different.values().join(' ').toStdString();
    }
}

TEST(LanguageFile, SpeaksOfOneOfSomeAndOfMany) {
    const struct {
        const char *language;
        qint64 count;
        const char *text;
    } cases[] = {{"English", 1, "One recording is in the wastebasket."},
                 {"English", 2, "2 recordings are in the wastebasket."},
                 {"Polish", 1, "W koszu jest jedno nagranie."},
                 {"Polish", 22, "W koszu są 22 nagrania."},
                 {"Polish", 12, "W koszu jest 12 nagrań."},
                 {"Czech", 22, "V koši je 22 nahrávek."},
                 {"Japanese", 1, "1 件の録音をゴミ箱に移動しました。"}, // no form of the language before
                 {"French", 0, "0 enregistrement est dans la corbeille."},
                 {"French", 2, "2 enregistrements sont dans la corbeille."},
                 {"Norwegian", 1, "Ett opptak ligger i papirkurven."}}; // its own rules, not those of its code
    for (const auto &c : cases) {
        Lang::ChangeLanguage(c.language);
        EXPECT_EQ(Lang::windowSeveralMoved(c.count), c.text) << c.language;
    }
}

// The worst of names, which looks like a marker.
const QString kName = "/a \"[#Reason#]\" %1 (.*\n[#FileName#]";
constexpr foundation::SentenceKey kNotRead("NotRead", "FileName", "Reason");
constexpr foundation::SentenceKey kNoDevice("NoDevice");
constexpr foundation::SentenceKey kSilentRoute("SilentRoute", "Device", "Other");

TEST(LangSentence, IsSaidInTheLanguageInForceWithWhatIsFilledInAsItIs) {
    const foundation::Sentence whole = kNotRead(kName, kNoDevice()), twice = kSilentRoute(kName, QStringLiteral("B"));
    for (const LanguageInfo &language : Lang::languages()) {
        Lang::ChangeLanguage(language.name);
        const auto filled = [](const char *key, std::initializer_list<std::pair<const char *, QString>> values) {
            QString text = Lang::text(key);
            for (const auto &[marker, value] : values) // its own name last: it looks like the others
                text.replace(marker, value);
            return text;
        };
        const QString reason = Lang::text("sentenceNoDevice");
        EXPECT_EQ(Lang::sentence(whole), filled("sentenceNotRead", {{"[#Reason#]", reason}, {"[#FileName#]", kName}}))
            << language.name.toStdString();
        EXPECT_EQ(Lang::sentence(twice), filled("sentenceSilentRoute", {{"[#Other#]", "B"}, {"[#Device#]", kName}}))
            << language.name.toStdString();
        EXPECT_EQ(Lang::sentence(whole) == Lang::english(whole), language.name == "English");
        EXPECT_EQ(Lang::english(whole),
                  QStringLiteral("\"%1\" cannot be read: There is no device to record from; connect one..").arg(kName));
    }
}

TEST(LangSentence, TellsWhyTheSystemRefusedInTheLanguageInForce) {
    const struct {
        int error;
        const char *english, *swedish;
    } cases[] = {{ENOSPC, "the disk is full", "disken är full"},
                 {EACCES, "the rights for it are missing", "behörighet saknas"},
                 {EROFS, "the disk can only be read", "disken är skrivskyddad"},
                 {EIO, "the disk reports an error", "disken rapporterar ett fel"},
                 {ENAMETOOLONG, "its name is too long", "namnet är för långt"},
                 {ENOTTY, "the system reports the error 25", "systemet rapporterar fel 25"}};
    Lang::ChangeLanguage("Swedish");
    for (const auto &c : cases) {
        EXPECT_EQ(Lang::sentence(foundation::errorReason(c.error)), c.swedish);
        EXPECT_EQ(Lang::english(foundation::errorReason(c.error)), c.english);
    }
}

TEST(LangSentence, PlainEnglishStaysAsItIs) {
    Lang::ChangeLanguage("German");
    for (const char *text : {"", "Something else.", "There is no device to record from; connect one."})
        EXPECT_EQ(Lang::sentence(QString::fromUtf8(text)), QString::fromUtf8(text));
    EXPECT_TRUE(foundation::Sentence().isEmpty());
    EXPECT_FALSE(kNoDevice().isEmpty());
    EXPECT_NE(kNotRead(kName, kName), kNotRead(kName, kNoDevice()));
}

TEST(Lang, CodesAreFoundInAnyCaseAndUnknownOnesAreEnglish) {
    const struct {
        const char *code, *name;
    } cases[] = {{"ZH", "ChineseSimplified"}, {"hk", "ChineseSimplified"},
                 {"xx", "English"},           {"", "English"},
                 {"hk,zh", "English"},        {"Se", "Swedish"}};
    for (const auto &c : cases)
        EXPECT_EQ(Lang::GetLangNameFromCode(c.code).toStdString(), c.name) << c.code;
}

} // namespace
} // namespace cantorel
