#include "platform/foundation/Clock.h"
#include "recording/library/RecordedList.h"
#include "tests/fuzz/FuzzFolder.h"

#include <QCoreApplication>

// The journal of an empty list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static int count = 1;
    static char name[] = "fuzz", *arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments); // the list has a timer
    static const fuzz::FuzzFolder folder;
    static foundation::WallClock clock;
    folder.put("recordedList.journal", data, size);
    RecordedList(folder.path(), clock).initRecordedList();
    return 0;
}
