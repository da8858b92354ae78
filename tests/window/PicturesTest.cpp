// No text is cut off, whatever the language and the size of the text. Where CANTOREL_PICTURES names a folder, what is
// looked at is photographed as well.

#include "tests/support/Unfinished.h"
#include "tests/window/WindowFixture.h"
#include "ui/RecordCards.h"
#include "ui/RecordingTab.h"
#include "ui/SettingsPage.h"
#include "ui/TasksPage.h"
#include "ui/ZQAudioConvertController.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QListWidget>
#include <QTabWidget>

namespace cantorel {
namespace {

class Pictures : public test::WindowFixture {
public:
    void expectAllTextsShown(QSize size, QSize largest, const QString &prefix);
};

// Beyond the right edge, where no scroll bar leads.
bool isBeyond(const QWidget &widget, const QWidget &window) {
    return widget.mapTo(&window, QPoint(widget.width(), 0)).x() > window.width();
}

// Buttons and labels that show less than their text, by their names.
QStringList clippedNow(const QWidget &window) {
    QStringList found;
    for (const auto *button : window.findChildren<QAbstractButton *>())
        if (button->isVisibleTo(&window) && !button->text().isEmpty()
            && (button->width() < button->sizeHint().width() || button->height() < button->minimumSizeHint().height()
                || isBeyond(*button, window)))
            found << button->objectName() + ": " + button->text();
    for (const auto *label : window.findChildren<QLabel *>())
        if (label->isVisibleTo(&window) && !label->wordWrap() && !label->text().isEmpty()
            && (label->width() < label->sizeHint().width() || label->height() < label->minimumSizeHint().height()
                || isBeyond(*label, window)))
            found << label->objectName() + ": " + label->text();
    return found;
}

// The same once the window has had the time to grow with its texts.
std::string clipped(const QWidget &window) {
    (void)test::eventually([&] {
        QTest::qWait(5);
        return clippedNow(window).isEmpty();
    });
    return clippedNow(window).join("; ").toStdString();
}

// Texts whose markers nobody has filled.
std::string rawTexts(const QWidget &window) {
    QStringList found;
    for (const auto *label : window.findChildren<QLabel *>())
        found << label->text();
    for (const auto *button : window.findChildren<QAbstractButton *>())
        found << button->text() << button->toolTip();
    for (const auto *action : window.findChildren<QAction *>())
        found << action->text();
    return found.filter("[#").join("; ").toStdString();
}

// Every window in every language; prefix: of the photographs' names; largest: what the windows may grow to.
void Pictures::expectAllTextsShown(QSize size, QSize largest, const QString &prefix) {
    addTask();
    window.resize(size);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const auto look = [&](QWidget &shown, const std::string &page) {
        EXPECT_EQ(clipped(shown), "") << page;
        EXPECT_EQ(rawTexts(shown), "") << page;
        EXPECT_LE(shown.width(), largest.width()) << page;
        EXPECT_LE(shown.height(), largest.height()) << page;
        photograph(shown, prefix + QString::fromStdString(page));
    };
    const QString left = path("Evening concert.m4a");
    test::unfinished(left);
    ASSERT_TRUE(RecordingJournal(QDir::homePath() + "/state").begin(left));
    const QDateTime start = QDateTime::currentDateTime().addDays(1);
    ASSERT_TRUE(taskList.add({"Evening concert", start, start.addSecs(60), 1, false}));
    recorder.schedule().initScheduleTaskList();
    pass(1100);
    addTagged();
    openEditor();
    ui::RecordCards &cards = window.recordPage().cards();
    converter.parseAudioInfoWithURLs({QUrl::fromLocalFile(left), QUrl::fromLocalFile(path("Missing.wav"))});
    const std::pair<const char *, std::function<void()>> asks[] = {
        {"-offer", [&] { cards.offerVirtualDevice([](bool) {}); }},
        {"-leftovers", [&] { window.offerLeftovers(); }},
        {"-leave", [&] { window.close(); }}};
    for (const LanguageInfo &language : Lang::languages()) {
        Lang::ChangeLanguage(language.name);
        window.changeLanguageText();
        const std::string name = language.name.toStdString();
        for (const int tab : {0, 1}) {
            find<QTabWidget>("tabs")->setCurrentIndex(tab);
            look(window, name + "-" + std::to_string(tab));
        }
        turnToTags(true);
        look(window, name + "-tags");
        turnToTags(false);
        find<QTabWidget>("tabs")->setCurrentIndex(0);
        for (const auto &[page, ask] : asks) {
            ask();
            look(window, name + page);
            cards.close();
        }
        window.recordPage().showShutdown(30);
        look(window, name + "-shutdown");
        window.recordPage().showShutdown(-1);
        window.recordPage().showResult({.file = path("A long evening.mp3"), .seconds = 5025, .bytes = 120'000'000});
        look(window, name + "-result");
        RecordingControls runs;
        runs.startShowsStop = true;
        panel.recordingControlsDidChange(runs); // with which the result goes
        panel.recordingControlsDidChange({});
        openSettings();
        for (const int page : {0, 1, 2}) {
            turnSettingsTo(page);
            look(window, name + "-settings-" + std::to_string(page));
        }
        window.openConverter({});
        look(window, name + "-convert");
        window.convertPage().goBack();
        eachEditorPage([&](const char *page) {
            look(window, name + "-" + page);
            const auto *title = window.editorPage().findChild<QLabel *>("title"); // The panel covers the page.
            const bool isExport = qstrcmp(page, "export") == 0 || qstrcmp(page, "parts") == 0;
            EXPECT_EQ(title->accessibleName() == Lang::toolsExportTitle(), isExport) << page;
        });
        openTasks();
        find<QListWidget>("tasks")->setCurrentRow(0);
        look(window, name + "-tasks");
        fillTask();
        look(window, name + "-task");
        window.tasks().goBack();
        window.tasks().goBack();
    }
}

TEST_F(Pictures, NoTextIsCutOffInAnyLanguageAtTheSmallestSize) {
    expectAllTextsShown({560, 420}, {560, 420}, "small-");
}

// Fonts are asked for when a window is made.
struct LargeText {
    explicit LargeText(double times = 2) {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * times);
        QApplication::setFont(font);
    }
};

class LargePictures : public LargeText, public Pictures {};

TEST_F(LargePictures, TextOfTwiceTheSizeFitsTheSmallestWindow) {
    expectAllTextsShown({560, 420}, {560, 420}, "least-");
}

TEST_F(LargePictures, TextOfTwiceTheSizeFitsOnASmallLaptop) { expectAllTextsShown({1100, 680}, {1366, 720}, "large-"); }

} // namespace
} // namespace cantorel
