// The library tab at 100,000 recordings, on an X server of the run: how long a keystroke in the search field takes
// until the table is painted again, how long a frame of scrolling takes over the whole height, how soon all rows are
// there against a bare table view over a ready model.
//
// usage: library_bench [recordings=100000]; library_bench --store FOLDER RECORDINGS stores such a library and ends.

#include "bench/MadeLibrary.h"
#include "platform/hal/embedded/DeviceClock.h"
#include "recording/library/RecordedList.h"
#include "tests/support/PrivateDisplay.h"
#include "tests/support/TestHome.h"
#include "ui/LibraryTab.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <vector>

namespace {

using namespace cantorel;

constexpr QSize kWindow(820, 600);
constexpr int kColumns = 7;
constexpr int kRounds = 9;

// A model whose texts are ready.
class ReadyModel : public QAbstractTableModel {
public:
    ReadyModel(const QString &folder, int count) {
        mRows.reserve(static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number) {
            const RecordedAudioFields made = bench::madeRecording(folder, number);
            mRows.push_back(
                {made._fileName, made._artist, made._album, made._duration, made._size, made._dateAdded, made._year});
        }
    }
    int rowCount(const QModelIndex &parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(mRows.size());
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : kColumns; }
    QVariant data(const QModelIndex &index, int role) const override {
        return role == Qt::DisplayRole
                   ? mRows[static_cast<std::size_t>(index.row())][static_cast<std::size_t>(index.column())]
                   : QVariant();
    }

private:
    std::vector<std::array<QString, kColumns>> mRows;
};

// Milliseconds on the clock, and those of them that the main thread was at work.
struct Time {
    double passed = 0, worked = 0;
};

double threadMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

// Tells when widgets have painted what has changed.
class Frames : public QObject {
public:
    explicit Frames(const std::vector<QWidget *> &watched) {
        for (QWidget *widget : watched)
            widget->installEventFilter(this);
    }

    // From the action until what it changed is painted and on its way to the server.
    Time after(const std::function<void()> &action) {
        QCoreApplication::processEvents();
        const int before = mPainted;
        QElapsedTimer timer;
        timer.start();
        const double workedBefore = threadMilliseconds();
        action();
        while (mPainted == before && timer.elapsed() < 2000)
            QCoreApplication::processEvents();
        QCoreApplication::processEvents(); // the table where it comes behind the field
        return {static_cast<double>(timer.nsecsElapsed()) * 1e-6, threadMilliseconds() - workedBefore};
    }

private:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Paint)
            ++mPainted;
        return QObject::eventFilter(watched, event);
    }

    int mPainted = 0;
};

double median(std::vector<Time> times) {
    std::sort(times.begin(), times.end(), [](const Time &a, const Time &b) { return a.passed < b.passed; });
    return times[times.size() / 2].passed;
}

// On a machine that does other things as well, the slowest by the clock says more about them.
void tell(const char *what, const std::vector<Time> &times) {
    std::vector<double> passed, worked;
    for (const Time &time : times) {
        passed.push_back(time.passed);
        worked.push_back(time.worked);
    }
    std::sort(passed.begin(), passed.end());
    std::printf("%-32s median %5.2f ms, 99 of 100 within %5.2f ms, slowest %5.2f ms, of work %5.2f ms  (%zu)\n", what,
                median(times), passed[passed.size() * 99 / 100], passed.back(),
                *std::max_element(worked.begin(), worked.end()), times.size());
}

void type(QWidget &widget, int key, const QString &text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, {}, text), release(QEvent::KeyRelease, key, {}, text);
    QCoreApplication::sendEvent(&widget, &press);
    QCoreApplication::sendEvent(&widget, &release);
}

std::vector<Time> search(Frames &frames, QLineEdit &field) {
    std::vector<Time> times;
    for (const char *text : {"artist 99", "recording year", "m", "zzz", "9 9 9", "Album 4998 artist"}) {
        for (const char sign : QByteArrayView(text))
            times.push_back(frames.after([&] { type(field, 0, QString(QLatin1Char(sign))); }));
        while (!field.text().isEmpty())
            times.push_back(frames.after([&] { type(field, Qt::Key_Backspace); }));
    }
    return times;
}

std::vector<Time> scrollByPages(Frames &frames, QTableView &table) {
    std::vector<Time> times;
    QScrollBar &bar = *table.verticalScrollBar();
    for (bar.setValue(0); bar.value() < bar.maximum();)
        times.push_back(frames.after([&] { bar.triggerAction(QAbstractSlider::SliderPageStepAdd); }));
    return times;
}

std::vector<Time> scrollByWheel(Frames &frames, QTableView &table) {
    std::vector<Time> times;
    std::mt19937 random(4); // the same places in every run
    QScrollBar &bar = *table.verticalScrollBar();
    const QPointF centre = table.viewport()->rect().center();
    for (int place = 0; place < 100; ++place) {
        bar.setValue(std::uniform_int_distribution<>(0, bar.maximum() - 200)(random));
        for (int notch = 0; notch < 20; ++notch)
            times.push_back(frames.after([&] {
                QWheelEvent wheel(centre, table.viewport()->mapToGlobal(centre), {}, {0, -120}, {}, {},
                                  Qt::NoScrollPhase, false);
                QCoreApplication::sendEvent(table.viewport(), &wheel);
            }));
    }
    return times;
}

// Loads the list behind the shown tab. The longest time for which no event was answered meanwhile.
double busyWhileLoading(RecordedList &list, ui::LibraryTab &tab) {
    struct View : RecordedListView {
        explicit View(ui::LibraryTab &shown) : tab(shown) {}
        void recordedListDidChange() override { tab.listDidChange(); }
        ui::LibraryTab &tab;
    } view(tab);
    list.view = &view;
    bool isLoaded = false;
    double longest = 0;
    list.initRecordedListBehind([&] { isLoaded = true; });
    while (!isLoaded) {
        QElapsedTimer timer;
        timer.start();
        QCoreApplication::processEvents();
        longest = std::max(longest, static_cast<double>(timer.nsecsElapsed()) * 1e-6);
    }
    list.view = nullptr;
    return longest;
}

int measure(const QString &folder, int count) {
    bench::storeMadeLibrary(folder, count);
    hal::ManualClock clock;
    RecordedList list(folder, clock);
    ui::LibraryTab tab(list, nullptr, nullptr, nullptr);
    tab.resize(kWindow);
    tab.show();
    auto &table = *tab.findChild<QTableView *>(QStringLiteral("recordings"));
    auto &field = *tab.findChild<QLineEdit *>(QStringLiteral("search"));
    Frames frames({table.viewport()});
    Frames typed({&field, table.viewport()}); // A sign that changes no row is painted in the field alone.
    std::printf("busy at a stretch while the list loads: %.2f ms\n", busyWhileLoading(list, tab));

    QTableView bare;
    bare.resize(kWindow);
    bare.show();
    Frames bareFrames({bare.viewport()});
    ReadyModel ready(folder, count);
    ReadyModel none(folder, 0);
    std::vector<Time> ours, theirs;
    for (int round = 0; round < kRounds; ++round) {
        ours.push_back(frames.after([&] { tab.listDidChange(); }));
        bare.setModel(&none);
        theirs.push_back(bareFrames.after([&] { bare.setModel(&ready); }));
    }
    bare.hide();
    if (table.model()->rowCount() != count)
        return 1;
    std::printf("all rows there / a bare view over a ready model: %.2f  (%.2f ms)\n", median(ours) / median(theirs),
                median(ours));
    field.setFocus();
    tell("keystroke to the painted table:", search(typed, field));
    tell("a frame, scrolled by pages:", scrollByPages(frames, table));
    tell("a frame, scrolled by the wheel:", scrollByWheel(frames, table));
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    const QByteArrayView first(argc > 1 ? argv[1] : "100000");
    if (first == "--store" && argc == 4) {
        const QCoreApplication application(argc, argv);
        bench::storeMadeLibrary(QString::fromLocal8Bit(argv[2]), std::atoi(argv[3]));
        return 0;
    }
    const test::TestHome home;
    const test::PrivateDisplay display(QStringLiteral("1600x1200x24"));
    if (!home.isValid() || !display.ready())
        return 2;
    qputenv("DISPLAY", display.name().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    return measure(QDir::homePath(), first.toInt());
}
