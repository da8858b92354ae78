#pragma once

#include "editor/models/WaveGeometry.h"
#include "editor/models/ZQAudioCutEntity.h"

#include <QList>

#include <cstddef>
#include <memory>
#include <vector>

namespace cantorel {

// What of the wave a pointer stands on. The numbers are fixed.
enum class CutHit { None = -1, New = 0, Body = 1, LeftEdge = 2, RightEdge = 3 };

// The selections, in the order of their starts; at most one has the focus. They don't overlap, but right after one was
// added within another. Main thread.
class CutList {
public:
    // geometry: outlives the list.
    explicit CutList(const WaveGeometry &geometry) : mGeometry(geometry) {}

    using Entities = std::vector<std::unique_ptr<ZQAudioCutEntity>>;
    const Entities &all() const { return mEntities; }
    bool isEmpty() const { return mEntities.empty(); }
    ZQAudioTools::Entities pointers() const;
    ZQAudioCutEntity *getFocusOnCutEntity() const; // null for none
    std::size_t indexOf(const ZQAudioCutEntity *entity) const;
    void focus(const ZQAudioCutEntity *entity); // null for none

    // The pointer stands there; the first one in order that is near enough.
    CutHit hit(QPointF point, ZQAudioCutEntity *&entity) const;
    // Its edge is led to x, between its neighbours and within the wave, at least 2 points from its other edge.
    void dragEdge(ZQAudioCutEntity &entity, CutHit edge, double x);

    // At that place of the wave, 2 points wide, with the focus; null where the wave has no length.
    ZQAudioCutEntity *add(double x);
    bool removeFocusOn();
    void remove(const ZQAudioCutEntity &entity);
    void clear() { mEntities.clear(); }
    // The focused one begins or ends at that time, unless a neighbour stands there; what would leave nothing of it
    // changes nothing. Without a focused one a new one begins or ends there. Answers the focused one, if any.
    enum class Edge { Start, End };
    ZQAudioCutEntity *setTime(Edge edge, double seconds);

    // The wave has another size.
    void rebuild();

    // The selections as values, to be put back or handed on.
    struct Range {
        double start = 0, end = 0;
        bool isFocusOn = false;
        bool operator==(const Range &) const = default;
    };
    QList<Range> ranges() const;
    void setRanges(const QList<Range> &ranges);

    static constexpr double kLeastWidth = 2;    // in points, by the mouse
    static constexpr double kLeastTime = 0.001; // in seconds, by typing

private:
    double duration() const { return mGeometry.audioDuration(); }
    void set(ZQAudioCutEntity &entity, double start, double end);
    // Of that length at most, within the sound.
    ZQAudioCutEntity *insert(double start, double end);
    const ZQAudioCutEntity *before(const ZQAudioCutEntity &entity) const;
    const ZQAudioCutEntity *behind(const ZQAudioCutEntity &entity) const;

    const WaveGeometry &mGeometry;
    Entities mEntities;
};

} // namespace cantorel
