#include "base/Published.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

using namespace halvo;

TEST(Published, SubscribersSeeTheNewValueBeforeItIsStoredAndObserversAfter) {
    Published<int> value(1);
    std::vector<std::string> order;
    const auto note = [&](const char* who) {
        return [&, who](int now) {
            order.push_back(who + std::to_string(now) + "/" + std::to_string(value.get()));
        };
    };
    const auto first = value.subscribe(note("a"));
    const auto observer = value.didChange(note("o"));
    const auto second = value.subscribe(note("b"));
    value.set(2);
    value.set(2); // equal values are announced too
    EXPECT_EQ(order, (std::vector<std::string>{"a1/1", "b1/1", "a2/1", "b2/1", "o2/2", "a2/2",
                                               "b2/2", "o2/2"}));
}

TEST(Published, ASubscriberMayAssignAnotherProperty) {
    Published<int> source(0);
    Published<std::vector<int>> list;
    const auto writes =
        source.subscribe([&](int value) { list.modify([&](auto& all) { all.push_back(value); }); });
    source.set(5);
    EXPECT_EQ(list.get(), (std::vector<int>{0, 5}));
}

TEST(Published, ChangesOfSubscriptionsDuringAnAnnouncement) {
    Published<int> value(0);
    std::vector<std::string> order;
    Subscription victim;
    Subscription late;
    const auto killer = value.subscribe([&](int now) {
        if (now != 1) return;
        victim.cancel();
        late = value.subscribe([&](int seen) { order.push_back("late" + std::to_string(seen)); });
    });
    victim = value.subscribe([&](int) { order.emplace_back("victim"); });
    order.clear();
    value.set(1);
    EXPECT_EQ(order, std::vector<std::string>{"late0"})
        << "replayed once, not called in this round";
    value.set(2);
    EXPECT_EQ(order.back(), "late2");
}

TEST(Published, ASubscriptionMayOutliveItsPublisher) {
    Subscription subscription;
    {
        Published<int> value(0);
        subscription = value.subscribe([](int) {});
    }
    subscription.cancel();
}

TEST(Pipeline, TheOrderOfOperatorsMatters) {
    Published<std::string> value("x");
    std::vector<std::string> seen;
    const auto keep = [&](const std::string& text) { seen.push_back(text); };
    const auto subscription = value.pipe().removeDuplicates().dropFirst().subscribe(keep);
    value.set("x"); // the first value was dropped, but not forgotten
    value.set("y");
    value.set("y");
    value.set("x");
    EXPECT_EQ(seen, (std::vector<std::string>{"y", "x"}));
}

TEST(Pipeline, DropAbsentKeepsDuplicates) {
    Published<std::optional<int>> value;
    int calls = 0;
    const auto subscription = value.pipe().dropAbsent().subscribe([&](int) { ++calls; });
    value.set(3);
    value.set(std::nullopt);
    value.set(3);
    value.set(3);
    EXPECT_EQ(calls, 3);
}
