#pragma once

#include "platform/hal/AudioHardware.h"
#include "tests/support/PrivateDisplay.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace cantorel::test {

// Paints rectangles on the root of a display.
class Painter {
public:
    explicit Painter(const PrivateDisplay &display)
        : mConnection(xcb_connect(display.name().toLocal8Bit().constData(), nullptr)),
          mRoot(display.root()),
          mContext(xcb_generate_id(mConnection)) {
        xcb_create_gc(mConnection, mContext, mRoot, 0, nullptr);
    }
    ~Painter() { xcb_disconnect(mConnection); }
    void paint(std::uint32_t colour, const xcb_rectangle_t &where) const {
        xcb_change_gc(mConnection, mContext, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(mConnection, mRoot, mContext, 1, &where);
        xcb_flush(mConnection);
    }

private:
    xcb_connection_t *const mConnection;
    const xcb_window_t mRoot;
    const xcb_gcontext_t mContext;
};

// Flashes on a display, and clicks in an output at the same moments.
class FlashAndClick : public Painter {
public:
    // where: on the root of the display, beside all windows.
    FlashAndClick(const PrivateDisplay &display, const xcb_rectangle_t &where) : Painter(display), mWhere(where) {
        paint(0, mWhere);
        const AudioObjectPropertyAddress address = {kAudioHardwarePropertyDefaultOutputDevice,
                                                    kAudioObjectPropertyScopeGlobal, 0};
        std::uint32_t size = sizeof mOutput;
        AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &size, &mOutput);
        EXPECT_EQ(AudioDeviceCreateIOProcID(mOutput, &play, this, &mProc), kAudioHardwareNoError);
        EXPECT_EQ(AudioDeviceStart(mOutput, mProc), kAudioHardwareNoError);
    }
    ~FlashAndClick() {
        AudioDeviceStop(mOutput, mProc);
        AudioDeviceDestroyIOProcID(mOutput, mProc);
    }
    // Both, a little later, and dark again after that; returns then. seen: called at the moment of both.
    void strike(const std::function<void()> &seen = [] {}) {
        const auto at = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        mClickAt = std::chrono::nanoseconds(at.time_since_epoch()).count();
        std::this_thread::sleep_until(at);
        paint(0xFFFFFF, mWhere);
        seen();
        std::this_thread::sleep_until(at + std::chrono::milliseconds(250));
        paint(0, mWhere);
        std::this_thread::sleep_until(at + std::chrono::milliseconds(400));
    }

private:
    static OSStatus play(AudioObjectID, const AudioTimeStamp *, const AudioBufferList *, const AudioTimeStamp *,
                         AudioBufferList *output, const AudioTimeStamp *outputTime, void *data) noexcept {
        auto &self = *static_cast<FlashAndClick *>(data);
        auto *samples = static_cast<float *>(output->mBuffers[0].mData);
        const auto channels = output->mBuffers[0].mNumberChannels;
        const std::size_t frames = output->mBuffers[0].mDataByteSize / sizeof(float) / channels;
        for (std::size_t i = 0; i < frames; ++i) {
            const auto now = static_cast<std::int64_t>(outputTime->mHostTime + i * 1'000'000'000 / 48000);
            const std::int64_t since = now - self.mClickAt;
            const bool sounds = since >= 0 && since < 20'000'000;
            for (std::size_t channel = 0; channel < channels; ++channel)
                samples[i * channels + channel] = sounds ? (i / 24 % 2 ? 0.8f : -0.8f) : 0.0f;
        }
        return kAudioHardwareNoError;
    }

    const xcb_rectangle_t mWhere;
    AudioObjectID mOutput = kAudioObjectUnknown;
    AudioDeviceIOProcID mProc = nullptr;
    std::atomic<std::int64_t> mClickAt{0};
};

} // namespace cantorel::test
