#include "cli/Commands.h"
#include "cli/RunningInstance.h"
#include "cli/TagOptions.h"
#include "platform/foundation/Console.h"
#include "tags/AudioIdentify.h"
#include "tags/Pictures.h"
#include "tags/TagReading.h"
#include "tags/TagWriting.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

namespace cantorel {

namespace {

struct Arguments {
    std::vector<std::string> files;
    TagOptions tags;
};

void show(const CommandSession &session, const QString &file, const id3Tag &tag, bool isOneOfMany) {
    const auto pictures = tag.id3Image.isEmpty() ? nullptr : loadPictures().ok() ? loadPictures().value() : nullptr;
    const QSize size = pictures ? pictures->size(tag.id3Image).value_or(QSize()) : QSize();
    QJsonObject object{{QStringLiteral("title"), tag.id3Title}, {QStringLiteral("artist"), tag.id3Artist},
                       {QStringLiteral("album"), tag.id3Album}, {QStringLiteral("genre"), tag.id3Genre},
                       {QStringLiteral("year"), tag.id3Year},   {QStringLiteral("cover"), QJsonValue()}};
    if (isOneOfMany)
        object.insert(QStringLiteral("file"), file);
    QString cover = QStringLiteral("none");
    if (size.isValid()) {
        object.insert(QStringLiteral("cover"), QJsonObject{{QStringLiteral("width"), size.width()},
                                                           {QStringLiteral("height"), size.height()},
                                                           {QStringLiteral("bytes"), tag.id3Image.size()}});
        cover = QStringLiteral("%1 x %2, %3 bytes").arg(size.width()).arg(size.height()).arg(tag.id3Image.size());
    }
    session.answer(object,
                   (isOneOfMany ? file + QLatin1Char('\n') : QString())
                       + QStringLiteral("Title:  %1\nArtist: %2\nAlbum:  %3\nGenre:  %4\nYear:   %5\nCover:  %6")
                             .arg(tag.id3Title, tag.id3Artist, tag.id3Album, tag.id3Genre, tag.id3Year, cover));
}

// Why the file's tags can't be read or written as is wished; empty for none. What is wished is written.
QString handle(const QString &file, const std::optional<id3TagEdit> &edit) {
    if (!edit && !AudioIdentify::getID3TagFromFile(file))
        return QFileInfo::exists(file)
                   ? QStringLiteral("\"%1\" holds no tags that can be read; check that it is a sound file.").arg(file)
                   : QStringLiteral("There is no file \"%1\".").arg(file);
    if (!edit)
        return {};
    if (edit->image && isMovieName(file))
        return QStringLiteral("The cover of an M4A such as \"%1\" stays as it is; leave out --cover.").arg(file);
    const TagsWritten written = writeTags({{file, *edit}});
    return written.failures.empty() ? QString() : Outcome::failed(written.failures.front().failure.sentence).sentence;
}

Outcome run(const CommandSession &session, const Arguments &arguments) {
    std::optional<id3TagEdit> edit;
    if (!arguments.tags.isEmpty())
        if (const Outcome read = arguments.tags.read(edit.emplace()); read.status != 0)
            return read;
    QStringList troubles, written;
    for (const std::string &name : arguments.files) {
        const QString file = QString::fromStdString(name);
        const QString trouble = handle(file, edit);
        if (trouble.isEmpty() && edit)
            written << QFileInfo(file).absoluteFilePath();
        if (trouble.isEmpty())
            show(session, file, AudioIdentify::getID3TagFromFile(file).value_or(id3Tag()), arguments.files.size() > 1);
        else
            troubles << trouble;
    }
    if (const Outcome taken = takeTagsIntoList(written); taken.status != 0)
        foundation::printToConsole(taken.sentence + QLatin1Char('\n')); // the files have their tags
    if (troubles.isEmpty())
        return Outcome::done();
    const QString last = troubles.takeLast(); // the command's last line
    for (const QString &trouble : troubles)
        foundation::printToConsole(trouble + QLatin1Char('\n'));
    return Outcome::failed(last);
}

} // namespace

void addTagsCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &tags = addVerb(root, session, "tags", "Shows the tags of sound files, and writes those that are named",
                             "tags ~/Music/Track1.mp3 --title \"Evening concert\" --cover front.jpg",
                             [&session, arguments] { return run(session, *arguments); });
    tags.add_option("FILE", arguments->files, "Sound files")->required();
    arguments->tags.addTo(tags, "A picture, or none; that of an M4A stays");
}

} // namespace cantorel
