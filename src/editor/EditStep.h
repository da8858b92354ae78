#pragma once

#include "editor/models/CutList.h"
#include "platform/media/asset/Asset.h"

#include <QList>
#include <QString>
#include <QUrl>

namespace cantorel {

// What is open in the editor at one moment.
struct EditStep {
    media::AssetPointer asset;
    QUrl url; // of the file that it began with
    QString name;
    QList<CutList::Range> cuts;
    double head = 0; // seconds
    double viewStart = 0, zoom = 1;
};

} // namespace cantorel
