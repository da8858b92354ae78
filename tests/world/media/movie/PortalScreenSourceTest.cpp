#include "platform/media/movie/portal/PortalScreenSource.h"

#include "tests/support/FakeScreenCast.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/VideoNode.h"

#include <atomic>
#include <mutex>

namespace cantorel::media {
namespace {

using test::eventually;
using test::FakeScreenCast;
using test::VideoNode;

class CountingSink : public PictureSink {
public:
    std::atomic<int> pictures = 0;
    QStringList ends() const {
        const std::lock_guard lock(mMutex);
        return mEnds;
    }
    void takePicture(const Picture &) override { ++pictures; }
    void pictureSourceEnded(const foundation::Failure &why) override {
        const std::lock_guard lock(mMutex);
        const std::string_view key = why.sentence.key();
        mEnds << QString::fromLatin1(key.data(), qsizetype(key.size()));
    }

private:
    mutable std::mutex mMutex;
    QStringList mEnds;
};

// A portal that shares nothing yet, and a source that asks it.
class PortalScreenSourceTest : public testing::Test {
protected:
    PortalScreenSource source{[] { return QDBusConnection::sessionBus(); },
                              {true, [this] { return kept; }, [this](const QString &token) { kept = token; }}};
    QString kept;
    CountingSink sink;
    const test::PrivateBus bus;
    FakeScreenCast portal;
};

class SharedScreenTest : public PortalScreenSourceTest {
protected:
    void share() {
        ASSERT_TRUE(eventually([&] { return screen.id() != 0; }));
        portal.node = screen.id();
        ASSERT_TRUE(source.start(sink, 30));
    }
    test::PrivateWorld world;
    VideoNode screen{"screen", "Screen", {640, 400}};
};

TEST_F(SharedScreenTest, PicturesComeWheneverTheAnswersDo) {
    for (const auto pace :
         {FakeScreenCast::Pace::AfterReply, FakeScreenCast::Pace::BeforeReply, FakeScreenCast::Pace::WhenTold}) {
        portal.calls.clear();
        portal.pace = pace;
        sink.pictures = 0;
        share();
        ASSERT_TRUE(eventually([&] {
            if (portal.hasHeld())
                portal.answerNow();
            return sink.pictures >= 3;
        }));
        EXPECT_EQ(portal.calls.join(' '), "CreateSession SelectSources Start OpenPipeWireRemote");
        EXPECT_EQ(source.size(), (PictureSize{640, 400})) << "of the pictures, not in points";
        EXPECT_EQ(source.position(), QPoint(1920, 0));
        source.stop();
        EXPECT_TRUE(eventually([&] { return portal.calls.last() == "CloseSession"; }));
    }
    EXPECT_TRUE(sink.ends().isEmpty());
}

TEST_F(SharedScreenTest, ThePersonIsNotAskedAnewForWhatWasChosen) {
    share();
    ASSERT_TRUE(eventually([&] { return sink.pictures > 0; }));
    EXPECT_EQ(portal.selected.value("persist_mode").toUInt(), 2u);
    EXPECT_EQ(portal.selected.value("cursor_mode").toUInt(), 2u);
    EXPECT_EQ(portal.selected.value("types").toUInt(), 3u);
    EXPECT_FALSE(portal.selected.contains("restore_token"));
    EXPECT_EQ(kept, "token-1");
    source.stop();
    portal.grants = "token-2"; // one serves once
    portal.properties = {{"AvailableSourceTypes", 1u}, {"AvailableCursorModes", 1u}};
    share();
    EXPECT_TRUE(eventually([&] { return kept == "token-2"; }));
    EXPECT_EQ(portal.selected.value("restore_token").toString(), "token-1");
    EXPECT_EQ(portal.selected.value("types").toUInt(), 1u);
    EXPECT_FALSE(portal.selected.contains("cursor_mode")) << "an option that is not on offer fails as a whole";
}

TEST_F(SharedScreenTest, WhatTheDesktopEndsIsToldOnce) {
    for (const bool byPortal : {true, false}) {
        VideoNode one("one", "One", {320, 200});
        auto shared = std::make_unique<VideoNode>("shared", "Shared", PictureSize{320, 200});
        CountingSink sinkOfOne;
        ASSERT_TRUE(eventually([&] { return shared->id() != 0; }));
        portal.node = shared->id();
        ASSERT_TRUE(source.start(sinkOfOne, 30));
        ASSERT_TRUE(eventually([&] { return sinkOfOne.pictures > 0; }));
        if (byPortal)
            portal.closeSession();
        shared.reset(); // it goes with the session, or first
        ASSERT_TRUE(eventually([&] { return !sinkOfOne.ends().isEmpty(); }));
        if (!byPortal)
            portal.closeSession();
        portal.calls.clear();
        source.stop();
        EXPECT_EQ(sinkOfOne.ends(), QStringList("ScreenShareEnded")) << byPortal;
    }
}

TEST_F(PortalScreenSourceTest, WhatIsNotSharedIsToldInOneSentence) {
    const struct {
        const char *method;
        int response; // -1: an error
        const char *sentence;
    } cases[] = {{"CreateSession", -1, "ScreenNotShared"},
                 {"CreateSession", 2, "ScreenNotShared"},
                 {"SelectSources", 2, "ScreenNotShared"},
                 {"SelectSources", -1, "ScreenNotShared"},
                 {"Start", 1, "ScreenDenied"},
                 {"Start", 2, "ScreenNotShared"},
                 {"Start", -1, "ScreenNotShared"},
                 {"OpenPipeWireRemote", -1, "ScreenNotShared"},
                 {"GetAll", -1, "NoScreenPortal"}};
    for (const auto &c : cases) {
        CountingSink one;
        portal.responses.clear();
        portal.fails.clear();
        if (c.response < 0)
            portal.fails = c.method;
        else
            portal.responses[c.method] = uint(c.response);
        ASSERT_TRUE(source.start(one, 30));
        ASSERT_TRUE(eventually([&] { return !one.ends().isEmpty(); })) << c.method;
        EXPECT_EQ(one.ends(), QStringList(c.sentence)) << c.method << c.response;
        EXPECT_TRUE(eventually([&] { return portal.session.isEmpty(); })) << "no session is left open";
    }
    kept = "token";
    portal.responses = {{"Start", 1}};
    portal.fails.clear();
    ASSERT_TRUE(source.start(sink, 30));
    ASSERT_TRUE(eventually([&] { return !sink.ends().isEmpty(); }));
    EXPECT_EQ(kept, "token") << "a refusal forgets no choice";
}

TEST_F(PortalScreenSourceTest, AnAnswerBehindAStopBringsNothing) {
    portal.pace = FakeScreenCast::Pace::WhenTold;
    for (const int steps : {0, 1, 2}) {
        portal.calls.clear();
        ASSERT_TRUE(source.start(sink, 30));
        for (int step = 0; step <= steps; ++step) {
            ASSERT_TRUE(eventually([&] { return portal.hasHeld(); }));
            if (step < steps)
                portal.answerNow();
        }
        source.stop();
        ASSERT_TRUE(eventually([&] { return portal.calls.contains("CloseSession"); })) << steps;
        EXPECT_TRUE(portal.calls.contains("Close")) << "the question is taken back";
        const auto asked = portal.calls.size();
        portal.answerNow();
        QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"));
        QCoreApplication::processEvents();
        EXPECT_EQ(portal.calls.size(), asked) << steps;
    }
    EXPECT_TRUE(sink.ends().isEmpty());
}

TEST(PortalScreenSource, WithoutAPortalOrABusThereIsASentence) {
    const test::PrivateBus bus;
    CountingSink sink;
    PortalScreenSource source([] { return QDBusConnection::sessionBus(); }, {});
    ASSERT_TRUE(source.start(sink, 30));
    ASSERT_TRUE(eventually([&] { return !sink.ends().isEmpty(); }));
    EXPECT_EQ(sink.ends(), QStringList("NoScreenPortal"));
    PortalScreenSource busless([] { return QDBusConnection("none"); }, {});
    const auto started = busless.start(sink, 30);
    ASSERT_FALSE(started);
    EXPECT_EQ(started.failure().sentence.key(), "NoDesktopBus");
}

} // namespace
} // namespace cantorel::media
