// Whatever ends "record", and whenever: the person's choice of devices is as before, and what they chose meanwhile
// stands.

#include "tests/world/record/RecordProgram.h"

namespace cantorel {
namespace {

using test::eventually;
using test::PrivateWorld;

enum class Moment { Preparing, Recording, Converting };

struct End {
    Moment moment;
    int signal; // 0: the time asked for is over
    // Choices of an output and an input; empty: none.
    const char *before[2];
    const char *meanwhile[2];
    const char *after[2];
};

constexpr End kEnds[] = {
    {Moment::Recording, 0, {"", ""}, {"", ""}, {"", ""}},
    {Moment::Recording, 0, {"usb_gone", "mic_gone"}, {"", ""}, {"usb_gone", "mic_gone"}},
    {Moment::Recording, SIGINT, {"", "headset_mic"}, {"", ""}, {"", "headset_mic"}},
    {Moment::Recording, SIGTERM, {"headset", ""}, {"", ""}, {"headset", ""}},
    {Moment::Preparing, SIGTERM, {"", ""}, {"", ""}, {"", ""}},
    {Moment::Preparing, SIGKILL, {"", ""}, {"", ""}, {"", ""}},
    {Moment::Preparing, SIGKILL, {"usb_gone", "headset_mic"}, {"", ""}, {"usb_gone", "headset_mic"}},
    {Moment::Recording, SIGKILL, {"", ""}, {"", ""}, {"", ""}},
    {Moment::Recording, SIGKILL, {"headset", "mic_gone"}, {"", ""}, {"headset", "mic_gone"}},
    {Moment::Converting, SIGKILL, {"", ""}, {"", ""}, {"", ""}},
    {Moment::Recording, SIGINT, {"", ""}, {"headset", "headset_mic"}, {"headset", "headset_mic"}},
    {Moment::Recording, SIGKILL, {"builtin_output", ""}, {"headset", "headset_mic"}, {"headset", "headset_mic"}},
    {Moment::Recording, 0, {"", "mic_gone"}, {"headset", ""}, {"headset", "mic_gone"}},
};

struct DefaultDevicesTest : test::RecordProgramTest {
    QByteArray configured(int side) const { return world.metadata("default.configured." + kKeys[side]); }
    QByteArray inForce(int side) const { return world.metadata("default." + kKeys[side]); }

    const QString kKeys[2] = {"audio.sink", "audio.source"};
    const PrivateWorld world{{.moreSinks = {"headset=Headset"}, .moreSources = {"headset_mic=Headset", "lent=Lent"}}};
};

bool names(const QByteArray &value, const QByteArray &device) {
    return device.isEmpty() ? value.isEmpty() : value.contains('"' + device + '"');
}

} // namespace

TEST_F(DefaultDevicesTest, AreGivenBackWhateverEndsTheRecording) {
    ASSERT_TRUE(world.ready());
    const QString hangs = "CANTOREL_FFMPEG=" + script("exec sleep 100");
    for (std::size_t i = 0; i < std::size(kEnds); ++i) {
        SCOPED_TRACE(i);
        const auto &[moment, number, before, meanwhile, after] = kEnds[i];
        for (int side = 0; side < 2; ++side) {
            // An earlier case's choice must not linger in the server's memory of choices.
            world.choose(kKeys[side], side == 0 ? "builtin_output" : "builtin_microphone");
            world.choose(kKeys[side], before[side]);
            ASSERT_TRUE(eventually([&] { return names(configured(side), before[side]); }));
        }
        ASSERT_TRUE(eventually([&] { return !inForce(0).contains("Tessolar") && !inForce(1).contains("lent"); }));
        const QByteArray used[] = {inForce(0), inForce(1)};

        QStringList options{"--source", "both", "--microphone", "Lent", "--format", "4"};
        if (number == 0)
            options += {"--seconds", "0.7"};
        const auto run = start(options, moment == Moment::Converting ? QStringList{hangs} : QStringList());
        if (moment == Moment::Preparing) {
            ASSERT_TRUE(eventually([&] { return inForce(1).contains("lent"); }))
                << (run->signal(SIGTERM), run->status()) << run->error.constData();
        } else {
            ASSERT_TRUE(run->begins()) << run->error.constData();
            EXPECT_TRUE(names(inForce(0), "Tessolar_AudioDevice")) << inForce(0).constData();
            EXPECT_TRUE(names(inForce(1), "lent")) << inForce(1).constData();
        }
        for (int side = 0; side < 2; ++side) {
            if (*meanwhile[side])
                world.choose(kKeys[side], meanwhile[side]);
        }
        if (moment == Moment::Converting) {
            run->signal(SIGINT);
            ASSERT_TRUE(eventually([&] { return run->has("converting"); }));
        }
        if (number != 0)
            run->signal(number);
        EXPECT_EQ(run->status(), number == SIGKILL ? SIGKILL : number == 0 ? 0 : 130) << run->error.constData();
        for (int side = 0; side < 2; ++side) {
            EXPECT_TRUE(eventually([&] {
                return names(configured(side), after[side])
                       && (*meanwhile[side] ? names(inForce(side), after[side]) : inForce(side) == used[side]);
            })) << kKeys[side].toStdString()
                << ": " << configured(side).constData() << ", in force " << inForce(side).constData() << "\n"
                << run->error.constData() << run->out.constData();
        }
    }
}

} // namespace cantorel
