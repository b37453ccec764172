#pragma once

#include "linux/pipewire/PipeWireHandles.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace halvo {

/// The session's default sink, in the server's metadata. With the connection's lock.
class PipeWireDefaults {
  public:
    /// `changed` runs on the connection's thread.
    PipeWireDefaults(pw_registry& registry, std::uint32_t globalID, std::function<void()> changed);
    ~PipeWireDefaults();

    std::uint32_t globalID() const { return globalID_; }
    /// The name of the sink that is the default.
    std::optional<std::string> current() const;
    /// The name of the configured sink.
    std::optional<std::string> configured() const;
    /// Sets the configured default or removes it; false while disconnected.
    bool configure(const std::optional<std::string>& sinkName);

  private:
    static const pw_metadata_events& events();
    void propertyChanged(const char* key, const char* value);

    const std::uint32_t globalID_;
    std::function<void()> changed_;
    std::map<std::string, std::string, std::less<>> names_;
    PipeWireProxy<pw_metadata> proxy_;
    PipeWireHook hook_;
};

} // namespace halvo
