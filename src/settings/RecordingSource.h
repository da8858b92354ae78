#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace cantorel {

// What is recorded, as settings and tasks store it.
enum class RecordingSource { SystemSound = 0, Microphone = 1, Both = 2 };

// "system", "mic" and "both", in the order of their numbers: the names on the command line and between programs.
const QStringList &recordingSourceNames();

QString nameOf(RecordingSource source);
// Nothing for a number or a name that no source has.
std::optional<RecordingSource> recordingSource(int number);
std::optional<RecordingSource> recordingSourceNamed(const QString &name);

constexpr bool includesSystemSound(RecordingSource source) { return source != RecordingSource::Microphone; }
constexpr bool includesMicrophone(RecordingSource source) { return source != RecordingSource::SystemSound; }

} // namespace cantorel
