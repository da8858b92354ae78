#include "ui/DropPlaces.h"

#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/look/Look.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QPen>

#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kEdge = 2;

} // namespace

DropPlaces::DropPlaces(QWidget &page, QWidget &part, const QWidget &own) : QWidget(&page), mPart(part), mOwn(own) {
    setAttribute(Qt::WA_TransparentForMouseEvents); // The drag stays the page's.
    hide();
    page.setAcceptDrops(true);
    page.installEventFilter(this);
}

bool DropPlaces::eventFilter(QObject *page, QEvent *event) {
    if (event->type() == QEvent::DragLeave)
        hide();
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove && event->type() != QEvent::Drop)
        return QWidget::eventFilter(page, event);
    auto *drag = static_cast<QDropEvent *>(event); // which the others are too
    const QStringList files = localFiles(*drag->mimeData());
    if (drag->source() == &mOwn || files.isEmpty())
        return false;
    drag->setDropAction(Qt::CopyAction); // Nothing is moved.
    drag->accept();
    if (event->type() == QEvent::DragEnter)
        open(files);
    hover(drag->position().toPoint());
    if (event->type() == QEvent::Drop)
        drop(files);
    return true;
}

// One file can be edited, by its name: nothing is read while it hovers. Where the part is not shown there are no
// places.
void DropPlaces::open(const QStringList &files) {
    const QString extension = files.size() == 1 ? QFileInfo(files.constFirst()).suffix() : QString();
    mCanEdit = !extension.isEmpty() && AppSettings::isSuportIntoConvertFileFormat(extension);
    setGeometry(mPart.isVisible() ? mPart.geometry() : QRect());
    raise();
    show();
}

void DropPlaces::hover(const QPoint &position) {
    const QPoint here = position - pos();
    mHovered = Place::Add;
    for (const auto &[place, area] : areas())
        if (rect().contains(here) && area.contains(here))
            mHovered = place;
    update();
}

void DropPlaces::drop(const QStringList &files) {
    hide();
    switch (mHovered) {
    case Place::Convert:
        return Q_EMIT convertWanted(files);
    case Place::Edit:
        return Q_EMIT editWanted(files.constFirst());
    case Place::Add:
        return Q_EMIT addWanted(files);
    }
}

// Two halves, or one whole, above the third place.
std::vector<DropPlaces::Area> DropPlaces::areas() const {
    QRect upper = rect().adjusted(measure::kMargin, measure::kMargin, -measure::kMargin, -measure::kMargin);
    QRect lower = upper;
    lower.setTop(lower.bottom() - upper.height() / 4);
    upper.setBottom(lower.top() - 1 - measure::kGap);
    std::vector<Area> areas{{Place::Add, lower}};
    if (mCanEdit) {
        const int half = (upper.width() - measure::kGap) / 2;
        areas.push_back({Place::Edit, upper.adjusted(upper.width() - half, 0, 0, 0)});
        upper.setWidth(half);
    }
    areas.push_back({Place::Convert, upper});
    return areas;
}

void DropPlaces::paintEvent(QPaintEvent *) {
    const Tokens &tokens = Look::tokens();
    QPainter painter(this);
    painter.fillRect(rect(), tokens.surface);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(Look::font(*this, text_size::kTitle, QFont::Bold));
    const int side = Look::scaled(*this, measure::kIcon);
    for (const auto &[place, area] : areas()) {
        const bool isHovered = place == mHovered;
        const QColor &ink = isHovered ? tokens.accent : tokens.text;
        painter.setPen(QPen(isHovered ? tokens.accent : tokens.outline, kEdge));
        painter.setBrush(isHovered ? tokens.soft : tokens.surface);
        painter.drawRoundedRect(area, measure::kCardRadius, measure::kCardRadius);
        const auto [picture, word] = place == Place::Convert ? std::pair(QStringLiteral("convert"), Lang::btnConvert())
                                     : place == Place::Edit  ? std::pair(QStringLiteral("edit"), Lang::btnEdit())
                                                             : std::pair(QStringLiteral("add"), Lang::windowDropHere());
        QRect text = area.adjusted(measure::kGap, side, -measure::kGap, 0);
        painter.setPen(ink);
        painter.drawText(text, Qt::AlignCenter | Qt::TextWordWrap, word, &text);
        painter.drawPixmap(area.center().x() - side / 2, text.top() - side - measure::kGap / 2,
                           drawing(picture, ink, side, devicePixelRatioF()));
    }
}

} // namespace cantorel::ui
