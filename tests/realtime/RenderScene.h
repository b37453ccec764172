#pragma once

#include "audio/AudioEngine.h"
#include "driver/RingWriter.h"
#include "fake/FakePlatform.h"
#include "linux/pipewire/PipeWireRenderer.h"
#include "loudness/OutputGate.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace halvo::test {

/// All code that runs on a real-time thread, on fakes: the engine under the output unit's renderer
/// over a ring in memory, and the driver's writer. Between cycles the main thread changes
/// everything it may change.
class RenderScene {
  public:
    /// One cycle, after what the main thread does ahead of it.
    struct Cycle {
        const char* name;
        std::uint32_t frames;
        void (*prepare)(RenderScene&);
        void (*run)(RenderScene&, std::uint32_t frames) noexcept = render;
    };

    RenderScene();
    RenderScene(const RenderScene&) = delete;
    RenderScene& operator=(const RenderScene&) = delete;

    static std::span<const Cycle> cycles();

    /// Alternately prepares a cycle on this thread and renders it on another. `enter` runs on the
    /// render thread ahead of the first cycle, `renderOne` wraps each, `leave` follows the last.
    /// Between the cycles the render thread spins: it makes no system call of its own.
    void run(const std::function<void()>& enter, void (*renderOne)(void (*)(void*), void*),
             const std::function<void()>& leave);

    FakePlatform platform;
    AudioEngine engine;
    OutputGate gate;
    std::unique_ptr<driver::RingWriter> driver;

    /// The output unit has this many channels from now on. Not more than two.
    void setChannels(std::uint32_t channels);

    /// The driver writes this many frames of a loud sine.
    void write(std::uint32_t frames);

  private:
    static void render(RenderScene& scene, std::uint32_t frames) noexcept;
    static void drive(RenderScene& scene, std::uint32_t frames) noexcept;

    PipeWireRenderer renderer_{gate};
    std::uint64_t clock_ = 0; ///< frames
    std::vector<float> buffer_;
    std::atomic<std::size_t> prepared_{0}; ///< cycles that the main thread has prepared
    std::atomic<std::size_t> rendered_{0}; ///< cycles that the render thread has finished
};

} // namespace halvo::test
