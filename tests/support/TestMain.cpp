// The entry point of every test program: a home folder of its own, an application object, then the tests.

#include "tests/support/TestHome.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#ifdef __SANITIZE_THREAD__
#include <cstdarg>

// QProcess starts its children on our own memory for a moment. The thread sanitizer takes that for a fork, marks the
// child's memory, which is ours, and from then on loses sight of our locks: its hook is passed by.
extern "C" int __clone(int (*run)(void *), void *stack, int flags, void *argument, ...);
extern "C" __attribute__((visibility("default"))) int clone(int (*run)(void *), void *stack, int flags, void *argument,
                                                            ...) {
    std::va_list more;
    va_start(more, argument);
    void *const parent = va_arg(more, void *);
    void *const storage = va_arg(more, void *);
    void *const child = va_arg(more, void *);
    va_end(more);
    return __clone(run, stack, flags, argument, parent, storage, child);
}
#endif

int main(int argc, char **argv) {
    const cantorel::test::TestHome home;
    if (!home.isValid())
        return 2;
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
