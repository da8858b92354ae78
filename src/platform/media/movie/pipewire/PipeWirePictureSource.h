#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/media/movie/PictureSource.h"

#include <cstdint>
#include <memory>

namespace cantorel::media {

// Which node of a PipeWire server pictures are taken from.
struct PictureNode {
    std::uint32_t id = 0;
    foundation::FileDescriptor remote;  // the connection that it is seen through; closed: the default server
    PictureSize size;                   // as far as it is known
    PictureSize largest = {8192, 8192}; // that is taken, where the node offers several
    foundation::Failure whenGone;       // what is told when the node goes, or gives no pictures
};

// Takes pictures from a node of PipeWire: a camera, or what the desktop shares. The server is first asked at start();
// the thread is "pictures". Of pictures that come faster than they are taken the newest is handed over.
class PipeWirePictureSource : public PictureSource {
public:
    explicit PipeWirePictureSource(PictureNode node);
    ~PipeWirePictureSource() override;

    PictureSize size() const override;
    foundation::Result<void> start(PictureSink &sink, int picturesPerSecond) override;
    void stop() override;

private:
    class Stream;

    PictureNode mNode;
    std::unique_ptr<Stream> mStream; // while started
};

} // namespace cantorel::media
