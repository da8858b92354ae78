#include "platform/foundation/SerialWorker.h"

#include <gtest/gtest.h>

#include <future>
#include <vector>

namespace cantorel::foundation {
namespace {

TEST(SerialWorker, DoesWhatIsNotClearedInOrderAndAllOfItBeforeItEnds) {
    std::vector<int> done;
    std::promise<void> begun, mayEnd;
    {
        SerialWorker worker;
        const auto add = [&](int number) { worker.start([&done, number] { done.push_back(number); }); };
        worker.start([&] {
            begun.set_value();
            mayEnd.get_future().wait();
        });
        begun.get_future().wait();
        add(1);
        worker.clear();
        add(2);
        add(3);
        mayEnd.set_value();
        worker.finish();
        EXPECT_EQ(done, (std::vector{2, 3}));
        add(4); // It goes on.
        add(5);
    }
    EXPECT_EQ(done, (std::vector{2, 3, 4, 5}));
}

} // namespace
} // namespace cantorel::foundation
