#include "offline/OfflineMachine.h"

#include "nowplaying/AutoGenreController.h"
#include "nowplaying/NowPlayingMonitor.h"
#include "platform/VirtualOutput.h"

#include <chrono>
#include <cmath>
#include <numbers>
#include <utility>

namespace halvo {

using namespace std::chrono_literals;

OfflineMachine::OfflineMachine() {
    const auto speakers = fake_.audioHardware.add("speakers", "Built-in Speakers");
    (void)fake_.audioHardware.add("headphones", "Studio Headphones");
    fake_.audioHardware.changeDefault(speakers);
    (void)fake_.audioHardware.add(kVirtualDeviceUID, "Halvo Virtual Output");
    fake_.sharedMemory.createRing(48000, 2, 8192);
    delegate_ = AppDelegate::create(fake_.platform());
    delegate_->applicationDidFinishLaunching();
    advance(2s);
    auto& presets = delegate_->presetManager();
    presets.activate(presets.presets.get().front());
    presets.setOutputVolume(0.72F);
}

OfflineMachine::~OfflineMachine() {
    fake_.mainQueue.discard();
}

PanelHost OfflineMachine::host(VolumeTaper taper) {
    return {.mainQueue = fake_.mainQueue, .volumeTaper = taper, .quit = [this] {
                if (!std::exchange(hasQuit_, true)) delegate_->applicationWillTerminate();
            }};
}

void OfflineMachine::moveSpectrum(double seconds) {
    SpectrumAnalyzer::BandLevels levels{};
    for (std::size_t band = 0; band < levels.size(); ++band) {
        const double place = static_cast<double>(band);
        const double slow = std::sin(seconds * (1.3 + 0.21 * place) + 1.7 * place);
        const double fast =
            std::sin(seconds * (7.0 + 0.9 * place) + 2.0 * std::numbers::pi * place / 3);
        levels[band] = static_cast<float>(0.42 - 0.02 * place + 0.2 * slow + 0.08 * fast);
    }
    delegate_->spectrumData().bandLevels.set(levels);
}

void OfflineMachine::playTrack(const std::string& title, const std::string& artist) {
    auto& monitor = delegate_->nowPlayingMonitor();
    monitor.currentTrack.set(
        NowPlayingTrack{title, artist, std::nullopt, std::nullopt, std::nullopt});
    monitor.isPlaying.set(true);
}

void OfflineMachine::unplugOutputs() {
    for (const auto* uid : {"speakers", "headphones"}) {
        if (const auto device = fake_.audioHardware.deviceForUID(uid))
            fake_.audioHardware.remove(*device);
    }
    advance(2s);
}

} // namespace halvo
