#pragma once

#include <memory>
#include <systemd/sd-event.h>

namespace halvo::helper {

struct EventDeleter {
    void operator()(sd_event* event) const { sd_event_unref(event); }
};
using Event = std::unique_ptr<sd_event, EventDeleter>;

struct EventSourceDeleter {
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};
/// An event source of the loop, removed by the destructor.
using EventSource = std::unique_ptr<sd_event_source, EventSourceDeleter>;

} // namespace halvo::helper
