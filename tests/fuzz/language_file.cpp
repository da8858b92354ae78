#include "lang/Lang.h"
#include "tests/fuzz/FuzzFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace cantorel;
    static const fuzz::FuzzFolder folder;
    qputenv("CANTOREL_RESOURCES", folder.path().toUtf8());
    folder.put("lang/German.xml", data, size);
    Lang::ChangeLanguage(QStringLiteral("German"));
    return 0;
}
