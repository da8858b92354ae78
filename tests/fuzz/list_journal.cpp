#include "platform/foundation/Clock.h"
#include "recording/library/RecordedList.h"
#include "tests/fuzz/FuzzFolder.h"

// The journal of an empty list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    static foundation::WallClock clock;
    folder.put("recordedList.journal", data, size);
    RecordedList(folder.path(), clock).initRecordedList();
    return 0;
}
