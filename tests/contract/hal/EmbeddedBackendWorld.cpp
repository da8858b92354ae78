#include "platform/hal/embedded/EmbeddedBackend.h"
#include "tests/contract/hal/BackendWorld.h"
#include "tests/support/EmbeddedWorld.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"

#include <mutex>

namespace cantorel::test {

namespace {

using namespace hal;

// On a manual clock, which it steps, or on the machine's.
class EmbeddedBackendWorld : public BackendWorld {
public:
    explicit EmbeddedBackendWorld(std::shared_ptr<ManualClock> manual)
        : mManual(std::move(manual)),
          mBackend(
              mManual ? std::static_pointer_cast<DeviceClock>(mManual) : makeWallDeviceClock(), [] { return true; },
              test::kLoopbackNames.first()) {
        mBackend.setSource("builtin_microphone", {});
        (void)mBackend.devices(); // Looking is what finds the virtual device.
    }

    HardwareBackend &backend() override { return mBackend; }

    bool until(const std::function<bool()> &condition) override {
        if (!mManual)
            return eventually(condition);
        for (int step = 0; step < 10000; ++step) {
            if (condition())
                return true;
            mManual->advance(std::chrono::milliseconds(1));
        }
        return false;
    }

    std::shared_ptr<void> feed(const QString &input, std::int64_t first) override {
        mBackend.setSource(input, stampedFrom(first));
        return std::shared_ptr<void>(nullptr, [this, input](void *) { mBackend.setSource(input, {}); });
    }
    std::shared_ptr<void> play(const QString &output, std::int64_t first) override {
        return mBackend.play(stampedFrom(first), output);
    }

    void listen(const QString &output) override {
        mListened = output;
        mBackend.setTap(output, [this](std::span<const float> samples, int, std::int64_t) {
            const std::lock_guard lock(mMutex);
            mHeard.insert(mHeard.end(), samples.begin(), samples.end());
        });
    }
    std::vector<float> heard() override {
        mBackend.setTap(mListened, {});
        const std::lock_guard lock(mMutex);
        return std::move(mHeard);
    }

    void unplug(const QString &uid) override { mBackend.unplug(uid); }
    void plug(const QString &uid, Direction direction) override {
        const bool input = direction == Direction::Input;
        mBackend.plug(EmbeddedBackend::plainDevice(uid, uid, input ? 2 : 0, input ? 0 : 2));
    }

private:
    static SoundSource stampedFrom(std::int64_t first) {
        return [first](std::span<float> samples, int channels, std::int64_t position) {
            stamp(samples, channels, first + position);
        };
    }

    std::shared_ptr<ManualClock> mManual;
    EmbeddedBackend mBackend;
    QString mListened;
    std::mutex mMutex;
    std::vector<float> mHeard;
};

} // namespace

std::unique_ptr<BackendWorld> embeddedManualWorld() {
    return std::make_unique<EmbeddedBackendWorld>(std::make_shared<ManualClock>());
}
std::unique_ptr<BackendWorld> embeddedWallWorld() { return std::make_unique<EmbeddedBackendWorld>(nullptr); }

} // namespace cantorel::test
