#include "ui/MovieChips.h"

#include "capture/ZQAVRecorderKit.h"
#include "lang/Lang.h"
#include "ui/AreaPicker.h"
#include "ui/Fields.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QComboBox>
#include <QLabel>
#include <QScreen>
#include <QSignalBlocker>

#include <algorithm>

namespace cantorel::ui {

namespace {

constexpr int kLeastPicture = 120;

bool isSame(const MovieWish &one, const MovieWish &other) {
    if (one.picture != other.picture)
        return false;
    return one.picture == MovieWish::Picture::Screen   ? one.display == other.display
           : one.picture == MovieWish::Picture::Camera ? one.camera == other.camera
                                                       : true;
}

} // namespace

MovieChips::MovieChips(MovieSession &movies, QWidget *parent)
    : QWidget(parent),
      mMovies(movies),
      mPicture(new QComboBox(this)),
      mRate(new QComboBox(this)),
      mFormat(new QLabel(this)) {
    mPicture->setObjectName(QStringLiteral("moviePicture"));
    mPicture->setMinimumWidth(Look::scaled(*this, kLeastPicture)); // It names less where there is no room.
    mRate->setObjectName(QStringLiteral("movieRate"));
    mFormat->setText(QStringLiteral("MP4"));
    auto *row = rowIn(this, measure::kGap);
    for (QComboBox *chip : {mPicture, mRate}) {
        Look::makeChip(*chip);
        row->addWidget(chip);
    }
    row->addWidget(mFormat);
    connect(mPicture, &QComboBox::activated, this, [this](int index) { choose(index); });
    connect(mRate, &QComboBox::activated, this, [this](int index) {
        MovieWish wish = mMovies.wish();
        wish.picturesPerSecond = ZQAVRecorderKit::FPSList().at(index).toUInt();
        mMovies.setWish(wish);
    });
    connect(&mMovies, &MovieSession::wishChanged, this, [this] { showChoices(); });
}

void MovieChips::choose(int index) {
    MovieWish wish = mWishes[static_cast<std::size_t>(index)];
    if (wish.picture == MovieWish::Picture::Area)
        pickArea();
    else
        mMovies.setWish(wish);
    showChoices(); // as it was, until an area is taken
}

void MovieChips::pickArea() {
    QScreen *screen = window()->screen();
    const qreal ratio = screen->devicePixelRatio();
    // The origin of a screen is in pixels of the display server, its size in points of the widgets.
    const QRect frame(screen->geometry().topLeft(), (QSizeF(screen->size()) * ratio).toSize());
    auto taken = [movies = QPointer(&mMovies)](const QRect &area) {
        if (!movies)
            return;
        MovieWish wish = movies->wish();
        wish.picture = MovieWish::Picture::Area;
        wish.display = 0;
        for (const media::Display &display : movies->displays())
            if (display.frame.contains(area))
                wish.display = display.id;
        wish.area = area;
        movies->setWish(wish);
    };
    new AreaPicker(*screen, frame, mMovies.wish().area, std::move(taken)); // It deletes itself.
}

// Nobody is asked for displays and cameras before they are wanted.
void MovieChips::showChoices() {
    if (!mMovies.isWanted())
        return;
    const MovieWish now = mMovies.wish();
    const auto displays = mMovies.displays();
    // Where the desktop itself asks what is shown, no place of it is known.
    const bool isAsked = !displays.empty() && displays.front().frame.isEmpty();
    QStringList texts;
    mWishes.clear();
    const auto add = [&](MovieWish::Picture picture, const QString &text, std::uint32_t display = 0,
                         const QString &camera = {}) {
        MovieWish wish = now;
        wish.picture = picture;
        wish.display = display;
        wish.camera = camera;
        mWishes.push_back(wish);
        texts.append(text);
    };
    const bool isOnly = displays.size() == 1 && !isAsked;
    for (const media::Display &display : displays) // The main one stays that, whichever it is by then.
        add(MovieWish::Picture::Screen, isOnly ? Lang::windowWholeScreen() : display.name,
            display == displays.front() && now.display != display.id ? 0 : display.id);
    if (!displays.empty() && !isAsked)
        add(MovieWish::Picture::Area, now.picture == MovieWish::Picture::Area
                                          ? QStringLiteral("%1 \u00d7 %2").arg(now.area.width()).arg(now.area.height())
                                          : Lang::windowAreaOfScreen());
    for (const media::Camera &camera : mMovies.cameras())
        add(MovieWish::Picture::Camera, camera.localizedName, 0, camera.uniqueID);
    const auto found =
        std::find_if(mWishes.begin(), mWishes.end(), [&](const MovieWish &wish) { return isSame(wish, now); });
    const QSignalBlocker untold(mPicture);
    mPicture->clear();
    mPicture->addItems(texts);
    mPicture->setCurrentIndex(found == mWishes.end() ? -1 : static_cast<int>(found - mWishes.begin()));
    const QSignalBlocker rate(mRate);
    mRate->setCurrentIndex(
        static_cast<int>(ZQAVRecorderKit::FPSList().indexOf(QString::number(now.picturesPerSecond))));
}

// Meanwhile others may have come; and what was shared can be shared again.
void MovieChips::showEvent(QShowEvent *event) {
    showChoices();
    QWidget::showEvent(event);
}

void MovieChips::showTexts() {
    QStringList rates;
    for (const QString &rate : ZQAVRecorderKit::FPSList())
        rates.append(Lang::windowPictureRate().replace(QLatin1String("[#Count#]"), rate));
    ui::showChoices(*mRate, rates);
    mPicture->setAccessibleName(Lang::windowScreenTip());
    mRate->setAccessibleName(Lang::windowPictureRateName());
    showChoices();
}

} // namespace cantorel::ui
