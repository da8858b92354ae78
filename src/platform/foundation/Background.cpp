#include "platform/foundation/Background.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace cantorel::foundation {

void standBack() {
    constexpr int kNice = 10, kThread = 1, kLowestBestEffort = 2 << 13 | 7; // as setpriority and ioprio_set count
    const auto thread = ::syscall(SYS_gettid);
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(thread), kNice);
    ::syscall(SYS_ioprio_set, kThread, thread, kLowestBestEffort);
}

} // namespace cantorel::foundation
