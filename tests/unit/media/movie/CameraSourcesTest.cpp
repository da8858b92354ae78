#include "platform/media/movie/camera/CameraSources.h"

#include "tests/support/FakeCamera.h"

#include <gtest/gtest.h>

namespace cantorel::media {
namespace {

class NoSink : public PictureSink {
    void takePicture(const Picture &) override {}
    void pictureSourceEnded(const foundation::Failure &) override {}
};

TEST(CameraSources, ACameraThatTwoWaysLeadToIsListedOnce) {
    test::FakeVideoDevices devices;
    CameraSources sources(devices, [] {
        return std::vector<PipeWireCamera>{{31, "/dev/video0", {"pipewire:a", "Camera (V4L2)"}},
                                           {32, "", {"pipewire:b", "Camera"}},
                                           {33, "/dev/video9", {"pipewire:c", "Phone"}}};
    });
    QStringList found;
    for (const Camera &camera : sources.cameras())
        found << camera.uniqueID + '=' + camera.localizedName;
    EXPECT_EQ(found.join(", ").toStdString(), "v4l2:usb-1=Camera, pipewire:b=Camera (2), pipewire:c=Phone");
    const auto missing = sources.openCamera("v4l2:usb-9", CameraQuality::High);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.failure().sentence.key(), "CameraMissing");
}

TEST(CameraSources, ABusyCameraIsTakenFromPipeWireWhereThatHasIt) {
    test::FakeVideoDevices devices;
    NoSink sink;
    const struct {
        int error;
        bool hasNode;
        const char *sentence;
    } cases[] = {{EBUSY, false, "CameraBusy"},
                 {EBUSY, true, "NoPictures"}, // which is asked: there is no server here
                 {EIO, true, "NotOpened"}};
    for (const auto &c : cases) {
        devices.cameras.first().errors[VIDIOC_S_FMT] = c.error;
        CameraSources sources(devices, [&] {
            return c.hasNode ? std::vector<PipeWireCamera>{{31, "/dev/video0", {"pipewire:a", "Camera"}}}
                             : std::vector<PipeWireCamera>{};
        });
        auto opened = sources.openCamera("v4l2:usb-1", CameraQuality::High);
        ASSERT_TRUE(opened);
        const auto started = opened.value()->start(sink, 30);
        ASSERT_FALSE(started);
        EXPECT_EQ(started.failure().sentence.key(), c.sentence) << c.error << c.hasNode;
    }
}

} // namespace
} // namespace cantorel::media
