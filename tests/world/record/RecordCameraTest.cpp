// "record-camera", and "record-screen" where the desktop shares the screen, as programs of their own.

#include "tests/support/FakeScreenCast.h"
#include "tests/support/Movie.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/VideoNode.h"
#include "tests/world/record/RecordProgram.h"

namespace cantorel {
namespace {

using test::eventually;
using test::expectOneSentence;
using test::VideoNode;

class RecordPicturesTest : public test::RecordProgramTest {
protected:
    std::unique_ptr<Run> record(const char *command, const QStringList &options) const {
        auto run = std::make_unique<Run>();
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("WAYLAND_DISPLAY", "wayland-of-the-test");
        run->process.setProcessEnvironment(environment);
        run->process.start(CANTOREL_CLI, QStringList{command, "--json", "--output", mFile} + options);
        run->process.waitForStarted(5000);
        return run;
    }

    test::PrivateWorld mWorld;
    const QString mFile = mFolder.path() + "/movie.mp4";
};

} // namespace

TEST_F(RecordPicturesTest, ACameraIsRecordedWithTheMicrophone) {
    const VideoNode front("front", "Front camera", {640, 360});
    ASSERT_TRUE(eventually([&] { return front.id() != 0; }));
    const VideoNode back("back", "Back camera", {320, 240});
    ASSERT_TRUE(eventually([&] { return back.id() != 0; }));
    const struct {
        QStringList options;
        int width;
        const char *sound;
    } cases[] = {{{"--fps", "15"}, 640, "aac"}, {{"--camera", "Back camera", "--audio", "off"}, 320, ""}};
    for (const auto &[options, width, sound] : cases) {
        const auto run = record("record-camera", QStringList{"--seconds", "1.5"} + options);
        ASSERT_EQ(run->status(), 0) << run->error.toStdString();
        const QJsonObject finished = run->event("finished");
        EXPECT_EQ(finished["width"].toInt(), width);
        EXPECT_NEAR(finished["seconds"].toDouble(), 1.5, 0.3);
        EXPECT_EQ(test::factOf(mFile, "v", "stream=width").toInt(), width);
        EXPECT_EQ(test::factOf(mFile, "a", "stream=codec_name"), sound);
        const auto pictures = test::picturesOf(mFile).size();
        EXPECT_GE(pictures, width == 640 ? 15U : 30U);
        EXPECT_LE(pictures, width == 640 ? 30U : 60U);
    }
}

TEST_F(RecordPicturesTest, WhatACameraDoesNotGiveIsOneSentence) {
    const auto none = record("record-camera", {"--seconds", "1"});
    EXPECT_EQ(none->status(), 1);
    expectOneSentence(none->lastLine(), "camera");
    auto front = std::make_unique<VideoNode>("front", "Front camera", media::PictureSize{640, 360});
    ASSERT_TRUE(eventually([&] { return front->id() != 0; }));
    const auto other = record("record-camera", {"--seconds", "1", "--camera", "Other"});
    EXPECT_EQ(other->status(), 1);
    expectOneSentence(other->lastLine(), "Front camera");
    const auto unplugged = record("record-camera", {});
    ASSERT_TRUE(unplugged->begins());
    front.reset();
    EXPECT_EQ(unplugged->status(), 1);
    expectOneSentence(unplugged->lastLine(), "kept in");
    EXPECT_EQ(unplugged->event("failed")["kept"].toString(), mFile);
    EXPECT_GE(test::picturesOf(mFile).size(), 1U);
}

TEST_F(RecordPicturesTest, UnderWaylandTheDesktopSharesTheScreen) {
    const test::PrivateBus bus;
    test::FakeScreenCast portal;
    const VideoNode screen("screen", "Screen", {641, 401});
    ASSERT_TRUE(eventually([&] { return screen.id() != 0; }));
    portal.node = screen.id();
    for (const char *token : {"", "token-1"}) {
        const auto run = record("record-screen", {"--seconds", "1.5"});
        ASSERT_EQ(run->status(), 0) << run->error.toStdString();
        EXPECT_EQ(portal.selected.value("restore_token").toString(), token) << "the person is asked once";
        EXPECT_EQ(run->event("finished")["width"].toInt(), 640);
        EXPECT_EQ(run->event("finished")["height"].toInt(), 400);
        EXPECT_GE(test::picturesOf(mFile).size(), 20U);
        EXPECT_TRUE(eventually([&] { return portal.session.isEmpty(); })) << "nothing stays shared";
    }
    const auto part = record("record-screen", {"--region", "0,0,100,100"});
    EXPECT_EQ(part->status(), 1);
    expectOneSentence(part->lastLine(), "Wayland");
    portal.responses["Start"] = 1;
    QFile::remove(mFile);
    const auto denied = record("record-screen", {"--seconds", "1"});
    EXPECT_EQ(denied->status(), 1);
    expectOneSentence(denied->lastLine(), "allow");
    EXPECT_FALSE(QFile::exists(mFile));
}

} // namespace cantorel
