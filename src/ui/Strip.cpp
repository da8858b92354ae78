#include "ui/Strip.h"

#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QEvent>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kLeastText = 160; // wide, beside the actions
constexpr int kDisc = 36;       // behind the icon of a card

struct Dress {
    const char *icon;
    QColor Tokens::*ground;
    QColor Tokens::*ink;
};
// In the order of Strip::Kind.
constexpr Dress kDresses[] = {
    {"information", &Tokens::sunken, &Tokens::text2}, {"tick", &Tokens::soft, &Tokens::accent},
    {"convert", &Tokens::soft, &Tokens::accent},      {"tasks", &Tokens::amberSoft, &Tokens::amber},
    {"warning", &Tokens::amberSoft, &Tokens::amber},  {"warning", &Tokens::redSoft, &Tokens::red}};

const Dress &dressOf(Strip::Kind kind) { return kDresses[static_cast<int>(kind)]; }

} // namespace

Strip::Strip(QWidget *parent, Form form)
    : Unfolding(Edge::Below, parent),
      mForm(form),
      mRow(new QHBoxLayout(&body())),
      mActions(new QHBoxLayout),
      mContent(new QBoxLayout(QBoxLayout::LeftToRight)),
      mIcon(new QLabel(&body())),
      mTitle(new QLabel(&body())),
      mText(new QLabel(&body())),
      mClose(new QToolButton(&body())) {
    if (mForm == Form::Card) {
        const int edge = measure::kMargin, inset = 2 * measure::kGap;
        mRow->setContentsMargins(edge + inset, inset, edge + measure::kGap, inset + measure::kCardBelow);
        mRow->setSpacing(inset);
        mIcon->setAlignment(Qt::AlignCenter);
        mIcon->setFixedSize(QSize(1, 1) * Look::scaled(*this, kDisc));
    } else
        mRow->setContentsMargins(measure::kMargin, measure::kGap / 2, measure::kMargin - measure::kGap,
                                 measure::kGap / 2);
    mTitle->setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    mTitle->setVisible(mForm == Form::Card);
    mText->setWordWrap(true);
    mText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mClose->setAutoRaise(true);
    mClose->setFocusPolicy(Qt::StrongFocus);
    connect(mClose, &QToolButton::clicked, this, &Strip::closed);
    mRow->addWidget(mIcon);
    mContent->setSpacing(measure::kGap);
    auto *lines = new QVBoxLayout;
    lines->setSpacing(2);
    lines->addWidget(mTitle);
    lines->addWidget(mText);
    mContent->addLayout(lines, 1);
    mContent->addLayout(mActions);
    mRow->addLayout(mContent, 1);
    mRow->addWidget(mClose);
}

QPushButton &Strip::addAction(const QString &objectName, bool isFilled) {
    auto *button = new QPushButton(&body());
    button->setObjectName(objectName);
    button->setDefault(isFilled);
    button->setFlat(mForm == Form::Card && !isFilled);
    mActions->addWidget(button);
    return *button;
}

void Strip::setWord(QPushButton &button, const QString &word) {
    mWords[&button] = word;
    button.setToolTip(word);
    button.setAccessibleName(word);
    fit();
}

QLineEdit &Strip::addField(const QString &objectName) {
    auto *field = new QLineEdit(&body());
    field->setObjectName(objectName);
    field->setAcceptDrops(false); // Files may be dropped here as well.
    field->hide();
    mContent->insertWidget(0, field);
    return *field;
}

QProgressBar &Strip::addBar() {
    auto *bar = new QProgressBar(&body());
    bar->setTextVisible(false);
    mContent->insertWidget(1, bar, 1);
    return *bar;
}

void Strip::fit() {
    const QMargins margins = mRow->contentsMargins();
    const int room = width() - margins.left() - margins.right() - 2 * mRow->spacing()
                     - qMax(mIcon->minimumWidth(), mIcon->sizeHint().width())
                     - (mClose->isHidden() ? 0 : mClose->sizeHint().width());
    const auto taken = [this] {
        int taken = 0;
        for (const QPushButton *button : findChildren<QPushButton *>())
            taken += button->isHidden() ? 0 : button->sizeHint().width() + measure::kGap;
        return taken;
    };
    for (const auto &[button, word] : mWords)
        button->setText(word);
    if (taken() > room) // The words of quiet buttons go first.
        for (const auto &[button, word] : mWords)
            button->setText({});
    const int actions = taken();
    const int text = qMax(Look::scaled(*this, kLeastText), mForm == Form::Card ? mTitle->sizeHint().width() : 0);
    mContent->setDirection(room - actions < text ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    mActions->setDirection(room < actions ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    mActions->setAlignment(Qt::AlignLeft);
}

void Strip::resizeEvent(QResizeEvent *event) {
    fit();
    Unfolding::resizeEvent(event);
}

bool Strip::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest) // Its texts are others.
        fit();
    return Unfolding::event(event);
}

void Strip::tell(Kind kind, const QString &text, const QString &title) {
    const bool isNew = !text.isEmpty() && (kind != mKind || text != mText->text() || isHidden());
    mKind = kind;
    mTitle->setText(title);
    mText->setText(text);
    fit();
    setInSight(!text.isEmpty());
    if (isNew) {
        showIcon();
        update();
    }
}

void Strip::showIcon() {
    const int side = Look::scaled(*this, measure::kIcon);
    const Dress &dress = dressOf(mKind);
    setInk(*mText, mForm == Form::Card ? Look::tokens().text2 : Look::tokens().text);
    mIcon->setPixmap(drawing(QString::fromLatin1(dress.icon), Look::tokens().*dress.ink, side, devicePixelRatioF()));
    mClose->setIcon(icon(QStringLiteral("close"), palette()));
}

QRectF Strip::place() const {
    return QRectF(body().geometry())
        .adjusted(measure::kMargin + 0.5, 0.5, -measure::kMargin - 0.5, -measure::kCardBelow - 0.5);
}

void Strip::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const Tokens &tokens = Look::tokens();
    if (mForm == Form::Line) {
        painter.fillRect(rect(), tokens.*dressOf(mKind).ground);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(tokens.line);
    painter.setBrush(tokens.surface);
    painter.drawRoundedRect(place(), measure::kCardRadius, measure::kCardRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tokens.*dressOf(mKind).ground);
    painter.drawEllipse(mIcon->geometry().translated(body().pos()));
}

void Strip::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcon();
    Unfolding::changeEvent(event);
}

} // namespace cantorel::ui
