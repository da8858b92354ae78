#pragma once

#include "capture/ZQAVRecorder.h"

#include <QObject>

#include <optional>

namespace cantorel::test {

// Writes down what a recorder of movies tells.
struct MovieLog : QObject, ZQAVRecorderDelegate {
    void captureDidStartRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &) override { ++started; }
    void captureDidFinishRecordingToOutputAtURL(ZQAVRecorder &, const QUrl &, const media::RecordingCounts &told,
                                                const std::optional<foundation::Failure> &why) override {
        counts = told;
        failure = why;
        ++ended;
    }
    void AVRecorderDidFinishRecorderWithOutputFilePath(ZQAVRecorder &, const QString &) override { ++files; }
    int started = 0, ended = 0, files = 0;
    media::RecordingCounts counts;
    std::optional<foundation::Failure> failure;
};

} // namespace cantorel::test
