#include "recording/control/ListRequests.h"

#include "lang/Lang.h"

#include <QFile>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

Failure refusal(const foundation::Sentence &sentence) { return {sentence, Lang::english(sentence)}; }

// The item, if it is listed and nothing is being done with its file.
Result<RecordedAudioInfo *> idleItem(const RecordedList &list, const QString &file) {
    RecordedAudioInfo *item = list.itemWithFile(file);
    if (!item)
        return refusal(
            QStringLiteral("\"%1\" is not in the list; \"cantorel-cli library list\" shows what is.").arg(file));
    if (item->isInUse())
        return refusal(
            QStringLiteral("\"%1\" is still being recorded or converted; try again when that has ended.").arg(file));
    return item;
}

} // namespace

Result<QString> renameRecording(RecordedList &list, const QString &file, const QString &name) {
    const auto item = idleItem(list, file);
    if (!item)
        return item.failure();
    if (const auto renamed = list.rename(*item.value(), name); !renamed)
        return renamed.failure();
    return item.value()->getFileName();
}

Result<void> removeRecording(RecordedList &list, const QString &file, bool deletesFile) {
    const auto item = idleItem(list, file);
    if (!item)
        return item.failure();
    if (deletesFile && !QFile::remove(file))
        return refusal(QStringLiteral("\"%1\" can't be deleted; check the rights of its folder.").arg(file));
    const std::size_t place = list.indexOf(*item.value());
    const RecordedAudioFields fields = item.value()->fields();
    list.remove(*item.value());
    if (list.unsaved().isEmpty())
        return {};
    const foundation::Sentence why = list.unsaved();
    if (!deletesFile)
        list.insert(place, fields);
    return refusal(why);
}

} // namespace cantorel
