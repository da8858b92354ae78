#include "tests/fuzz/FuzzFolder.h"
#include "util/tools/UpdateCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    if (const auto description = UpdateCheck::parse(QString::fromUtf8(fuzz::bytesOf(data, size))))
        (void)description.value().isOffered();
    return 0;
}
