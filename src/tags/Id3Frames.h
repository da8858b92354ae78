#pragma once

#include <QByteArray>
#include <QList>

#include <string_view>
#include <vector>

namespace cantorel {

// The frames of an ID3v2 tag, each with its header, byte for byte as they stand in it; those of version 2 as they stand
// in one of version 3.
struct Id3Frames {
    struct Frame {
        QByteArray bytes;
        std::string_view id() const { return {bytes.constData(), 4}; }
        bool operator==(const Frame &) const = default;
    };

    int version = 3;
    QList<Frame> frames;
    QByteArray rest; // behind them, what is neither a frame nor empty room

    // Of a whole tag; none at all of any other bytes.
    static Id3Frames split(QByteArray tag);
    // A whole tag of that many bytes where they fit and leave no more room than is usual; nothing for no frames.
    QByteArray joined(qsizetype size) const;

    QList<Frame> having(const std::vector<std::string_view> &ids) const;
    void remove(const std::vector<std::string_view> &ids);
};

} // namespace cantorel
