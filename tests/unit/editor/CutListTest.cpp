#include "editor/models/CutList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace cantorel {
namespace {

using Edge = CutList::Edge;

// A wave of 200 points for 100 seconds.
struct Cuts : testing::Test {
    Cuts() {
        geometry.setSize({210, 120});
        geometry.addAudioDuration(100);
    }
    void set(std::initializer_list<CutList::Range> ranges) { list.setRanges(ranges); }
    std::vector<double> times() const {
        std::vector<double> all;
        for (const auto &each : list.all())
            all.insert(all.end(), {each->startTime(), each->endTime()});
        return all;
    }
    using Times = std::vector<double>;

    WaveGeometry geometry;
    CutList list{geometry};
};

TEST_F(Cuts, APressTakesWhatIsWithinFivePointsAndOfTouchingOnesTheFirst) {
    set({{10, 20}, {20, 30}, {90, 100}}); // 25 to 45, 45 to 65, 185 to 205
    const struct {
        double x;
        CutHit hit;
        int index;
    } cases[] = {{19.5, CutHit::None, -1},   {20, CutHit::LeftEdge, 0},  {25, CutHit::LeftEdge, 0},
                 {25.5, CutHit::Body, 0},    {45, CutHit::RightEdge, 0}, {48, CutHit::RightEdge, 0},
                 {50, CutHit::RightEdge, 0}, {50.5, CutHit::Body, 1},    {65, CutHit::RightEdge, 1},
                 {70, CutHit::RightEdge, 1}, {70.5, CutHit::None, -1},   {210, CutHit::RightEdge, 2}};
    for (const auto &[x, hit, index] : cases) {
        ZQAudioCutEntity *entity = nullptr;
        EXPECT_EQ(list.hit({x, 60}, entity), hit) << x;
        EXPECT_EQ(entity, index < 0 ? nullptr : list.all()[static_cast<std::size_t>(index)].get()) << x;
    }
}

TEST_F(Cuts, ADraggedEdgeStopsAtItsNeighbourAtTwoPointsAndAtTheMargins) {
    const auto dragged = [&](std::size_t index, CutHit edge, double x) {
        set({{10, 20}, {40.123, 50}, {60, 70}});
        ZQAudioCutEntity &entity = *list.all()[index];
        list.dragEdge(entity, edge, x);
        EXPECT_EQ(entity.cutRect(), geometry.getNewSelectedCutRectWithStartTime(entity.startTime(), entity.endTime()));
        return Times{entity.startTime(), entity.endTime()};
    };
    EXPECT_EQ(dragged(0, CutHit::RightEdge, 300), (Times{10, 40.123})) << "to the bit";
    EXPECT_EQ(dragged(0, CutHit::RightEdge, 1), (Times{10, 11}));
    EXPECT_EQ(dragged(0, CutHit::RightEdge, 26), (Times{10, 11}));
    EXPECT_EQ(dragged(0, CutHit::LeftEdge, 1), (Times{0, 20}));
    EXPECT_EQ(dragged(1, CutHit::LeftEdge, 30), (Times{20, 50}));
    EXPECT_EQ(dragged(1, CutHit::LeftEdge, 200), (Times{49, 50}));
    EXPECT_EQ(dragged(2, CutHit::RightEdge, 300), (Times{60, 100}));
    EXPECT_EQ(dragged(2, CutHit::RightEdge, 165), (Times{60, 80}));
    set({{10, 10.001}, {10.002, 20}}); // typed, and less than 2 points
    list.dragEdge(*list.all()[0], CutHit::RightEdge, 1);
    EXPECT_EQ(times(), (Times{10, 10.002, 10.002, 20}));
}

TEST_F(Cuts, AddingInsertsByTheStartAndStaysWithinTheSound) {
    set({{10, 20}, {40, 50}});
    list.add(35); // within the first
    list.add(210);
    EXPECT_EQ(times(), (Times{10, 20, 15, 16, 40, 50, 99, 100}));
    EXPECT_EQ(list.indexOf(list.getFocusOnCutEntity()), 3u);
    geometry.addAudioDuration(0);
    EXPECT_EQ(list.add(35), nullptr);
}

TEST_F(Cuts, ATypedTimeIsKeptToTheBitUnlessANeighbourOrTheOtherEndIsThere) {
    const struct {
        Edge edge;
        double seconds;
        Times expected;
    } cases[] = {{Edge::Start, 41.001, {41.001, 50}}, {Edge::Start, 5, {20, 50}}, {Edge::Start, 50, {40, 50}},
                 {Edge::Start, 49.999, {49.999, 50}}, {Edge::End, 39, {40, 50}},  {Edge::End, 45.003, {40, 45.003}},
                 {Edge::End, 40.001, {40, 40.001}},   {Edge::End, 65, {40, 60}}};
    for (const auto &[edge, seconds, expected] : cases) {
        set({{10, 20}, {40, 50, true}, {60, 70}});
        list.setTime(edge, seconds);
        EXPECT_EQ(Times({list.all()[1]->startTime(), list.all()[1]->endTime()}), expected) << seconds;
    }
    set({{10, 20}});
    list.setTime(Edge::Start, 5);
    list.focus(nullptr);
    list.setTime(Edge::End, 99.5);
    list.focus(nullptr);
    list.setTime(Edge::Start, 19.5);
    EXPECT_EQ(times(), (Times{5, 6, 10, 20, 20, 20.5, 98.5, 99.5}));
    EXPECT_EQ(list.indexOf(list.getFocusOnCutEntity()), 2u);
    list.focus(nullptr);
    EXPECT_EQ(list.setTime(Edge::Start, 12), nullptr) << "no room";
}

TEST_F(Cuts, EveryChangeIsToldOnceButAnotherSizeIsNot) {
    int told = 0;
    const auto told_ = foundation::NotificationCenter::defaultCenter().subscribe<const ZQAudioCutEntity *>(
        kNotificationCutEntityRectDidChangeRegister, [&](const ZQAudioCutEntity *const &) { ++told; });
    list.add(30);
    list.dragEdge(*list.all()[0], CutHit::RightEdge, 80);
    EXPECT_EQ(told, 2);
    geometry.setSize({410, 120});
    list.rebuild();
    EXPECT_EQ(list.all()[0]->cutRect(), QRectF(55, 0, 100, 120));
    EXPECT_EQ(told, 2);
}

TEST_F(Cuts, PlayingThemGoesFromOneToTheNextAndFromTheLastToTheFirst) {
    set({{10, 20}, {40, 50}});
    const struct {
        double seconds;
        int index, current, next;
    } cases[] = {{0, 0, -1, 0}, {10, 0, 0, 1},    {20, 0, 0, 1},  {20.001, 0, -1, 1}, {39.9, 0, -1, 1},
                 {45, 0, 1, 0}, {50.1, 0, -1, 0}, {15, 1, -1, 1}, {15, 2, -1, -1},    {15, -1, -1, -1}};
    const auto all = list.pointers();
    const auto at = [&](int index) { return index < 0 ? nullptr : all[static_cast<std::size_t>(index)]; };
    for (const auto &[seconds, index, current, next] : cases) {
        const ZQAudioCutEntity *now = nullptr, *then = nullptr;
        ZQAudioTools::getCurrentPlayingEntity(now, then, seconds, index, all, 44100);
        EXPECT_EQ(now, at(current)) << seconds;
        EXPECT_EQ(then, at(next)) << seconds;
    }
    for (int frame = 1; frame < 3000; ++frame) { // A seek to a start has arrived there, whatever fractions make of it.
        set({{(frame + 0.4) / 44100, 1}});
        const ZQAudioCutEntity *now = nullptr, *then = nullptr;
        ZQAudioTools::getCurrentPlayingEntity(now, then, frame / 44100.0, 0, list.pointers(), 44100);
        ASSERT_NE(now, nullptr) << frame;
    }
}

TEST_F(Cuts, RandomChangesKeepTheOrderTheFocusAndTheBounds) {
    std::mt19937 random(3);
    const auto pick = [&](double most) { return std::round(random() % 100001 / 100000.0 * most * 1000) / 1000; };
    for (int turn = 0; turn < 20000; ++turn) {
        const auto before = times();
        bool mayOverlap = false;
        const auto overlaps = [](const Times &all) {
            for (std::size_t i = 2; i < all.size(); i += 2)
                if (all[i] < all[i - 1])
                    return true;
            return false;
        };
        const bool overlapped = overlaps(before);
        const std::size_t count = list.all().size();
        ZQAudioCutEntity *entity = count > 0 ? list.all()[random() % count].get() : nullptr;
        switch (random() % 7) {
        case 0:
        case 1:
            if (count < 8) {
                list.add(pick(210));
                ASSERT_EQ(list.all().size(), count + 1);
            }
            mayOverlap = true;
            break;
        case 2:
        case 3:
            if (entity)
                list.dragEdge(*entity, random() % 2 ? CutHit::LeftEdge : CutHit::RightEdge, pick(230) - 10);
            break;
        case 4:
            list.focus(entity);
            break;
        case 5:
            list.setTime(random() % 2 ? Edge::Start : Edge::End, pick(110));
            break;
        case 6:
            if (random() % 4 == 0 && list.removeFocusOn()) {
                ASSERT_EQ(list.all().size(), count - 1);
            }
            break;
        }
        int focused = 0;
        double last = 0;
        for (const auto &each : list.all()) {
            focused += each->isFocusOn();
            ASSERT_LE(last, each->startTime()) << turn;
            ASSERT_LT(each->startTime(), each->endTime()) << turn;
            ASSERT_LE(each->endTime(), 100) << turn;
            last = each->startTime();
        }
        ASSERT_LE(focused, 1);
        ASSERT_FALSE(!overlapped && !mayOverlap && overlaps(times())) << turn;
        if (overlaps(times()))
            list.clear();
    }
}

} // namespace
} // namespace cantorel
