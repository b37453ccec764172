#include "realtime/RenderScene.h"

#include "realtime/ForkedRun.h"

#include <array>
#include <cmath>
#include <numbers>
#include <thread>

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

const std::array kCycles{
    RenderScene::Cycle{"empty ring", 1024, 2, kNothing},
    RenderScene::Cycle{"a full cycle", 1024, 2, [](RenderScene& scene) { scene.write(1024); }},
    RenderScene::Cycle{"a short ring", 1024, 2, [](RenderScene& scene) { scene.write(100); }},
    RenderScene::Cycle{"one frame", 1, 2, [](RenderScene& scene) { scene.write(1); }},
    RenderScene::Cycle{"no frame", 0, 2, [](RenderScene& scene) { scene.write(1); }},
    RenderScene::Cycle{"an odd count", 333, 2, [](RenderScene& scene) { scene.write(400); }},
    RenderScene::Cycle{"new bands", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.eq().setBands(
                               std::array<float, 10>{12, -12, 6, -6, 3, -3, 1, -1, 0, 9});
                       }},
    RenderScene::Cycle{"a loud preset", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.setCurrentPreset(preset(12));
                       }},
    RenderScene::Cycle{"no preset", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.setCurrentPreset(std::nullopt);
                       }},
    RenderScene::Cycle{"a lower volume", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.setOutputVolume(0.25F);
                       }},
    RenderScene::Cycle{"switched off", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.setEQEnabled(false);
                       }},
    RenderScene::Cycle{"switched on", 512, 2,
                       [](RenderScene& scene) {
                           scene.write(512);
                           scene.engine.setEQEnabled(true);
                       }},
    RenderScene::Cycle{"the largest cycle", kLargestCycle, 2,
                       [](RenderScene& scene) { scene.write(kLargestCycle); }},
    RenderScene::Cycle{"an overrun", 1024, 2,
                       [](RenderScene& scene) { scene.write(kCapacity + 4096); }},
    RenderScene::Cycle{"a mono unit", 1024, 1, [](RenderScene& scene) { scene.write(1024); }},
    RenderScene::Cycle{"a restarted driver", 1024, 2,
                       [](RenderScene& scene) {
                           storeShared<std::uint64_t>(
                               scene.platform.sharedMemory.header().writeIndex, 7);
                       }},
    RenderScene::Cycle{"a ring that is not ready", 1024, 2,
                       [](RenderScene& scene) {
                           storeShared<std::uint32_t>(scene.platform.sharedMemory.header().capacity,
                                                      0);
                       }},
    RenderScene::Cycle{"a ring that claims too much", 1024, 2,
                       [](RenderScene& scene) {
                           storeShared<std::uint32_t>(scene.platform.sharedMemory.header().capacity,
                                                      kCapacity + 1);
                       }},
    RenderScene::Cycle{"the ring is back", 1024, 2,
                       [](RenderScene& scene) {
                           storeShared(scene.platform.sharedMemory.header().capacity, kCapacity);
                           scene.write(1024);
                       }},
};

} // namespace

RenderScene::RenderScene()
    : engine(platform.sharedMemory, platform.outputUnits, platform.standardOutput,
             [](const std::string&) { return std::optional<AudioDeviceID>(); }),
      buffer_(std::size_t{kLargestCycle} * 2) {
    platform.sharedMemory.createRing(48000, 2, kCapacity);
    engine.start("");
}

std::span<const RenderScene::Cycle> RenderScene::cycles() {
    return kCycles;
}

void RenderScene::write(std::uint32_t frames) {
    std::vector<float> sine(std::size_t{frames} * 2);
    for (std::size_t i = 0; i < sine.size(); ++i) {
        sine[i] = 0.9F * std::sin(static_cast<float>(i / 2) * std::numbers::pi_v<float> / 24.0F);
    }
    platform.sharedMemory.write(sine);
}

void RenderScene::render(const Cycle& cycle) noexcept {
    RenderBuffer buffer{cycle.channels, cycle.frames * cycle.channels * 4, buffer_.data()};
    RenderBufferList list{1, &buffer};
    std::uint32_t flags = 0;
    const RenderTimestamp timestamp;
    renderCallback(&engine, &flags, &timestamp, 0, cycle.frames, &list);
}

void RenderScene::run(const std::function<void()>& enter, void (*renderOne)(void (*)(void*), void*),
                      const std::function<void()>& leave) {
    struct Turn {
        RenderScene& scene;
        const Cycle& cycle;
    };
    std::thread renderThread([&] {
        enter();
        for (std::size_t i = 0; i < kCycles.size(); ++i) {
            while (prepared_.load(std::memory_order_acquire) <= i) {
            }
            notePlace(kCycles[i].name);
            Turn turn{*this, kCycles[i]};
            renderOne(
                [](void* context) {
                    const auto& [scene, cycle] = *static_cast<Turn*>(context);
                    scene.render(cycle);
                },
                &turn);
            rendered_.store(i + 1, std::memory_order_release);
        }
        leave();
    });
    for (std::size_t i = 0; i < kCycles.size(); ++i) {
        kCycles[i].prepare(*this);
        prepared_.store(i + 1, std::memory_order_release);
        while (rendered_.load(std::memory_order_acquire) <= i)
            std::this_thread::yield();
    }
    renderThread.join();
}

} // namespace halvo::test
