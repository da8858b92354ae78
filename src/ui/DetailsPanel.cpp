#include "ui/DetailsPanel.h"

#include "lang/Lang.h"
#include "recording/library/ID3EditWindowController.h"
#include "recording/library/RecordedAudioInfo.h"
#include "ui/DigitLabel.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/SavedSign.h"
#include "ui/TagFields.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QDir>
#include <QDragEnterEvent>
#include <QEvent>
#include <QFileInfo>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QTextBoundaryFinder>
#include <QToolButton>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kWidth = 304, kCover = 88;

// A part of the text that is wider than its line may be broken where the line ends, by a sign of no width. Nowhere
// else: letters that are joined would fall apart, and copies of the text have the signs.
QString breakable(const QString &text, const QFontMetrics &metrics, int width) {
    QString broken, part;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype begin = 0, end; (end = finder.toNextBoundary()) > 0; begin = end) {
        const QString sign = text.mid(begin, end - begin);
        if (sign == QLatin1String(" ") || sign == QLatin1String("/"))
            part.clear();
        else if (metrics.horizontalAdvance(part += sign) > width && part != sign) {
            broken += QChar(0x200B);
            part = sign;
        }
        broken += sign;
    }
    return broken;
}

QLabel *textLabel(QWidget *parent) {
    auto *label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

DetailsPanel::DetailsPanel(ID3EditWindowController &tags, QWidget *parent)
    : QWidget(parent),
      mTags(tags),
      mBack(new QToolButton(this)),
      mHead(new QWidget),
      mCover(new QLabel(mHead)),
      mName(textLabel(mHead)),
      mNobody(new QLabel),
      mPlain(textLabel(nullptr)),
      mFigures(new DigitLabel(mHead)),
      mFields(new TagFields(tags, nullptr)),
      mSaved(new SavedSign(this)),
      mRows(new QVBoxLayout) {
    setObjectName(QStringLiteral("details"));
    setAcceptDrops(true);
    mPlain->setObjectName(QStringLiteral("detailsTakeNoTags"));
    mPlain->setForegroundRole(QPalette::PlaceholderText);
    mBack->setObjectName(QStringLiteral("back"));
    mBack->setAutoRaise(true);
    mBack->setFocusPolicy(Qt::StrongFocus);
    mBack->hide();
    mName->setObjectName(QStringLiteral("detailsName"));
    mFigures->setObjectName(QStringLiteral("detailsFigures"));
    mNobody->setObjectName(QStringLiteral("detailsOfNothing"));
    mNobody->setWordWrap(true);
    auto *beside = new QVBoxLayout;
    beside->setSpacing(measure::kGap / 2);
    beside->addWidget(mName);
    beside->addWidget(mFigures);
    beside->addStretch();
    mHead->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto *head = new QHBoxLayout(mHead);
    head->setContentsMargins({});
    head->setSpacing(2 * measure::kGap);
    mCover->setAlignment(Qt::AlignCenter);
    head->addWidget(mCover, 0, Qt::AlignTop);
    head->addLayout(beside, 1);
    mRows->setSpacing(measure::kGap / 4);

    auto *content = new QWidget;
    mColumn = new QVBoxLayout(content);
    mColumn->setContentsMargins(measure::kMargin, measure::kMargin, measure::kMargin, measure::kMargin);
    mColumn->setSpacing(2 * measure::kGap);
    mColumn->addWidget(mHead);
    mColumn->addWidget(mNobody);
    mColumn->addWidget(mFields);
    mColumn->addLayout(mRows);
    mColumn->addWidget(mPlain);
    mColumn->addStretch();
    auto *scrolled = new QScrollArea(this);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setWidget(content);
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(1, 0, 0, 0); // the hairline
    column->setSpacing(0);
    auto *lead = new QHBoxLayout;
    lead->setContentsMargins(measure::kMargin - measure::kGap, 0, 0, 0);
    lead->addWidget(mBack);
    lead->addStretch();
    column->addLayout(lead);
    column->addWidget(scrolled, 1);
    connect(&mTags, &ID3EditWindowController::written, this, [this](const TagsWritten &written) {
        if (written.failures.empty())
            mSaved->play();
        else
            mSaved->hide(); // what was saved just before
    });
    changeLanguageText();
    dress();
}

QPushButton &DetailsPanel::addIdentify() {
    mIdentify = new QPushButton;
    mIdentify->setObjectName(QStringLiteral("identifyChosen"));
    mIdentify->hide();
    mColumn->insertWidget(mColumn->indexOf(mFields) + 1, mIdentify); // which owns it now
    return *mIdentify;
}

void DetailsPanel::changeLanguageText() {
    mPlain->setText(Lang::windowTakesNoTags());
    mFields->changeLanguageText();
}

int DetailsPanel::besideWidth() const { return Look::scaled(*this, kWidth); }

int DetailsPanel::coverSide() const { return Look::scaled(*this, kCover); }

void DetailsPanel::setCovering(bool covers) {
    mBack->setVisible(covers);
    mColumn->setContentsMargins(measure::kMargin, covers ? measure::kGap : measure::kMargin, measure::kMargin,
                                measure::kMargin);
}

void DetailsPanel::show(const RecordedAudioInfo *item, qsizetype count, const QPixmap &cover, const QString &date) {
    mHead->setVisible(item);
    mNobody->setVisible(!item);
    mNobody->setText(Lang::windowNothingChosen());
    mPlain->setVisible(item && mTags.state() == ID3EditWindowController::State::Plain);
    if (mIdentify)
        mIdentify->setVisible(item);
    if (mIdentify && item) {
        mIdentify->setText(item->isIdentifying ? Lang::commIdentifying() + QChar(0x2026) : Lang::btnIdentifyID3());
        mIdentify->setEnabled(!item->isInUse() && !isMovieFile(item->getFileName()));
    }
    Rows rows;
    if (item) {
        const QFileInfo file(item->getFileName());
        mCover->setFixedSize(QSize(1, 1) * coverSide()); // Whatever the picture's form, nothing below it moves.
        mCover->setPixmap(cover);
        const QString more = count > 1 ? QStringLiteral(" + %1").arg(count - 1) : QString();
        mName->setText(breakable(file.fileName() + more, mName->fontMetrics(),
                                 besideWidth() - coverSide() - 2 * measure::kMargin - 3 * measure::kGap));
        mFigures->setText(count > 1 ? QString()
                                    : QStringList{item->duration(), item->size().trimmed()}.join(QStringLiteral(", ")));
    }
    if (item && count == 1) {
        const QFileInfo file(item->getFileName());
        const bool isEdited = !mFields->isHidden();
        rows = {{Lang::windowFolder(), QDir::toNativeSeparators(file.path())},
                {Lang::commFormat(), file.suffix().toUpper()},
                {Lang::windowArtist(), isEdited ? QString() : item->artist()},
                {Lang::windowAlbum(), isEdited ? QString() : item->album()},
                {Lang::commDateAdded(), date},
                {Lang::windowState(), file.exists() ? item->status() : Lang::tabPlaylistNoFile()}};
    }
    // What there is nothing to say about is left out.
    rows.removeIf([](const Rows::value_type &row) { return row.second.isEmpty(); });
    if (std::exchange(mShown, rows) == rows)
        return; // A text that is being copied stays.
    while (QLayoutItem *const part = mRows->takeAt(0)) {
        delete part->widget();
        delete part;
    }
    for (const auto &[name, text] : rows)
        addRow(name, text);
}

void DetailsPanel::addRow(const QString &name, const QString &text) {
    auto *label = new QLabel(name, this);
    label->setFont(Look::font(*this, text_size::kLabel));
    label->setForegroundRole(QPalette::PlaceholderText); // that of second lines
    auto *value = textLabel(this);
    value->setText(breakable(text, value->fontMetrics(), besideWidth() - 2 * measure::kMargin));
    value->setAccessibleName(name + QStringLiteral(": ") + text);
    label->setBuddy(value);
    if (mRows->count() > 0)
        mRows->addSpacing(measure::kGap);
    mRows->addWidget(label);
    mRows->addWidget(value);
}

void DetailsPanel::dress() {
    mBack->setIcon(icon(QStringLiteral("back"), palette()));
    mName->setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    mFigures->setFont(Look::font(*this, text_size::kSecondLine));
    mFigures->setForegroundRole(QPalette::PlaceholderText);
    mNobody->setForegroundRole(QPalette::PlaceholderText);
}

void DetailsPanel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), Look::tokens().ground);
    if (mBack->isHidden())
        painter.fillRect(0, 0, 1, height(), Look::tokens().line);
}

void DetailsPanel::dragEnterEvent(QDragEnterEvent *event) {
    const QStringList files = localFiles(*event->mimeData());
    const QStringList kinds{QStringLiteral("jpg"), QStringLiteral("jpeg"), QStringLiteral("png")};
    const bool isPicture = files.size() == 1 && kinds.contains(QFileInfo(files.first()).suffix().toLower());
    event->setDropAction(Qt::CopyAction); // Nothing is moved.
    event->setAccepted(isPicture && mTags.canEditImage());
}

void DetailsPanel::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    mTags.addID3TagImage(localFiles(*event->mimeData()).constFirst());
}

void DetailsPanel::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        dress();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
