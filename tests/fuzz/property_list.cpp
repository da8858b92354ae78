#include "platform/foundation/PropertyList.h"
#include "tests/fuzz/FuzzFolder.h"

// What is read can be stored, and is read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    if (const auto list = foundation::parsePropertyList(fuzz::bytesOf(data, size)))
        if (!foundation::parsePropertyList(foundation::propertyListXml(list.value())))
            qFatal("what was written is no list");
    return 0;
}
