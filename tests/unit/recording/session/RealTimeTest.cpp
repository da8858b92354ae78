// No I/O procedure of a recording allocates or locks. The linker leads every registration of a procedure through here,
// and the C library's allocator and locks through the counters.

#include "platform/media/Player.h"
#include "recording/session/RecordManager.h"
#include "tests/support/StampedSound.h"
#include "tests/unit/recording/RecordingFixture.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <deque>

namespace {

thread_local bool tInProcedure = false;
std::atomic<int> gCalls{0}; // of procedures
std::atomic<int> gFaults{0};

void count() { gFaults += tInProcedure ? 1 : 0; }

struct Registered {
    AudioDeviceIOProc proc;
    void *clientData;
};
std::deque<Registered> gRegistered; // their places stay

OSStatus watched(AudioObjectID device, const AudioTimeStamp *now, const AudioBufferList *input,
                 const AudioTimeStamp *inputTime, AudioBufferList *output, const AudioTimeStamp *outputTime,
                 void *registered) {
    const auto &real = *static_cast<Registered *>(registered);
    ++gCalls;
    tInProcedure = true;
    const OSStatus status = real.proc(device, now, input, inputTime, output, outputTime, real.clientData);
    tInProcedure = false;
    return status;
}

} // namespace

extern "C" {
void *__real_malloc(std::size_t);
void *__wrap_malloc(std::size_t size) {
    count();
    return __real_malloc(size);
}
int __real_pthread_mutex_lock(pthread_mutex_t *);
int __wrap_pthread_mutex_lock(pthread_mutex_t *mutex) {
    count();
    return __real_pthread_mutex_lock(mutex);
}
OSStatus __real__Z25AudioDeviceCreateIOProcIDjPFijPK14AudioTimeStampPK15AudioBufferListS1_PS2_S1_PvES6_PS8_(
    AudioObjectID, AudioDeviceIOProc, void *, AudioDeviceIOProcID *);
OSStatus __wrap__Z25AudioDeviceCreateIOProcIDjPFijPK14AudioTimeStampPK15AudioBufferListS1_PS2_S1_PvES6_PS8_(
    AudioObjectID device, AudioDeviceIOProc proc, void *clientData, AudioDeviceIOProcID *id) {
    gRegistered.push_back({proc, clientData});
    return __real__Z25AudioDeviceCreateIOProcIDjPFijPK14AudioTimeStampPK15AudioBufferListS1_PS2_S1_PvES6_PS8_(
        device, watched, &gRegistered.back(), id);
}
// The thru engine's procedures, which are known by themselves with the older calls.
OSStatus __wrap__ZN8cantorel22PDAudioDeviceAddIOProcEjPFijPK14AudioTimeStampPK15AudioBufferListS2_PS3_S2_PvES7_PS9_(
    AudioObjectID device, AudioDeviceIOProc proc, void *clientData, AudioDeviceIOProcID *id) {
    return __wrap__Z25AudioDeviceCreateIOProcIDjPFijPK14AudioTimeStampPK15AudioBufferListS1_PS2_S1_PvES6_PS8_(
        device, proc, clientData, id);
}
}
void *operator new(std::size_t size) {
    count();
    return std::malloc(size);
}
void operator delete(void *memory) noexcept {
    count();
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
    count();
    std::free(memory);
}

namespace cantorel {

TEST(RealTimeCounters, SeeWhatAProcedureWouldDo) {
    const auto faultsOf = [](auto &&act) {
        const int before = gFaults;
        tInProcedure = true;
        act();
        tInProcedure = false;
        return gFaults - before;
    };
    std::vector<int> memory;
    std::mutex mutex;
    EXPECT_GT(faultsOf([&] { memory.resize(1000); }), 0);
    EXPECT_GT(faultsOf([&] { const std::lock_guard lock(mutex); }), 0);
}

struct RealTimeTest : test::RecordingFixture {};

TEST_F(RealTimeTest, CaptureThruAndPlayerNeitherAllocateNorLock) {
    const QString sound = path("sound.wav");
    ASSERT_TRUE(test::writeWav(sound, test::stamped(96000)));
    auto player = media::Player::open(sound);
    ASSERT_TRUE(player);
    AppSettings::setAudioType(0);
    RecordManager manager;
    ASSERT_TRUE(manager.startRecord(QUrl::fromLocalFile(path("a.m4a"))));
    ASSERT_TRUE(player.value()->play());
    world.advance(500);
    manager.pauseRecording(RecordManager::Pause::ForSilence);
    world.advance(1500);
    manager.resumeRecording();
    world.advance(60000); // the queue overflows as well
    world.backend->unplug("builtin_output");
    world.advance(500);
    manager.stopRecord();
    EXPECT_GT(gCalls, 3 * 94) << "all procedures have run";
    EXPECT_GE(gRegistered.size(), 4u) << "capture, both of the thru engine, and the player's";
    EXPECT_EQ(gFaults, 0);
    manager.clear();
}

} // namespace cantorel
