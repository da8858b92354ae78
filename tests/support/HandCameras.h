#pragma once

#include "platform/media/movie/MovieFailures.h"
#include "platform/media/movie/PictureSources.h"

#include <QMap>

#include <chrono>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel::test {

// Cameras whose pictures a test shows by hand, on its own thread.
class HandCameras : public media::PictureSources {
public:
    std::vector<media::Camera> all{{"front", "Front camera"}, {"back", "Back camera"}};
    std::optional<foundation::Failure> refusal; // of the next starts
    media::PictureSize size{320, 240};
    // What was asked, by camera.
    struct Asked {
        int starts = 0;
        int running = 0;
        int picturesPerSecond = 0;
        media::CameraQuality quality = media::CameraQuality::High;
    };
    QMap<QString, Asked> asked;

    // One picture of that colour, by each camera that runs.
    void show(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
        std::vector<std::uint8_t> pixels;
        for (int i = 0; i < size.width * size.height; ++i)
            pixels.insert(pixels.end(), {blue, green, red, 0});
        media::Picture picture;
        picture.size = size;
        picture.planes[0] = pixels.data();
        picture.strides[0] = size.width * 4;
        picture.bytes = pixels.size();
        picture.hostTime = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        for (Source *source : mRunning)
            source->sink->takePicture(picture);
    }
    void unplug(const foundation::Failure &why) {
        for (Source *source : std::exchange(mRunning, {}))
            source->sink->pictureSourceEnded(why);
    }

    std::vector<media::Camera> cameras() override { return all; }
    foundation::Result<std::unique_ptr<media::PictureSource>> openCamera(const QString &uniqueID,
                                                                         media::CameraQuality quality) override {
        for (const media::Camera &camera : all)
            if (camera.uniqueID == uniqueID) {
                asked[uniqueID].quality = quality;
                return std::unique_ptr<media::PictureSource>(std::make_unique<Source>(*this, uniqueID));
            }
        return media::failures::cameraMissing(uniqueID);
    }

private:
    struct Source : media::PictureSource {
        Source(HandCameras &cameras, QString camera) : owner(cameras), id(std::move(camera)) {}
        ~Source() override { stop(); }
        media::PictureSize size() const override { return sink ? owner.size : media::PictureSize(); }
        foundation::Result<void> start(media::PictureSink &to, int picturesPerSecond) override {
            stop();
            if (owner.refusal)
                return *owner.refusal;
            Asked &about = owner.asked[id];
            ++about.starts;
            ++about.running;
            about.picturesPerSecond = picturesPerSecond;
            sink = &to;
            owner.mRunning.push_back(this);
            return {};
        }
        void stop() override {
            if (!std::exchange(sink, nullptr))
                return;
            --owner.asked[id].running;
            std::erase(owner.mRunning, this);
        }
        HandCameras &owner;
        const QString id;
        media::PictureSink *sink = nullptr;
    };

    std::vector<Source *> mRunning;
};

} // namespace cantorel::test
