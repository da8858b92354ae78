#pragma once

#include "tags/SplicedFile.h"

#include <taglib/tiostream.h>

namespace cantorel {

// A file that is edited, as TagLib reads and writes one. One thread.
class SplicedStream : public TagLib::IOStream {
public:
    // The file outlives it.
    explicit SplicedStream(SplicedFile &file) : mFile(file) {}

    TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector &data) override;
    void insert(const TagLib::ByteVector &data, unsigned long start, unsigned long replace) override;
    void removeBlock(unsigned long start, unsigned long length) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position from) override;
    long tell() const override { return mPosition; }
    long length() override { return mFile.size(); }
    void truncate(long length) override;

private:
    SplicedFile &mFile;
    long mPosition = 0;
};

} // namespace cantorel
