#include "capture/ZQAVVideoWritter.h"

namespace cantorel {

ZQAVVideoWritter::ZQAVVideoWritter(const QString &outputFilePath, const media::VideoSettings &pictures,
                                   int audioChannel, int sampleRate)
    : ZQAVWritter(outputFilePath, pictures.size.width, pictures.size.height, audioChannel, sampleRate) {
    const media::PictureSize size = mSettings.pictures.size; // made even
    mSettings.pictures = pictures;
    mSettings.pictures.size = size;
}

} // namespace cantorel
