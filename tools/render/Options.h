#pragma once

#include <array>
#include <expected>
#include <optional>
#include <span>
#include <string>

namespace halvo::render {

/// The largest gain that the panel's sliders give, up or down, in dB.
constexpr float kLargestGain = 20;

/// What the command line asks for.
struct Options {
    enum class Action { render, list, help, version };

    Action action = Action::render;
    std::string input;
    std::string output;
    std::optional<std::string> preset;          ///< by name
    std::optional<std::string> presetsFile;     ///< in place of the user's own
    bool factoryOnly = false;                   ///< neither
    std::optional<std::array<float, 10>> gains; ///< dB, lowest band first
    std::optional<float> preamp;                ///< dB, in place of the preset's
    bool bypass = false;
    bool writeFloat = false;
    bool force = false;
    bool acceptTruncated = false;
    bool quiet = false;
};

/// Reads the arguments, without the program's name. The error is a sentence. Options may come in
/// any order, as "--name value" or "--name=value"; after "--" all are file names. Numbers have a
/// decimal point whatever the language.
std::expected<Options, std::string> parseOptions(std::span<const char* const> arguments);

/// The text of --help.
const char* helpText();

} // namespace halvo::render
