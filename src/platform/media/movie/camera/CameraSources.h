#pragma once

#include "platform/media/movie/PictureSources.h"
#include "platform/media/movie/pipewire/PipeWireCameras.h"
#include "platform/media/movie/v4l2/V4l2Camera.h"

#include <functional>
#include <memory>
#include <vector>

namespace cantorel::media {

// The cameras of the machine: those of Video4Linux, and those that only PipeWire has. A camera that both have is listed
// once; it is taken from Video4Linux, and from PipeWire, which shares it, while another program holds it. Main thread.
class CameraSources : public PictureSources {
public:
    // devices outlive it.
    explicit CameraSources(VideoDevices &devices = systemVideoDevices(),
                           std::function<std::vector<PipeWireCamera>()> nodes = pipeWireCameras);

    // Names that several have are told apart by numbers.
    std::vector<Camera> cameras() override;
    foundation::Result<std::unique_ptr<PictureSource>> openCamera(const QString &uniqueID,
                                                                  CameraQuality quality) override;

private:
    struct Found {
        Camera camera;
        QString path;           // of the device; empty where there is none
        std::uint32_t node = 0; // 0 where there is none
    };
    std::vector<Found> find();

    VideoDevices &mDevices;
    const std::function<std::vector<PipeWireCamera>()> mNodes;
};

} // namespace cantorel::media
