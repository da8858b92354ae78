// The turns of the software devices: what sounds when. The rest of EmbeddedBackend is in its own file.

#include "platform/hal/embedded/EmbeddedBackend.h"

#include <algorithm>

namespace cantorel::hal {

using foundation::Clock;

namespace {

// The first two channels, or the only one twice.
std::vector<float> frontPair(const std::vector<float> &samples, int channels) {
    std::vector<float> pair;
    const auto width = static_cast<std::size_t>(channels);
    for (std::size_t frame = 0; frame + width <= samples.size(); frame += width)
        pair.insert(pair.end(), {samples[frame], samples[frame + (width > 1 ? 1 : 0)]});
    return pair;
}

} // namespace

// Devices rest while nobody listens and nobody plays, and begin at the moment somebody does.
void EmbeddedBackend::beginIfIdle() {
    if (!mStreams.empty() || !mPrograms.empty())
        return;
    for (const auto &device : mDevices) {
        device->start = mClock->now();
        device->position = 0;
        device->played.clear();
    }
}

Clock::Duration EmbeddedBackend::turn(Clock::Duration now) {
    const std::lock_guard lock(mMutex);
    if (mStreams.empty() && mPrograms.empty())
        return Clock::Duration::max();
    while (true) {
        SoftwareDevice *due = nullptr;
        for (const auto &device : mDevices) {
            if (!due || device->nextCycle() < due->nextCycle())
                due = device.get();
        }
        if (!due)
            return Clock::Duration::max();
        if (due->nextCycle() > now)
            return due->nextCycle();
        runCycle(*due, now);
    }
}

void EmbeddedBackend::runCycle(SoftwareDevice &device, Clock::Duration now) {
    const std::uint32_t frames = device.cycleFrames();
    const auto hostTime = static_cast<std::uint64_t>(std::max(device.nextCycle(), now).count());
    if (device.stalls) {
        device.position += frames;
        return;
    }
    if (device.record.output.channels > 0)
        playInto(device, frames);
    if (device.record.input.channels > 0)
        readFrom(device, frames, hostTime);
    // A device with both sides whose stream plays as well has mixed by now.
    if (device.record.output.channels > 0 && device.tap && !device.record.isLoopback)
        device.tap(device.played, device.record.output.channels, device.position);
    for (const auto &stream : mStreams) {
        if (!stream->ended && stream->uid == QLatin1String(kOutputMonitorUid) && device.record.uid == mMonitored)
            runStream(*stream, lastHeard(stream->uid).data(), nullptr, frames, hostTime);
    }
    device.position += frames;
}

// The last cycle that can be read from a device; nothing while it is away.
std::vector<float> EmbeddedBackend::lastHeard(const QString &uid) const {
    if (!isThere(uid))
        return {};
    if (uid != QLatin1String(kOutputMonitorUid))
        return find(uid)->heard;
    const SoftwareDevice &output = *find(defaultUid(Direction::Output));
    return frontPair(output.played, output.record.output.channels);
}

void EmbeddedBackend::playInto(SoftwareDevice &device, std::uint32_t frames) {
    const auto channels = static_cast<std::size_t>(device.record.output.channels);
    const std::size_t samples = frames * channels;
    device.played.assign(samples, 0.0f);
    std::vector<float> part(samples);
    const auto mix = [&] {
        for (std::size_t i = 0; i < samples; ++i)
            device.played[i] += part[i];
    };

    const std::size_t ready = std::min(samples, device.ahead.size());
    std::copy_n(device.ahead.begin(), ready, device.played.begin());
    device.ahead.erase(device.ahead.begin(), device.ahead.begin() + static_cast<std::ptrdiff_t>(ready));

    const QString defaultOutput = defaultUid(Direction::Output);
    for (const auto &program : mPrograms) {
        if ((program->uid.isEmpty() ? defaultOutput : program->uid) != device.record.uid)
            continue;
        std::fill(part.begin(), part.end(), 0.0f);
        program->sound(part, device.record.output.channels, program->position);
        program->position += frames;
        mix();
    }
    const auto hostTime = static_cast<std::uint64_t>(device.nextCycle().count());
    for (const auto &stream : mStreams) {
        if (stream->ended || stream->uid != device.record.uid || !stream->output || stream->input || stream->leader)
            continue;
        std::fill(part.begin(), part.end(), 0.0f);
        runStream(*stream, nullptr, part.data(), frames, hostTime);
        mix();
    }
    if (device.tap && device.record.isLoopback)
        device.tap(device.played, device.record.output.channels, device.position);
}

void EmbeddedBackend::readFrom(SoftwareDevice &device, std::uint32_t frames, std::uint64_t hostTime) {
    const auto channels = static_cast<std::size_t>(device.record.input.channels);
    device.heard.assign(frames * channels, 0.0f);
    if (device.record.isLoopback) {
        device.heard = device.played;
    } else if (!device.members.empty()) {
        std::size_t first = 0;
        for (std::size_t i = 0; i < device.members.size() && i < device.widths.size(); ++i) {
            const std::vector<float> member = lastHeard(device.members[i]);
            const auto width = static_cast<std::size_t>(inputChannelsOf(device.members[i]));
            const std::size_t kept = std::min(width, static_cast<std::size_t>(device.widths[i]));
            const std::size_t have = width > 0 ? std::min<std::size_t>(frames, member.size() / width) : 0;
            for (std::size_t frame = 0; frame < have; ++frame)
                std::copy_n(&member[frame * width], kept, &device.heard[frame * channels + first]);
            first += static_cast<std::size_t>(device.widths[i]);
        }
    } else if (device.source) {
        device.source(device.heard, device.record.input.channels, device.position);
    }

    for (const auto &stream : mStreams) {
        if (stream->ended || stream->uid != device.record.uid || !stream->input)
            continue;
        std::vector<float> answer(stream->output ? device.played.size() : 0);
        runStream(*stream, device.heard.data(), stream->output ? answer.data() : nullptr, frames, hostTime);
        for (std::size_t i = 0; i < answer.size(); ++i)
            device.played[i] += answer[i];
        for (const auto &follower : mStreams) {
            SoftwareDevice *target = follower->leader == stream.get() ? find(follower->uid) : nullptr;
            if (!target || follower->ended)
                continue;
            std::vector<float> ahead(frames * static_cast<std::size_t>(target->record.output.channels));
            runStream(*follower, nullptr, ahead.data(), frames, hostTime);
            target->ahead.insert(target->ahead.end(), ahead.begin(), ahead.end());
        }
    }
}

void EmbeddedBackend::runStream(SoftwareStream &stream, const float *input, float *output, std::uint32_t frames,
                                std::uint64_t hostTime) noexcept {
    const CycleTime time{stream.position, hostTime, false};
    stream.client->cycle(time, input, output, frames);
    stream.position += frames;
}

} // namespace cantorel::hal
