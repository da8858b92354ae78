#pragma once

#include "settings/UserDefaultFunctions.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace cantorel::test {

// As long as it lives no setting can be saved: a folder stands where the lock of the settings does.
class UnwritableSettings {
public:
    UnwritableSettings() {
        QFile::remove(mLock);
        EXPECT_TRUE(QDir().mkpath(mLock));
    }
    ~UnwritableSettings() { EXPECT_TRUE(QDir().rmdir(mLock)); }

private:
    const QString mLock = QFileInfo(standardUserDefaults().filePath()).path() + "/." + kBundleIdentifier + ".lock";
};

} // namespace cantorel::test
