#include "convert/ConverterOutputParser.h"
#include "tests/fuzz/FuzzFolder.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    const QString text = QString::fromUtf8(fuzz::bytesOf(data, size));
    (void)ConverterOutputParser::durationText(text);
    for (const int duration : {-1, 0, 1, 180, 1 << 30}) {
        const auto progress = ConverterOutputParser::progress(text, duration);
        if (progress && !(*progress >= 0 && *progress < 100))
            std::abort();
    }
    return 0;
}
