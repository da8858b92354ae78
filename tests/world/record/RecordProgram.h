#pragma once

#include "tests/support/OrdinaryFile.h"
#include "tests/support/PrivateWorld.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

// "record" as a program of its own, as a person or a script runs it.
namespace cantorel::test {

class RecordProgramTest : public testing::Test {
protected:
    // The program while it runs, and what it has told.
    struct Run {
        QProcess process;
        QByteArray out, error;

        bool has(const char *event) {
            out += process.readAllStandardOutput();
            return out.contains(QByteArray("\"event\":\"") + event + '"');
        }
        bool begins() {
            return eventually([&] { return has("started"); });
        }
        void signal(int number) const {
            if (const qint64 id = process.processId(); id > 0) // 0 is this program with its whole group.
                ::kill(static_cast<pid_t>(id), number);
        }
        int status() {
            if (!eventually([&] { return process.state() == QProcess::NotRunning; }, 40000))
                test::finish(process, SIGKILL);
            out += process.readAllStandardOutput();
            error += process.readAllStandardError();
            return process.exitCode();
        }
        QString lastLine() const { return QString::fromUtf8(error).trimmed().section('\n', -1); }
        QJsonObject event(const char *name) const {
            for (const QByteArray &line : out.split('\n')) {
                const QJsonObject object = QJsonDocument::fromJson(line).object();
                if (object["event"].toString() == name)
                    return object;
            }
            return {};
        }
    };

    std::unique_ptr<Run> start(const QStringList &options, const QStringList &environment = {}) const {
        auto run = std::make_unique<Run>();
        run->process.setProcessEnvironment([&] {
            auto variables = QProcessEnvironment::systemEnvironment();
            for (const QString &variable : environment)
                variables.insert(variable.section('=', 0, 0), variable.section('=', 1));
            return variables;
        }());
        QStringList words = mWrapper + QStringList{CANTOREL_CLI, "record", "--json"} + options;
        if (!options.contains("--skip-silence"))
            words += {"--skip-silence", "off"}; // Lengths are those of the wall, whatever is heard.
        if (!options.contains("--folder"))
            words += {"--folder", mFolder.path()};
        run->process.start(words.first(), words.mid(1));
        run->process.waitForStarted(5000);
        return run;
    }
    QString script(const char *body) const {
        const QString path = mFolder.path() + "/../" + QFileInfo(mFolder.path()).fileName() + "-ffmpeg";
        test::storeProgram(path, QByteArray("#!/bin/sh\n") + body + '\n');
        return path;
    }
    ~RecordProgramTest() override { QFile::remove(mFolder.path() + "-ffmpeg"); }

    QTemporaryDir mFolder;
    QStringList mWrapper; // what the program is run by
    const QStringList mSoftware{"--backend", "embedded", "--source", "mic", "--seconds", "0.3"};
};

// What a program has started, and what that has.
inline std::vector<pid_t> descendantsOf(qint64 program) {
    std::vector<pid_t> all;
    const QDir tasks(QString("/proc/%1/task").arg(program));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        for (const QByteArray &child : test::contents(tasks.filePath(task + "/children")).simplified().split(' '))
            if (const int id = child.toInt(); id > 0) {
                all.push_back(id);
                const std::vector<pid_t> below = descendantsOf(id);
                all.insert(all.end(), below.begin(), below.end());
            }
    return all;
}

// Those that watch over its displaced default devices.
inline std::vector<pid_t> guardsOf(qint64 program) {
    std::vector<pid_t> guards = descendantsOf(program);
    std::erase_if(guards, [](pid_t id) {
        return !test::contents(QString("/proc/%1/cmdline").arg(id)).contains("cantorel-guard");
    });
    return guards;
}

inline void expectOneSentence(const QString &line, const char *part) {
    EXPECT_TRUE(line.contains(part)) << line.toStdString();
    EXPECT_FALSE(line.startsWith('[')) << "a line of the log: " << line.toStdString();
}

} // namespace cantorel::test
