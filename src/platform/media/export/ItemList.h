#pragma once

#include "platform/media/BoxBuffer.h"
#include "platform/media/asset/Asset.h"

namespace cantorel::media {

// The tags of an M4A as a udta box, as players of music look for them; nothing when no item says anything. An item
// without text and data is passed over, and of several pictures the first is taken.
BoxBuffer itemList(const QList<MetadataItem> &items);

} // namespace cantorel::media
