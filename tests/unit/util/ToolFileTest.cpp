#include "util/ToolFile.h"

#include "tests/support/OrdinaryFile.h"

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
        EXPECT_EQ(ToolFile::fileNameAtPath(c.path).toStdString(), c.name) << c.path;
        EXPECT_EQ(ToolFile::fileExtensionAtPath(c.path).toStdString(), c.extension) << c.path;
    }
    EXPECT_EQ(ToolFile::pathWithExtension("/a.b/c", "mp3"), "/a.b/c.mp3");
    EXPECT_EQ(ToolFile::pathWithExtension("/a/c.m4a", "mp3"), "/a/c.mp3");
}

TEST(ToolFile, AppendingMakesTheFileAndReplacingLeavesTheOldOneWhenItFails) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("f");
    EXPECT_TRUE(ToolFile::writeData("one", path, true));
    EXPECT_TRUE(ToolFile::writeData("two", path, true));
    EXPECT_EQ(contents(path), "onetwo");
    EXPECT_TRUE(ToolFile::writeData("x", path, false));
    EXPECT_EQ(contents(path), "x");
    EXPECT_FALSE(ToolFile::writeData("y", folder.filePath("none/f"), false));
    EXPECT_FALSE(ToolFile::writeData("y", {}, true));
}

TEST(ToolFile, MovingAndCopyingNeedASourceAndOverwriteNothing) {
    const QTemporaryDir folder;
    const QString a = folder.filePath("a"), b = folder.filePath("b");
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
    const QString kept = folder.filePath("kept"), gone = folder.filePath("gone");
    ASSERT_TRUE(ToolFile::createFolderAtPath(kept));
    ASSERT_TRUE(ToolFile::createFolderAtPath(gone + "/deep"));
    ASSERT_TRUE(ToolFile::writeData("x", kept + "/f", false));
    ASSERT_TRUE(QFile::link(kept, gone + "/link"));
    EXPECT_TRUE(ToolFile::removeFileAtPath(gone));
    EXPECT_FALSE(ToolFile::isFileExistsAtPath(gone));
    EXPECT_EQ(contents(kept + "/f"), "x");
}

TEST(ToolFile, SizesAreBinaryWithTwoDecimals) {
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(500), "0.49 KB");
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(1048576), "1024.00 KB");
    EXPECT_EQ(ToolFile::fileSizeFormatterToString(1048577), "1.00 MB");
}

TEST(ToolFile, TextsBecomeNamesOfFiles) {
    const struct {
        QString text, name;
    } cases[] = {
        {"Radio 4", "Radio 4"},
        {"../../etc/passwd", "....etcpasswd"},
        {QStringLiteral(" a/b\0c\n "), "abc"},
        {"..", QString()},
        {"/./", QString()},
        {"//", QString()},
        {QString(300, 'x'), QString(200, 'x')},
        {QString(4'000'000, 'x'), QString(200, 'x')}, // in no more than a moment
        {QString(199, 'x') + "é", QString(199, 'x')},
        {QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(60), QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(50)}};
    for (const auto &[text, name] : cases)
        EXPECT_EQ(ToolFile::cleanFileName(text), name) << text.left(300).toStdString();
    EXPECT_EQ(ToolFile::cleanFileName(QString::fromUtf16(u"a\0b", 3)), "ab");
}

} // namespace
} // namespace cantorel
