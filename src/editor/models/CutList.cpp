#include "editor/models/CutList.h"

#include <algorithm>

namespace cantorel {

ZQAudioTools::Entities CutList::pointers() const {
    ZQAudioTools::Entities all;
    for (const auto &entity : mEntities)
        all.push_back(entity.get());
    return all;
}

ZQAudioCutEntity *CutList::getFocusOnCutEntity() const {
    for (const auto &entity : mEntities)
        if (entity->isFocusOn())
            return entity.get();
    return nullptr;
}

std::size_t CutList::indexOf(const ZQAudioCutEntity *entity) const {
    std::size_t index = 0;
    while (index < mEntities.size() && mEntities[index].get() != entity)
        ++index;
    return index;
}

const ZQAudioCutEntity *CutList::before(const ZQAudioCutEntity &entity) const {
    const std::size_t index = indexOf(&entity);
    return index > 0 ? mEntities[index - 1].get() : nullptr;
}

const ZQAudioCutEntity *CutList::behind(const ZQAudioCutEntity &entity) const {
    const std::size_t index = indexOf(&entity);
    return index + 1 < mEntities.size() ? mEntities[index + 1].get() : nullptr;
}

void CutList::focus(const ZQAudioCutEntity *entity) {
    for (const auto &each : mEntities)
        each->setFocusOn(each.get() == entity);
}

CutHit CutList::hit(QPointF point, ZQAudioCutEntity *&entity) const {
    for (const auto &each : mEntities)
        if (const QRectF track = each->trackRect(); point.x() >= track.left() && point.x() <= track.right()
                                                    && point.y() >= track.top() && point.y() <= track.bottom()) {
            entity = each.get();
            return point.x() <= each->leftPoint().x()    ? CutHit::LeftEdge
                   : point.x() >= each->rightPoint().x() ? CutHit::RightEdge
                                                         : CutHit::Body;
        }
    entity = nullptr;
    return CutHit::None;
}

// A region that was added within another one is led out of it by the 2 points alone.
void CutList::dragEdge(ZQAudioCutEntity &entity, CutHit edge, double x) {
    const double left = entity.leftPoint().x(), right = entity.rightPoint().x();
    const bool isLeft = edge == CutHit::LeftEdge;
    const auto *neighbour = isLeft ? before(entity) : behind(entity);
    const double least = WaveGeometry::kInset, most = std::max(least, mGeometry.size().width() - least);
    const double limit = !neighbour ? (isLeft ? least : most)
                         : isLeft   ? neighbour->rightPoint().x()
                                    : neighbour->leftPoint().x();
    const bool isFree = isLeft ? limit <= left : limit >= right;
    double placed = isLeft ? std::max(x, limit) : std::min(x, limit);
    placed = isLeft ? std::min(placed, right - kLeastWidth) : std::max(placed, left + kLeastWidth);
    if (isFree)
        placed = isLeft ? std::max(placed, limit) : std::min(placed, limit);
    placed = std::clamp(placed, least, most);
    double time = std::min(mGeometry.transformTimeWithPoint({placed, 0}), duration());
    if (neighbour && placed == limit)
        time = isLeft ? neighbour->endTime() : neighbour->startTime();
    set(entity, isLeft ? time : entity.startTime(), isLeft ? entity.endTime() : time);
}

void CutList::set(ZQAudioCutEntity &entity, double start, double end) {
    entity.AudioCutDelegate_UpdateCutAudioWithStartTime(start, end,
                                                        mGeometry.getNewSelectedCutRectWithStartTime(start, end));
    // Only one that was added within another can come behind the next.
    std::stable_sort(mEntities.begin(), mEntities.end(),
                     [](const auto &one, const auto &other) { return one->startTime() < other->startTime(); });
}

ZQAudioCutEntity *CutList::insert(double start, double end) {
    const auto place = std::find_if(mEntities.begin(), mEntities.end(),
                                    [start](const auto &each) { return each->startTime() >= start; });
    ZQAudioCutEntity &entity = **mEntities.insert(place, std::make_unique<ZQAudioCutEntity>());
    focus(&entity);
    entity.AudioCutDelegate_UpdateCutAudioWithStartTime(start, end,
                                                        mGeometry.getNewSelectedCutRectWithStartTime(start, end));
    return &entity;
}

ZQAudioCutEntity *CutList::add(double x) {
    const double length = kLeastWidth * mGeometry.scaleOffset();
    if (length <= 0)
        return nullptr;
    const double start = std::clamp(mGeometry.transformTimeWithPoint({x, 0}), 0.0, std::max(0.0, duration() - length));
    return insert(start, std::min(start + length, duration()));
}

bool CutList::removeFocusOn() {
    const auto *entity = getFocusOnCutEntity();
    if (entity)
        remove(*entity);
    return entity;
}

void CutList::remove(const ZQAudioCutEntity &entity) {
    std::erase_if(mEntities, [&entity](const auto &each) { return each.get() == &entity; });
}

ZQAudioCutEntity *CutList::setTime(Edge edge, double seconds) {
    // What is typed is a count of milliseconds; what comes of sums of such is not exactly one.
    constexpr double kSlack = 1e-9;
    ZQAudioCutEntity *entity = getFocusOnCutEntity();
    const double length = kLeastWidth * mGeometry.scaleOffset();
    double start = entity ? entity->startTime() : edge == Edge::Start ? seconds : std::max(0.0, seconds - length);
    double end = entity ? entity->endTime() : edge == Edge::End ? seconds : seconds + length;
    (edge == Edge::Start ? start : end) = seconds;
    const ZQAudioCutEntity *previous = nullptr, *next = nullptr;
    if (entity) {
        previous = before(*entity);
        next = behind(*entity);
    } else
        for (const auto &each : mEntities)
            if (each->startTime() < start)
                previous = each.get();
            else if (!next)
                next = each.get();
    if (edge == Edge::Start || !entity)
        start = std::max(start, previous ? previous->endTime() : 0.0);
    if (edge == Edge::End || !entity)
        end = std::min(end, next ? next->startTime() : duration());
    if (end - start < kLeastTime - kSlack)
        return entity;
    if (!entity)
        return insert(start, end);
    set(*entity, start, end);
    return entity;
}

void CutList::rebuild() {
    for (const auto &entity : mEntities)
        entity->setCutRect(mGeometry.getNewSelectedCutRectWithStartTime(entity->startTime(), entity->endTime()));
}

QList<CutList::Range> CutList::ranges() const {
    QList<Range> all;
    for (const auto &entity : mEntities)
        all.append({entity->startTime(), entity->endTime(), entity->isFocusOn()});
    return all;
}

void CutList::setRanges(const QList<Range> &ranges) {
    mEntities.clear();
    for (const Range &range : ranges) {
        auto &entity = *mEntities.emplace_back(std::make_unique<ZQAudioCutEntity>());
        entity.setFocusOn(range.isFocusOn);
        entity.AudioCutDelegate_UpdateCutAudioWithStartTime(
            range.start, range.end, mGeometry.getNewSelectedCutRectWithStartTime(range.start, range.end));
    }
}

} // namespace cantorel
