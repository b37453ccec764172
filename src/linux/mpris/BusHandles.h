#pragma once

#include <memory>
#include <systemd/sd-bus.h>

namespace halvo::mpris {

struct BusDeleter {
    /// Closes without flushing.
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusDeleter>;

struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

struct SlotDeleter {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
/// A pending call, a match or an object; ends when destroyed.
using Slot = std::unique_ptr<sd_bus_slot, SlotDeleter>;

/// A bus error; owns its strings.
class BusError {
  public:
    BusError() = default;
    ~BusError() { sd_bus_error_free(&error_); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;

    sd_bus_error* get() { return &error_; }
    const char* text() const { return error_.message != nullptr ? error_.message : "no answer"; }

  private:
    sd_bus_error error_{};
};

} // namespace halvo::mpris
