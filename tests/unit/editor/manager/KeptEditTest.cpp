#include "editor/KeptEdit.h"

#include "editor/ZQAudioEditorManager.h"
#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/Wave.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace cantorel {
namespace {

struct KeptEditTest : testing::Test {
    KeptEditTest() { manager->waveSizeDidChange({210, 120}); }
    QUrl sound(const QString &name, int seconds, float level) const {
        EXPECT_TRUE(test::writeWav(path(name), std::vector<float>(static_cast<std::size_t>(seconds) * 96000, level)));
        date(name, 1'000'000);
        return QUrl::fromLocalFile(path(name));
    }
    static void date(const QString &name, qint64 seconds) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadWrite)
                    && file.setFileTime(QDateTime::fromSecsSinceEpoch(seconds), QFileDevice::FileModificationTime));
    }
    static QString path(const QString &name) { return QDir::homePath() + '/' + name; }
    bool until(const std::function<bool()> &holds) {
        return test::eventually([&] {
            world.advance(50);
            return holds();
        });
    }
    void open(const QUrl &url) {
        manager->editAudioWithURL(url);
        ASSERT_TRUE(until([&] { return manager->isReady(); }));
    }
    void select(double start, double end) {
        manager->AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(start, start, kStartTimeControl);
        manager->AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(end, end, kEndTimeControl);
    }
    QByteArray keptOnceItHolds(const QByteArray &text) {
        EXPECT_TRUE(until([&] { return test::contents(path("state/edit")).contains(text); }))
            << test::contents(path("state/edit")).toStdString();
        return test::contents(path("state/edit"));
    }
    // A sound with another one mixed in, half a second of silence, a selection, and the head at 3 s.
    QByteArray edit() {
        open(sound("Main.wav", 4, 0.25F));
        sound("Other.wav", 1, 0.5F);
        manager->AudioPlayControlDelegate_ResetPlayCurrentTime(2);
        manager->insertFile(InsertType::Mix, path("Other.wav"));
        EXPECT_TRUE(until([&] { return manager->isReady() && manager->audioFileName() == "Main + Other.wav"; }));
        manager->AudioPlayControlDelegate_ResetPlayCurrentTime(1);
        manager->actionForEditToolInsertMute();
        manager->inserting().setLength(0.5);
        EXPECT_TRUE(manager->inserting().actionForInsert());
        EXPECT_TRUE(until([&] { return manager->isReady(); }));
        select(1, 2.5);
        manager->AudioPlayControlDelegate_ResetPlayCurrentTime(3);
        return keptOnceItHolds("\"head\":3,");
    }
    // Another program that finds this.
    void restart(const QByteArray &left) {
        manager.reset();
        kept.reset();
        test::store(path("state/edit"), left);
        kept = std::make_shared<KeptEdit>(path("state/edit"));
        manager = std::make_unique<ZQAudioEditorManager>(*world.clock, kept);
        manager->waveSizeDidChange({210, 120});
        QObject::connect(&*manager, &ZQAudioEditorManager::told,
                         [this](const foundation::Sentence &trouble) { told << Lang::sentence(trouble); });
    }

    test::EmbeddedWorld world;
    std::shared_ptr<KeptEdit> kept = std::make_shared<KeptEdit>(path("state/edit"));
    std::unique_ptr<ZQAudioEditorManager> manager = std::make_unique<ZQAudioEditorManager>(*world.clock, kept);
    QStringList told;
};

TEST_F(KeptEditTest, WhatWasOpenInAKilledProgramIsContinuedWithAllThatWasInserted) {
    static QStringList printed; // by the framework, of what nobody should have asked it for
    const auto before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { printed << text; });
    const QByteArray left = edit();
    const std::vector<QPointF> levels = manager->geometry().sampleData();
    restart(left);
    EXPECT_EQ(kept->leftName(), "Main + Other + empty");
    manager->continueLeft();
    ASSERT_TRUE(until([&] { return manager->isReady(); }));
    EXPECT_EQ(manager->audioFileName(), "Main + Other + empty");
    EXPECT_EQ(manager->cuts().ranges(), (QList<CutList::Range>{{1, 2.5, true}}));
    EXPECT_EQ(manager->playTime(), 3);
    EXPECT_EQ(manager->geometry().sampleData(), levels);
    manager->clearAllSelectedCutEntitys();
    keptOnceItHolds("\"cuts\":[],");
    qInstallMessageHandler(before);
    EXPECT_EQ(printed, QStringList());
}

// Another process does this until it is killed.
TEST_F(KeptEditTest, DISABLED_EditsForEver) {
    restart({});
    edit();
    (void)until([] { return false; });
}

TEST_F(KeptEditTest, AKillAtAnyMomentLeavesAWholeState) {
    for (const char *text : {"Main.wav", "Other.wav", "\"cuts\":[["}) {
        const QTemporaryDir folder; // in which that process has its home
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", folder.path());
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(),
                      {"--gtest_filter=*DISABLED_EditsForEver", "--gtest_also_run_disabled_tests"});
        ASSERT_TRUE(process.waitForStarted());
        const auto state = [&folder] {
            const QString home = QDir(folder.path()).entryList({"cantorel-test-*"}).value(0);
            return test::contents(folder.filePath(home + "/home/state/edit"));
        };
        ASSERT_TRUE(test::eventually([&] { return state().contains(text); })) << text;
        process.kill();
        ASSERT_TRUE(process.waitForFinished());
        restart(state());
        manager->continueLeft();
        ASSERT_TRUE(until([&] { return manager->isReady(); })) << text;
        EXPECT_TRUE(manager->audioFileName().startsWith("Main"));
    }
}

TEST_F(KeptEditTest, WhatCannotBeContinuedSaysWhyAndStays) {
    const QByteArray first = edit();
    const auto isRefused = [this](const QByteArray &left) {
        restart(left);
        told.clear();
        manager->continueLeft();
        ASSERT_TRUE(until([&] { return !told.isEmpty(); }));
        EXPECT_EQ(told.last(), "What was edited can't be continued, since \"Main.wav\" is gone or was changed.");
    };
    date("Main.wav", 2'000'000);
    select(1.5, 2); // what is kept after the change is what was opened before it
    const QByteArray left = keptOnceItHolds("2,true]");
    isRefused(left);
    sound("Main.wav", 3, 0.25F); // with the old date
    isRefused(first);
    isRefused(left);
    open(sound("Third.wav", 2, 0.5F));
    world.advance(1000);
    EXPECT_EQ(kept->leftName(), "Main + Other + empty");
    restart(left);
    EXPECT_EQ(kept->leftName(), "Main + Other + empty") << "an opened sound is less than what was left";
    open(sound("Third.wav", 2, 0.5F));
    select(0.5, 1);
    keptOnceItHolds("Third.wav");
    EXPECT_EQ(kept->leftName(), QString()) << "overtaken";
}

TEST_F(KeptEditTest, ATornOrForeignFileIsNothing) {
    const QByteArray left = edit();
    for (qsizetype size = 0; size < left.size(); size += 7) {
        restart(left.first(size));
        ASSERT_EQ(kept->leftName(), QString()) << size;
    }
    const auto opens = [](const QByteArray &bytes) { return KeptEdit::opened(bytes).ok(); };
    EXPECT_TRUE(opens(left));
    EXPECT_EQ(KeptEdit::opened(QByteArray(left).replace("\"head\":3,", "\"head\":9e9,")).value().head, 4.5);
    for (const auto &[what, instead] :
         std::initializer_list<std::pair<const char *, const char *>>{{"\"version\":1", "\"version\":2"},
                                                                      {"\"rate\":48000", "\"rate\":0"},
                                                                      {"[0,0,0,", "[0,0,0,9"}, // longer than its source
                                                                      {"[0,0,0,", "[9,0,0,"},  // of no sound
                                                                      {"[0,0,0,", "[0,-5,0,"}, // before its beginning
                                                                      {"[0,0,0,", "[0,0,9e9,"}, // behind the end
                                                                      {"[1,2.5,true]", "[1,0.5,true]"},
                                                                      {"[1,2.5,true]", "[4.5,5,true]"}}) {
        const QByteArray changed = QByteArray(left).replace(what, instead);
        ASSERT_NE(changed, left) << what;
        EXPECT_FALSE(opens(changed)) << instead;
    }
    restart(left);
    kept->discard();
    EXPECT_EQ(kept->leftName(), QString());
    EXPECT_TRUE(until([] { return !QFile::exists(path("state/edit")); }));
}

TEST_F(KeptEditTest, ANormalEndKeepsOnlyWhatWasNotExported) {
    const auto isKept = [] { return QFile::exists(path("state/edit")); };
    open(sound("Main.wav", 4, 0.25F));
    keptOnceItHolds("Main.wav");
    KeptEdit other(path("state/edit"));
    EXPECT_EQ(other.leftName(), QString()) << "it is being edited";
    restart({});
    open(sound("Main.wav", 4, 0.25F));
    keptOnceItHolds("Main.wav");
    manager.reset();
    kept.reset();
    EXPECT_FALSE(isKept()) << "it was only opened";
    restart({});
    open(sound("Main.wav", 4, 0.25F));
    select(1, 2);
    manager.reset();
    kept.reset();
    EXPECT_TRUE(isKept());
    restart(test::contents(path("state/edit")));
    manager->continueLeft();
    ASSERT_TRUE(until([&] { return manager->isReady(); }));
    manager->showExportInfo();
    manager->exporting().selectExportFormat("wav");
    EXPECT_TRUE(manager->exportAudio().isEmpty());
    manager->savePanelShouldClose(path("Part"));
    ASSERT_TRUE(until([&] { return QFile::exists(path("Part.wav")) && manager->isReady(); }));
    manager.reset();
    kept.reset();
    EXPECT_FALSE(isKept());
}

} // namespace
} // namespace cantorel
