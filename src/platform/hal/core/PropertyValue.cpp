#include "platform/hal/core/PropertyValue.h"

#include <algorithm>

namespace cantorel::hal {

PropertyValue PropertyValue::ofText(const QString &text, bool asBytes) {
    PropertyValue value;
    if (asBytes) {
        const QByteArray utf8 = text.toUtf8();
        value = ofArray(std::vector<char>(utf8.constData(), utf8.constData() + utf8.size() + 1));
        value.mMayBeCut = true;
    } else {
        value.mText = text;
    }
    return value;
}

PropertyValue PropertyValue::ofList(const QStringList &list) {
    PropertyValue value;
    value.mList = list;
    return value;
}

PropertyValue PropertyValue::ofChannels(int channels) {
    AudioBufferList list = {};
    list.mNumberBuffers = channels > 0 ? 1 : 0;
    list.mBuffers[0].mNumberChannels = static_cast<std::uint32_t>(channels);
    PropertyValue value = of(list);
    value.mBytes.resize(audioBufferListSize(list.mNumberBuffers));
    return value;
}

std::uint32_t PropertyValue::size() const {
    return mText || mList ? sizeof(void *) : static_cast<std::uint32_t>(mBytes.size());
}

OSStatus PropertyValue::copyTo(std::uint32_t *size, void *data) const {
    if (mMayBeCut && *size > 0) {
        const std::size_t written = std::min<std::size_t>(*size, mBytes.size());
        std::memcpy(data, mBytes.data(), written);
        static_cast<char *>(data)[written - 1] = '\0';
        *size = static_cast<std::uint32_t>(written);
        return kAudioHardwareNoError;
    }
    if (*size < this->size())
        return kAudioHardwareBadPropertySizeError;
    *size = this->size();
    // The reference is the caller's, who takes it with adoptRef().
    if (mText) {
        const CFStringRef reference = new QString(*mText);
        std::memcpy(data, &reference, kReferenceSize);
    } else if (mList) {
        const CFArrayRef reference = new QStringList(*mList);
        std::memcpy(data, &reference, kReferenceSize);
    } else if (!mBytes.empty()) {
        std::memcpy(data, mBytes.data(), mBytes.size());
    }
    return kAudioHardwareNoError;
}

} // namespace cantorel::hal
