#include "tags/TagWriting.h"

#include "tags/AudioIdentify.h"
#include "tests/support/Unfinished.h"
#include "tests/unit/tags/TagFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <new>
#include <utility>

namespace {
enum class Writing { Whole, InParts, Spoilt } writing = Writing::Whole;
std::function<void()> meanwhile; // done once, before something is written
int goodReads = -1;              // before one that fails; below 0 none does
} // namespace

// In place of the system's own.
extern "C" ssize_t pwrite(int to, const void *bytes, std::size_t count, off_t at) {
    if (const auto action = std::exchange(meanwhile, {}))
        action();
    const auto written = ::syscall(SYS_pwrite64, to, bytes, writing == Writing::InParts ? (count + 1) / 2 : count, at);
    if (writing == Writing::Spoilt && written > 0) {
        const char other = static_cast<char>(static_cast<const char *>(bytes)[written - 1] + 1);
        (void)::syscall(SYS_pwrite64, to, &other, 1, at + written - 1);
    }
    return written;
}

extern "C" ssize_t pread(int from, void *bytes, std::size_t count, off_t at) {
    if (goodReads >= 0 && goodReads-- == 0) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, from, bytes, count, at);
}

namespace cantorel {
namespace {

using test::contents;
using test::store;
using test::TagFiles;

id3Tag titled(const QString &path, const QString &title) {
    id3Tag tag = AudioIdentify::getID3TagFromFile(path).value_or(id3Tag());
    tag.id3Title = title;
    return tag;
}

QStringList namesIn(const QString &folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

TEST_F(TagFiles, UndoGivesBackEveryByteOfManyFiles) {
    std::vector<TagsOfFile> edits;
    QMap<QString, QByteArray> before;
    for (const char *name :
         {"none.mp3", "v1.mp3", "v22.mp3", "v23.mp3", "v24.mp3", "none.m4a", "end.m4a", "front.m4a", "fragments.m4a"}) {
        before[file(name)] = contents(file(name));
        edits.push_back({file(name), titled(file(name), "A new and longer title")});
    }
    edits.push_back({file("gone.mp3"), id3Tag()});
    const QStringList names = namesIn(mFolder.path());
    const qint64 time = QFileInfo(file("v23.mp3")).lastModified().toMSecsSinceEpoch();
    const TagsWritten written = writeTags(edits);
    EXPECT_EQ(written.failures.size(), 1U);
    for (auto one = before.begin(); one != before.end(); ++one)
        EXPECT_NE(contents(one.key()), one.value()) << one.key().toStdString();
    // One of them is changed by somebody else: that stays, and the others go back.
    const QString touched = file("none.mp3");
    store(touched, contents(touched) + "more");
    before[touched] = contents(touched);
    const auto failures = undoTags(written.undo);
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_EQ(failures[0].path, touched);
    for (auto one = before.begin(); one != before.end(); ++one)
        EXPECT_EQ(contents(one.key()), one.value()) << one.key().toStdString();
    EXPECT_EQ(QFileInfo(file("v23.mp3")).lastModified().toMSecsSinceEpoch(), time);
    EXPECT_EQ(namesIn(mFolder.path()), names);
}

TEST_F(TagFiles, RightsAttributesAndLinksStay) {
    const QString path = file("v23.mp3"), link = file("link.mp3"), twin = file("twin.mp3");
    const QByteArray name = QFile::encodeName(path), before = contents(path);
    ASSERT_EQ(::chmod(name.constData(), 0640), 0);
    const bool takesAttributes = ::setxattr(name.constData(), "user.note", "mine", 4, 0) == 0;
    // New files of the folder may be written by another user too.
    const char rights[] = "\2\0\0\0"
                          "\1\0\7\0\xff\xff\xff\xff"
                          "\2\0\6\0\1\0\0\0"
                          "\4\0\5\0\xff\xff\xff\xff"
                          "\x10\0\6\0\xff\xff\xff\xff"
                          "\x20\0\0\0\xff\xff\xff\xff";
    (void)::setxattr(QFile::encodeName(mFolder.path()).constData(), "system.posix_acl_default", rights, 44, 0);
    ASSERT_TRUE(QFile::link(path, link));
    ASSERT_EQ(::link(name.constData(), QFile::encodeName(twin).constData()), 0);
    ASSERT_TRUE(AudioIdentify::saveID3ToFile(titled(path, "New"), link));
    struct stat status {};
    ASSERT_EQ(::lstat(name.constData(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0640U);
    char value[8] = {};
    EXPECT_EQ(::getxattr(name.constData(), "user.note", value, sizeof value), takesAttributes ? 4 : -1);
    EXPECT_LT(::getxattr(name.constData(), "system.posix_acl_access", nullptr, 0), 0);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(AudioIdentify::getID3TagFromFile(path)->id3Title, "New");
    EXPECT_EQ(contents(twin), before); // the other name keeps what it had
}

TEST_F(TagFiles, AFullDiskAndARunningRecordingLeaveTheFileAsItWas) {
    const QString path = file("v23.mp3");
    const QByteArray before = contents(path);
    const QStringList names = namesIn(mFolder.path());
    const TagsOfFile edit{path, titled(path, "New")};
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{static_cast<rlim_t>(before.size() / 2), limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const TagsWritten full = writeTags({edit});
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(full.failures.size(), 1U);
    EXPECT_EQ(contents(path), before);
    const QString recording = test::unfinished(file("growing.m4a"));
    const QByteArray until = contents(recording);
    EXPECT_FALSE(AudioIdentify::saveID3ToFile({"New", "", "", "", "", {}, {}}, recording));
    EXPECT_EQ(contents(recording), until);
    QFile::remove(recording);
    EXPECT_EQ(namesIn(mFolder.path()), names);
}

TEST_F(TagFiles, AFaultOfTheDiskAtAnyReadingLeavesTheFileAsItWas) {
    for (const char *name : {"v1.mp3", "v24.mp3", "foreign.m4a"}) {
        const QByteArray before = contents(file(name));
        const TagsOfFile edit{file(name), id3TagEdit{"New", {}, {}, {}, {}, {}}};
        const TagUndo undo = writeTags({edit}).undo;
        const QByteArray after = contents(file(name));
        ASSERT_TRUE(undoTags(undo).empty());
        int failures = 0;
        for (int good = 0, left = -1; left < 0; ++good) {
            goodReads = good;
            const TagsWritten written = writeTags({edit});
            left = std::exchange(goodReads, -1);
            failures += static_cast<int>(written.failures.size());
            ASSERT_EQ(contents(file(name)), written.failures.empty() ? after : before) << name << good;
            ASSERT_TRUE(undoTags(written.undo).empty());
        }
        EXPECT_GT(failures, 3);
    }
}

TEST_F(TagFiles, WhatSomebodyElseWritesMeanwhileStays) {
    const QString path = file("v23.mp3");
    const QByteArray changed = contents(path) + "more";
    for (const bool isReplaced : {false, true}) {
        const TagsOfFile edit{path, titled(path, QString(5, isReplaced ? 'r' : 'w'))};
        meanwhile = [&] {
            if (isReplaced)
                QFile::rename(path, file("other.mp3"));
            store(path, changed);
        };
        EXPECT_EQ(writeTags({edit}).failures.size(), 1U);
        EXPECT_EQ(contents(path), changed);
    }
    meanwhile = [] { throw std::bad_alloc(); };
    EXPECT_EQ(writeTags({{path, titled(path, "New")}}).failures.size(), 1U);
    EXPECT_EQ(contents(path), changed);
}

TEST_F(TagFiles, ACopyThatIsAnotherSoundNeverTakesTheFilesPlace) {
    for (const char *name : {"v23.mp3", "front.m4a"}) {
        const QString path = file(name);
        for (const Writing how : {Writing::InParts, Writing::Spoilt}) {
            const QByteArray before = contents(path), sound = test::packetsIn(path);
            const QStringList names = namesIn(mFolder.path());
            id3Tag tag = titled(path, QString(int(how), 'n'));
            tag.id3Image.clear(); // which ffmpeg would not read
            writing = how;
            const auto failures = writeTags({{path, tag}}).failures;
            writing = Writing::Whole;
            EXPECT_EQ(failures.empty(), how != Writing::Spoilt);
            EXPECT_EQ(contents(path) == before, how == Writing::Spoilt);
            EXPECT_EQ(test::packetsIn(path), sound);
            EXPECT_EQ(namesIn(mFolder.path()), names);
        }
    }
}

// A program that writes tags is killed at any moment: the file is the old one or a new one, and the next write clears
// up.
TEST_F(TagFiles, AKillInTheMiddleLeavesTheOldFileOrTheNewOne) {
    for (const char *name : {"v23.mp3", "front.m4a"}) {
        const QString path = file(name);
        const QByteArray sound = test::packetsIn(path);
        const QStringList names = namesIn(mFolder.path());
        id3Tag even = titled(path, "Even"), odd = titled(path, QString(5000, 'o'));
        even.id3Image.clear();
        odd.id3Image.clear();
        int littered = 0;
        for (int round = 0; round < 24; ++round) {
            const pid_t child = ::fork();
            if (child == 0)
                for (int i = 0;; ++i)
                    (void)writeTags({{path, i % 2 ? odd : even}});
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
            // As soon as the new file grows, or a little later.
            for (int seen = 0; seen <= round % 4 && std::chrono::steady_clock::now() < deadline;)
                seen += namesIn(mFolder.path()).size() > names.size();
            ::kill(child, SIGKILL);
            ASSERT_EQ(::waitpid(child, nullptr, 0), child);
            littered += namesIn(mFolder.path()) != names;
            const auto tag = AudioIdentify::getID3TagFromFile(path);
            ASSERT_TRUE(tag
                        && (tag->id3Title == even.id3Title || tag->id3Title == odd.id3Title || tag->id3Title == "Old"));
            ASSERT_TRUE(round % 8 != 0 || test::packetsIn(path) == sound);
        }
        EXPECT_GT(littered, 0); // or nothing was tried
        ASSERT_TRUE(AudioIdentify::saveID3ToFile(titled(path, "Last"), path));
        EXPECT_EQ(namesIn(mFolder.path()), names);
    }
}

} // namespace
} // namespace cantorel
