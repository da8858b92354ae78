#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QSize>

#include <optional>

namespace cantorel {

// What kind of picture the bytes begin like, by the name that Qt's readers have for it; null for any other bytes.
inline const char *pictureKind(const QByteArray &bytes) {
    static constexpr struct {
        const char *name;
        qsizetype at;
        QByteArrayView mark;
    } kKinds[] = {{"jpeg", 0, "\xFF\xD8\xFF"},
                  {"png", 0, "\x89PNG\r\n\x1A\n"},
                  {"tiff", 0, {"II*\0", 4}},
                  {"tiff", 0, {"MM\0*", 4}},
                  {"gif", 0, "GIF8"},
                  {"webp", 8, "WEBP"},
                  {"bmp", 0, "BM"}};
    for (const auto &[name, at, mark] : kKinds)
        if (bytes.size() > at && QByteArrayView(bytes).sliced(at).startsWith(mark))
            return name;
    return nullptr;
}

// Larger ones, in bytes or in pixels, are none to us.
inline constexpr qsizetype kLargestPicture = 64 << 20;
inline constexpr qint64 kMostPixels = 100'000'000;

// Looks into encoded pictures and makes others of them; what is broken is no picture. One implementation, in a shared
// object that is loaded when it is first needed: programs that meet no picture don't pay for its libraries. Any thread.
class Pictures {
public:
    virtual ~Pictures() = default;

    // In pixels, as it is looked at; nothing for what can't be decoded.
    virtual std::optional<QSize> size(const QByteArray &picture) const = 0;
    // See AudioIdentify::correctMusicCoverImage.
    virtual QByteArray bounded(const QByteArray &picture) const = 0;
    // Empty for what is no picture.
    virtual QByteArray tiff(const QByteArray &picture) const = 0;
};

// The one function that the shared object exports, by this name and type.
inline constexpr const char *kPicturesEntryPoint = "cantorel_pictures";
using PicturesEntryPoint = const Pictures *(*)();

// Loaded at the first call; lives to the end of the program. Any thread.
foundation::Result<const Pictures *> loadPictures();

} // namespace cantorel
