#pragma once

#include "platform/MediaHelper.h"

namespace halvo {

/// A library in the bundle's resources, loaded by a script of the system's perl, because macOS
/// tells only its own programs what is playing. Main thread.
class MacMediaHelper final : public MediaHelper {
  public:
    std::optional<std::string> resourceFolder() const override;
    std::string libraryName() const override { return "media_helper.dylib"; }
    std::string scriptName() const override { return "run.pl"; }
    Command command(const std::string& script, const std::string& library,
                    const std::string& word) const override {
        return {"/usr/bin/perl", {script, library, word}};
    }
};

} // namespace halvo
