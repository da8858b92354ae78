#include "platform/foundation/SearchPaths.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace cantorel::foundation {
namespace {

TEST(SearchPaths, TheMusicFolderIsTheOneOfUserDirs) {
    EXPECT_EQ(searchPath(SearchPath::Music), QDir::homePath() + QStringLiteral("/Music"));
    QFile file(configurationFolder() + QStringLiteral("/user-dirs.dirs"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("XDG_MUSIC_DIR=\"$HOME/Klänge\"\n");
    file.close();
    EXPECT_EQ(searchPath(SearchPath::Music), QDir::homePath() + QStringLiteral("/Klänge"));
}

TEST(SearchPaths, ARelativeXdgVariableIsIgnored) {
    qputenv("XDG_STATE_HOME", "relative/path");
    EXPECT_EQ(stateFolder(), QDir::homePath() + QStringLiteral("/.local/state"));
}

TEST(SearchPaths, ResourcesLieBesideTheProgramsFolderUnlessTheEnvironmentSaysOtherwise) {
    const QString tests = QFile::symLinkTarget(QStringLiteral("/proc/self/exe")).section(QLatin1Char('/'), 0, -3);
    EXPECT_EQ(resourcePath(QStringLiteral("a.plist")), tests + QStringLiteral("/share/cantorel/a.plist"));
    qputenv("CANTOREL_RESOURCES", "/elsewhere/");
    EXPECT_EQ(resourcePath(QStringLiteral("a.plist")), QStringLiteral("/elsewhere/a.plist"));
}

} // namespace
} // namespace cantorel::foundation
