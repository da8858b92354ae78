#include "platform/foundation/ErrorReason.h"

#include <cerrno>

namespace cantorel::foundation {

namespace {

constexpr SentenceKey kFull("ReasonFull");
constexpr SentenceKey kRights("ReasonRights");
constexpr SentenceKey kReadOnly("ReasonReadOnly");
constexpr SentenceKey kMissing("ReasonMissing");
constexpr SentenceKey kDevice("ReasonDevice");
constexpr SentenceKey kAway("ReasonAway");
constexpr SentenceKey kTaken("ReasonTaken");
constexpr SentenceKey kName("ReasonName");
constexpr SentenceKey kManyFiles("ReasonManyFiles");
constexpr SentenceKey kBusy("ReasonBusy");
constexpr SentenceKey kFolder("ReasonFolder");
constexpr SentenceKey kOther("ReasonOther", "Number");

} // namespace

Sentence errorReason(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return kFull();
    case EACCES:
    case EPERM:
        return kRights();
    case EROFS:
        return kReadOnly();
    case ENOENT:
    case ENOTDIR:
        return kMissing();
    case EIO:
        return kDevice();
    case ENODEV:
    case ENXIO:
    case ENOTCONN:
    case ESTALE:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case EREMOTEIO:
        return kAway();
    case EEXIST:
        return kTaken();
    case ENAMETOOLONG:
        return kName();
    case EMFILE:
    case ENFILE:
        return kManyFiles();
    case EBUSY:
    case ETXTBSY:
        return kBusy();
    case EISDIR:
        return kFolder();
    default:
        return kOther(QString::number(error));
    }
}

} // namespace cantorel::foundation
