#include "platform/media/movie/camera/CameraSources.h"

#include "platform/media/movie/CameraFailures.h"
#include "platform/media/movie/MovieFailures.h"
#include "platform/media/movie/pipewire/PipeWirePictureSource.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace cantorel::media {

using foundation::Failure;
using foundation::Result;

namespace {

std::unique_ptr<PictureSource> sourceOfNode(const Camera &camera, std::uint32_t node, CameraQuality quality) {
    PictureNode wanted;
    wanted.id = node;
    wanted.largest = largestSize(quality);
    wanted.whenGone = failures::cameraGone(camera.localizedName, QStringLiteral("a camera of PipeWire"));
    return std::make_unique<PipeWirePictureSource>(std::move(wanted));
}

// A camera that another program may hold: that one's pictures are then shared by PipeWire.
class EitherSource : public PictureSource {
public:
    EitherSource(std::unique_ptr<PictureSource> device, std::unique_ptr<PictureSource> node)
        : mDevice(std::move(device)), mNode(std::move(node)) {}

    PictureSize size() const override { return mStarted->size(); }
    Result<void> start(PictureSink &sink, int picturesPerSecond) override {
        stop();
        mStarted = mDevice.get();
        const auto started = mDevice->start(sink, picturesPerSecond);
        if (started || !failures::isCameraBusy(started.failure()))
            return started;
        mStarted = mNode.get();
        return mNode->start(sink, picturesPerSecond);
    }
    void stop() override { mStarted->stop(); }

private:
    const std::unique_ptr<PictureSource> mDevice, mNode;
    PictureSource *mStarted = mDevice.get(); // or was, last
};

} // namespace

CameraSources::CameraSources(VideoDevices &devices, std::function<std::vector<PipeWireCamera>()> nodes)
    : mDevices(devices), mNodes(std::move(nodes)) {}

std::vector<CameraSources::Found> CameraSources::find() {
    std::vector<Found> found;
    for (const V4l2Device &device : v4l2Cameras(mDevices))
        found.push_back({device.camera, device.path, 0});
    for (const PipeWireCamera &node : mNodes()) {
        const auto same = std::find_if(found.begin(), found.end(), [&](const Found &other) {
            return !node.path.isEmpty() && other.path == node.path;
        });
        if (same != found.end())
            same->node = node.node;
        else
            found.push_back({node.camera, {}, node.node});
    }
    QHash<QString, int> named;
    for (Found &one : found)
        if (const int number = ++named[one.camera.localizedName]; number > 1)
            one.camera.localizedName += QStringLiteral(" (%1)").arg(number);
    return found;
}

std::vector<Camera> CameraSources::cameras() {
    std::vector<Camera> cameras;
    for (const Found &found : find())
        cameras.push_back(found.camera);
    return cameras;
}

Result<std::unique_ptr<PictureSource>> CameraSources::openCamera(const QString &uniqueID, CameraQuality quality) {
    const std::vector<Found> all = find();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Found &other) { return other.camera.uniqueID == uniqueID; });
    if (found == all.end())
        return failures::cameraMissing(uniqueID);
    auto node = found->node != 0 ? sourceOfNode(found->camera, found->node, quality) : nullptr;
    if (found->path.isEmpty())
        return node;
    std::unique_ptr<PictureSource> device =
        std::make_unique<V4l2Camera>(mDevices, V4l2Device{found->path, found->camera}, quality);
    if (!node)
        return device;
    return std::unique_ptr<PictureSource>(std::make_unique<EitherSource>(std::move(device), std::move(node)));
}

} // namespace cantorel::media
