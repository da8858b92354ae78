#include "platform/media/movie/pipewire/PipeWirePictureSource.h"

#include "platform/foundation/Guarded.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/VideoNode.h"

#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace cantorel::media {
namespace {

using test::eventually;
using test::VideoNode;

struct Seen {
    int number = 0;
    PictureSize size;
    std::uint64_t time = 0;
};

class NumberSink : public PictureSink {
public:
    std::atomic<int> slow = 0; // milliseconds
    std::vector<Seen> seen() const {
        return mSeen.with([](const auto &all) { return all; });
    }
    std::size_t count() const { return seen().size(); }
    int ends() const { return mEnds; }

    void takePicture(const Picture &picture) override {
        EXPECT_EQ(picture.layout, PixelLayout::Bgrx);
        // The last pixel as well, so that memory that is not there is noticed.
        const std::uint8_t *last =
            picture.planes[0] + (picture.size.height - 1) * picture.strides[0] + (picture.size.width - 1) * 4;
        EXPECT_EQ(*last, 0x40);
        const Seen one{VideoNode::numberOf(picture.planes[0]), picture.size, picture.hostTime};
        mSeen.with([&](auto &all) { all.push_back(one); });
        QThread::msleep(static_cast<unsigned long>(slow));
    }
    void pictureSourceEnded(const foundation::Failure &) override { ++mEnds; }

private:
    foundation::Guarded<std::vector<Seen>> mSeen;
    std::atomic<int> mEnds = 0;
};

class PipeWirePictureSourceTest : public testing::Test {
protected:
    PipeWirePictureSource sourceOf(const VideoNode &node) {
        EXPECT_TRUE(eventually([&] { return node.id() != 0; }));
        return PipeWirePictureSource({node.id(), {}, {}, {8192, 8192}, {kGone, "gone"}});
    }

    const QString kGone = "The camera has gone.";
    const test::PrivateWorld world;
    NumberSink sink;
};

TEST_F(PipeWirePictureSourceTest, PicturesComeInOrderAndNoFasterThanAsked) {
    const VideoNode node("camera", "Camera", {320, 200}, 60);
    auto source = sourceOf(node);
    ASSERT_TRUE(source.start(sink, 20));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 20; }));
    source.stop();
    const auto seen = sink.seen();
    EXPECT_EQ(source.size(), (PictureSize{320, 200}));
    for (std::size_t i = 1; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].size, (PictureSize{320, 200}));
        EXPECT_GT(seen[i].number, seen[i - 1].number);
        EXPECT_GT(seen[i].time, seen[i - 1].time);
    }
    const double seconds = double(seen.back().time - seen.front().time) / 1e9;
    EXPECT_LE(double(seen.size() - 1) / seconds, 22);
    const auto after = sink.count();
    EXPECT_EQ(sink.ends(), 0);
    ASSERT_TRUE(source.start(sink, 20)) << "it may be started again";
    EXPECT_TRUE(eventually([&] { return sink.count() > after; }));
}

TEST_F(PipeWirePictureSourceTest, TheLastPictureBeforeAStandstillIsHandedOver) {
    VideoNode node("camera", "Camera", {320, 200}, 60);
    auto source = sourceOf(node);
    ASSERT_TRUE(source.start(sink, 10));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 3; }));
    ASSERT_TRUE(eventually([&] { return node.number() > sink.seen().back().number; }));
    node.standStill();
    EXPECT_TRUE(eventually([&] { return sink.seen().back().number == node.number(); }));
}

TEST_F(PipeWirePictureSourceTest, ASinkThatIsSlowGetsTheNewest) {
    const VideoNode node("camera", "Camera", {320, 200}, 60);
    auto source = sourceOf(node);
    sink.slow = 150;
    ASSERT_TRUE(source.start(sink, 60));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 6; }));
    const int behind = node.number() - sink.seen().back().number;
    EXPECT_LE(behind, 2 * 9 + 8) << "what waits is left out";
    const auto before = sink.count();
    source.stop();
    EXPECT_LE(sink.count(), before + 1) << "nor does it hold a stop up";
    EXPECT_EQ(sink.ends(), 0);
}

TEST_F(PipeWirePictureSourceTest, PicturesMayChangeTheirSize) {
    VideoNode node("camera", "Camera", {640, 400});
    auto source = sourceOf(node);
    ASSERT_TRUE(source.start(sink, 30));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 3; }));
    for (const PictureSize size : {PictureSize{800, 600}, PictureSize{200, 100}}) {
        node.setSize(size);
        EXPECT_TRUE(eventually([&] { return sink.seen().back().size == size; })) << size.width;
        EXPECT_EQ(source.size(), size);
    }
    EXPECT_EQ(sink.ends(), 0);
}

TEST_F(PipeWirePictureSourceTest, WhatABufferDoesNotHoldIsNotRead) {
    VideoNode node("camera", "Camera", {640, 400});
    auto source = sourceOf(node);
    ASSERT_TRUE(source.start(sink, 30));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 3; }));
    node.lie();
    const int now = node.number();
    ASSERT_TRUE(eventually([&] { return node.number() >= now + 10; }));
    EXPECT_LE(sink.seen().back().number, now + 1);
    EXPECT_EQ(sink.ends(), 0);
}

TEST_F(PipeWirePictureSourceTest, ANodeOrServerThatGoesIsToldOnce) {
    auto node = std::make_unique<VideoNode>("camera", "Camera", PictureSize{320, 200});
    const VideoNode other("other", "Other", {320, 200}); // what a session manager might take in its place
    auto source = sourceOf(*node);
    ASSERT_TRUE(source.start(sink, 30));
    ASSERT_TRUE(eventually([&] { return sink.count() >= 3; }));
    node.reset();
    ASSERT_TRUE(eventually([&] { return sink.ends() == 1; }));
    EXPECT_EQ(other.number(), 0) << "no other camera is looked through";

    auto second = sourceOf(other);
    NumberSink secondSink;
    ASSERT_TRUE(second.start(secondSink, 30));
    ASSERT_TRUE(eventually([&] { return secondSink.count() >= 3; }));
    const_cast<test::PrivateWorld &>(world).killServer();
    EXPECT_TRUE(eventually([&] { return secondSink.ends() == 1; }));
    source.stop();
    second.stop();
    EXPECT_EQ(sink.ends(), 1);
    EXPECT_EQ(secondSink.ends(), 1);
    const auto none = second.start(secondSink, 30);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.failure().sentence.key(), "NoPictures");
}

TEST_F(PipeWirePictureSourceTest, ANodeThatIsNotThereIsTold) {
    const VideoNode other("other", "Other", {320, 200}); // what a session manager might take in its place
    ASSERT_TRUE(eventually([&] { return other.id() != 0; }));
    PipeWirePictureSource source({4711, {}, {}, {8192, 8192}, {kGone, "gone"}});
    const auto started = source.start(sink, 30);
    EXPECT_TRUE(!started || eventually([&] { return sink.ends() == 1; }));
    EXPECT_EQ(other.number(), 0) << "no other camera is looked through";
}

} // namespace
} // namespace cantorel::media
