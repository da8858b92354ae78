#include "recording/session/RecordingJournal.h"
#include "tests/fuzz/FuzzFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    folder.put("recording", data, size);
    (void)RecordingJournal(folder.path()).leftovers();
    return 0;
}
