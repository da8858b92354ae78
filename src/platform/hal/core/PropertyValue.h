#pragma once

#include "platform/hal/AudioHardwareTypes.h"

#include <cstring>
#include <optional>
#include <vector>

namespace cantorel::hal {

// The value of a property before it is handed out: plain bytes, or one object that becomes a reference of the caller's.
class PropertyValue {
public:
    template <class T> static PropertyValue ofArray(const std::vector<T> &values) {
        PropertyValue value;
        value.mBytes.resize(values.size() * sizeof(T));
        if (!values.empty())
            std::memcpy(value.mBytes.data(), values.data(), value.mBytes.size());
        return value;
    }
    template <class T> static PropertyValue of(const T &plain) { return ofArray(std::vector<T>{plain}); }
    static PropertyValue ofText(const QString &text, bool asBytes);
    static PropertyValue ofList(const QStringList &list);
    // An AudioBufferList with one buffer of the channels, or with none; the data is null.
    static PropertyValue ofChannels(int channels);

    std::uint32_t size() const; // bytes
    // Writes to data, which has room for *size bytes, and sets *size to what was written.
    OSStatus copyTo(std::uint32_t *size, void *data) const;

private:
    std::vector<std::byte> mBytes;
    bool mMayBeCut = false; // a C string: fits itself to the room
    std::optional<QString> mText;
    std::optional<QStringList> mList;
};

} // namespace cantorel::hal
