#include "app/AppDelegate.h"

#include "app/RealDevices.h"
#include "platform/MainQueue.h"
#include "platform/StatusPublisher.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

namespace {

const EQPreset* findPreset(const std::vector<EQPreset>& presets, const std::optional<UUID>& id) {
    if (!id) return nullptr;
    const auto found = std::ranges::find(presets, *id, &EQPreset::id);
    return found == presets.end() ? nullptr : &*found;
}

} // namespace

void AppDelegate::setupAudioEngine() {
    connectMeters();
    const auto uid = originalOutputUID_ ? originalOutputUID_
                                        : findRealOutputDevice(deviceManager_.outputDevices.get());
    if (uid) {
        startEngine(*uid);
    } else {
        log_.write("No suitable hardware output device found");
    }
    subscribeToPresets();
    subscribeToDevices();
    // By design always the first preset of the list, whatever was active before.
    if (!presetManager_.presets.get().empty()) {
        presetManager_.activate(presetManager_.presets.get().front());
    }
}

/// Meter and analyser call on the main thread already.
void AppDelegate::connectMeters() {
    const auto weak = weak_from_this();
    audioEngine_.spectrum().onSpectrumUpdate = [weak](const auto& levels) {
        const auto delegate = weak.lock();
        if (!delegate) return;
        delegate->spectrumData_.bandLevels.set(levels);
        delegate->platform_.statusPublisher.setBandLevels(levels);
    };
    auto& meter = audioEngine_.meter();
    meter.onWaveformUpdate = [weak](const auto& history) {
        const auto delegate = weak.lock();
        if (!delegate) return;
        delegate->statusView_.waveformSamples.assign(history.begin(), history.end());
        delegate->statusView_.setNeedsDisplay();
    };
    meter.onLevelUpdate = [weak](float level) {
        if (const auto delegate = weak.lock()) delegate->statusView_.level = level;
    };
    meter.onRunningUpdate = [weak](bool isRunning) {
        const auto delegate = weak.lock();
        if (!delegate) return;
        delegate->statusView_.isIORunning = isRunning;
        delegate->statusView_.setNeedsDisplay();
    };
    meter.isIORunning = [weak] {
        const auto delegate = weak.lock();
        return delegate && delegate->audioEngine_.isRunning();
    };
}

void AppDelegate::setupSettingsBindings() {
    // One turn later: the accent is read from the settings, which store it after the announcement.
    auto& queue = platform_.mainQueue;
    cancellables_.push_back(
        appSettings_.showMenubarWaveform.pipe().receiveOn(queue).subscribe([this](bool show) {
            statusView_.showActiveWaveform = show;
            statusView_.setNeedsDisplay();
        }));
    cancellables_.push_back(appSettings_.accentColorHex.pipe().receiveOn(queue).subscribe(
        [this](const std::string& hex) {
            if (hex == AppSettings::kNativeAccent) {
                statusView_.waveformColor.reset();
            } else {
                statusView_.waveformColor = appSettings_.accentColor();
            }
            statusView_.setNeedsDisplay();
        }));
}

void AppDelegate::startEngine(const std::string& uid) {
    log_.write("Starting engine, outputting to: " + uid);
    maxOutDeviceVolume(uid);
    audioEngine_.start(uid);
    outputUID_ = uid;
    const bool connected = audioEngine_.ringBuffer().isConnected();
    log_.write(std::string("Engine started, ringBuffer connected: ") +
               (connected ? "true" : "false"));
}

void AppDelegate::subscribeToPresets() {
    auto& presets = presetManager_;
    cancellables_.push_back(presets.activePresetID.subscribe([this](const auto& id) {
        if (const auto* preset = findPreset(presetManager_.presets.get(), id)) applyPreset(*preset);
    }));
    cancellables_.push_back(presets.presets.subscribe([this](const auto& list) {
        // The list that is being published: the stored one is still the old one.
        const auto* preset = findPreset(list, presetManager_.activePresetID.get());
        if (preset) applyPreset(*preset);
    }));
    cancellables_.push_back(presets.preamp.subscribe([this](float preamp) {
        const auto id = presetManager_.activePresetID.get();
        if (!findPreset(presetManager_.presets.get(), id)) return;
        presetManager_.presets.modify(
            [&](auto& list) { std::ranges::find(list, *id, &EQPreset::id)->preamp = preamp; });
    }));
    cancellables_.push_back(presets.outputVolume.subscribe(
        [this](float volume) { audioEngine_.setOutputVolume(volume); }));
    cancellables_.push_back(
        presets.eqEnabled.subscribe([this](bool enabled) { audioEngine_.setEQEnabled(enabled); }));
}

void AppDelegate::subscribeToDevices() {
    cancellables_.push_back(
        deviceManager_.selectedDeviceID.pipe().removeDuplicates().dropFirst().subscribe(
            [this](const std::string& uid) {
                if (uid.empty() || uid == kVirtualDeviceUID) return;
                log_.write("Switching output to: " + uid);
                maxOutDeviceVolume(uid);
                rebuildOutputUnit(uid);
            }));
    cancellables_.push_back(deviceManager_.newlyConnectedDeviceUID.pipe().dropAbsent().subscribe(
        [this](const std::string& uid) {
            log_.write("New device connected: " + uid + ", switching");
            maxOutDeviceVolume(uid);
            rebuildOutputUnit(uid);
        }));
}

void AppDelegate::applyPreset(const EQPreset& preset) {
    audioEngine_.setCurrentPreset(preset);
    platform_.statusPublisher.setActivePreset(preset.name);
    audioEngine_.eq().setBands(preset.bands);
}

void AppDelegate::rebuildOutputUnit(const std::string& uid) {
    outputUID_ = uid;
    if (!audioEngine_.isRunning()) return;
    audioEngine_.disposeOutputUnit();
    audioEngine_.setupOutputUnit(uid);
}

} // namespace halvo
