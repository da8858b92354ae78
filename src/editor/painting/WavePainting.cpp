#include "editor/painting/WavePainting.h"

#include "editor/models/ZQAudioCutEntity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace cantorel {

namespace {

constexpr int kShades = 256;
using Shades = std::array<QRgb, kShades>;

// From the ground to the colour.
Shades shadesOf(const WaveColour &ground, const WaveColour &colour) {
    Shades shades{};
    for (int i = 0; i < kShades; ++i) {
        const auto part = [i](double from, double to) {
            return static_cast<int>(std::lround(255 * (from + (to - from) * i / (kShades - 1))));
        };
        shades[static_cast<std::size_t>(i)] =
            qRgb(part(ground.red, colour.red), part(ground.green, colour.green), part(ground.blue, colour.blue));
    }
    return shades;
}

// What one column of pixels shows: how far the bar reaches from the centre line, in pixels, and its shades.
struct Column {
    float reach = 0;
    const Shades *shades = nullptr;
};

} // namespace

void paintWave(QImage &picture, const WaveGeometry &geometry, const ZQAudioTools::Entities &entities, int first,
               int end) {
    first = std::max(first, 0);
    end = std::min(end, picture.width());
    if (first >= end)
        return;
    const double scale = picture.devicePixelRatio();
    const auto pixel = [scale](double point) { return static_cast<int>(std::lround(point * scale)); };
    using Tools = ZQAudioTools;
    const WaveColour grounds[] = {Tools::normalWaveBackgroundColor(), Tools::selectedWaveRectColor()};
    const WaveColour colours[] = {Tools::normalWaveGradient(), Tools::existedRectColor(), Tools::focusOnRectColor()};
    std::vector<Shades> shades; // of each colour on each ground
    for (const WaveColour &ground : grounds)
        for (const WaveColour &colour : colours)
            shades.push_back(shadesOf(ground, colour));
    const auto on = [&](bool isFocused, std::size_t colour) { return &shades[(isFocused ? 3 : 0) + colour]; };

    std::vector<Column> columns(static_cast<std::size_t>(end - first), {0, on(false, 0)});
    const auto each = [&](double from, double to, auto set) {
        for (int x = std::max(first, pixel(from)); x < std::min(end, pixel(to)); ++x)
            set(columns[static_cast<std::size_t>(x - first)]);
    };
    const ZQAudioCutEntity *focused = nullptr;
    for (const ZQAudioCutEntity *entity : entities)
        if (!focused && entity->isFocusOn())
            focused = entity;
    const auto isOnFocused = [focused](double x) {
        return focused && x >= focused->cutRect().left() && x < focused->cutRect().right();
    };
    if (focused)
        each(focused->cutRect().left(), focused->cutRect().right(),
             [&](Column &column) { column.shades = on(true, 0); });
    for (const QPointF &bar : geometry.sampleData()) {
        std::size_t colour = 0;
        for (const ZQAudioCutEntity *entity : entities)
            if (bar.x() >= entity->cutRect().left() && bar.x() < entity->cutRect().right()) {
                colour = entity->isFocusOn() ? 2 : 1;
                break;
            }
        const bool isFocused = isOnFocused(bar.x());
        each(bar.x(), bar.x() + 1, [&](Column &column) {
            column = {static_cast<float>(geometry.halfHeight(bar) * scale), on(isFocused, colour)};
        });
    }

    const double centre = geometry.waveCenterY() * scale;
    for (int y = 0; y < picture.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y)) + first;
        const auto away = static_cast<float>(std::abs(y + 0.5 - centre));
        for (const Column &column : columns)
            *line++ = (*column.shades)[column.reach > away
                                           ? static_cast<std::size_t>((kShades - 1) * (1 - away / column.reach))
                                           : 0];
    }
}

} // namespace cantorel
