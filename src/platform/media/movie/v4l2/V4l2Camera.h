#pragma once

#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/v4l2/VideoDevices.h"

#include <memory>
#include <vector>

namespace cantorel::media {

// A device of Video4Linux that takes pictures.
struct V4l2Device {
    QString path;
    Camera camera;
};

// Every one that is there now, in the order of their numbers. Not on a real-time thread.
std::vector<V4l2Device> v4l2Cameras(VideoDevices &devices);

// Takes pictures from a camera by Video4Linux, on a thread of its own ("camera"). The camera is first asked at start().
class V4l2Camera : public PictureSource {
public:
    // devices outlive it.
    V4l2Camera(VideoDevices &devices, V4l2Device device, CameraQuality quality);
    ~V4l2Camera() override;

    PictureSize size() const override { return mSize; }
    foundation::Result<void> start(PictureSink &sink, int picturesPerSecond) override;
    void stop() override;

private:
    class Stream;

    VideoDevices &mDevices;
    const V4l2Device mDevice;
    const CameraQuality mQuality;
    PictureSize mSize;
    std::unique_ptr<Stream> mStream; // while started
};

} // namespace cantorel::media
