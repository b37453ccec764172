#include "fake/FakeServices.h"

namespace halvo {

std::size_t FakeAlert::runModal(AlertStyle style, const std::string& message,
                                const std::string& informativeText,
                                const std::vector<std::string>& buttons) {
    shown.push_back({style, message, informativeText, buttons});
    if (shown.size() <= answers.size()) return answers[shown.size() - 1];
    return buttons.empty() ? 0 : buttons.size() - 1;
}

bool FakeFileSystem::createDirectory(const std::filesystem::path& path) {
    if (writesFail) return false;
    directories.push_back(path);
    return true;
}

std::optional<std::string> FakeFileSystem::read(const std::filesystem::path& path) {
    if (!files.contains(path)) return std::nullopt;
    return files.at(path);
}

bool FakeFileSystem::write(const std::filesystem::path& path, const std::string& contents) {
    if (!takes(path)) return false;
    ++writes;
    files[path] = contents;
    return true;
}

bool FakeFileSystem::append(const std::filesystem::path& path, const std::string& contents) {
    if (!takes(path)) return false;
    files[path] += contents;
    return true;
}

bool FakeFileSystem::setAside(const std::filesystem::path& path) {
    if (writesFail || !files.contains(path)) return false;
    files[path.string() + ".unreadable"] = files.at(path);
    files.erase(path);
    return true;
}

bool FakeFileSystem::remove(const std::filesystem::path& path) {
    if (writesFail) return false;
    files.erase(path);
    return true;
}

std::optional<std::filesystem::path> FakeDriverInstallation::bundledDriverURL() {
    if (!bundled) return std::nullopt;
    return "/bundled.driver";
}

bool FakeDriverInstallation::exists(const std::filesystem::path& bundle) {
    return bundle == installedPath() ? installed.has_value() : bundled.has_value();
}

std::optional<std::string>
FakeDriverInstallation::propertyListString(const std::filesystem::path& bundle,
                                           const std::string& key) {
    const auto& list = bundle == installedPath() ? installed : bundled;
    if (!list || !list->contains(key)) return std::nullopt;
    return list->at(key);
}

std::expected<DriverCopyResult, std::string>
FakeDriverInstallation::copyWithPrivileges(const std::filesystem::path& source) {
    calls.push_back("copy " + source.string());
    if (copyResult && copyResult->status == 0) installed = bundled;
    return copyResult;
}

void FakeDriverInstallation::pause(std::chrono::milliseconds duration) {
    calls.push_back("pause " + std::to_string(duration.count()));
}

} // namespace halvo
