// The ring buffer and the thru engine's mixing against the bare work that they are made of. Prints ratios of medians
// taken in turns in one run. usage: audio_device_bench [rounds]

#include "audio_device/AudioRingBuffer.h"
#include "audio_device/AudioThruEngine.h"
#include "platform/hal/AudioHardware.h"
#include "platform/hal/HardwareSystem.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

using namespace cantorel;
using namespace cantorel::hal;

namespace {

constexpr std::uint32_t kFrames = 512;
constexpr std::uint32_t kBytesPerFrame = 8;
constexpr std::uint32_t kCapacity = 96000;
constexpr int kBlocks = 2000; // of one timing
constexpr int kBatch = 50;

std::atomic<bool> gCounting{false};
std::atomic<long> gAllocations{0};

template <class Work> double nanoseconds(Work &&work) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kBlocks; ++i)
        work(i);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    return taken.count() / kBlocks;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

void keep(const void *data) { asm volatile("" : : "g"(data) : "memory"); }

void benchRing(int rounds) {
    AudioRingBuffer ring(kBytesPerFrame, kCapacity);
    std::vector<std::byte> plain(kCapacity * kBytesPerFrame), in(kFrames * kBytesPerFrame),
        out(kFrames * kBytesPerFrame);
    std::size_t at = 0;
    std::int64_t time = 1;
    std::vector<double> ratios, ours, peers;
    for (int round = 0; round < rounds; ++round) {
        const double bare = nanoseconds([&](int) {
            const std::size_t left = plain.size() - at;
            const std::size_t first = std::min(left, in.size());
            std::memcpy(plain.data() + at, in.data(), first);
            std::memcpy(plain.data(), in.data() + first, in.size() - first);
            keep(plain.data());
            std::memcpy(out.data(), plain.data() + at, first);
            std::memcpy(out.data() + first, plain.data(), in.size() - first);
            keep(out.data());
            at = (at + in.size()) % plain.size();
        });
        const double whole = nanoseconds([&](int) {
            ring.Store(in.data(), kFrames, time);
            keep(&ring);
            ring.Fetch(out.data(), kFrames, time);
            keep(out.data());
            time += kFrames;
        });
        ratios.push_back(whole / bare);
        ours.push_back(whole);
        peers.push_back(bare);
    }
    std::printf("ring buffer, store + fetch / two memcpys:  %.2f  (%.0f / %.0f ns)\n", median(ratios), median(ours),
                median(peers));
}

// Two devices whose cycles the bench runs itself, as a server's real-time thread would.
class BenchBackend : public HardwareBackend, public foundation::Clock {
public:
    struct BenchStream : DeviceStream {};

    QString name() const override { return QStringLiteral("bench"); }
    foundation::Result<void> reach(Duration) override { return {}; }
    foundation::Clock &clock() override { return *this; }
    std::vector<DeviceRecord> devices() const override {
        DeviceRecord in, out;
        in.uid = in.name = QStringLiteral("in");
        out.uid = out.name = QStringLiteral("out");
        in.sampleRate = out.sampleRate = 48000;
        in.cycleFrames = out.cycleFrames = kFrames;
        in.input.channels = out.output.channels = 2;
        return {in, out};
    }
    QString defaultDevice(Direction) const override { return {}; }
    bool keepsDefaults() const override { return true; }
    std::optional<QString> configuredDefault(Direction) const override { return {}; }
    bool setConfiguredDefault(Direction, const DefaultSetting &, const std::optional<DefaultSetting> &) override {
        return false;
    }
    bool setGains(const QString &, Direction, const std::vector<float> &) override { return false; }
    bool setMuted(const QString &, Direction, bool) override { return false; }
    bool setSampleRate(const QString &, double) override { return false; }
    std::unique_ptr<DeviceStream> openStream(const StreamRequest &request, StreamClient &client) override {
        (request.input ? reader : player) = &client;
        return std::make_unique<BenchStream>();
    }
    bool makeAggregate(const AggregateSpec &) override { return false; }
    void removeAggregate(const QString &) override {}
    void subscribe(std::function<void()>) override {}

    Duration now() const override { return Duration(position); }
    void sleepFor(Duration) override {
        readCycle();
        playCycle();
    }
    void readCycle() { reader->cycle({position, 0, false}, source.data(), nullptr, kFrames); }
    void playCycle() {
        player->cycle({position, 0, false}, nullptr, target.data(), kFrames);
        position += kFrames;
    }

    StreamClient *reader = nullptr;
    StreamClient *player = nullptr;
    std::int64_t position = 0;
    std::vector<float> source = std::vector<float>(kFrames * 2, 1e-20f);
    std::vector<float> target = std::vector<float>(kFrames * 2);
};

void benchThru(int rounds) {
    const QTemporaryDir folder;
    auto made = std::make_unique<BenchBackend>();
    BenchBackend &backend = *made;
    const HardwareSystem system(std::move(made), folder.path());
    const auto device = [](const char *uid) {
        const QString text = QString::fromLatin1(uid);
        CFStringRef input = &text;
        AudioDeviceID id = 0;
        AudioValueTranslation translation = {&input, sizeof input, &id, sizeof id};
        std::uint32_t size = sizeof translation;
        AudioHardwareGetProperty(kAudioHardwarePropertyDeviceForUID, &size, &translation);
        return id;
    };
    AudioThruEngine engine;
    engine.SetInputDevice(device("in"));
    engine.SetOutputDevice(device("out"));
    std::vector<float> peer(kFrames * 2), walked(std::size_t(kCapacity) * 2, 1e-20f);
    std::vector<double> ratios, ours, peers;
    for (int round = 0; round < rounds; ++round) {
        const double bare = nanoseconds([&](int i) {
            // From a stretch as long as the ring, in which a sound lies as cold as it does there.
            const float *from = walked.data() + std::size_t(i % (kCapacity / kFrames)) * kFrames * 2;
            for (std::uint32_t sample = 0; sample < kFrames * 2; ++sample)
                peer[sample] += from[sample];
            keep(peer.data());
        });
        gCounting = true;
        // Played in batches that the ring still holds, so that the clock itself costs nothing.
        double taken = 0;
        for (int batch = 0; batch < kBlocks / kBatch; ++batch) {
            for (int i = 0; i < kBatch; ++i)
                backend.readCycle();
            const auto begin = std::chrono::steady_clock::now();
            for (int i = 0; i < kBatch; ++i)
                backend.playCycle();
            taken += std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count();
        }
        gCounting = false;
        ours.push_back(taken / kBlocks);
        peers.push_back(bare);
        ratios.push_back(ours.back() / bare);
    }
    std::printf(
        "thru engine, output cycle / vector add:    %.2f  (%.0f / %.0f ns), %ld allocations in %d cycles of both\n",
        median(ratios), median(ours), median(peers), gAllocations.load(), rounds * kBlocks);
}

} // namespace

// Counts what the procedures allocate while they are watched.
void *operator new(std::size_t size) {
    if (gCounting)
        ++gAllocations;
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 51;
    benchRing(rounds);
    benchThru(rounds);
}
