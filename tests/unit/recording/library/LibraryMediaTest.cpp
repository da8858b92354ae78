#include "recording/library/LibraryMedia.h"

#include "platform/desktop/recorded/RecordedMediaControls.h"
#include "recording/library/LibraryPlayer.h"
#include "recording/library/RecordedList.h"
#include "recording/library/RecordingsModel.h"
#include "tests/support/Wave.h"
#include "tests/unit/recording/RecordingFixture.h"

namespace cantorel {
namespace {

using Playback = desktop::MediaState::Playback;

// A library of "a", "b", "c" and "d", in this order, of which "c" is being converted.
class LibraryMediaTest : public test::RecordingFixture {
public:
    LibraryMediaTest() {
        for (const char *name : {"a.wav", "b.wav", "c.wav", "d.wav"}) {
            test::writeWav(path(name), std::vector<float>(4 * 48000, 0.25F), 1);
            list.addRecordedFile(path(name), {}, {});
        }
        list.itemWithFile(path("c.wav"))->isProcessing = true;
        model.listDidChange();
        model.sort(RecordingsModel::Title, Qt::AscendingOrder);
    }

    desktop::RecordedMediaControls &desktopSees() {
        return static_cast<desktop::RecordedMediaControls &>(*services.media);
    }
    const desktop::MediaState &state() {
        QCoreApplication::processEvents();
        return desktopSees().state;
    }
    QString played() const { return QFileInfo(player.file()).fileName(); }
    void begin(const char *name) { ASSERT_TRUE(player.play(path(name))); }

    std::shared_ptr<desktop::CallRecord> record = std::make_shared<desktop::CallRecord>();
    desktop::Services services{desktop::recordedServices(record)};
    RecordedList list{QDir::homePath() + "/state", *world.clock};
    RecordingsModel model{list};
    LibraryPlayer player;
    std::unique_ptr<LibraryMedia> media = std::make_unique<LibraryMedia>(player, model, services.media.get());
};

TEST_F(LibraryMediaTest, TheDesktopHearsOfItFromTheFirstPlayToTheEnd) {
    model.search("a");
    media->setRecording(true);
    media->setRecording(false);
    EXPECT_TRUE(record->calls().isEmpty());
    begin("a.wav");
    player.stop();
    begin("b.wav");
    EXPECT_EQ(record->calls(), QStringList{"media offer"});
    media.reset();
    EXPECT_EQ(record->calls().last(), "media withdraw");
}

TEST_F(LibraryMediaTest, TellsWhatIsPlayed) {
    RecordedAudioInfo &item = *list.itemWithFile(path("b.wav"));
    item.setArtist("Artist");
    item.setAlbum("Album");
    begin("b.wav");
    EXPECT_EQ(state().playback, Playback::Playing);
    EXPECT_EQ(state().track, QUrl::fromLocalFile(path("b.wav")));
    EXPECT_EQ(state().title, "b");
    EXPECT_EQ(state().artist, "Artist");
    EXPECT_EQ(state().album, "Album");
    EXPECT_NEAR(state().seconds, 4, 0.01);
    player.pause();
    EXPECT_EQ(state().playback, Playback::Paused);
    player.stop();
    EXPECT_EQ(state().playback, Playback::Stopped);
    EXPECT_TRUE(state().track.isEmpty());
    EXPECT_TRUE(state().canPlay) << "the last one again";
    media->play();
    EXPECT_EQ(played(), "b.wav");
    media->playOrPause();
    EXPECT_FALSE(player.isPlaying());
    media->playOrPause();
    EXPECT_TRUE(player.isPlaying());
    media->stop();
    EXPECT_TRUE(player.file().isEmpty());
}

TEST_F(LibraryMediaTest, NextAndPreviousFollowTheOrderShownPastWhatCannotBePlayed) {
    begin("a.wav");
    EXPECT_TRUE(state().canGoNext);
    EXPECT_FALSE(state().canGoPrevious);
    media->previous();
    EXPECT_EQ(played(), "a.wav");
    media->next();
    EXPECT_EQ(played(), "b.wav");
    media->next();
    EXPECT_EQ(played(), "d.wav") << "c is being converted";
    EXPECT_FALSE(state().canGoNext);
    EXPECT_TRUE(state().canGoPrevious);

    model.sort(RecordingsModel::Title, Qt::DescendingOrder);
    EXPECT_TRUE(state().canGoNext);
    EXPECT_FALSE(state().canGoPrevious);
    ASSERT_TRUE(QFile::remove(path("b.wav")));
    player.pause();
    begin("d.wav");
    model.languageDidChange(); // as when anything in the list has changed
    EXPECT_TRUE(state().canGoNext);
    player.pause();
    media->next();
    EXPECT_EQ(played(), "a.wav") << "the file of b has gone";
    EXPECT_FALSE(player.isPlaying()) << "what is paused stays so";

    model.search("d");
    EXPECT_FALSE(state().canGoNext || state().canGoPrevious) << "it is not shown";
}

TEST_F(LibraryMediaTest, SeeksWhereItPlaysAndWhereItIsPaused) {
    media->seek(1); // Nothing is played.
    begin("a.wav");
    media->seek(3);
    EXPECT_NEAR(player.position(), 3, 0.1);
    EXPECT_TRUE(player.isPlaying());
    player.pause();
    media->seek(1);
    EXPECT_NEAR(media->position(), 1, 0.1);
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(record->calls().count("media jump"), 2);
}

TEST_F(LibraryMediaTest, NoKeyIsHeardInARecording) {
    begin("a.wav");
    player.stop();
    media->setRecording(true);
    EXPECT_FALSE(state().canPlay || state().canGoNext || state().canGoPrevious);
    media->play();
    media->playOrPause();
    media->next();
    EXPECT_TRUE(player.file().isEmpty());
    begin("a.wav"); // in the window, by who wants it
    media->pause();
    EXPECT_FALSE(player.isPlaying());
    media->setRecording(false);
    media->play();
    EXPECT_TRUE(player.isPlaying());
}

TEST_F(LibraryMediaTest, LeadsToTheWindowAndItsEnd) {
    QStringList led;
    media->showWindow();
    media->quit();
    QObject::connect(media.get(), &LibraryMedia::toWindow, media.get(), [&] { led << "window"; });
    QObject::connect(media.get(), &LibraryMedia::toEnd, media.get(), [&] { led << "end"; });
    media->showWindow();
    media->quit();
    EXPECT_EQ(led, (QStringList{"window", "end"}));
}

} // namespace
} // namespace cantorel
