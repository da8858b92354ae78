#pragma once

#include "editor/models/WaveGeometry.h"
#include "editor/models/ZQAudioTools.h"

#include <QColor>
#include <QImage>

namespace cantorel {

inline QColor colourOf(const WaveColour &colour) {
    return QColor::fromRgbF(static_cast<float>(colour.red), static_cast<float>(colour.green),
                            static_cast<float>(colour.blue), static_cast<float>(colour.alpha));
}

// Paints the wave, with the ground of the focused selection and the colours of all, into a picture of Format_RGB32 as
// large as the geometry in points; its device pixel ratio is how many pixels a point has. Only the pixels from first up
// to, not with, end are touched, from top to bottom. Any thread.
void paintWave(QImage &picture, const WaveGeometry &geometry, const ZQAudioTools::Entities &entities, int first,
               int end);

} // namespace cantorel
