#pragma once

#include "platform/foundation/Result.h"
#include "recording/library/RecordedAudioInfo.h"

#include <vector>

namespace cantorel {

inline constexpr foundation::SentenceKey kNotToWastebasket("NotToWastebasket", "FileName");

class RecordedList;

// Takes recordings out of the list, their files too if asked, and gives the last ones back. Files go into the desktop's
// wastebasket and nowhere else. Owned by the window; main thread.
class RecordingsRemoval {
public:
    // The list outlives it.
    explicit RecordingsRemoval(RecordedList &list) : mList(list) {}

    enum class Files { Stay, IntoWastebasket };
    // Those that can't be moved stay in the list, and the failure names the first of them; one that the list can't be
    // stored is told where all could be moved. What is recorded or
    // converted is left alone.
    foundation::Result<void> remove(const std::vector<RecordedAudioInfo *> &items, Files files);

    // How many undo() would give back, and the name of the first.
    std::size_t count() const { return mRemoved.size(); }
    QString firstName() const;
    bool hasMovedFiles() const { return mHasMovedFiles; }
    // Fails when a file can't be brought back; the others are.
    foundation::Result<void> undo();

private:
    struct Removed {
        std::size_t place;
        RecordedAudioFields fields;
        QString inWastebasket; // where the file lies; empty when it has stayed
    };

    RecordedList &mList;
    std::vector<Removed> mRemoved;
    bool mHasMovedFiles = false;
};

} // namespace cantorel
