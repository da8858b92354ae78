#pragma once

#include "platform/foundation/ChildProcess.h"
#include "tests/support/OrdinaryFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace cantorel::test {

// Runs the independent maker and reader of tags.
inline QByteArray mutagen(const QString &what, const QString &path) {
    const auto run = foundation::ChildProcess::run({"/usr/bin/python3", {CANTOREL_MUTAGEN, what, path}, {}, {}});
    const bool worked = run && run.value().ending.succeeded();
    EXPECT_TRUE(worked) << (run ? run.value().output.toStdString() : std::string("python3 is missing"));
    return worked ? run.value().output : QByteArray();
}

// A digest of the sound, as ffmpeg reads it.
inline QByteArray packetsIn(const QString &path) {
    const auto run = foundation::ChildProcess::run(
        {"ffmpeg", {"-v", "fatal", "-i", path, "-map", "0:a", "-c", "copy", "-f", "md5", "-"}, {}, {}});
    EXPECT_TRUE(run && run.value().output.startsWith("MD5="));
    return run ? run.value().output : QByteArray();
}

// A folder with a file of each kind.
class TagFiles : public testing::Test {
protected:
    void SetUp() override { mutagen("make", mFolder.path()); }
    QString file(const char *name) const { return mFolder.filePath(name); }
    // What each file holds.
    QJsonObject held() const { return QJsonDocument::fromJson(mutagen("show", mFolder.path())).object(); }

    const QTemporaryDir mFolder;
};

} // namespace cantorel::test
