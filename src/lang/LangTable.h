#pragma once

#include <span>

namespace cantorel {

// One text of the table. A text whose attribute is null is never loaded from a language file.
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
