#pragma once

#include "base/Pipeline.h"
#include "base/Subscription.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>
#include <vector>

namespace halvo {

/// A value that announces every assignment, equal or not. Main thread only.
///
/// Subscribers run first, in subscription order, with the new value while `get()` still returns the
/// old one; then the value is stored; then the `didChange` observers run. Assigning a property from
/// one of its own subscribers is a programming error; assigning another one is fine.
template <typename T> class Published {
  public:
    Published() = default;
    explicit Published(T value) : value_(std::move(value)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& get() const { return value_; }

    void set(T value) {
        assert(!announcing_ && "a property was assigned from its own subscriber");
        announcing_ = true;
        announce(*subscribers_, value);
        announcing_ = false;
        value_ = std::move(value);
        // By design a copy: an observer may assign again.
        const T stored = value_;
        announce(*observers_, stored);
    }

    /// Copies the value, lets `edit` change the copy and assigns it.
    template <typename Edit> void modify(Edit edit) {
        T copy = value_;
        edit(copy);
        set(std::move(copy));
    }

    /// Calls `handler` with the current value now, and with each new one before it is stored.
    Subscription subscribe(Handler<T> handler) {
        auto entry = std::make_shared<Entry>(std::move(handler));
        subscribers_->push_back(entry);
        auto subscription = cancellation(subscribers_, entry);
        entry->handler(value_);
        return subscription;
    }

    /// Calls `handler` after each change has taken effect; not called with the current value.
    Subscription didChange(Handler<T> handler) {
        auto entry = std::make_shared<Entry>(std::move(handler));
        observers_->push_back(entry);
        return cancellation(observers_, entry);
    }

    /// Starts a chain of operators. The published value must outlive the call to `subscribe`.
    Pipeline<T> pipe() {
        return Pipeline<T>([this](Handler<T> handler) { return subscribe(std::move(handler)); });
    }

  private:
    struct Entry {
        explicit Entry(Handler<T> call) : handler(std::move(call)) {}
        Handler<T> handler;
        bool cancelled = false;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    static void announce(const Entries& entries, const T& value) {
        // A copy: handlers may subscribe and cancel while this runs.
        const Entries current = entries; // NOLINT(performance-unnecessary-copy-initialization)
        for (const auto& entry : current) {
            if (!entry->cancelled) entry->handler(value);
        }
    }

    static Subscription cancellation(const std::shared_ptr<Entries>& entries,
                                     const std::shared_ptr<Entry>& entry) {
        return Subscription([entries = std::weak_ptr(entries), entry] {
            entry->cancelled = true;
            if (auto alive = entries.lock()) std::erase(*alive, entry);
        });
    }

    T value_{};
    bool announcing_ = false;
    std::shared_ptr<Entries> subscribers_ = std::make_shared<Entries>();
    std::shared_ptr<Entries> observers_ = std::make_shared<Entries>();
};

} // namespace halvo
