#pragma once

#include "cli/CommandTable.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace cantorel {

// How a command ended, and the lines that it printed.
struct CommandRun {
    int status;
    QStringList out, error;
};

inline CommandRun runCommand(const QStringList &arguments, std::span<const AddCommand> commands = allCommands()) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = runCommandLine(arguments, commands);
    const auto lines = [](const std::string &text) {
        return QString::fromStdString(text).split('\n', Qt::SkipEmptyParts);
    };
    return {status, lines(testing::internal::GetCapturedStdout()), lines(testing::internal::GetCapturedStderr())};
}

} // namespace cantorel
