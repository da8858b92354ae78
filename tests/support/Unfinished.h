#pragma once

#include "platform/media/AudioFileWriter.h"
#include "platform/media/RecordingRepair.h"
#include "tests/support/Sound.h"

#include <QFile>

#include <gtest/gtest.h>

namespace cantorel::test {

// Makes the file a recording of two seconds of which a crash left all fragments but the last half; answers its name.
inline QString unfinished(const QString &file) {
    auto writer = media::AudioFileWriter::open(file, 48000);
    EXPECT_TRUE(writer.ok());
    EXPECT_TRUE(writer.value()->append(tone(48000 * 2, 48000)).ok());
    EXPECT_TRUE(QFile::copy(file, file + ".crashed"));
    EXPECT_TRUE(writer.value()->finish().ok());
    writer.value().reset();
    QFile::remove(file);
    EXPECT_TRUE(QFile::rename(file + ".crashed", file));
    EXPECT_TRUE(media::isUnfinished(file));
    return file;
}

} // namespace cantorel::test
