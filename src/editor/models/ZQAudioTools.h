#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <vector>

namespace cantorel {

class ZQAudioCutEntity;

// A colour by its parts, each 0 to 1, so that models need no library of pictures.
struct WaveColour {
    double red = 0, green = 0, blue = 0, alpha = 1;

    bool operator==(const WaveColour &) const = default;
};

// What several parts of the editor use. Stateless; any thread.
class ZQAudioTools {
public:
    static constexpr QSizeF dragHandleSize() { return {5, 15}; }

    // Of the wave area, in every scheme.
    static constexpr WaveColour normalWaveBackgroundColor() { return {0, 0, 0}; }
    static constexpr WaveColour selectedWaveRectColor() { return {43 / 255.0, 43 / 255.0, 43 / 255.0}; }
    static constexpr WaveColour scaleBackgroundColor() { return {0.2, 0.2, 0.2}; }
    // It fades to nothing away from the centre line.
    static constexpr WaveColour normalWaveGradient() { return {52 / 255.0, 198 / 255.0, 248 / 255.0}; }
    static constexpr WaveColour existedRectColor() { return {1, 0.5, 0}; }
    static constexpr WaveColour focusOnRectColor() { return {1, 1, 3 / 255.0}; }
    static constexpr WaveColour playingPointColor() { return {0, 1, 0}; }

    // How many units that is, toward zero.
    static std::int64_t getNumberFromFloatValue(std::int32_t timescale, double seconds) {
        return static_cast<std::int64_t>(timescale * seconds);
    }
    // Deliberately nothing: no scale is drawn.
    static double getScaleValueFromAudioDuration(double /*seconds*/) { return 0; }

    using Entities = std::vector<const ZQAudioCutEntity *>;
    // A step of playing the selections, in the order of their starts: which one holds that time, and which is played
    // next, behind the last the first again; null for none. Looks from that index on. Times are compared in whole
    // frames of that rate, so that a seek to a start has arrived there.
    static void getCurrentPlayingEntity(const ZQAudioCutEntity *&current, const ZQAudioCutEntity *&next, double seconds,
                                        int index, const Entities &entities, int rate);
};

} // namespace cantorel
