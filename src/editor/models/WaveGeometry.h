#pragma once

#include <QByteArray>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <vector>

namespace cantorel {

// Where times and levels stand in the wave area, in points, y downwards from its top: the whole sound always spans the
// whole width. No picture; main thread.
class WaveGeometry {
public:
    static constexpr double kInset = 5;        // time 0 stands here, and the end as far from the right edge
    static constexpr double kScaleHeight = 20; // stays free below the bars

    // False where that changes nothing.
    bool setSize(QSizeF size);
    QSizeF size() const { return mSize; }
    // Whole seconds: what goes beyond them lies beyond the axis.
    void addAudioDuration(std::int32_t seconds) { mAudioDuration = seconds; }
    std::int32_t audioDuration() const { return mAudioDuration; }
    // Signed 16-bit values in the machine's order, one for each group of frames; kept as they are given. part: how much
    // of the sound they are, from its beginning.
    void addAudioWaveData(const QByteArray &levels, double part = 1);

    double waveWidth() const { return mSize.width() - 2 * kInset; }
    double waveHeight() const { return mSize.height() - kScaleHeight; }
    double waveCenterY() const { return waveHeight() * 0.5; }
    double scaleOffset() const; // seconds a point; 0 where there is nothing to spread or no room
    std::int32_t getAllHour() const { return mAudioDuration / 3600; }
    std::int32_t getAllMinutes() const { return mAudioDuration / 60; }

    QPointF getPointWithTime(double seconds) const;
    double transformTimeWithPoint(QPointF point) const;
    QRectF getNewSelectedCutRectWithStartTime(double startTime, double EndTime) const;

    // One a bar, a point wide: the upper left corner, mirrored below the centre line.
    const std::vector<QPointF> &sampleData() const { return mSampleData; }
    double halfHeight(QPointF bar) const { return waveCenterY() - bar.y(); }

private:
    void parseSamples();

    QSizeF mSize;
    std::int32_t mAudioDuration = 0;
    QByteArray mAudioWavaData; // spelling is fixed
    double mPart = 1;
    std::vector<std::int16_t> mAdjustAudioData; // the level of each column
    std::vector<QPointF> mSampleData;
};

} // namespace cantorel
