#pragma once

#include "base/Subscription.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace halvo {

template <typename T> using Handler = std::function<void(const T&)>;

/// A chain of operators between a published value and its subscriber, read from left to right:
/// `value.pipe().removeDuplicates().dropFirst().subscribe(handler)`. The order matters.
template <typename T> class Pipeline {
  public:
    using Source = std::function<Subscription(Handler<T>)>;

    explicit Pipeline(Source source) : source_(std::move(source)) {}

    /// Passes a value on only when it differs from the last one that passed here.
    Pipeline removeDuplicates() && {
        return Pipeline([source = std::move(source_)](Handler<T> next) {
            auto last = std::make_shared<std::optional<T>>();
            return source([last, next = std::move(next)](const T& value) {
                // Spelled out: nested optionals would compare differently.
                if (last->has_value() && **last == value) return;
                last->emplace(value);
                next(value);
            });
        });
    }

    /// Drops the first value, which is the current one at subscription time.
    Pipeline dropFirst() && {
        return Pipeline([source = std::move(source_)](Handler<T> next) {
            auto dropped = std::make_shared<bool>(false);
            return source([dropped, next = std::move(next)](const T& value) {
                if (std::exchange(*dropped, true)) next(value);
            });
        });
    }

    /// For optionals: drops absent values and passes the contents on. Keeps duplicates.
    auto dropAbsent() &&
        requires requires { typename T::value_type; }
    {
        using Value = typename T::value_type;
        return Pipeline<Value>([source = std::move(source_)](Handler<Value> next) {
            return source([next = std::move(next)](const T& value) {
                if (value) next(*value);
            });
        });
    }

    /// Delivers each value later on a queue (anything with `async`). The queue must outlive the
    /// subscription; values still queued when it ends are dropped.
    template <typename Queue> Pipeline receiveOn(Queue& queue) && {
        return Pipeline([source = std::move(source_), &queue](Handler<T> next) {
            auto target = std::make_shared<Handler<T>>(std::move(next));
            // The source alone keeps the handler alive.
            return source([&queue, target](const T& value) {
                queue.async([weak = std::weak_ptr(target), value] {
                    if (const auto alive = weak.lock()) (*alive)(value);
                });
            });
        });
    }

    /// Passes on the last value of a burst once none has followed for `delay`, on a queue that
    /// outlives the subscription. A value still due when the subscription ends is dropped.
    template <typename Queue, typename Delay> Pipeline debounce(Queue& queue, Delay delay) && {
        return Pipeline([source = std::move(source_), &queue, delay](Handler<T> next) {
            auto due = std::make_shared<Due>(std::move(next));
            // The source alone keeps it alive.
            return source([due, &queue, delay](const T& value) {
                due->timer = queue.afterCancellable(delay, [weak = std::weak_ptr(due), value] {
                    if (const auto alive = weak.lock()) alive->next(value);
                });
            });
        });
    }

    Subscription subscribe(Handler<T> handler) && { return source_(std::move(handler)); }

  private:
    struct Due {
        explicit Due(Handler<T> handler) : next(std::move(handler)) {}
        Handler<T> next;
        Subscription timer;
    };

    Source source_;
};

} // namespace halvo
