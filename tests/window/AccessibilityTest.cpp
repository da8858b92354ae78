#include "tests/window/WindowFixture.h"
#include "ui/LibraryTab.h"
#include "ui/RecordCards.h"
#include "ui/RecordingTab.h"
#include "ui/SettingsPage.h"
#include "ui/TasksPage.h"
#include "ui/ZQAudioConvertController.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QButtonGroup>
#include <QListWidget>
#include <QScreen>
#include <QTabWidget>

namespace cantorel {
namespace {

class Accessibility : public test::WindowFixture {
public:
    Accessibility() {
        QAccessible::setActive(true);
        window.resize(820, 600);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        window.library();
        list.insert(0, {}); // An empty library has no table.
        addTask();
        addTagged();
        openEditor();
        window.recordPage().cards().offerVirtualDevice([](bool) {});
        auto *card = find<QWidget>("deviceOffer"), *close = find<QWidget>("deviceOfferClose");
        EXPECT_TRUE(QTest::qWaitFor([&] { return close->mapTo(card, QPoint()).y() > 0; })) << "unfolded";
    }
    // Every window, every page of it, as it stands.
    void eachPage(const std::function<void(QWidget &, const std::string &)> &look) {
        for (const int tab : {0, 1}) {
            find<QTabWidget>("tabs")->setCurrentIndex(tab);
            QTest::qWait(1);
            look(window, "tab " + std::to_string(tab));
        }
        turnToTags(true);
        look(window, "tags");
        turnToTags(false);
        openSettings();
        for (const int page : {0, 1, 2}) {
            turnSettingsTo(page);
            QTest::qWait(1);
            look(window, "settings " + std::to_string(page));
        }
        window.openConverter({});
        look(window, "convert");
        window.convertPage().goBack();
        eachEditorPage([&](const char *page) { look(window, page); });
        openTasks();
        find<QListWidget>("tasks")->setCurrentRow(0);
        look(window, "tasks");
        fillTask();
        look(window, "task");
        window.tasks().goBack();
        window.tasks().goBack();
    }
};

bool isPart(QAccessible::Role role) { // of a table, a menu or a scroll area, which their owner speaks for
    return role == QAccessible::Cell || role == QAccessible::ColumnHeader || role == QAccessible::ScrollBar
           || role == QAccessible::PopupMenu || role == QAccessible::Client || role == QAccessible::Grip;
}

// What a reader of the screen would meet without a name, below one object.
void nameless(QAccessibleInterface *object, QStringList &found) {
    if (object == nullptr || object->state().invisible)
        return;
    if (object->state().focusable && !isPart(object->role()) && object->text(QAccessible::Name).trimmed().isEmpty()
        && object->object() != nullptr)
        found << QStringLiteral("%1 %2").arg(QLatin1String(object->object()->metaObject()->className()),
                                             object->object()->objectName());
    for (int i = 0; i < object->childCount(); ++i)
        nameless(object->child(i), found);
}

TEST_F(Accessibility, WhateverTakesTheFocusHasANameInEveryLanguage) {
    for (const char *language : {"English", "German", "Japanese"}) {
        Lang::ChangeLanguage(language);
        window.changeLanguageText();
        eachPage([&](QWidget &shown, const std::string &page) {
            QStringList found;
            nameless(QAccessible::queryAccessibleInterface(&shown), found);
            EXPECT_TRUE(found.isEmpty()) << page << ", " << language << ": " << found.join("; ").toStdString();
        });
    }
}

TEST_F(Accessibility, ControlsSayWhatTheyAre) {
    const struct {
        const char *name;
        QAccessible::Role role;
    } controls[] = {{"record", QAccessible::Button},
                    {"meter", QAccessible::ProgressBar},
                    {"picture", QAccessible::Graphic},
                    {"recordings", QAccessible::Table}};
    for (const auto &[name, role] : controls) {
        auto *object = QAccessible::queryAccessibleInterface(find<QWidget>(name));
        ASSERT_NE(object, nullptr) << name;
        EXPECT_EQ(object->role(), role) << name << ": " << object->role();
    }
    auto *record = QAccessible::queryAccessibleInterface(find<QWidget>("record"));
    ASSERT_NE(record->actionInterface(), nullptr);
    record->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; })) << "pressed by a screen reader";
    EXPECT_EQ(record->text(QAccessible::Name), Lang::btnStop());
}

TEST_F(Accessibility, TabReachesEverythingAndTheFocusIsSeen) {
    eachPage([&](QWidget &shown, const std::string &page) {
        shown.activateWindow();
        QApplication::setActiveWindow(&shown);
        QList<QWidget *> expected;
        for (auto *widget : shown.findChildren<QWidget *>())
            if (widget->isVisibleTo(&shown) && widget->isEnabledTo(&shown) && widget->window() == &shown
                && (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && !widget->focusProxy())
                expected << widget;
        EXPECT_GE(expected.size(), 3) << page;
        QList<QWidget *> reached;
        for (qsizetype step = 0; step < 3 * expected.size() + 3; ++step) {
            const QImage before = shown.grab().toImage();
            QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &shown, Qt::Key_Tab);
            auto *focused = QApplication::focusWidget();
            if (focused == nullptr || reached.contains(focused))
                continue;
            EXPECT_NE(shown.grab().toImage(), before)
                << page << ": nothing shows that the focus is on " << focused->metaObject()->className() << ' '
                << focused->objectName().toStdString();
            reached << focused;
        }
        for (auto *widget : expected) {
            // One of a group of choices is reached by Tab, the others by arrows.
            auto *button = qobject_cast<QAbstractButton *>(widget);
            const bool isOther = button && button->group() && button->group()->exclusive() && !button->isChecked();
            EXPECT_TRUE(isOther || reached.contains(widget))
                << page << ": " << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
        }
    });
}

} // namespace
} // namespace cantorel
