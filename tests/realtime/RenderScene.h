#pragma once

#include "audio/AudioEngine.h"
#include "platform/fake/FakePlatform.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace halvo::test {

/// A running engine over a ring in memory, and a main thread that changes everything it may change
/// between one render cycle and the next.
class RenderScene {
  public:
    /// One render cycle, after what the main thread does ahead of it.
    struct Cycle {
        const char* name;
        std::uint32_t frames;
        std::uint32_t channels;
        void (*prepare)(RenderScene&);
    };

    RenderScene();
    RenderScene(const RenderScene&) = delete;
    RenderScene& operator=(const RenderScene&) = delete;

    static std::span<const Cycle> cycles();

    /// Prepares every cycle on this thread and renders it on another, in turn. `enter` runs on the
    /// render thread ahead of the first cycle, `renderOne` wraps each, `leave` follows the last.
    /// Between the cycles the render thread spins: it makes no system call of its own.
    void run(const std::function<void()>& enter, void (*renderOne)(void (*)(void*), void*),
             const std::function<void()>& leave);

    FakePlatform platform;
    AudioEngine engine;
    std::vector<float> played; ///< what the last cycle rendered

    /// The driver writes this many frames of a loud sine.
    void write(std::uint32_t frames);

  private:
    void render(const Cycle& cycle) noexcept;

    std::vector<float> buffer_;
    std::atomic<std::size_t> prepared_{0}; ///< cycles that the main thread has prepared
    std::atomic<std::size_t> rendered_{0}; ///< cycles that the render thread has finished
};

} // namespace halvo::test
