#include "editor/ZQAudioEditorManager.h"

#include "lang/Lang.h"
#include "platform/media/asset/OpenAsset.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/Wave.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <vector>

namespace cantorel {
namespace {

using State = ZQAudioEditorManager::State;

struct EditorManager : testing::Test {
    EditorManager() {
        QObject::connect(&manager, &ZQAudioEditorManager::stateChanged, [this] {
            if (states.empty() || states.back() != manager.state())
                states.push_back(manager.state());
        });
        QObject::connect(&manager, &ZQAudioEditorManager::told,
                         [this](const foundation::Sentence &trouble) { told << Lang::sentence(trouble); });
        QObject::connect(&manager, &ZQAudioEditorManager::openTheCompletedAudios,
                         [this](const QStringList &paths) { made << paths; });
    }
    static QUrl sound(const char *name, int seconds) {
        const QString path = QDir::homePath() + '/' + name;
        EXPECT_TRUE(test::writeWav(path, std::vector<float>(static_cast<std::size_t>(seconds) * 96000, 0.25F)));
        return QUrl::fromLocalFile(path);
    }
    // Time passes only where it is told to.
    bool becomes(State state, int step = 50) {
        return test::eventually([&] {
            world.advance(step);
            return manager.state() == state;
        });
    }
    void open(const QUrl &url) {
        manager.editAudioWithURL(url);
        ASSERT_TRUE(becomes(State::Ready));
        states.clear();
    }
    void select(double start, double end) {
        manager.AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(start, start, kStartTimeControl);
        manager.AudioCutInfoDelegate_UpdateSelectedCutEntityStartTime(end, end, kEndTimeControl);
        ASSERT_EQ(manager.cuts().ranges().back(), (CutList::Range{start, end, true}));
    }
    // As far as the question for a name.
    void askToExport() {
        manager.showExportInfo();
        manager.exporting().selectExportFormat("wav");
        manager.exportAudio();
    }

    test::EmbeddedWorld world;
    ZQAudioEditorManager manager{*world.clock};
    std::vector<State> states;
    QStringList told, made;
};

TEST_F(EditorManager, WhatAnEarlierOpeningStillHasToTellIsDropped) {
    const QUrl first = sound("First.wav", 4), second = sound("Second.wav", 2);
    manager.waveSizeDidChange({210, 120});
    open(first);
    select(1, 3);
    manager.editAudioWithURL(first);
    manager.editAudioWithURL(second); // while the first is read
    ASSERT_TRUE(becomes(State::Completed, 0));
    EXPECT_EQ(manager.geometry().audioDuration(), 0) << "nothing is placed before it is shown";
    manager.editAudioWithURL(first); // while the second waits to be shown
    world.advance(1000);
    EXPECT_EQ(manager.state(), State::Analysing);
    manager.editAudioWithURL(second);
    ASSERT_TRUE(becomes(State::Ready));
    EXPECT_EQ(states, (std::vector{State::Ready, State::Analysing, State::Completed, State::Analysing, State::Completed,
                                   State::Ready}));
    EXPECT_EQ(manager.audioFileName(), "Second.wav");
    EXPECT_EQ(manager.geometry().audioDuration(), 2);
    while (manager.canUndo()) {
        manager.undo();
        ASSERT_TRUE(becomes(State::Ready));
        if (!manager.cuts().isEmpty())
            break;
    }
    EXPECT_EQ(manager.audioFileName(), "First.wav");
    EXPECT_EQ(manager.cuts().ranges(), (QList<CutList::Range>{{1, 3, true}})) << "it was not lost";
}

TEST_F(EditorManager, WhatIsExportedIsWhatThereWasWhenItWasConfirmed) {
    manager.waveSizeDidChange({210, 120});
    open(sound("Sound.wav", 4));
    select(1, 2.5);
    askToExport();
    manager.clearAllSelectedCutEntitys(); // while the name is asked for
    manager.exporting().selectExportFormat("flac");
    manager.savePanelShouldClose(QDir::homePath() + "/Part.m4a");
    EXPECT_EQ(manager.state(), State::Ready);
    ASSERT_TRUE(becomes(State::Exporting));
    manager.editAudioWithURL(sound("Other.wav", 2));
    EXPECT_EQ(manager.state(), State::Exporting) << "it is not left in the middle";
    ASSERT_TRUE(becomes(State::Ready));
    EXPECT_EQ(states, (std::vector{State::Ready, State::Exporting, State::Completed, State::Ready}));
    EXPECT_EQ(told, QStringList());
    ASSERT_EQ(made, QStringList(QDir::homePath() + "/Part.wav"));
    const auto exported = media::openAsset(QUrl::fromLocalFile(made.first()));
    ASSERT_TRUE(exported);
    EXPECT_NEAR(exported.value()->duration().seconds(), 1.5, 0.05);
}

TEST_F(EditorManager, WhereNothingWasWrittenTheReasonIsToldAndNothingElse) {
    manager.waveSizeDidChange({210, 120});
    open(sound("Sound.wav", 4));
    askToExport();
    test::store(QDir::homePath() + "/file", "no folder");
    manager.savePanelShouldClose(QDir::homePath() + "/file/Part.m4a");
    ASSERT_TRUE(becomes(State::Exporting));
    ASSERT_TRUE(becomes(State::Ready));
    EXPECT_EQ(states, (std::vector{State::Ready, State::Exporting, State::Ready})) << "never completed";
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().contains("file")) << told.first().toStdString();
    EXPECT_EQ(made, QStringList());
    EXPECT_TRUE(manager.canExport()) << "to be tried again";
}

} // namespace
} // namespace cantorel
