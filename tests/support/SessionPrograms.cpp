#include "support/SessionPrograms.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace halvo::test {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 15; ///< characters that the kernel keeps

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf(); // of a process that ends meanwhile: what could be read
    return text.str();
}

} // namespace

std::vector<int> processesOf(const std::string& sessionDirectory, const std::string& program) {
    std::vector<int> found;
    const auto name = program.substr(0, kLongestName) + "\n";
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        if (contentsOf(entry.path() / "comm") != name) continue;
        if (!contentsOf(entry.path() / "environ").contains(sessionDirectory + "/")) continue;
        found.push_back(std::stoi(entry.path().filename()));
    }
    return found;
}

void installDropIn(const std::string& sessionDirectory, const std::string& bundle) {
    std::ifstream file(bundle + "/Contents/Resources/60-halvo.conf");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string installed = "/usr/lib/halvo/HalvoAudioDevice.driver";
    auto place = text.find(installed);
    if (place == std::string::npos) throw std::runtime_error("the drop-in names no program");
    for (; place != std::string::npos; place = text.find(installed, place + bundle.size()))
        text.replace(place, installed.size(), bundle);
    std::ofstream(sessionDirectory + "/config/pipewire/pipewire.conf.d/60-halvo.conf") << text;
}

std::string statusField(int pid, const std::string& field) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(field + ":")) return line.substr(field.size() + 2);
    }
    return "";
}

} // namespace halvo::test
