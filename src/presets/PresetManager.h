#pragma once

#include "base/EQPreset.h"
#include "base/Published.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

class FileSystem;
class SystemLog;
class UserDefaults;

/// The list of presets and the live state of the equalizer. Main thread only.
///
/// The list is saved in "presets.json"; of the rest only the output volume is saved. Names may be
/// empty and need not be unique.
class PresetManager {
  public:
    /// Loads the list. An absent or unreadable file gives the factory presets; one that cannot be
    /// read is set aside first, and if even that fails, it is left alone and nothing is saved. A
    /// system without a place for application data ends the process.
    PresetManager(FileSystem& files, UserDefaults& defaults, SystemLog& log);

    Published<std::vector<EQPreset>> presets;
    Published<std::optional<UUID>> activePresetID;
    Published<float> preamp{0};       ///< dB
    Published<float> outputVolume{1}; ///< linear; change it with `setOutputVolume`
    Published<bool> eqEnabled{true};
    Published<std::map<std::string, UUID>> deviceBindings; ///< device UID to preset

    /// Publishes the volume and saves it for the next start. Not clamped.
    void setOutputVolume(float volume);

    /// Appends the factory presets whose names are missing, and saves if there were any.
    void ensureFactoryPresets();

    void activate(const EQPreset& preset);
    /// The preset that is bound to a device, if it still exists.
    std::optional<EQPreset> presetForDevice(const std::string& deviceUID) const;
    /// The first preset of exactly this name.
    std::optional<EQPreset> presetNamed(const std::string& name) const;
    std::optional<EQPreset> activePreset() const;

    void renamePreset(const EQPreset& preset, const std::string& name);
    /// Inserts a custom copy after its source (at the end if that no longer exists) and returns it.
    EQPreset duplicatePreset(const EQPreset& preset);
    /// Removes a preset and its bindings. Factory presets stay. If it was active, the first of the
    /// remaining ones becomes active.
    void deletePreset(const EQPreset& preset);
    /// Appends a flat preset and returns it.
    EQPreset createCustomPreset(const std::string& name);
    /// Moves the preset; `to` is its index in the list without it.
    void movePreset(std::size_t from, std::size_t to);

    /// The active preset's gain of a band in dB; 0 where there is none.
    float bandGain(std::size_t band) const;
    /// Changes the active preset's gain of a band. By design saved only with the list.
    void setBandGain(std::size_t band, float gain);
    /// Binds the active preset to the device, or unbinds it if it is bound already.
    void toggleBinding(const std::string& deviceUID);

  private:
    void load();
    void save();
    static std::optional<std::size_t> indexOf(const std::vector<EQPreset>& list, const UUID& id);

    FileSystem& files_;
    UserDefaults& defaults_;
    SystemLog& log_;
    std::filesystem::path storageURL_;
    bool isReadOnly_ = false; ///< a file that cannot be read could not be set aside either
};

} // namespace halvo
