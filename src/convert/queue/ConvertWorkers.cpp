#include "convert/queue/ConvertWorkers.h"

#include "log/GuardedAction.h"
#include "platform/foundation/Background.h"

#include <utility>

namespace cantorel {

ConvertWorkers::ConvertWorkers(int threads) { mPool.setMaxThreadCount(threads); }

ConvertWorkers::~ConvertWorkers() {
    mPool.clear();
    mPool.waitForDone();
}

void ConvertWorkers::start(std::function<void()> job) {
    mPool.start([job = std::move(job)] {
        foundation::standBack();
        (void)guarded("converter", job); // logged there
    });
}

void ConvertWorkers::tell(std::function<void()> action) {
    QMetaObject::invokeMethod(
        this, [action = std::move(action)] { (void)guarded("converter", action); }, // logged there
        Qt::QueuedConnection);
}

} // namespace cantorel
