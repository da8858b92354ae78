#include "platform/media/export/ItemList.h"

#include <algorithm>
#include <array>

namespace cantorel::media {

namespace {

constexpr std::uint32_t kText = 1, kJpeg = 13, kPng = 14, kUntyped = 0;

struct Kind {
    const char *commonKey;
    std::string_view box;
};
constexpr std::array kKinds = {Kind{"title", "\251nam"},        Kind{"artist", "\251ART"}, Kind{"album", "\251alb"},
                               Kind{"creationDate", "\251day"}, Kind{"type", "\251gen"},   Kind{"artwork", "covr"}};

std::uint32_t typeOf(const QByteArray &picture) {
    return picture.startsWith("\xFF\xD8\xFF") ? kJpeg : picture.startsWith("\x89PNG") ? kPng : kUntyped;
}

} // namespace

BoxBuffer itemList(const QList<MetadataItem> &items) {
    BoxBuffer out;
    const std::size_t udta = out.open("udta");
    const std::size_t meta = out.openFull("meta", 0, 0);
    const std::size_t hdlr = out.openFull("hdlr", 0, 0);
    out.zeros(4);
    out.text("mdirappl");
    out.zeros(9);
    out.close(hdlr);
    const std::size_t ilst = out.open("ilst");
    const std::size_t before = out.size();
    for (const Kind &kind : kKinds) {
        const bool isPicture = kind.box == "covr";
        const auto found = std::find_if(items.begin(), items.end(), [&](const MetadataItem &item) {
            return item.commonKey == QLatin1String(kind.commonKey)
                   && !(isPicture ? item.data.isEmpty() : item.text.isEmpty());
        });
        if (found == items.end())
            continue;
        const QByteArray bytes = isPicture ? found->data : found->text.toUtf8();
        const std::size_t item = out.open(kind.box);
        const std::size_t data = out.open("data");
        out.u32(isPicture ? typeOf(bytes) : kText);
        out.u32(0); // any language
        out.text({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        out.close(data);
        out.close(item);
    }
    if (out.size() == before)
        return {};
    for (const std::size_t mark : {ilst, meta, udta})
        out.close(mark);
    return out;
}

} // namespace cantorel::media
