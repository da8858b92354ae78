#pragma once

#include "capture/ZQAVWritter.h"

namespace cantorel {

// Adds the pictures: H.264 at 8,000,000 bits a second on average. Spelling is fixed.
class ZQAVVideoWritter : public ZQAVWritter {
public:
    ZQAVVideoWritter(const QString &outputFilePath, const media::VideoSettings &pictures, int audioChannel,
                     int sampleRate);
};

} // namespace cantorel
