// Saving and loading a list of recordings as a keyed archive, against libplist parsing the same bytes, and the growth
// of both with the list's length. Prints ratios of CPU time taken in one run.

#include "platform/foundation/KeyedArchiver.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

using cantorel::foundation::ArchivedObject;

double seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Action> double secondsOf(Action action) {
    const double begin = seconds();
    action();
    return seconds() - begin;
}

QVariantList recordings(int count) {
    QVariantList list;
    for (int i = 0; i < count; ++i) {
        ArchivedObject item{QStringLiteral("RecordedAudioInfo"), {}};
        for (const char *key : {"fileName", "duration", "size", "dateAdded", "artist", "album", "title"})
            item.values[QString::fromLatin1(key)] =
                QStringLiteral("%1 of recording %2").arg(QString::fromLatin1(key)).arg(i);
        list << QVariant::fromValue(item);
    }
    return list;
}

template <class Action> double medianOf(Action action) {
    std::vector<double> rounds(5);
    for (double &round : rounds)
        round = secondsOf(action);
    std::sort(rounds.begin(), rounds.end());
    return rounds[rounds.size() / 2];
}

struct Times {
    double save, load, parse;
};

// One after another, so that nobody tidies up what another left behind.
Times measure(int count) {
    const QVariantList list = recordings(count);
    QByteArray bytes;
    Times times{};
    times.save = medianOf([&] { bytes = cantorel::foundation::archivedData(list); });
    times.load = medianOf([&] {
        if (!cantorel::foundation::unarchivedObject(bytes))
            std::puts("the archive does not come back");
    });
    times.parse = medianOf([&] {
        plist_t root = nullptr;
        plist_from_bin(bytes.constData(), static_cast<uint32_t>(bytes.size()), &root);
        plist_free(root);
    });
    return times;
}

} // namespace

int main() {
    const Times small = measure(25'000), large = measure(100'000);
    std::printf("save / libplist parse, 100,000 recordings: %.2f\n", large.save / large.parse);
    std::printf("load / libplist parse, 100,000 recordings: %.2f\n", large.load / large.parse);
    std::printf("growth 25,000 to 100,000: save x%.1f, load x%.1f\n", large.save / small.save, large.load / small.load);
}
