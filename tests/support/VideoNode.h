#pragma once

#include "platform/media/movie/Picture.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace cantorel::test {

// A camera of the private world: a node that gives numbered pictures at an even pace, from the moment when somebody
// takes them. They are BGRx; see numberOf().
class VideoNode {
public:
    VideoNode(const QString &name, const QString &description, media::PictureSize size, int picturesPerSecond = 30);
    ~VideoNode(); // as if it were unplugged

    // Of the node on the server; 0 until it is there.
    std::uint32_t id() const;
    // The pictures from now on.
    void setSize(media::PictureSize size);
    // From now on no new picture comes.
    void standStill();
    // From now on the buffers hold less than their format says.
    void lie();
    // Of the newest picture that was given.
    int number() const;

    // The number of a picture, from the blocks of 16 pixels in its first line; a coder leaves them readable.
    static int numberOf(const std::uint8_t *bgrx);
    static constexpr int kNumberBits = 12;

private:
    struct Stream;
    std::unique_ptr<Stream> mStream;
};

} // namespace cantorel::test
