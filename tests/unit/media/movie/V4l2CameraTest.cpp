#include "platform/media/movie/v4l2/V4l2Camera.h"

#include "platform/foundation/Guarded.h"
#include "platform/media/movie/v4l2/V4l2Format.h"
#include "tests/support/FakeCamera.h"
#include "tests/support/PrivateWorld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>

namespace cantorel::media {
namespace {

using test::eventually;
using test::FakeCamera;

class NotingSink : public PictureSink {
public:
    std::vector<int> values() const {
        return mValues.with([](const auto &all) { return all; });
    }
    std::string end() const {
        return mEnd.with([](const auto &end) { return end; });
    }
    void hold() { mGate.lock(); }
    void letGo() { mGate.unlock(); }

    void takePicture(const Picture &picture) override {
        mValues.with([&](auto &all) { all.push_back(picture.planes[0][picture.bytes - 1]); });
        const std::lock_guard lock(mGate);
    }
    void pictureSourceEnded(const foundation::Failure &why) override {
        mEnd.with([&](auto &end) { end += why.sentence.key(); });
    }

private:
    foundation::Guarded<std::vector<int>> mValues;
    foundation::Guarded<std::string> mEnd;
    std::mutex mGate;
};

class V4l2CameraTest : public testing::Test {
protected:
    FakeCamera &fake() { return devices.cameras.first(); }
    std::unique_ptr<V4l2Camera> camera() {
        return std::make_unique<V4l2Camera>(devices, V4l2Device{"/dev/video0", {"id", "Camera"}}, CameraQuality::High);
    }

    test::FakeVideoDevices devices;
    NotingSink sink;
};

TEST_F(V4l2CameraTest, OnlyDevicesThatTakePicturesAreCameras) {
    const auto add = [this](const char *path, const char *name, const char *bus) -> FakeCamera & {
        FakeCamera &added = devices.cameras[path];
        added.name = name;
        added.bus = bus;
        return added;
    };
    devices.cameras.clear();
    add("/dev/video10", "Second", "usb-2");
    add("/dev/video2", "First", "usb-1");
    add("/dev/video3", "First", "usb-1").does = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    add("/dev/video4", "Infrared", "usb-1").formats = {{V4L2_PIX_FMT_GREY}};
    add("/dev/video5", "Other lens", "usb-1");
    add("/dev/video6", "Forbidden", "usb-3").opening = EACCES;
    QStringList found;
    for (const V4l2Device &device : v4l2Cameras(devices))
        found << device.path + ' ' + device.camera.uniqueID + ' ' + device.camera.localizedName;
    EXPECT_EQ(found.join(", ").toStdString(), "/dev/video2 v4l2:usb-1 First, /dev/video5 v4l2:usb-1#2 Other lens, "
                                              "/dev/video10 v4l2:usb-2 Second");
}

TEST_F(V4l2CameraTest, TheLargestPicturesAtThePaceAreChosen) {
    const FakeCamera::Format small{V4L2_PIX_FMT_YUYV, 640, 480, 30}, slow{V4L2_PIX_FMT_YUYV, 1280, 720, 10},
        packed{V4L2_PIX_FMT_MJPEG, 1280, 720, 30}, same{V4L2_PIX_FMT_MJPEG, 640, 480, 60},
        huge{V4L2_PIX_FMT_MJPEG, 3840, 2160, 30}, grey{V4L2_PIX_FMT_GREY, 1920, 1080, 60};
    const struct {
        std::vector<FakeCamera::Format> formats;
        CameraQuality quality;
        int pace, width;
        std::uint32_t code;
    } cases[] = {{{small, slow, packed}, CameraQuality::High, 30, 1280, V4L2_PIX_FMT_MJPEG},
                 {{small, slow}, CameraQuality::High, 30, 640, V4L2_PIX_FMT_YUYV},
                 {{small, slow}, CameraQuality::High, 10, 1280, V4L2_PIX_FMT_YUYV},
                 {{same, small}, CameraQuality::High, 60, 640, V4L2_PIX_FMT_YUYV},
                 {{packed, small}, CameraQuality::Low, 30, 640, V4L2_PIX_FMT_YUYV},
                 {{huge, packed}, CameraQuality::High, 30, 1280, V4L2_PIX_FMT_MJPEG},
                 {{huge}, CameraQuality::Low, 30, 3840, V4L2_PIX_FMT_MJPEG},
                 {{huge, packed}, CameraQuality::Low, 30, 1280, V4L2_PIX_FMT_MJPEG},
                 {{small, grey}, CameraQuality::High, 30, 640, V4L2_PIX_FMT_YUYV}};
    for (const auto &c : cases) {
        fake().formats = c.formats;
        const auto device = devices.open("/dev/video0");
        const auto chosen = chooseFormat(devices, device.get(), c.quality, c.pace);
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->size.width, c.width) << &c - cases;
        EXPECT_EQ(chosen->code, c.code) << &c - cases;
    }
    fake().formats = {grey};
    EXPECT_FALSE(chooseFormat(devices, 0, CameraQuality::High, 30));
}

TEST_F(V4l2CameraTest, PicturesComeInOrderTornOnesDoNotAndAllIsGivenBack) {
    auto source = camera();
    ASSERT_TRUE(source->start(sink, 100000));
    EXPECT_EQ(source->size(), (PictureSize{640, 480}));
    for (const int value : {1, 2, 3, 4, 5, 6, 7}) {
        const bool isTorn = value == 3;
        ASSERT_TRUE(devices.bring(std::uint8_t(value), value == 5 ? V4L2_BUF_FLAG_ERROR : 0, isTorn ? 100 : 0));
        ASSERT_TRUE(eventually([&] { return devices.freeBuffers() == 4; })) << value;
    }
    EXPECT_THAT(sink.values(), testing::ElementsAre(1, 2, 4, 6, 7));
    source->stop();
    EXPECT_EQ(devices.streaming, 0);
    EXPECT_EQ(devices.mapped, 0);
    EXPECT_EQ(sink.end(), "");
    ASSERT_TRUE(source->start(sink, 30)) << "it may be started again";
}

TEST_F(V4l2CameraTest, ASinkThatIsSlowGetsTheNewest) {
    auto source = camera();
    sink.hold();
    ASSERT_TRUE(source->start(sink, 100000));
    ASSERT_TRUE(devices.bring(1));
    ASSERT_TRUE(eventually([&] { return sink.values().size() == 1; }));
    for (const int value : {2, 3, 4})
        ASSERT_TRUE(devices.bring(std::uint8_t(value)));
    sink.letGo();
    ASSERT_TRUE(eventually([&] { return devices.freeBuffers() == 4; }));
    EXPECT_THAT(sink.values(), testing::ElementsAre(1, 4));
}

TEST_F(V4l2CameraTest, WhyACameraCannotBeUsedIsOneSentence) {
    const struct {
        unsigned long request; // 0: opening
        int error;
        const char *sentence;
    } cases[] = {{0, EBUSY, "CameraBusy"},
                 {0, ENOENT, "CameraGone"},
                 {0, EACCES, "NotOpened"},
                 {VIDIOC_S_FMT, EBUSY, "CameraBusy"},
                 {VIDIOC_ENUM_FMT, EINVAL, "NotOpened"},
                 {VIDIOC_REQBUFS, EBUSY, "CameraBusy"},
                 {VIDIOC_QUERYBUF, EINVAL, "NotOpened"},
                 {VIDIOC_STREAMON, EBUSY, "CameraBusy"},
                 {VIDIOC_STREAMON, ENODEV, "CameraGone"}};
    for (const auto &c : cases) {
        fake() = {};
        (c.request == 0 ? fake().opening : fake().errors[c.request]) = c.error;
        const auto started = camera()->start(sink, 30);
        ASSERT_FALSE(started) << c.request;
        EXPECT_EQ(started.failure().sentence.key(), c.sentence) << c.request;
        EXPECT_EQ(devices.mapped, 0) << c.request;
        EXPECT_EQ(devices.streaming, 0) << c.request;
    }
}

TEST_F(V4l2CameraTest, ACameraThatIsUnpluggedEndsOnce) {
    for (const unsigned long request : {VIDIOC_DQBUF, VIDIOC_QBUF}) {
        NotingSink one;
        fake() = {};
        auto source = camera();
        ASSERT_TRUE(source->start(one, 30));
        devices.fail(request, ENODEV);
        (void)devices.bring(1); // There may be no buffer for it.
        ASSERT_TRUE(eventually([&] { return !one.end().empty(); }));
        source->stop();
        EXPECT_EQ(one.end(), "CameraGone");
    }
}

} // namespace
} // namespace cantorel::media
