#pragma once

#include <span>

namespace cantorel {

// One text of the table. A text whose attribute is null is never loaded from a language file.
struct TextRow {
    const char *attribute;
    const char *key;
    const char *builtIn; // in English; may carry markers such as "[#AppName#]"
};

// The texts that one element of a language file supplies, and the XPath that finds it.
struct TextGroup {
    const char *path;
    std::span<const TextRow> rows;
};

// The groups, one by one; a key is the group's prefix followed by its attribute but where the rows say otherwise.
namespace langtexts {

extern const TextGroup kCommon;
extern const TextGroup kButton;
extern const TextGroup kMenu;
extern const TextGroup kSettingsGeneral;
extern const TextGroup kSettingsDownload;
extern const TextGroup kSettingsRecord;
extern const TextGroup kToolsScheduleTask;
extern const TextGroup kToolsCDBurner;
extern const TextGroup kToolsCDRipper;
extern const TextGroup kToolsConverter;
extern const TextGroup kToolsEditor;
extern const TextGroup kToolsExport;
extern const TextGroup kToolsID3Tags;
extern const TextGroup kToolsiTunes;
extern const TextGroup kTabRecord;
extern const TextGroup kTabSearch;
extern const TextGroup kTabDownload;
extern const TextGroup kTabPlaylist;
extern const TextGroup kUpdate;
extern const TextGroup kVideo2mp3;
extern const TextGroup kWindow;
extern const TextGroup kSentence;

} // namespace langtexts

// All groups, in the order in which a language file is read.
std::span<const TextGroup *const> textGroups();

} // namespace cantorel
