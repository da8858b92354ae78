#include "ui/LibraryTools.h"

#include "lang/Lang.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QAction>
#include <QBoxLayout>
#include <QEvent>
#include <QLineEdit>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kSearch = 240, kTools = 56;

} // namespace

LibraryTools::LibraryTools(QWidget *parent)
    : QWidget(parent),
      mSearch(new QLineEdit(this)),
      mGlass(mSearch->addAction(QIcon(), QLineEdit::LeadingPosition)),
      mClearSearch(mSearch->addAction(QIcon(), QLineEdit::TrailingPosition)),
      mAdd(addTool("add", &LibraryTools::addWanted)),
      mEdit(addTool("editSelected", &LibraryTools::editWanted)),
      mConvert(addTool("convertSelected", &LibraryTools::convertWanted)),
      mReveal(addTool("reveal", &LibraryTools::revealWanted)),
      mDetails(addTool("showDetails", &LibraryTools::detailsWanted)) {
    setMinimumHeight(Look::tall(*this, kTools));
    mSearch->setObjectName(QStringLiteral("search"));
    mSearch->setAcceptDrops(false); // Files may be dropped here as well.
    mSearch->setMaximumWidth(Look::scaled(*this, kSearch));
    // Qt's own button to clear it has all readers of pictures loaded.
    mClearSearch->setVisible(false);
    connect(mClearSearch, &QAction::triggered, mSearch, &QLineEdit::clear);
    connect(mSearch, &QLineEdit::textChanged, this,
            [this](const QString &text) { mClearSearch->setVisible(!text.isEmpty()); });
    mDetails->setCheckable(true);
    for (QToolButton *button : {mEdit, mConvert, mReveal})
        button->hide();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, measure::kGap);
    row->addWidget(mSearch, 3);
    row->addSpacing(measure::kGap);
    for (QToolButton *button : {mAdd, mEdit, mConvert, mReveal})
        row->addWidget(button);
    row->addStretch(1);
    row->addWidget(mDetails);
    showIcons();
    showTexts();
}

// Clicks leave the focus where it is, so that the keys of the list go on working.
QToolButton *LibraryTools::addTool(const char *name, void (LibraryTools::*wanted)()) {
    auto *button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setObjectName(QString::fromLatin1(name));
    connect(button, &QToolButton::clicked, this, wanted);
    return button;
}

void LibraryTools::showEdit(bool isShown) { mEdit->setVisible(isShown); }

void LibraryTools::showConvert(bool isShown) { mConvert->setVisible(isShown); }

void LibraryTools::showReveal(bool isShown) { mReveal->setVisible(isShown); }

void LibraryTools::setDetailsShown(bool areShown) { mDetails->setChecked(areShown); }

void LibraryTools::fit(int width) {
    mRoom = width;
    for (const auto style : {Qt::ToolButtonTextBesideIcon, Qt::ToolButtonIconOnly}) {
        for (QToolButton *tool : {mAdd, mEdit, mConvert, mReveal})
            tool->setToolButtonStyle(style);
        if (sizeHint().width() <= mRoom)
            return;
    }
}

void LibraryTools::showTexts() {
    mSearch->setPlaceholderText(Lang::windowSearchRecordings());
    mSearch->setAccessibleName(Lang::windowSearchRecordings());
    mClearSearch->setText(Lang::btnClear());
    for (const auto &[button, text] :
         {std::pair(mAdd, Lang::windowAddFiles()), std::pair(mEdit, Lang::btnEdit()),
          std::pair(mConvert, Lang::windowConvertFiles()), std::pair(mReveal, Lang::btnShowInFinder())}) {
        button->setText(text);
        button->setToolTip(text);
    }
    mDetails->setToolTip(Lang::commFileInformation());
    mDetails->setAccessibleName(Lang::commFileInformation());
    fit(mRoom);
}

void LibraryTools::showIcons() {
    mAdd->setIcon(icon(QStringLiteral("add"), palette()));
    mEdit->setIcon(icon(QStringLiteral("edit"), palette()));
    mConvert->setIcon(icon(QStringLiteral("convert"), palette()));
    mReveal->setIcon(icon(QStringLiteral("folder"), palette()));
    mDetails->setIcon(icon(QStringLiteral("tag"), palette()));
    mGlass->setIcon(icon(QStringLiteral("search"), palette()));
    mClearSearch->setIcon(icon(QStringLiteral("close"), palette()));
}

void LibraryTools::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
