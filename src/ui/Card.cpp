#include "ui/Card.h"

#include "lang/Lang.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kDisc = 40;

} // namespace

Card::Card(const QString &objectName, QWidget *parent)
    : Unfolding(Edge::Above, parent),
      mIcon(new QLabel(&body())),
      mTitle(new QLabel(&body())),
      mText(new QLabel(&body())),
      mActions(new QHBoxLayout),
      mClose(new QToolButton(&body())) {
    setObjectName(objectName);
    mTitle->setWordWrap(true);
    mText->setWordWrap(true);
    mText->setObjectName(objectName + QStringLiteral("Text"));
    mClose->setObjectName(objectName + QStringLiteral("Close"));
    mClose->setAutoRaise(true);
    mClose->setFocusPolicy(Qt::StrongFocus);
    connect(mClose, &QToolButton::clicked, this, [this] { answer(kClosed); });
    mIcon->setAlignment(Qt::AlignCenter);
    mIcon->setFixedSize(QSize(1, 1) * Look::scaled(*this, kDisc));
    auto *lines = new QVBoxLayout;
    lines->setSpacing(measure::kGap / 2);
    lines->addWidget(mTitle);
    lines->addWidget(mText);
    mActions->setContentsMargins(0, measure::kGap / 2, 0, 0);
    mActions->setSpacing(measure::kGap);
    mActions->addStretch();
    lines->addLayout(mActions);
    auto *row = rowIn(&body(), 2 * measure::kGap);
    row->setContentsMargins(2 * measure::kGap, 2 * measure::kGap, measure::kGap, 2 * measure::kGap);
    row->addWidget(mIcon, 0, Qt::AlignTop);
    row->addLayout(lines, 1);
    row->addWidget(mClose, 0, Qt::AlignTop);
}

void Card::ask(std::function<Texts()> texts, std::function<void(int)> answered, bool takesFocus) {
    mTexts = std::move(texts);
    mAnswered = std::move(answered);
    for (QPushButton *before : std::exchange(mButtons, {})) { // One of them may be what has just been pressed.
        before->setObjectName({});
        before->hide();
        before->deleteLater();
    }
    const auto count = mTexts().actions.size();
    for (int number = 0; number < count; ++number) {
        auto *button = new QPushButton(&body());
        button->setObjectName(objectName() + QString::number(number));
        button->setDefault(number == 0);
        button->setAutoDefault(true);
        connect(button, &QPushButton::clicked, this, [this, number] { answer(number); });
        mActions->insertWidget(number, button, 0, Qt::AlignLeft);
        mButtons.push_back(button);
    }
    showTexts();
    Q_EMIT changed();
    if (!mButtons.empty())
        QWidget::setTabOrder(mButtons.back(), mClose);
    if (takesFocus && isVisible())
        (mButtons.empty() ? static_cast<QWidget *>(mClose) : mButtons.front())->setFocus(Qt::OtherFocusReason);
}

void Card::putAway() {
    if (!std::exchange(mTexts, {}))
        return;
    mAnswered = {};
    Q_EMIT changed();
}

void Card::answer(int answer) {
    if (!mTexts || (answer == kClosed && !mTexts().canClose))
        return;
    const auto answered = std::exchange(mAnswered, {});
    putAway();
    if (answered)
        answered(answer);
}

void Card::showTexts() {
    if (!mTexts)
        return;
    const Texts texts = mTexts();
    mIconName = texts.icon;
    mTitle->setText(texts.title);
    mTitle->setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    mText->setText(texts.text);
    setAccessibleName(texts.title);
    for (std::size_t number = 0; number < mButtons.size(); ++number)
        mButtons[number]->setText(texts.actions[static_cast<qsizetype>(number)]);
    mClose->setVisible(texts.canClose);
    mClose->setToolTip(Lang::btnClose());
    mClose->setAccessibleName(Lang::btnClose());
    showIcons();
    updateGeometry();
}

void Card::showIcons() {
    const Tokens &tokens = Look::tokens();
    setInk(*mText, tokens.text2);
    mIcon->setPixmap(drawing(mIconName, tokens.accent, Look::scaled(*this, measure::kIcon), devicePixelRatioF()));
    mClose->setIcon(icon(QStringLiteral("close"), palette()));
    update();
}

QSize Card::minimumSizeHint() const {
    int widest = 0;
    for (const QPushButton *button : mButtons)
        widest = qMax(widest, button->sizeHint().width());
    return {widest + besideLines(), 0};
}

int Card::besideLines() const {
    const QMargins margins = body().layout()->contentsMargins();
    return margins.left() + mIcon->width() + 2 * body().layout()->spacing() + mClose->sizeHint().width()
           + margins.right();
}

void Card::resizeEvent(QResizeEvent *event) {
    int row = 0;
    for (const QPushButton *button : mButtons)
        row += button->sizeHint().width() + mActions->spacing();
    // Where they have no room side by side, the buttons stand one below the other.
    mActions->setDirection(row <= width() - besideLines() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    Unfolding::resizeEvent(event);
}

void Card::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Tokens &tokens = Look::tokens();
    painter.setPen(tokens.line);
    painter.setBrush(tokens.surface);
    painter.drawRoundedRect(QRectF(body().geometry()).adjusted(0.5, 0.5, -0.5, -0.5), measure::kCardRadius,
                            measure::kCardRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tokens.soft);
    painter.drawEllipse(mIcon->geometry().translated(body().pos()));
}

void Card::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    Unfolding::changeEvent(event);
}

} // namespace cantorel::ui
