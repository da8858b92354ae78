// A picture that moves on the display of the environment, for bench/screen.py: rectangles that wander over a pattern,
// thirty times a second, until it is ended.

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

int main() {
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0)
        return 1;
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, screen->root, 0, nullptr);
    const auto fill = [&](std::uint32_t colour, int x, int y, int width, int height) {
        xcb_change_gc(connection, context, XCB_GC_FOREGROUND, &colour);
        const xcb_rectangle_t where{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                    static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
        xcb_poly_fill_rectangle(connection, screen->root, context, 1, &where);
    };
    std::mt19937 random(1);
    const int width = screen->width_in_pixels, height = screen->height_in_pixels;
    auto due = std::chrono::steady_clock::now();
    for (int turn = 0; xcb_connection_has_error(connection) == 0; ++turn) {
        for (int x = 0; x < width; x += 32)
            fill(static_cast<std::uint32_t>((x * 7 + turn * 3) & 0xFF) << 16 | 0x2040, x, 0, 32, height);
        for (int i = 0; i < 60; ++i)
            fill(random() & 0xFFFFFF, static_cast<int>(random() % static_cast<unsigned>(width)),
                 static_cast<int>(random() % static_cast<unsigned>(height)), 60, 40);
        xcb_flush(connection);
        due += std::chrono::milliseconds(33);
        std::this_thread::sleep_until(due);
    }
    xcb_disconnect(connection);
    return 0;
}
