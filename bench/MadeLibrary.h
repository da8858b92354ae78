#pragma once

#include "recording/library/RecordedAudioInfo.h"
#include "settings/AppSettings.h"

#include <QFile>
#include <QString>
#include <QVariantList>

namespace cantorel::bench {

// The stored fields of the numbered recording of a made library.
inline RecordedAudioFields madeRecording(const QString &folder, int number) {
    return {QStringLiteral("%1/Recording of the year %2.mp3").arg(folder).arg(number),
            QStringLiteral("00:03:%1").arg(number % 60, 2, 10, QLatin1Char('0')),
            QStringLiteral("%1 KB").arg(number),
            QStringLiteral("2026-11-21 10:%1:00").arg(number % 60, 2, 10, QLatin1Char('0')),
            QStringLiteral("Artist %1").arg(number % 999),
            QStringLiteral("Album %1").arg(number % 4999),
            QStringLiteral("2026")};
}

// Stores a library of so many recordings, their empty files in the folder.
inline void storeMadeLibrary(const QString &folder, int count) {
    QVariantList archived;
    archived.reserve(count);
    for (int number = 0; number < count; ++number) {
        const RecordedAudioFields fields = madeRecording(folder, number);
        QFile file(fields._fileName);
        (void)file.open(QIODevice::WriteOnly);
        archived.append(archivedItem(fields));
    }
    AppSettings::setRecordedMovieList(archived);
}

} // namespace cantorel::bench
