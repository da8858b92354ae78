#pragma once

#include <span>

namespace cantorel {

// One text of the table. A text whose attribute is null is never loaded from a language file. A text that speaks of a
// number has another row for one of it, "Key.one"; files may have further forms of it, "Key.few" and the like, named as
// the plural categories of the Unicode CLDR, and none where the text itself serves.
struct TextRow {
    const char *attribute;
    const char *key;
    const char *builtIn; // in English; may carry markers such as "[#AppName#]"
};

// The texts that one element of a language file supplies, and the XPath that finds it. A key is the group's prefix
// followed by its attribute but where the rows say otherwise.
struct TextGroup {
    const char *path;
    std::span<const TextRow> rows;
};

// All groups, in the order in which a language file is read. The build writes them from the English one.
std::span<const TextGroup> textGroups();

} // namespace cantorel
