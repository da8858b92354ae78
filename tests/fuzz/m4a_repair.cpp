#include "platform/media/MovieBoxes.h"
#include "platform/media/RecordingRepair.h"
#include "tests/fuzz/FuzzFolder.h"

#include <cstdlib>
#include <vector>

// The first byte tells whether the rest is a whole file, or stands behind the start of one of ours.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    if (size == 0)
        return 0;
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    if (data[0] % 2) {
        const auto start = media::movieStart(media::AacFormat{48000, 2, 256000, 1024, {0x11, 0x90}});
        bytes.insert(bytes.begin(), start.data().begin(), start.data().end());
    }
    folder.put("recording.m4a", bytes.data(), bytes.size());
    const QString file = folder.path() + QStringLiteral("/recording.m4a");
    const bool isUnfinished = media::isUnfinished(file);
    const bool isWhole = media::unfinishedSound(file) == media::UnfinishedSound::Whole;
    const double seconds = media::unfinishedSeconds(file);
    const bool isRepaired = media::repairUnfinished(file, file).ok();
    // What is repaired was unfinished and is so no more; nothing else is touched.
    if (seconds < 0 || (isWhole && !isUnfinished) || (isWhole && !isRepaired) || (isRepaired && !isUnfinished)
        || (isRepaired && media::isUnfinished(file)))
        std::abort();
    return 0;
}
