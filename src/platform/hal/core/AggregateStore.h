#pragma once

#include "platform/hal/HardwareBackend.h"

namespace cantorel::hal {

// The aggregate devices that were made and not destroyed: they outlive the process in one file of the state folder.
// Owned and locked by ObjectTable.
class AggregateStore {
public:
    // file: read now; a missing or damaged one holds nothing.
    explicit AggregateStore(const QString &file);

    const std::vector<AggregateSpec> &all() const { return mSpecs; }
    const AggregateSpec *find(const QString &uid) const;
    // Adds an aggregate or replaces the one of its UID, and keeps it. False when it could not be written; it holds all
    // the same while the program runs.
    bool put(const AggregateSpec &spec);
    void remove(const QString &uid);

private:
    bool save() const;

    QString mFile;
    std::vector<AggregateSpec> mSpecs;
};

} // namespace cantorel::hal
