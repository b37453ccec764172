#include "presets/PresetManager.h"

#include "audio/BandFrequencies.h"
#include "platform/FileSystem.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "presets/FactoryPresets.h"
#include "presets/PresetCoding.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace halvo {

namespace {

constexpr const char* kOutputVolumeKey = "halvo_outputVolume";

} // namespace

PresetManager::PresetManager(FileSystem& files, UserDefaults& defaults, SystemLog& log)
    : files_(files), defaults_(defaults), log_(log) {
    const auto support = files_.applicationSupportDirectory();
    if (!support) std::abort(); // no other place for the user's presets
    const auto folder = *support / "Halvo";
    (void)files_.createDirectory(folder); // later writes then fail silently, by design
    storageURL_ = folder / "presets.json";
    load();
    ensureFactoryPresets();
    if (defaults_.contains(kOutputVolumeKey)) {
        setOutputVolume(defaults_.floatForKey(kOutputVolumeKey));
    }
}

void PresetManager::load() {
    const auto contents = files_.read(storageURL_);
    auto decoded = contents ? decodePresets(*contents) : std::nullopt;
    if (!decoded && files_.exists(storageURL_)) {
        // What somebody made is not overwritten, even if it cannot be read.
        isReadOnly_ = !files_.setAside(storageURL_);
    }
    if (decoded) presets.set(std::move(*decoded));
    if (presets.get().empty()) {
        presets.set(defaultPresets());
        save();
    }
}

void PresetManager::save() {
    if (isReadOnly_) return;
    // Failures are silent by design: the list in memory is the truth.
    if (const auto json = encodePresets(presets.get())) (void)files_.write(storageURL_, *json);
}

void PresetManager::ensureFactoryPresets() {
    std::set<std::string> names;
    for (const auto& preset : presets.get())
        names.insert(preset.name);
    std::vector<EQPreset> list = presets.get();
    for (auto& preset : defaultPresets()) {
        if (names.contains(preset.name)) continue;
        log_.write("Halvo: Added missing factory preset '" + preset.name + "'");
        list.push_back(std::move(preset));
    }
    if (list.size() == presets.get().size()) return;
    presets.set(std::move(list));
    save();
}

void PresetManager::setOutputVolume(float volume) {
    outputVolume.set(volume);
    defaults_.setFloat(kOutputVolumeKey, volume);
}

void PresetManager::activate(const EQPreset& preset) {
    // The id first: subscribers write a new preamp into the active preset.
    const float presetPreamp = preset.preamp;
    activePresetID.set(preset.id);
    preamp.set(presetPreamp);
}

std::optional<EQPreset> PresetManager::presetForDevice(const std::string& deviceUID) const {
    const auto& bindings = deviceBindings.get();
    const auto bound = bindings.find(deviceUID);
    if (bound == bindings.end()) return std::nullopt;
    const auto index = indexOf(presets.get(), bound->second);
    return index ? std::optional(presets.get()[*index]) : std::nullopt;
}

std::optional<EQPreset> PresetManager::presetNamed(const std::string& name) const {
    const auto found = std::ranges::find(presets.get(), name, &EQPreset::name);
    return found == presets.get().end() ? std::nullopt : std::optional(*found);
}

std::optional<EQPreset> PresetManager::activePreset() const {
    if (!activePresetID.get()) return std::nullopt;
    const auto index = indexOf(presets.get(), *activePresetID.get());
    return index ? std::optional(presets.get()[*index]) : std::nullopt;
}

void PresetManager::renamePreset(const EQPreset& preset, const std::string& name) {
    const auto index = indexOf(presets.get(), preset.id);
    if (!index) return;
    presets.modify([&](auto& list) { list[*index].name = name; });
    save();
}

EQPreset PresetManager::duplicatePreset(const EQPreset& preset) {
    const EQPreset copy{UUID::random(), preset.name + " Copy", preset.preamp, preset.bands, false};
    const auto index = indexOf(presets.get(), preset.id);
    presets.modify([&](auto& list) {
        const auto position = index ? *index + 1 : list.size();
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(position), copy);
    });
    save();
    return copy;
}

void PresetManager::deletePreset(const EQPreset& preset) {
    if (preset.isFactory) return;
    const UUID id = preset.id; // the argument may be an element of the list
    presets.modify([&](auto& list) { std::erase_if(list, [&](auto& p) { return p.id == id; }); });
    if (activePresetID.get() == id) {
        const auto& list = presets.get();
        const auto successor = list.empty() ? std::nullopt : std::optional(list.front());
        activePresetID.set(successor ? std::optional(successor->id) : std::nullopt);
        if (successor) preamp.set(successor->preamp);
    }
    deviceBindings.modify(
        [&](auto& bindings) { std::erase_if(bindings, [&](auto& b) { return b.second == id; }); });
    save();
}

EQPreset PresetManager::createCustomPreset(const std::string& name) {
    const EQPreset created{UUID::random(), name, 0, std::vector<float>(kBandCount, 0.0F), false};
    presets.modify([&](auto& list) { list.push_back(created); });
    save();
    return created;
}

void PresetManager::movePreset(std::size_t from, std::size_t to) {
    const auto count = presets.get().size();
    if (from == to || from >= count || to >= count) return;
    presets.modify([&](auto& list) {
        auto moved = std::move(list[from]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(from));
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(to), std::move(moved));
    });
    save();
}

float PresetManager::bandGain(std::size_t band) const {
    const auto preset = activePreset();
    return preset && band < preset->bands.size() ? preset->bands[band] : 0.0F;
}

void PresetManager::setBandGain(std::size_t band, float gain) {
    if (!activePresetID.get()) return;
    const auto index = indexOf(presets.get(), *activePresetID.get());
    if (!index || band >= presets.get()[*index].bands.size()) return;
    presets.modify([&](auto& list) { list[*index].bands[band] = gain; });
}

void PresetManager::toggleBinding(const std::string& deviceUID) {
    const auto active = activePresetID.get();
    if (!active) return;
    deviceBindings.modify([&](auto& bindings) {
        const auto bound = bindings.find(deviceUID);
        if (bound != bindings.end() && bound->second == *active) {
            bindings.erase(bound);
        } else {
            bindings[deviceUID] = *active;
        }
    });
    save();
}

std::optional<std::size_t> PresetManager::indexOf(const std::vector<EQPreset>& list,
                                                  const UUID& id) {
    const auto found = std::ranges::find(list, id, &EQPreset::id);
    if (found == list.end()) return std::nullopt;
    return static_cast<std::size_t>(found - list.begin());
}

} // namespace halvo
