#include "platform/foundation/KeyedArchiver.h"
#include "tests/fuzz/FuzzFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    (void)foundation::unarchivedObject(fuzz::bytesOf(data, size));
    (void)foundation::unarchiveItems(fuzz::bytesOf(data, size), [](const QVariant &) {});
    return 0;
}
