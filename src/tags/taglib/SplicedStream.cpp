#include "tags/taglib/SplicedStream.h"

#include <algorithm>

namespace cantorel {

TagLib::ByteVector SplicedStream::readBlock(unsigned long length) {
    const std::int64_t left = std::max<std::int64_t>(mFile.size() - mPosition, 0);
    TagLib::ByteVector data(static_cast<unsigned int>(std::min<std::int64_t>(left, static_cast<std::int64_t>(length))));
    if (!data.isEmpty())
        data.resize(static_cast<unsigned int>(mFile.readTo(data.data(), mPosition, data.size())));
    mPosition += data.size();
    return data;
}

void SplicedStream::writeBlock(const TagLib::ByteVector &data) {
    mFile.splice(mPosition, data.size(), QByteArray(data.data(), data.size()));
    mPosition += data.size();
}

void SplicedStream::insert(const TagLib::ByteVector &data, unsigned long start, unsigned long replace) {
    mFile.splice(static_cast<std::int64_t>(start), static_cast<std::int64_t>(replace),
                 QByteArray(data.data(), data.size()));
}

void SplicedStream::removeBlock(unsigned long start, unsigned long length) {
    mFile.splice(static_cast<std::int64_t>(start), static_cast<std::int64_t>(length), {});
}

void SplicedStream::seek(long offset, Position from) {
    const long base = from == Current ? mPosition : from == End ? static_cast<long>(mFile.size()) : 0;
    mPosition = std::max(0L, offset + base);
}

void SplicedStream::truncate(long length) { mFile.splice(length, mFile.size() - length, {}); }

} // namespace cantorel
