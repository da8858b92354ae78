#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/movie/PictureSource.h"

#include <QRect>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace cantorel::media {

// A display that can be recorded: a value.
struct Display {
    std::uint32_t id = 0; // of the display server; never 0
    QString name;
    QRect frame;            // in points, in the space that all displays share
    double scaleFactor = 1; // pixels of a point

    bool operator==(const Display &) const = default;
};

// A camera: a value. uniqueID names the same one at the next start.
struct Camera {
    QString uniqueID;
    QString localizedName;

    bool operator==(const Camera &) const = default;
};

// How large the pictures of a camera are at most.
enum class CameraQuality { High, Medium, Low };

inline constexpr PictureSize largestSize(CameraQuality quality) {
    return quality == CameraQuality::High     ? PictureSize{1920, 1080}
           : quality == CameraQuality::Medium ? PictureSize{1280, 720}
                                              : PictureSize{640, 480};
}

// What is to be seen of a display.
struct DisplayRequest {
    std::uint32_t display = 0;   // 0: the main one
    std::optional<QRect> region; // in points of the shared space; none: all of it, also when its size changes
    bool showsCursor = true;
};

// Finds displays and cameras. All functions have a body that finds nothing, for who has only one of the two kinds.
// Main thread.
class PictureSources {
public:
    virtual ~PictureSources() = default;

    // The main one first. Fails with one sentence where none can be recorded; where the desktop asks the person which
    // one, they are ways to ask without a frame, and the size is known with the first picture.
    virtual foundation::Result<std::vector<Display>> displays();
    // Fails for a display that is not there and for a region outside of it.
    virtual foundation::Result<std::unique_ptr<PictureSource>> openDisplay(const DisplayRequest &request);

    virtual std::vector<Camera> cameras() { return {}; }
    virtual foundation::Result<std::unique_ptr<PictureSource>> openCamera(const QString &uniqueID,
                                                                          CameraQuality quality = CameraQuality::High);
};

// Lends the sources to the recorders while it lives. One at a time; made by the composition root.
class InstalledPictureSources {
public:
    explicit InstalledPictureSources(std::unique_ptr<PictureSources> sources);
    ~InstalledPictureSources();
    InstalledPictureSources(const InstalledPictureSources &) = delete;
    InstalledPictureSources &operator=(const InstalledPictureSources &) = delete;

    // Those of the living installation; without one, sources that find nothing.
    static PictureSources &current();

private:
    std::unique_ptr<PictureSources> mSources;
};

} // namespace cantorel::media
