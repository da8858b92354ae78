#include "ui/TagFields.h"

#include "lang/Lang.h"
#include "tags/id3Tag.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <cstddef>

namespace cantorel::ui {

namespace {

using Tags = ID3EditWindowController;

constexpr const char *kNames[] = {"tagTitle", "tagArtist", "tagAlbum", "tagYear", "tagGenre"};

QPushButton *button(const char *name, QWidget *parent) {
    auto *made = new QPushButton(parent);
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

} // namespace

TagFields::TagFields(ID3EditWindowController &tags, QWidget *parent)
    : QWidget(parent),
      mTags(tags),
      mImage(new QWidget(this)),
      mImageLabel(new QLabel(mImage)),
      mAddImage(button("addTagImage", mImage)),
      mDeleteImage(button("deleteTagImage", mImage)),
      mSave(nullptr),
      mClear(nullptr),
      mGenre(new QComboBox(this)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(measure::kGap / 2);
    const auto small = [this](QLabel &label) {
        label.setFont(Look::font(*this, text_size::kLabel));
        label.setForegroundRole(QPalette::PlaceholderText);
    };
    small(*mImageLabel);
    auto *image = rowIn(mImage, measure::kGap);
    image->addWidget(mImageLabel, 1);
    image->addWidget(mAddImage);
    image->addWidget(mDeleteImage);
    column->addWidget(mImage);
    mGenre->setEditable(true);
    mGenre->setInsertPolicy(QComboBox::NoInsert);
    mGenre->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    auto *last = new QHBoxLayout; // the year and, wider, the genre
    last->setSpacing(3 * measure::kGap / 2);
    for (int field = 0; field < Tags::FieldCount; ++field) {
        const auto at = static_cast<std::size_t>(field);
        mFields[at] = field == Tags::Genre ? static_cast<QWidget *>(mGenre) : new QLineEdit(this);
        mFields[at]->setObjectName(QString::fromLatin1(kNames[at]));
        mLabels[at] = new QLabel(this);
        mLabels[at]->setBuddy(mFields[at]);
        small(*mLabels[at]);
        auto *place = new QVBoxLayout;
        place->setSpacing(measure::kGap / 2);
        place->addWidget(mLabels[at]);
        place->addWidget(mFields[at]);
        if (field < Tags::Year) {
            column->addSpacing(measure::kGap / 2);
            column->addLayout(place);
        } else
            last->addLayout(place, field == Tags::Year ? 1 : 2);
        QLineEdit *line = lineOf(field);
        line->setAcceptDrops(false); // A picture may be dropped here as well.
        const auto touch = [this, field](const QString &text) { mTags.setText(static_cast<Tags::Field>(field), text); };
        connect(line, &QLineEdit::textEdited, this, touch);
        if (field == Tags::Genre)
            connect(mGenre, &QComboBox::textActivated, this, touch);
    }
    column->addSpacing(measure::kGap / 2);
    column->addLayout(last);
    mSave = button("saveTags", this);
    mSave->setDefault(true);
    mClear = button("clearTags", this);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(measure::kGap);
    buttons->addWidget(mSave, 1);
    buttons->addWidget(mClear, 1);
    column->addSpacing(measure::kGap);
    column->addLayout(buttons);
    connect(mAddImage, &QPushButton::clicked, this, [this] { chooseImage(); });
    connect(mDeleteImage, &QPushButton::clicked, &mTags, &Tags::deleteID3TagImage);
    connect(mSave, &QPushButton::clicked, &mTags, &Tags::saveID3tag);
    connect(mClear, &QPushButton::clicked, &mTags, &Tags::clearID3);
    connect(&mTags, &Tags::changed, this, [this] { showTags(); });
    changeLanguageText();
    hide();
}

QLineEdit *TagFields::lineOf(int field) const {
    return field == Tags::Genre ? mGenre->lineEdit()
                                : static_cast<QLineEdit *>(mFields[static_cast<std::size_t>(field)]);
}

void TagFields::chooseImage() {
    QFileDialog dialog(this);
    dialog.setObjectName(QStringLiteral("chooseTagImage"));
    dialog.setWindowTitle(Lang::toolsID3TagsArtwork());
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilter(QStringLiteral("JPEG, PNG (*.jpg *.jpeg *.png)"));
    if (dialog.exec() == QDialog::Accepted)
        mTags.addID3TagImage(dialog.selectedFiles().constFirst());
}

// While files are read the fields stay as they are, so that nothing flickers and the focus is kept.
void TagFields::showTags() {
    const auto state = mTags.state();
    if (state != Tags::State::Reading)
        setVisible(state == Tags::State::Editable || state == Tags::State::Saving);
    if (state == Tags::State::Editable) {
        mImage->setVisible(mTags.canEditImage());
        if (mGenre->count() == 0) // What knows the genres is loaded with the first tag.
            mGenre->addItems(id3Tag::getAllGenreList());
    }
    mDeleteImage->setEnabled(!mTags.image().isEmpty() || !mTags.isImageTouched());
    for (int field = 0; field < Tags::FieldCount; ++field) {
        QLineEdit *line = lineOf(field);
        line->setReadOnly(state != Tags::State::Editable);
        const auto known = static_cast<Tags::Field>(field);
        if (line->text() != mTags.text(known)) {
            if (field == Tags::Genre) // The arrows go on from there.
                mGenre->setCurrentIndex(mGenre->findText(mTags.text(known)));
            line->setText(mTags.text(known));
            line->setCursorPosition(0);
        }
        line->setPlaceholderText(mTags.isMixed(known) ? Lang::windowMixedTags() : QString());
        line->setToolTip(line->placeholderText()); // The year's field is narrow.
    }
}

void TagFields::changeLanguageText() {
    const QString texts[] = {Lang::commTitle(), Lang::windowArtist(), Lang::windowAlbum(), Lang::toolsCDRipperYear(),
                             Lang::toolsCDRipperGenre()};
    for (std::size_t field = 0; field < mLabels.size(); ++field) {
        mLabels[field]->setText(texts[field] + QLatin1Char(':'));
        lineOf(static_cast<int>(field))->setAccessibleName(texts[field]);
        mFields[field]->setAccessibleName(texts[field]);
    }
    mImageLabel->setText(Lang::toolsID3TagsArtwork() + QLatin1Char(':'));
    mAddImage->setText(Lang::btnAdd());
    mAddImage->setAccessibleName(Lang::toolsID3TagsArtwork() + QStringLiteral(": ") + Lang::btnAdd());
    mDeleteImage->setText(Lang::btnDelete());
    mDeleteImage->setAccessibleName(Lang::toolsID3TagsArtwork() + QStringLiteral(": ") + Lang::btnDelete());
    mSave->setText(Lang::btnSave());
    mClear->setText(Lang::btnClear());
    showTags();
}

void TagFields::keyPressEvent(QKeyEvent *event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter || event->matches(QKeySequence::Save))
        mTags.saveID3tag();
    else
        QWidget::keyPressEvent(event);
}

} // namespace cantorel::ui
