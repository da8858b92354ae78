#include "platform/foundation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace cantorel::foundation {
namespace {

inline constexpr NotificationName<int> kNumber{"number"};
inline constexpr NotificationName<int> kOther{"other"};

TEST(NotificationCenter, OnlySubscribersOfTheNameAreToldInTheirOrderWhileTheyHoldTheirHandle) {
    NotificationCenter center;
    std::vector<int> heard;
    auto first = center.subscribe<int>(kNumber, [&](int n) { heard.push_back(n); });
    {
        const auto second = center.subscribe<int>(kNumber, [&](int n) { heard.push_back(10 * n); });
        center.post(kNumber, 1);
    }
    center.post(kNumber, 2);
    center.post(kOther, 3);
    first.cancel();
    center.post(kNumber, 4);
    EXPECT_EQ(heard, (std::vector{1, 10, 2}));
}

TEST(NotificationCenter, AReceiverMaySubscribeCancelAndPost) {
    NotificationCenter center;
    std::vector<int> heard;
    NotificationCenter::Subscription second, third;
    const auto first = center.subscribe<int>(kNumber, [&](int n) {
        second.cancel();
        if (n == 1) {
            third = center.subscribe<int>(kNumber, [&](int m) { heard.push_back(100 + m); });
            center.post(kNumber, 2);
        }
    });
    second = center.subscribe<int>(kNumber, [&](int n) { heard.push_back(n); });
    center.post(kNumber, 1);
    EXPECT_EQ(heard, (std::vector{102}));
}

TEST(NotificationCenter, ASubscriptionMayOutliveTheCentre) {
    std::optional<NotificationCenter> center(std::in_place);
    auto subscription = center->subscribe<int>(kNumber, [](int) {});
    center.reset();
    subscription.cancel();
}

} // namespace
} // namespace cantorel::foundation
