#pragma once

#include "platform/media/movie/PictureSources.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace cantorel::media {

// A node of the PipeWire server that gives a camera's pictures.
struct PipeWireCamera {
    std::uint32_t node = 0;
    QString path; // the device of Video4Linux that is behind it; empty where there is none
    Camera camera;
};

// Every one that is there now; none without a server. Waits for the server's answer, a second at most.
std::vector<PipeWireCamera> pipeWireCameras();

} // namespace cantorel::media
