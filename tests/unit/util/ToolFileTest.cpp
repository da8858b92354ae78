#include "util/ToolFile.h"

#include "platform/desktop/Services.h"
#include "tests/support/OrdinaryFile.h"
#include "util/ToolScript.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel {
namespace {

using test::contents;

TEST(ToolFile, NamesAndExtensionsFollowTheLastComponent) {
    const struct {
        const char *path, *name, *extension;
    } cases[] = {{"/a.b/c", "c", ""}, {"/a/c.tar.gz", "c.tar", "gz"}, {"/a/.hidden", ".hidden", ""},
                 {"/a/x.", "x.", ""}, {"/a/b.d/", "b", "d"},          {"", "", ""},
                 {"/", "/", ""},      {"k.MP3", "k", "MP3"},          {"/a/.h.txt", ".h", "txt"}};
    for (const auto &c : cases) {
        EXPECT_EQ(ToolFile::fileNameAtPath(QString::fromUtf8(c.path)).toStdString(), c.name) << c.path;
        EXPECT_EQ(ToolFile::fileExtensionAtPath(QString::fromUtf8(c.path)).toStdString(), c.extension) << c.path;
    }
    EXPECT_EQ(ToolFile::pathWithExtension(QStringLiteral("/a.b/c"), QStringLiteral("mp3")),
              QStringLiteral("/a.b/c.mp3"));
    EXPECT_EQ(ToolFile::pathWithExtension(QStringLiteral("/a/c.m4a"), QStringLiteral("mp3")),
              QStringLiteral("/a/c.mp3"));
}

TEST(ToolFile, AppendingMakesTheFileAndReplacingLeavesTheOldOneWhenItFails) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("f"));
    EXPECT_TRUE(ToolFile::writeData("one", path, true));
    EXPECT_TRUE(ToolFile::writeData("two", path, true));
    EXPECT_EQ(contents(path), "onetwo");
    EXPECT_TRUE(ToolFile::writeData("x", path, false));
    EXPECT_EQ(contents(path), "x");
    EXPECT_FALSE(ToolFile::writeData("y", folder.filePath(QStringLiteral("none/f")), false));
    EXPECT_FALSE(ToolFile::writeData("y", {}, true));
}

TEST(ToolFile, MovingAndCopyingNeedASourceAndOverwriteNothing) {
    const QTemporaryDir folder;
    const QString a = folder.filePath(QStringLiteral("a")), b = folder.filePath(QStringLiteral("b"));
    QString error;
    EXPECT_FALSE(ToolFile::moveFileFromPath(a, b, &error));
    EXPECT_TRUE(error.contains(a));
    ASSERT_TRUE(ToolFile::writeData("a", a, false));
    ASSERT_TRUE(ToolFile::writeData("b", b, false));
    EXPECT_FALSE(ToolFile::copyFileFormPath(a, b));
    EXPECT_FALSE(ToolFile::moveFileFromPath(a, b));
    EXPECT_EQ(contents(a), "a");
    EXPECT_EQ(contents(b), "b");
    EXPECT_TRUE(ToolFile::removeFileAtPath(b));
    EXPECT_TRUE(ToolFile::moveFileFromPath(a, b));
    EXPECT_EQ(contents(b), "a");
}

TEST(ToolFile, RemovingAFolderTakesItsContentButNotWhatALinkNames) {
    const QTemporaryDir folder;
    const QString kept = folder.filePath(QStringLiteral("kept")), gone = folder.filePath(QStringLiteral("gone"));
    ASSERT_TRUE(ToolFile::createFolderAtPath(kept));
    ASSERT_TRUE(ToolFile::createFolderAtPath(gone + QStringLiteral("/deep")));
    ASSERT_TRUE(ToolFile::writeData("x", kept + QStringLiteral("/f"), false));
    ASSERT_TRUE(QFile::link(kept, gone + QStringLiteral("/link")));
    EXPECT_TRUE(ToolFile::removeFileAtPath(gone));
    EXPECT_FALSE(ToolFile::isFileExistsAtPath(gone));
    EXPECT_EQ(contents(kept + QStringLiteral("/f")), "x");
}

TEST(ToolFile, SizesAreBinaryWithTwoDecimals) {
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(500), QStringLiteral("0.49 KB"));
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(1048576), QStringLiteral("1024.00 KB"));
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(1048577), QStringLiteral("1.00 MB"));
}

class ScriptedHost : public desktop::ScriptHost {
public:
    bool compiles = true, executes = true;
    foundation::Result<void> compile(const QString &) override {
        if (!compiles)
            return foundation::Failure{{}, QStringLiteral("bad word")};
        return {};
    }
    foundation::Result<QString> execute(const QString &) override {
        if (!executes)
            return foundation::Failure{{}, QStringLiteral("bad end")};
        return QString();
    }
};

TEST(ToolFile, TextsBecomeNamesOfFiles) {
    const struct {
        QString text, name;
    } cases[] = {
        {QStringLiteral("Radio 4"), QStringLiteral("Radio 4")},
        {QStringLiteral("../../etc/passwd"), QStringLiteral("....etcpasswd")},
        {QStringLiteral(" a/b\0c\n "), QStringLiteral("abc")},
        {QStringLiteral(".."), QString()},
        {QStringLiteral("/./"), QString()},
        {QStringLiteral("//"), QString()},
        {QString(300, QLatin1Char('x')), QString(200, QLatin1Char('x'))},
        {QString(4'000'000, QLatin1Char('x')), QString(200, QLatin1Char('x'))}, // in no more than a moment
        {QString(199, QLatin1Char('x')) + QStringLiteral("é"), QString(199, QLatin1Char('x'))},
        {QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(60), QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(50)}};
    for (const auto &[text, name] : cases)
        EXPECT_EQ(ToolFile::cleanFileName(text), name) << text.left(300).toStdString();
    EXPECT_EQ(ToolFile::cleanFileName(QString::fromUtf16(u"a\0b", 3)), QStringLiteral("ab"));
}

TEST(ToolScript, OnlyAnEmptyOrUncompilableTextIsFalse) {
    EXPECT_FALSE(ToolScript::loadScriptWithSource(QStringLiteral("true"))); // no host at all
    auto host = std::make_unique<ScriptedHost>();
    ScriptedHost &script = *host;
    desktop::Services services;
    services.scripts = std::move(host);
    const desktop::InstalledServices installed(std::move(services));
    QString error;
    EXPECT_FALSE(ToolScript::loadScriptWithSource({}));
    EXPECT_TRUE(ToolScript::loadScriptWithSource(QStringLiteral("x"), &error));
    EXPECT_EQ(error, QString());
    script.executes = false;
    EXPECT_TRUE(ToolScript::loadScriptWithSource(QStringLiteral("x"), &error)); // deliberately true
    EXPECT_EQ(error, QStringLiteral("bad end"));
    script.compiles = false;
    EXPECT_FALSE(ToolScript::loadScriptWithSource(QStringLiteral("x"), &error));
    EXPECT_EQ(error, QStringLiteral("bad word"));
}

} // namespace
} // namespace cantorel
