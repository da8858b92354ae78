#include "tags/taglib/MpegTags.h"

#include "tags/Id3Frames.h"
#include "tags/MpegSound.h"
#include "tags/Pictures.h"
#include "tags/SplicedFile.h"
#include "tags/TagFailures.h"
#include "tags/taglib/SplicedStream.h"
#include "tags/taglib/TagValues.h"

#include <taglib/apetag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace cantorel {

namespace {

constexpr std::string_view kPicture = "APIC";

QByteArray bytesOf(const TagLib::ByteVector &data) { return QByteArray(data.data(), data.size()); }

QByteArray tagInFrontOf(const SplicedFile &file) { return file.read(0, id3Size(file.read(0, kId3Head))); }

// Puts a tag of only those frames that are shown in front of the sound, where TagLib always finds it: what else may
// stand in a file of anybody's is let alone.
void putShownFrames(SplicedFile &file, const QByteArray &tag) {
    Id3Frames shown = Id3Frames::split(tag);
    shown.frames = shown.having({"TIT2", "TPE1", "TALB", "TCON", "TDRC", "TYER", kPicture});
    shown.rest = QByteArray(1, '\0');
    file.splice(0, tag.size(), shown.joined(0));
}

id3Tag recordOfFile(TagLib::MPEG::File &mpeg) {
    id3Tag record = recordOf(*mpeg.tag());
    if (TagLib::ID3v2::Tag *tag = mpeg.ID3v2Tag(); tag != nullptr && !tag->isEmpty()) {
        const TagLib::ID3v2::FrameList pictures = tag->frameListMap()[TagLib::ByteVector("APIC")];
        if (!pictures.isEmpty())
            if (const auto *first = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame *>(pictures.front()))
                record.id3Image = pictureOf(first->picture());
    }
    return record;
}

// The record's picture as it is written: empty for none, and for what is none.
foundation::Result<QByteArray> pictureToWrite(const QByteArray &image) {
    if (image.isEmpty())
        return QByteArray();
    const auto pictures = loadPictures();
    if (!pictures)
        return pictures.failure();
    return pictures.value()->tiff(pictures.value()->bounded(image));
}

// The frames that hold what is new, in that version.
QList<Id3Frames::Frame> newFrames(const TagChanges &changes, const QByteArray &picture, int version) {
    TagLib::ID3v2::Tag tag;
    changes.applyTo(tag);
    if (changes.year.value_or(0) != 0) { // in the four digits that it has in such a tag
        const QByteArray year = QByteArray::number(*changes.year).rightJustified(4, '0');
        tag.frameListMap()["TDRC"].front()->setText(TagLib::String(year.toStdString()));
    }
    if (!picture.isEmpty()) {
        auto *frame = new TagLib::ID3v2::AttachedPictureFrame; // The tag owns it.
        frame->setMimeType("image/jpeg");                      // deliberately, of a TIFF
        frame->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
        frame->setPicture(TagLib::ByteVector(picture.constData(), static_cast<unsigned int>(picture.size())));
        tag.addFrame(frame);
    }
    return Id3Frames::split(bytesOf(tag.render(version == 4 ? TagLib::ID3v2::v4 : TagLib::ID3v2::v3))).frames;
}

// Older kinds of tags are changed where there are any, or players would show what they hold. False when one can't be.
bool editBehind(TagLib::MPEG::File &mpeg, const TagChanges &changes) {
    int tags = TagLib::MPEG::File::NoTags;
    if (mpeg.hasID3v1Tag()) {
        changes.applyTo(*mpeg.ID3v1Tag());
        tags |= TagLib::MPEG::File::ID3v1;
    }
    if (mpeg.hasAPETag()) {
        changes.applyTo(*mpeg.APETag());
        tags |= TagLib::MPEG::File::APE;
    }
    return tags == TagLib::MPEG::File::NoTags || changes.isEmpty()
           || mpeg.save(tags, TagLib::File::StripNone, TagLib::ID3v2::v4, TagLib::File::DoNotDuplicate);
}

} // namespace

std::optional<id3Tag> readMpegTags(SplicedFile &file) {
    const SoundKind kind = findMpegSound(file).kind;
    if (kind == SoundKind::None)
        return {};
    if (kind == SoundKind::Wave)
        return id3Tag();
    putShownFrames(file, tagInFrontOf(file));
    SplicedStream stream(file);
    TagLib::MPEG::File mpeg(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    return mpeg.isValid() ? std::optional(recordOfFile(mpeg)) : std::nullopt;
}

foundation::Result<std::optional<id3Tag>> editMpegTags(SplicedFile &file, const id3TagEdit &edit, const QString &path) {
    if (findMpegSound(file).kind != SoundKind::Mpeg)
        return tag_failures::noMpeg(path);
    const QByteArray old = tagInFrontOf(file);
    putShownFrames(file, old);
    SplicedStream stream(file);
    TagLib::MPEG::File mpeg(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    if (!mpeg.isValid())
        return tag_failures::noMpeg(path);
    const id3Tag now = recordOfFile(mpeg), wanted = edit.applied(now);
    const TagChanges changes(now, wanted);
    const auto picture = pictureToWrite(wanted.id3Image);
    if (!picture)
        return picture.failure();

    Id3Frames frames = Id3Frames::split(old);
    const QList<Id3Frames::Frame> added = newFrames(changes, picture.value(), frames.version);
    const auto isPicture = [](const Id3Frames::Frame &frame) { return frame.id() == kPicture; };
    QList<Id3Frames::Frame> newPicture;
    std::copy_if(added.begin(), added.end(), std::back_inserter(newPicture), isPicture);
    if (changes.isEmpty() && frames.having({kPicture}) == newPicture)
        return std::optional<id3Tag>();
    if (!editBehind(mpeg, changes))
        return tag_failures::noMpeg(path);
    std::vector<std::string_view> gone{kPicture};
    if (changes.title)
        gone.push_back("TIT2");
    if (changes.artist)
        gone.push_back("TPE1");
    if (changes.album)
        gone.push_back("TALB");
    if (changes.genre)
        gone.push_back("TCON");
    if (changes.year)
        gone.insert(gone.end(), {"TDRC", "TYER", "TDAT", "TIME"});
    frames.remove(gone);
    frames.frames = added + frames.frames;
    file.splice(0, tagInFrontOf(file).size(), frames.joined(old.size()));
    return std::optional(wanted);
}

} // namespace cantorel
