#include "lang/LangTable.h"

namespace cantorel {

std::span<const TextGroup *const> textGroups() {
    static constexpr const TextGroup *kGroups[] = {
        &langtexts::kCommon,
        &langtexts::kButton,
        &langtexts::kMenu,
        &langtexts::kSettingsGeneral,
        &langtexts::kSettingsDownload,
        &langtexts::kSettingsRecord,
        &langtexts::kToolsScheduleTask,
        &langtexts::kToolsCDBurner,
        &langtexts::kToolsCDRipper,
        &langtexts::kToolsConverter,
        &langtexts::kToolsEditor,
        &langtexts::kToolsExport,
        &langtexts::kToolsID3Tags,
        &langtexts::kToolsiTunes,
        &langtexts::kTabRecord,
        &langtexts::kTabSearch,
        &langtexts::kTabDownload,
        &langtexts::kTabPlaylist,
        &langtexts::kUpdate,
        &langtexts::kVideo2mp3,
        &langtexts::kWindow,
        &langtexts::kSentence,
    };
    return kGroups;
}

} // namespace cantorel
