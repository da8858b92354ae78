#include "settings/RecordingSource.h"

namespace cantorel {

const QStringList &recordingSourceNames() {
    static const QStringList names{QStringLiteral("system"), QStringLiteral("mic"), QStringLiteral("both")};
    return names;
}

QString nameOf(RecordingSource source) { return recordingSourceNames().at(static_cast<int>(source)); }

std::optional<RecordingSource> recordingSource(int number) {
    if (number < 0 || number >= recordingSourceNames().size())
        return {};
    return static_cast<RecordingSource>(number);
}

std::optional<RecordingSource> recordingSourceNamed(const QString &name) {
    return recordingSource(static_cast<int>(recordingSourceNames().indexOf(name)));
}

} // namespace cantorel
