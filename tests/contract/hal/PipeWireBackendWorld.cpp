#include "platform/hal/pipewire/PipeWireBackend.h"
#include "tests/contract/hal/BackendWorld.h"
#include "tests/support/LoopbackNames.h"
#include "tests/support/PrivateWorld.h"
#include "tests/support/StampedSound.h"

#include <csignal>

namespace cantorel::test {

namespace {

using namespace hal;

// A private server; its own tools are the other programs.
class PipeWireBackendWorld : public BackendWorld {
public:
    PipeWireBackendWorld() {
        auto connected = PipeWireBackend::connect(std::chrono::seconds(10), test::kLoopbackNames);
        if (connected)
            mBackend = std::move(connected).value();
    }

    HardwareBackend &backend() override { return *mBackend; }
    bool until(const std::function<bool()> &condition) override { return eventually(condition); }

    std::shared_ptr<void> feed(const QString &input, std::int64_t first) override {
        return ending(mWorld.feed(sound(first), input));
    }
    std::shared_ptr<void> play(const QString &output, std::int64_t first) override {
        return ending(mWorld.start("pw-cat", {"-p", "--target", output, sound(first)}));
    }

    void listen(const QString &output) override { mListener = mWorld.listen(output, file("heard")); }
    std::vector<float> heard() override {
        finish(*mListener, SIGINT);
        return readWav(file("heard"));
    }

    void unplug(const QString &uid) override { mWorld.unplug(uid); }
    void plug(const QString &uid, Direction direction) override {
        (void)(direction == Direction::Input ? mWorld.plugSource(uid, uid) : mWorld.plugSink(uid, uid));
    }

private:
    static QString file(const QString &name) { return QDir::homePath() + "/" + name + ".wav"; }
    // Ten seconds are longer than any condition waits.
    static QString sound(std::int64_t first) {
        std::vector<float> samples(10 * 48000 * 2);
        stamp(samples, 2, first);
        const QString path = file(QString::number(first));
        writeWav(path, samples);
        return path;
    }
    static std::shared_ptr<void> ending(std::unique_ptr<QProcess> process) {
        return std::shared_ptr<QProcess>(process.release(), [](QProcess *raw) {
            const std::unique_ptr<QProcess> owned(raw);
            finish(*owned);
        });
    }

    PrivateWorld mWorld;
    std::unique_ptr<PipeWireBackend> mBackend;
    std::unique_ptr<QProcess> mListener;
};

} // namespace

std::unique_ptr<BackendWorld> pipeWireWorld() { return std::make_unique<PipeWireBackendWorld>(); }

} // namespace cantorel::test
