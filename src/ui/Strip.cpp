#include "ui/Strip.h"

#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kLeastText = 160; // wide, beside the actions

struct Dress {
    const char *icon;
    QColor Tokens::*ground;
    QColor Tokens::*ink;
};
// In the order of Strip::Kind.
constexpr Dress kDresses[] = {{"information", &Tokens::sunken, &Tokens::text2},
                              {"tick", &Tokens::soft, &Tokens::accent},
                              {"tasks", &Tokens::amberSoft, &Tokens::amber},
                              {"warning", &Tokens::amberSoft, &Tokens::amber},
                              {"warning", &Tokens::redSoft, &Tokens::red}};

const Dress &dressOf(Strip::Kind kind) { return kDresses[static_cast<int>(kind)]; }

} // namespace

Strip::Strip(QWidget *parent)
    : QWidget(parent),
      mRow(new QHBoxLayout(this)),
      mActions(new QHBoxLayout),
      mBody(new QBoxLayout(QBoxLayout::LeftToRight)),
      mIcon(new QLabel(this)),
      mText(new QLabel(this)),
      mClose(new QToolButton(this)) {
    mRow->setContentsMargins(measure::kMargin, measure::kGap / 2, measure::kMargin - measure::kGap, measure::kGap / 2);
    mText->setWordWrap(true);
    mText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mClose->setAutoRaise(true);
    mClose->setFocusPolicy(Qt::StrongFocus);
    connect(mClose, &QToolButton::clicked, this, &Strip::closed);
    mRow->addWidget(mIcon);
    mBody->setSpacing(measure::kGap);
    mBody->addWidget(mText, 1);
    mBody->addLayout(mActions);
    mRow->addLayout(mBody, 1);
    mRow->addWidget(mClose);
    hide();
}

QPushButton &Strip::addAction(const QString &objectName, bool isFilled) {
    auto *button = new QPushButton(this);
    button->setObjectName(objectName);
    button->setDefault(isFilled);
    mActions->addWidget(button);
    return *button;
}

QLineEdit &Strip::addField(const QString &objectName) {
    auto *field = new QLineEdit(this);
    field->setObjectName(objectName);
    field->hide();
    mBody->insertWidget(0, field);
    return *field;
}

void Strip::fit() {
    const int room = width() - mActions->sizeHint().width() - mIcon->width() - mClose->width() - 4 * measure::kMargin;
    mBody->setDirection(room < Look::scaled(*this, kLeastText) ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    mActions->setAlignment(Qt::AlignLeft);
}

void Strip::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

bool Strip::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest) // Its texts are others.
        fit();
    return QWidget::event(event);
}

void Strip::tell(Kind kind, const QString &text) {
    const bool isNew = !text.isEmpty() && (kind != mKind || text != mText->text() || isHidden());
    mKind = kind;
    mText->setText(text);
    setVisible(!text.isEmpty());
    if (isNew) {
        showIcon();
        update();
    }
}

void Strip::showIcon() {
    const int side = Look::scaled(*this, measure::kIcon);
    const Dress &dress = dressOf(mKind);
    mIcon->setPixmap(drawing(QString::fromLatin1(dress.icon), Look::tokens().*dress.ink, side, devicePixelRatioF()));
    mClose->setIcon(icon(QStringLiteral("close"), palette()));
}

void Strip::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), Look::tokens().*dressOf(mKind).ground);
}

void Strip::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcon();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
