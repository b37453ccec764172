#pragma once

#include <span>
#include <string>

namespace halvo {

/// The status that other programs can query, on systems that have an interface for it. Main thread
/// only.
class StatusPublisher {
  public:
    virtual ~StatusPublisher() = default;

    /// The name of the active preset; empty when none is.
    virtual void setActivePreset(const std::string& name) = 0;
    /// From 0 to 1, lowest band first; several times a second while sound is played.
    virtual void setBandLevels(std::span<const float> levels) = 0;
};

} // namespace halvo
