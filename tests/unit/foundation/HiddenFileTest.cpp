#include "platform/foundation/HiddenFile.h"

#include "platform/foundation/SearchPaths.h"
#include "tests/support/OrdinaryFile.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cantorel::foundation {
namespace {

class HiddenFileTest : public testing::Test {
protected:
    HiddenFile make() {
        int error = 0;
        auto made = HiddenFile::create(mFolder.path(), "m4a", error);
        EXPECT_EQ(error, 0);
        return std::move(*made);
    }
    QStringList files() const { return QDir(mFolder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    QTemporaryDir mFolder;
};

TEST_F(HiddenFileTest, TakesNoNameThatIsTakenAndLeavesNothing) {
    const QString name = mFolder.filePath("a");
    test::store(name, "theirs");
    EXPECT_EQ(make().take(name), EEXIST);
    EXPECT_EQ(make().replace(name, FileIdentity(mFolder.path())), ESTALE);
    EXPECT_EQ(test::contents(name), "theirs");
    EXPECT_EQ(make().replace(name, FileIdentity(name)), 0);
    EXPECT_EQ(test::contents(name), "");
    EXPECT_EQ(make().take(mFolder.filePath("b")), 0);
    EXPECT_EQ(files(), QStringList({"a", "b"}));
}

TEST_F(HiddenFileTest, SweepTakesOnlyWhatAnEndedProgramLeft) {
    const HiddenFile living = make();
    const pid_t child = ::fork();
    if (child == 0) {
        const HiddenFile left = make();
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
    const char *theirs[] = {".cantorel-notes.m4a", ".cantorel-0123456789abcdef", ".converting-12.mp3", "track.m4a"};
    for (const char *name : theirs)
        test::store(mFolder.filePath(name), "x");
    ASSERT_TRUE(QFile::link("track.m4a", mFolder.filePath(".cantorel-0123456789abcdee.m4a")));
    ASSERT_EQ(files().size(), 7);
    HiddenFile::sweep(mFolder.path());
    EXPECT_EQ(files().size(), 6);
    EXPECT_TRUE(QFile::exists(living.path()));
}

TEST(SearchPaths, TheMusicFolderIsTheOneOfUserDirs) {
    EXPECT_EQ(searchPath(SearchPath::Music), QDir::homePath() + "/Music");
    test::store(configurationFolder() + "/user-dirs.dirs", "XDG_MUSIC_DIR=\"$HOME/Klänge\"\n");
    EXPECT_EQ(searchPath(SearchPath::Music), QDir::homePath() + "/Klänge");
}

TEST(SearchPaths, ARelativeXdgVariableIsIgnored) {
    qputenv("XDG_STATE_HOME", "relative/path");
    EXPECT_EQ(stateFolder(), QDir::homePath() + "/.local/state");
}

TEST(SearchPaths, ResourcesLieBesideTheProgramsFolderUnlessTheEnvironmentSaysOtherwise) {
    const QString tests = QFile::symLinkTarget("/proc/self/exe").section('/', 0, -3);
    EXPECT_EQ(resourcePath("a.plist"), tests + "/share/cantorel/a.plist");
    qputenv("CANTOREL_RESOURCES", "/elsewhere/");
    EXPECT_EQ(resourcePath("a.plist"), "/elsewhere/a.plist");
}

} // namespace
} // namespace cantorel::foundation
