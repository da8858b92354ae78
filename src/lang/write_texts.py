#!/usr/bin/env python3
"""Writes the built-in texts and their operations from the English language file.
usage: write_texts.py ENGLISH.XML LangTexts.h LangTexts.cpp"""
import json
import sys
from xml.etree import ElementTree

# A key is the path of the element and the attribute. The first paths are short, and these keys are fixed otherwise.
PREFIXES = {"common": "comm", "button": "btn"}
KEYS = {
    ("settingsGeneral", "EnableHotkeys"): "settingsEnableHotkeys",
    ("settingsRecord", "ConfigureDidChange"): "settingsConfigureDidChange",
    ("toolsScheduleTask", "StopTime"): "toolsScheduleTaskToTime",
    ("toolsScheduleTask", "Sleep"): "toolsScheduleSleep",
    ("toolsScheduleTask", "DailyTask"): "toolsScheduleDailyTask",
    ("toolsScheduleTask", "Repeat"): "toolsScheduleRepeat",
    ("toolsScheduleTask", "RepeatStopManually"): "toolsScheduleRepeatStopManually",
    ("toolsScheduleTask", "RepeatStopAtCount"): "toolsScheduleRepeatStopAtCount",
    ("toolsScheduleTask", "WeeksOn"): "toolsScheduleWeeksOn",
    ("toolsScheduleTask", "Weeks"): "toolsScheduleWeeks",
    ("toolsScheduleTask", "AtTimeEveryDay"): "toolsScheduleAtTimeEveryDay",
    ("toolsEditor", "EditorInsert"): "toolsEditorButtonInsert",
    ("toolsEditor", "EditorInsertSettings"): "toolsEditorLabelInsertSettings",
}
# These keys are in no language file.
NEVER_LOADED = {
    "commAppName": "Cantorel",
    "commDeleteConfirm": "Do you want to delete the selected files from the disk?",
    "commExporting": "Exporting...",
    "commInstalledFailed": "The virtual sound device could not be installed.",
    "commStopRecordingWarning": "A recording is in progress. Do you want to stop it?",
    "btnAddToFavorite": "Add to favorites",
    "btnGetInfo": "Get info",
    "btnPause": "Pause",
    "btnYes": "Yes",
    "menuCopy": "Copy",
    "menuSupport": "Support",
    "settingsGeneralEnableHotkeys": "Enable hot keys",
    "settingsGeneralShowShareButton": "Show the share button",
    "settingsRecordMicrophone": "Microphone",
    "toolsScheduleTaskErrorEnterTaskName": "Enter a name for the task.",
    "toolsCDBurnerItemsMinutes": "[#Count#] items, [#Time#] minutes",
    "toolsCDRipperAlbum": "Album",
    "toolsEditorLabelInsertSetting": "Insert settings",
    "toolsEditorCannotPasteFromClipboard": "What is on the clipboard cannot be pasted.",
    "toolsEditorTitle": "Audio editor",
    "toolsEditormenuZoomToSelection": "Zoom to the selection",
    "toolsExportFull": "Whole sound",
    "toolsiTunesTitle": "Music player",
    "tabSearchTitle": "Search",
    "tabPlaylistRemovePlaylist": "Remove the playlist",
    "video2mp3ConvertLocalFile": "Convert a file from this computer",
    "video2mp3Extract": "Extract the sound",
}


def groups(element, path=()):
    """The elements that have texts, in the order of the file: path and rows of attribute, key and text."""
    for child in element:
        below = (*path, child.tag)
        if child.keys():
            name = "".join(below)
            yield "//" + "//".join(below), [
                (attribute, KEYS.get((name, attribute), PREFIXES.get(name, name) + attribute), text)
                for attribute, text in child.items()]
        yield from groups(child, below)


def quoted(text):
    return "nullptr" if text is None else json.dumps(text, ensure_ascii=False)


def main(english, header, source):
    texts = list(groups(ElementTree.parse(english).getroot()))
    texts.append(("/*", [(None, key, text) for key, text in NEVER_LOADED.items()]))
    keys = [key for path, rows in texts if path != "//sentence" for _, key, _ in rows]
    operations = [f'    static QString {key}(qint64 count) {{ return counted("{key}", count); }}\n'
                  if f"{key}.one" in keys else f'    static QString {key}() {{ return builtInOrLoaded("{key}"); }}\n'
                  for key in keys if "." not in key]
    with open(header, "w", encoding="utf-8") as file:
        file.write("#pragma once\n\n#include <QString>\n\nnamespace cantorel {\n\n"
                   "// Every text that a person sees, by its key; sentences have none of these operations.\n"
                   "class LangTexts {\npublic:\n" + "".join(operations)
                   + "\nprotected:\n    static QString builtInOrLoaded(const char *key);\n"
                   "    // The form for so many, with the number in it.\n"
                   "    static QString counted(const char *key, qint64 count);\n};\n\n} // namespace cantorel\n")
    with open(source, "w", encoding="utf-8") as file:
        file.write('#include "lang/LangTable.h"\n\nnamespace cantorel {\n\nnamespace {\n\n')
        for index, (_, rows) in enumerate(texts):
            file.write(f"constexpr TextRow kRows{index}[] = {{\n")
            file.writelines(f"    {{{', '.join(map(quoted, row))}}},\n" for row in rows)
            file.write("};\n\n")
        file.write("constexpr TextGroup kGroups[] = {\n")
        file.writelines(f"    {{{quoted(path)}, kRows{index}}},\n" for index, (path, _) in enumerate(texts))
        file.write("};\n\n} // namespace\n\nstd::span<const TextGroup> textGroups() { return kGroups; }\n\n"
                   "} // namespace cantorel\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
