#include "ui/look/Look.h"

#include "tests/window/WindowFixture.h"
#include "ui/Pill.h"
#include "ui/RecordButton.h"
#include "ui/Strip.h"
#include "ui/TasksPage.h"
#include "ui/ZQAudioConvertController.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTableView>

#include <cmath>
#include <map>

namespace cantorel {
namespace {

using ui::Look;
using ui::Tokens;
using Scheme = desktop::AppearanceState::Scheme;

// WCAG 2.1, relative luminance and contrast ratio.
double luminance(const QColor &colour) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}
double contrast(const QColor &one, const QColor &other) {
    const double a = luminance(one), b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

struct Pair {
    const char *name;
    QColor Tokens::*ink;
    std::vector<QColor Tokens::*> grounds;
    double least;
};
const Pair kPairs[] = {
    {"text", &Tokens::text, {&Tokens::ground, &Tokens::surface, &Tokens::sunken, &Tokens::hover, &Tokens::soft}, 4.5},
    {"text2", &Tokens::text2, {&Tokens::ground, &Tokens::surface, &Tokens::soft}, 4.5},
    {"accent", &Tokens::accent, {&Tokens::ground, &Tokens::surface, &Tokens::soft}, 4.5},
    {"onAccent", &Tokens::onAccent, {&Tokens::accent}, 4.5},
    {"red", &Tokens::red, {&Tokens::ground, &Tokens::surface, &Tokens::redSoft}, 4.5},
    {"amber", &Tokens::amber, {&Tokens::ground, &Tokens::surface, &Tokens::amberSoft}, 4.5},
    {"outline", &Tokens::outline, {&Tokens::ground, &Tokens::surface}, 3},
    {"redFill", &Tokens::redFill, {&Tokens::ground, &Tokens::surface}, 3},
    {"amberFill", &Tokens::amberFill, {&Tokens::ground, &Tokens::track}, 3},
    {"wave", &Tokens::wave, {&Tokens::ground, &Tokens::track}, 3},
    {"waveRest", &Tokens::waveRest, {&Tokens::ground}, 3},
    {"focus", &Tokens::focus, {&Tokens::ground, &Tokens::surface}, 3},
};

// What a part of a picture shows: its ground, which most of its pixels have, and the contrast of what stands out most.
double contrastIn(const QImage &picture, const QRect &part) {
    std::map<QRgb, int> counts;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            ++counts[picture.pixel(x, y)];
    if (counts.empty())
        return 21;
    const QColor ground(std::max_element(counts.begin(), counts.end(), [](const auto &a, const auto &b) {
                            return a.second < b.second;
                        })->first);
    double most = 1;
    for (const auto &[colour, count] : counts)
        most = std::max(most, contrast(QColor(colour), ground));
    return most;
}

// The texts and icons that can hardly be told from what they are painted on, and how they stand out.
QStringList faintParts(QWidget &window) {
    const QPixmap shot = window.grab();
    const QImage picture = shot.toImage();
    QStringList found;
    const auto look = [&](const QWidget &widget, const QString &text, bool isPicture) {
        if (!widget.isVisibleTo(&window) || (text.trimmed().isEmpty() && !isPicture)
            || widget.visibleRegion().isEmpty())
            return;
        const QRect seen = widget.visibleRegion().boundingRect().translated(widget.mapTo(&window, QPoint()));
        const QRect part(seen.topLeft() * shot.devicePixelRatio(), seen.size() * shot.devicePixelRatio());
        const double least = isPicture || widget.fontMetrics().height() >= 32 ? 3 : 4.5;
        if (const double ratio = contrastIn(picture, part & picture.rect()); ratio < least)
            found << QStringLiteral("%1 \"%2\": %3").arg(widget.objectName(), text).arg(ratio, 0, 'f', 1);
    };
    for (const auto *label : window.findChildren<QLabel *>())
        look(*label, label->text(), !label->pixmap(Qt::ReturnByValue).isNull());
    for (const auto *button : window.findChildren<QAbstractButton *>())
        if (!button->inherits("QTableCornerButton")) // the empty corner between two headers
            look(*button, button->text(), button->text().isEmpty() || dynamic_cast<const ui::RecordButton *>(button));
    return found;
}

struct LookFirst {
    Look look{nullptr};
};

class LookPixels : public LookFirst, public test::WindowFixture {
public:
    void expectReadable(QWidget &shown, const char *page) {
        for (const char *dress : {"light", "dark", "high contrast"}) {
            const bool isDark = qstrcmp(dress, "dark") == 0, isHigh = qstrcmp(dress, "high contrast") == 0;
            look.follow({isDark ? Scheme::Dark : Scheme::Light, isHigh, true});
            QTest::qWait(50);
            EXPECT_EQ(faintParts(shown).join("; ").toStdString(), "") << page << ", " << dress;
            if (const QIcon dot = find<QTabWidget>("tabs")->tabIcon(0); !dot.isNull()) {
                const QImage drawn = dot.pixmap(8, 8).toImage();
                EXPECT_EQ(drawn.pixelColor(drawn.rect().center()), Look::tokens().red) << page;
            }
            photograph(shown, QStringLiteral("contrast-%1-%2").arg(page, dress));
        }
    }
};

} // namespace

// Measured on what is painted, so that what no list of pairs knows is found too.
TEST_F(LookPixels, EveryTextAndIconStandsOutFromWhatItIsPaintedOn) {
    window.resize(900, 640);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    expectReadable(window, "idle");
    recordByButton();
    expectReadable(window, "recording");
    click("record");
    ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    expectReadable(window, "result");
    panel.setSentence(QStringLiteral("The disk is full."));
    expectReadable(window, "trouble");
    find<QTabWidget>("tabs")->setCurrentIndex(1);
    expectReadable(window, "library");
    addTagged();
    turnToTags(true);
    window.resize(900, 692); // Nothing is cut by the end of the details.
    expectReadable(window, "tags");
    window.resize(900, 640);
    converter.parseAudioInfoWithURLs({QUrl::fromLocalFile(path("Missing.wav"))});
    window.openConverter({});
    expectReadable(window, "convert");
    window.convertPage().goBack();
    openEditor();
    eachEditorPage([&](const char *page) { expectReadable(window, page); });
    openSettings();
    expectReadable(window, "settings");
    addTask();
    openTasks();
    fillTask();
    expectReadable(window, "tasks");
}

TEST(Look, EveryColourStandsOutFromItsGround) {
    for (const Tokens *tokens : {&Tokens::light(), &Tokens::dark()})
        for (const Pair &pair : kPairs)
            for (const auto ground : pair.grounds)
                EXPECT_GE(contrast(tokens->*pair.ink, tokens->*ground), pair.least)
                    << pair.name << " on " << (tokens->*ground).name().toStdString();
}

TEST(Look, UnlitStepsAndTroughsAreSeenInHighContrastToo) {
    for (const auto &[ground, text] : {std::pair(Qt::black, Qt::white), std::pair(Qt::white, Qt::black),
                                       std::pair(Qt::black, Qt::yellow), std::pair(Qt::darkBlue, Qt::white)}) {
        QPalette desktop;
        desktop.setColor(QPalette::Window, ground);
        desktop.setColor(QPalette::WindowText, text);
        const Tokens tokens = Tokens::highContrast(desktop);
        EXPECT_GE(contrast(tokens.track, tokens.ground), 3) << QColor(ground).name().toStdString();
        EXPECT_GE(contrast(tokens.wave, tokens.track), 3) << QColor(ground).name().toStdString();
    }
}

TEST(Look, TheArrowOfAHeaderPointsDownWhereTheLargestComesFirst) {
    const Look look(nullptr);
    QStandardItemModel model(0, 1);
    model.setHorizontalHeaderLabels({QString()});
    QHeaderView header(Qt::Horizontal);
    header.setModel(&model);
    header.setSortIndicatorShown(true);
    header.setSortIndicator(0, Qt::DescendingOrder);
    header.resize(200, 40);
    const QImage picture = header.grab(QRect(0, 0, header.sectionSize(0), 38)).toImage();
    std::vector<int> widths; // of the arrow, from its top
    for (int y = 0; y < picture.height(); ++y) {
        int first = picture.width(), last = -1;
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y).lightness() < 170)
                first = std::min(first, x), last = x;
        if (last >= 0)
            widths.push_back(last - first);
    }
    ASSERT_GT(widths.size(), 2u);
    EXPECT_GT(widths.front(), widths.back());
}

TEST(Look, AStripUnfoldsOverTimeAndAtOnceWhereMotionIsReduced) {
    Look look(nullptr);
    for (const bool isReduced : {false, true}) {
        look.follow({Scheme::Light, false, isReduced});
        QWidget page;
        QVBoxLayout column(&page);
        ui::Strip strip(&page);
        column.addStretch();
        column.addWidget(&strip);
        page.resize(500, 300);
        page.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
        strip.tell(ui::Strip::Kind::Hint, "News.");
        const int whole = strip.findChild<QWidget *>()->sizeHint().height();
        EXPECT_EQ(strip.heightForWidth(400), isReduced ? whole : 0);
        EXPECT_TRUE(QTest::qWaitFor([&] { return strip.height() == whole; }));
        strip.tell(ui::Strip::Kind::Hint, {});
        EXPECT_TRUE(strip.isHidden());
    }
}

TEST(Look, ThePillComesOverTimeAndAtOnceWhereMotionIsReducedOrItOnlyChangesItsPage) {
    Look look(nullptr);
    for (const bool isReduced : {false, true}) {
        look.follow({Scheme::Light, false, isReduced});
        QWidget page, other(&page);
        ui::Pill pill(&page);
        page.resize(500, 300);
        page.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
        pill.setInSight(true);
        EXPECT_EQ(pill.mask().isEmpty(), isReduced); // A whole one has none.
        EXPECT_TRUE(QTest::qWaitFor([&] { return pill.mask().isEmpty(); }));
        pill.setParent(&other);
        pill.setInSight(true);
        EXPECT_TRUE(pill.mask().isEmpty() && !pill.isHidden());
        pill.setInSight(false);
        EXPECT_TRUE(pill.isHidden());
    }
}

TEST(Look, TheWindowFollowsTheDesktopWhileItIsShown) {
    Look look(nullptr);
    QWidget window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const auto isGround = [&](const QColor &ground) {
        return QTest::qWaitFor([&] { return window.grab().toImage().pixelColor(5, 5) == ground; });
    };
    EXPECT_TRUE(isGround(Tokens::light().ground));
    look.follow({Scheme::Dark, false, true});
    EXPECT_TRUE(isGround(Tokens::dark().ground));
    EXPECT_FALSE(Look::hasMotion());
    look.follow({Scheme::Dark, true, false});
    EXPECT_EQ(Look::tokens().wave, Look::tokens().text) << "high contrast keeps the desktop's colours";
    look.follow({});
    EXPECT_TRUE(Look::hasMotion());
}

} // namespace cantorel
