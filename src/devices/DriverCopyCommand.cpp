#include "devices/DriverCopyCommand.h"

namespace halvo {

std::string driverCopyShellCommand(const std::filesystem::path& source,
                                   const std::filesystem::path& folder,
                                   const std::filesystem::path& installed) {
    const auto& target = installed.native();
    return "mkdir -p '" + folder.native() + "' && rm -rf '" + target + "' && cp -R '" +
           source.native() + "' '" + target + "' && chown -R root:wheel '" + target +
           "' && killall coreaudiod 2>/dev/null; true";
}

std::string appleScriptEscaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\\' || character == '"') escaped += '\\';
        escaped += character;
    }
    return escaped;
}

Command administratorScript(const std::string& shellCommand) {
    return {"/usr/bin/osascript",
            {"-e", "do shell script \"" + appleScriptEscaped(shellCommand) +
                       "\" with administrator privileges"}};
}

} // namespace halvo
