#pragma once

#include <cstdint>
#include <functional>
#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

namespace halvo::driver {

/// The frame rate at which the sound server runs its graph, from its settings. Main loop only.
class ClockRate {
  public:
    /// `changed` is called when another rate becomes known.
    explicit ClockRate(std::function<void()> changed);
    ~ClockRate();
    ClockRate(const ClockRate&) = delete;
    ClockRate& operator=(const ClockRate&) = delete;

    /// To be told of every object of the server.
    void consider(pw_registry* registry, std::uint32_t id, const char* type,
                  const spa_dict* properties);

    /// Frames per second; the server's own default where it does not say.
    std::uint32_t framesPerSecond() const;

  private:
    static int onProperty(void* data, std::uint32_t subject, const char* key, const char* type,
                          const char* value);

    std::function<void()> changed_;
    pw_metadata* settings_ = nullptr;
    spa_hook listener_{};
    std::uint32_t rate_ = 0;
    std::uint32_t forcedRate_ = 0;
};

} // namespace halvo::driver
