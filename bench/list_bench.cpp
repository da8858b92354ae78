// The library at 25,000 and 100,000 recordings: loading it to ready items and saving it, against libplist parsing the
// same archive; and one change to it. Each size is loaded by a process of its own, from the settings file on. Prints
// ratios of CPU time taken in one run, and the time of a change on this disk.

#include "bench/MadeLibrary.h"
#include "platform/foundation/KeyedArchiver.h"
#include "platform/hal/embedded/DeviceClock.h"
#include "recording/library/RecordedList.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaultFunctions.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <plist/plist.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

namespace {

using namespace cantorel;

double secondsOf(const std::function<void()> &action, clockid_t clock = CLOCK_PROCESS_CPUTIME_ID) {
    const auto now = [&] {
        timespec time{};
        clock_gettime(clock, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double begin = now();
    action();
    return now() - begin;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Times {
    double settings = 0, load = 0, save = 0, wholeSave = 0, parse = 0, change = 0, slowestChange = 0;
};

Times measure(const QString &state) {
    Times times;
    hal::ManualClock clock;
    times.settings = secondsOf([] { (void)AppSettings::getFromUserDefaults_Data(QStringLiteral("recordedList")); });
    const QByteArray archive = AppSettings::getFromUserDefaults_Data(QStringLiteral("recordedList"));
    std::vector<double> loads, saves, wholeSaves, parses, changes;
    for (int round = 0; round < 5; ++round) {
        RecordedList list(state, clock);
        loads.push_back(secondsOf([&] { list.initRecordedList(); }));
        saves.push_back(secondsOf([&] {
            QVariantList archived;
            for (const auto &item : list.items())
                archived.append(archivedItem(item->fields()));
            (void)foundation::archivedData(archived);
        }));
        wholeSaves.push_back(secondsOf([&] { list.saveRecordedList(); }));
        parses.push_back(secondsOf([&] {
            plist_t root = nullptr;
            plist_from_bin(archive.constData(), static_cast<uint32_t>(archive.size()), &root);
            plist_free(root);
        }));
    }
    RecordedList list(state, clock);
    list.initRecordedList();
    for (std::size_t i = 0; i < 200; ++i)
        changes.push_back(secondsOf([&] { list.save(*list.items()[i * 37 % list.items().size()]); }, CLOCK_MONOTONIC));
    times.load = median(loads);
    times.save = median(saves);
    times.wholeSave = median(wholeSaves);
    times.parse = median(parses);
    times.change = median(changes);
    times.slowestChange = *std::max_element(changes.begin(), changes.end());
    return times;
}

// In a process of its own, whose answer comes through a pipe.
Times inChild(const std::function<Times()> &action) {
    int ends[2];
    if (pipe(ends) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        const Times times = action();
        const bool told = write(ends[1], &times, sizeof times) == sizeof times;
        std::quick_exit(told ? 0 : 1);
    }
    Times times;
    const bool heard = read(ends[0], &times, sizeof times) == sizeof times;
    close(ends[0]);
    close(ends[1]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!heard || status != 0)
        std::puts("a measuring process failed");
    return times;
}

Times ofSize(int count) {
    const QTemporaryDir folder;
    for (const char *name : {"config", "state", "music"})
        QDir(folder.path()).mkdir(QString::fromLatin1(name));
    qputenv("XDG_CONFIG_HOME", folder.filePath(QStringLiteral("config")).toUtf8());
    (void)inChild([&] {
        bench::storeMadeLibrary(folder.filePath(QStringLiteral("music")), count);
        return Times{};
    });
    return inChild([&] { return measure(folder.filePath(QStringLiteral("state"))); });
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    const Times small = ofSize(25'000), large = ofSize(100'000);
    std::printf("load to items / libplist parse, 100,000 recordings: %.2f\n", large.load / large.parse);
    std::printf("save / libplist parse, 100,000 recordings: %.2f\n", large.save / large.parse);
    std::printf("the same with writing the settings file: %.2f\n", large.wholeSave / large.parse);
    std::printf("growth 25,000 to 100,000: load x%.1f, save x%.1f\n", large.load / small.load, large.save / small.save);
    std::printf("settings file read first / libplist parse: %.2f\n", large.settings / large.parse);
    std::printf("one change, durable: median %.2f ms, slowest of 200 %.2f ms\n", large.change * 1e3,
                large.slowestChange * 1e3);
}
