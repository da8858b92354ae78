#pragma once

#include <QByteArray>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <vector>

namespace cantorel {

// Where times and levels stand in the wave area, in points, y downwards from its top. The whole sound spans the whole
// width, or the stretch of it that is looked at. No picture; main thread.
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
    // How many levels there are of a second; 0 where it is not known. Where a stretch is looked at, each level stands
    // at its own time; over the whole sound they are spread as they always have been.
    void setLevelsPerSecond(double count) { mLevelsPerSecond = count; }

    // What is looked at: so many times less than the whole, from that second on. Both are kept within what there is; at
    // most a level is as wide as a point. False where that changes nothing.
    bool setView(double start, double zoom);
    // That second stays where it is, as far as it can.
    bool zoomAbout(double seconds, double factor);
    double zoom() const { return mZoom; } // 1: all of it
    double viewStart() const { return mViewStart; }
    double viewSeconds() const { return mAudioDuration / mZoom; }
    double mostZoom() const;
    bool sees(double seconds) const { return seconds >= mViewStart && seconds <= mViewStart + viewSeconds(); }
    const QByteArray &levels() const { return mAudioWavaData; }

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
    void parseView();
    void addBar(int level, double factor);
    std::int64_t count() const { return mAudioWavaData.size() / 2; }
    double levelsPerSecond() const;
    // The greatest mean of so many levels in a row, about.
    double loudestMean(double levels);

    QSizeF mSize;
    std::int32_t mAudioDuration = 0;
    double mLevelsPerSecond = 0;
    double mViewStart = 0; // seconds
    double mZoom = 1;
    std::vector<double> mLoudest; // mean of 1, 8, 64, ... levels; worked out when it is first needed
    QByteArray mAudioWavaData;    // spelling is fixed
    double mPart = 1;
    std::vector<std::int16_t> mAdjustAudioData; // the level of each column
    std::vector<QPointF> mSampleData;
};

} // namespace cantorel
