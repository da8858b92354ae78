#include "editor/painting/WaveFile.h"
#include "editor/painting/WavePainting.h"

#include <QSaveFile>

namespace cantorel {

namespace {

bool write(const QByteArray &levels, std::int32_t seconds, QSize size, const QString &path) {
    WaveGeometry geometry;
    geometry.setSize(size);
    geometry.addAudioDuration(seconds);
    geometry.addAudioWaveData(levels);
    QImage picture(size, QImage::Format_RGB32);
    if (picture.isNull())
        return false;
    paintWave(picture, geometry, {}, 0, size.width());
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && picture.save(&file, "png") && file.commit();
}

} // namespace

} // namespace cantorel

extern "C" __attribute__((visibility("default"))) bool
cantorel_write_wave(const QByteArray &levels, std::int32_t seconds, QSize size, const QString &path) {
    return cantorel::write(levels, seconds, size, path);
}
