#include "cli/TagOptions.h"

#include "platform/foundation/Console.h"
#include "tags/Pictures.h"
#include "tags/id3Tag.h"

#include <QFile>
#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <tuple>

namespace cantorel {

namespace {

std::optional<QString> text(const std::optional<std::string> &value) {
    return value ? std::optional(QString::fromStdString(*value)) : std::nullopt;
}

// The picture of that file, or none at all; nothing for what is no picture.
std::optional<QByteArray> coverNamed(const QString &name) {
    if (name == QLatin1String("none"))
        return QByteArray();
    QFile file(name);
    if (!QFileInfo(name).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.read(kLargestPicture + 1);
    const auto pictures = loadPictures();
    return pictures && pictures.value()->size(bytes) ? std::optional(bytes) : std::nullopt;
}

} // namespace

void TagOptions::addTo(CLI::App &command, const char *aboutCover) {
    for (const auto &[name, value, what] :
         {std::tuple("--title", &title, "The title; an empty text clears it"),
          std::tuple("--artist", &artist, "The artist"), std::tuple("--album", &album, "The album"),
          std::tuple("--genre", &genre, "The genre, any text"),
          std::tuple("--year", &year, "The year; what is no number changes nothing")})
        command.add_option(name, *value, what)->type_name("TEXT");
    command.add_option("--cover", cover, aboutCover)->type_name("IMAGE|none");
}

Outcome TagOptions::read(id3TagEdit &edit) const {
    edit = {text(title), text(artist), text(album), text(genre), text(year), {}};
    if (cover) {
        const QString name = QString::fromStdString(*cover);
        edit.image = coverNamed(name);
        if (!edit.image)
            return Outcome::wrongUsage(
                QStringLiteral("\"%1\" is no picture that can be read; name a JPEG or PNG file, or \"none\".")
                    .arg(name));
    }
    if (edit.year && !yearToWrite(*edit.year))
        foundation::printToConsole(QStringLiteral("\"%1\" is no year, so years stay as they are.\n").arg(*edit.year));
    return Outcome::done();
}

} // namespace cantorel
