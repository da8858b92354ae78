#include "tags/taglib/CoverTags.h"

#include "tags/Pictures.h"

#include <QFile>

#include <taglib/aifffile.h>
#include <taglib/asffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <memory>

namespace cantorel {

namespace {

using TagLib::ASF::Picture;
using Id3Picture = TagLib::ID3v2::AttachedPictureFrame;

QByteArray bytesOf(const TagLib::ByteVector &vector) { return {vector.data(), static_cast<qsizetype>(vector.size())}; }

TagLib::ByteVector vectorOf(const QByteArray &bytes) {
    return {bytes.constData(), static_cast<unsigned>(bytes.size())};
}

// The one that is said to be the cover, else the first. The others are lists of values or of pointers.
template <class List, class IsCover, class Data> QByteArray cover(const List &pictures, IsCover isCover, Data data) {
    const auto said = std::find_if(pictures.begin(), pictures.end(), isCover);
    const auto chosen = said != pictures.end() ? said : pictures.begin();
    return chosen != pictures.end() ? bytesOf(data(*chosen)) : QByteArray();
}

QByteArray id3Cover(const TagLib::ID3v2::Tag *tag) {
    if (!tag)
        return {};
    return cover(
        tag->frameList("APIC"),
        [](const TagLib::ID3v2::Frame *frame) {
            const auto *picture = dynamic_cast<const Id3Picture *>(frame);
            return picture && picture->type() == Id3Picture::FrontCover;
        },
        [](const TagLib::ID3v2::Frame *frame) {
            const auto *picture = dynamic_cast<const Id3Picture *>(frame);
            return picture ? picture->picture() : TagLib::ByteVector();
        });
}

template <class Pictures> QByteArray flacCover(const Pictures &pictures) {
    return cover(
        pictures, [](const auto *picture) { return picture->type() == TagLib::FLAC::Picture::FrontCover; },
        [](const auto *picture) { return picture->data(); });
}

QByteArray asfCover(const TagLib::ASF::Tag *tag) {
    return cover(
        tag->attribute("WM/Picture"),
        [](const TagLib::ASF::Attribute &one) { return one.toPicture().type() == Picture::FrontCover; },
        [](const TagLib::ASF::Attribute &one) { return one.toPicture().picture(); });
}

QByteArray coverIn(TagLib::File *file) {
    if (auto *mpeg = dynamic_cast<TagLib::MPEG::File *>(file))
        return id3Cover(mpeg->ID3v2Tag());
    if (auto *wave = dynamic_cast<TagLib::RIFF::WAV::File *>(file))
        return id3Cover(wave->ID3v2Tag());
    if (auto *aiff = dynamic_cast<TagLib::RIFF::AIFF::File *>(file))
        return id3Cover(aiff->tag());
    if (auto *movie = dynamic_cast<TagLib::MP4::File *>(file))
        return cover(
            movie->tag() ? movie->tag()->item("covr").toCoverArtList() : TagLib::MP4::CoverArtList(),
            [](const auto &) { return true; }, [](const TagLib::MP4::CoverArt &art) { return art.data(); });
    if (auto *flac = dynamic_cast<TagLib::FLAC::File *>(file))
        return flacCover(flac->pictureList());
    if (auto *asf = dynamic_cast<TagLib::ASF::File *>(file))
        return asf->tag() ? asfCover(asf->tag()) : QByteArray();
    if (auto *ogg = file ? dynamic_cast<TagLib::Ogg::XiphComment *>(file->tag()) : nullptr)
        return flacCover(ogg->pictureList());
    return {};
}

TagLib::String mimeOf(const QByteArray &cover) { return std::string("image/") + pictureKind(cover); }

TagLib::MP4::CoverArt::Format movieKindOf(const QByteArray &cover) {
    const QByteArrayView kind(pictureKind(cover));
    return kind == "jpeg"  ? TagLib::MP4::CoverArt::JPEG
           : kind == "png" ? TagLib::MP4::CoverArt::PNG
           : kind == "gif" ? TagLib::MP4::CoverArt::GIF
           : kind == "bmp" ? TagLib::MP4::CoverArt::BMP
                           : TagLib::MP4::CoverArt::Unknown;
}

bool save(TagLib::MPEG::File &file, const QByteArray &cover) {
    TagLib::ID3v2::Tag &tag = *file.ID3v2Tag(true);
    auto picture = std::make_unique<Id3Picture>();
    picture->setType(Id3Picture::FrontCover);
    picture->setMimeType(mimeOf(cover));
    picture->setPicture(vectorOf(cover));
    tag.addFrame(picture.release()); // the tag's from here on
    const bool isOld = tag.header()->majorVersion() == 3;
    return file.save(TagLib::MPEG::File::ID3v2, TagLib::File::StripNone, isOld ? TagLib::ID3v2::v3 : TagLib::ID3v2::v4,
                     TagLib::File::DoNotDuplicate);
}

bool save(TagLib::MP4::File &file, const QByteArray &cover) {
    TagLib::MP4::CoverArtList list;
    list.append(TagLib::MP4::CoverArt(movieKindOf(cover), vectorOf(cover)));
    file.tag()->setItem("covr", list);
    return file.save();
}

bool save(TagLib::FLAC::File &file, const QByteArray &cover) {
    auto picture = std::make_unique<TagLib::FLAC::Picture>();
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(mimeOf(cover));
    picture->setData(vectorOf(cover));
    file.addPicture(picture.release()); // the file's from here on
    return file.save();
}

bool save(TagLib::ASF::File &file, const QByteArray &cover) {
    Picture picture;
    picture.setType(Picture::FrontCover);
    picture.setMimeType(mimeOf(cover));
    picture.setPicture(vectorOf(cover));
    file.tag()->addAttribute("WM/Picture", picture);
    return file.save();
}

} // namespace

QByteArray readCover(const QString &path) {
    const TagLib::FileRef file(QFile::encodeName(path).constData(), false);
    QByteArray cover = file.isNull() ? QByteArray() : coverIn(file.file());
    return pictureKind(cover) && cover.size() <= kLargestPicture ? cover : QByteArray();
}

bool writeCover(const QString &path, const QByteArray &cover) {
    const TagLib::FileRef opened(QFile::encodeName(path).constData(), false);
    TagLib::File *file = opened.isNull() ? nullptr : opened.file();
    if (!file || !file->isValid() || !pictureKind(cover) || !coverIn(file).isEmpty())
        return false;
    // ADTS counts as MPEG here, and holds no tags as far as we are concerned.
    if (auto *mpeg = dynamic_cast<TagLib::MPEG::File *>(file); mpeg && mpeg->hasID3v2Tag())
        return save(*mpeg, cover);
    if (auto *movie = dynamic_cast<TagLib::MP4::File *>(file); movie && movie->tag())
        return save(*movie, cover);
    if (auto *flac = dynamic_cast<TagLib::FLAC::File *>(file))
        return save(*flac, cover);
    if (auto *asf = dynamic_cast<TagLib::ASF::File *>(file); asf && asf->tag())
        return save(*asf, cover);
    return false;
}

} // namespace cantorel
