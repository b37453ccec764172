#include "realtime/RenderScene.h"

#include "realtime/ForkedRun.h"

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace halvo::test {

namespace {

constexpr std::uint32_t kCapacity = 16384;
constexpr std::uint32_t kLargestCycle = 8192; // the server's own limit

EQPreset preset(float preamp) {
    EQPreset result;
    result.name = "A name too long to be kept inside the string itself";
    result.preamp = preamp;
    result.bands = std::vector<float>(10, 3.0F);
    return result;
}

constexpr auto kNothing = [](RenderScene&) {};

RingHeader& header(RenderScene& scene) {
    return scene.platform.sharedMemory.header();
}

} // namespace

std::span<const RenderScene::Cycle> RenderScene::cycles() {
    using Scene = RenderScene;
    static const std::array table{
        Cycle{"an empty ring", 1024, kNothing},
        Cycle{"a full cycle", 1024, [](Scene& scene) { scene.write(1024); }},
        Cycle{"a short ring", 1024, [](Scene& scene) { scene.write(100); }},
        Cycle{"one frame", 1, [](Scene& scene) { scene.write(1); }},
        Cycle{"no frame", 0, [](Scene& scene) { scene.write(1); }},
        Cycle{"an odd count", 333, [](Scene& scene) { scene.write(400); }},
        Cycle{"new bands", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.eq().setBands(
                      std::array<float, 10>{12, -12, 6, -6, 3, -3, 1, -1, 0, 9});
              }},
        Cycle{"a loud preset", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.setCurrentPreset(preset(12));
              }},
        Cycle{"no preset", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.setCurrentPreset(std::nullopt);
              }},
        Cycle{"a lower volume", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.setOutputVolume(0.25F);
              }},
        Cycle{"switched off", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.setEQEnabled(false);
              }},
        Cycle{"switched on", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.engine.setEQEnabled(true);
              }},
        Cycle{"a gate that closes", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.gate.close();
              }},
        Cycle{"a gate that opens", 512,
              [](Scene& scene) {
                  scene.write(512);
                  scene.gate.open();
              }},
        Cycle{"the largest cycle", kLargestCycle, [](Scene& scene) { scene.write(kLargestCycle); }},
        Cycle{"an overrun", 1024, [](Scene& scene) { scene.write(kCapacity + 4096); }},
        Cycle{"a mono unit", 1024, [](Scene& scene) { scene.setChannels(1); }},
        Cycle{"a stereo unit", 1024,
              [](Scene& scene) {
                  scene.setChannels(2);
                  scene.write(1024);
              }},
        Cycle{"a restarted driver", 1024,
              [](Scene& scene) { storeShared(header(scene).writeIndex, std::uint64_t{7}); }},
        Cycle{"a ring that is not ready", 1024,
              [](Scene& scene) { storeShared(header(scene).capacity, std::uint32_t{0}); }},
        Cycle{"a ring that claims too much", 1024,
              [](Scene& scene) { storeShared(header(scene).capacity, kCapacity + 1); }},
        Cycle{"the ring is back", 1024,
              [](Scene& scene) {
                  storeShared(header(scene).capacity, kCapacity);
                  scene.write(1024);
              }},
        Cycle{"the driver writes", 1024, kNothing, drive},
        Cycle{"the driver writes over the end", kLargestCycle, kNothing, drive},
        Cycle{"the driver writes while it says another rate", 1024,
              [](Scene& scene) { scene.driver->publish(44100); }, drive},
    };
    return table;
}

RenderScene::RenderScene()
    : engine(platform.sharedMemory, platform.outputUnits, platform.mainQueue,
             platform.standardOutput,
             [](const std::string&) { return std::optional<AudioDeviceID>(); }),
      buffer_(std::size_t{kLargestCycle} * 2) {
    platform.sharedMemory.createRing(48000, 2, kCapacity);
    engine.start("");
    setChannels(2);

    const std::string name = "/halvo_realtime_" + std::to_string(::getpid());
    driver = driver::RingWriter::open(name).value();
    ::shm_unlink(name.c_str()); // a scene that ends in the middle leaves nothing behind
    driver->publish(48000);
}

void RenderScene::setChannels(std::uint32_t channels) {
    renderer_.prepare({48000, channels}, renderCallback, &engine);
}

void RenderScene::write(std::uint32_t frames) {
    std::vector<float> sine;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const float angle = static_cast<float>(frame) * std::numbers::pi_v<float> / 24.0F;
        sine.insert(sine.end(), 2, 0.9F * std::sin(angle));
    }
    platform.sharedMemory.write(sine);
}

void RenderScene::render(RenderScene& scene, std::uint32_t frames) noexcept {
    scene.renderer_.clock(1, scene.clock_, frames);
    scene.renderer_.render(scene.buffer_.data(), frames);
    scene.clock_ += frames;
}

void RenderScene::drive(RenderScene& scene, std::uint32_t frames) noexcept {
    scene.driver->write(scene.buffer_.data(), frames);
}

void RenderScene::run(const std::function<void()>& enter, void (*renderOne)(void (*)(void*), void*),
                      const std::function<void()>& leave) {
    struct Turn {
        RenderScene& scene;
        const Cycle& cycle;
    };
    const auto all = cycles();
    std::thread renderThread([&] {
        enter();
        for (std::size_t i = 0; i < all.size(); ++i) {
            while (prepared_.load(std::memory_order_acquire) <= i) {
            }
            notePlace(all[i].name);
            Turn turn{*this, all[i]};
            renderOne(
                [](void* context) {
                    const auto& [scene, cycle] = *static_cast<Turn*>(context);
                    cycle.run(scene, cycle.frames);
                },
                &turn);
            rendered_.store(i + 1, std::memory_order_release);
        }
        leave();
    });
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i].prepare(*this);
        prepared_.store(i + 1, std::memory_order_release);
        while (rendered_.load(std::memory_order_acquire) <= i)
            std::this_thread::yield();
    }
    renderThread.join();
}

} // namespace halvo::test
