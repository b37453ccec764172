#pragma once

#include "platform/ScriptRunner.h"

#include <mutex>

namespace halvo {

/// Runs AppleScript, one script at a time. Background threads only.
class MacScriptRunner final : public ScriptRunner {
  public:
    std::expected<std::optional<std::string>, ScriptError> run(const std::string& source) override;

  private:
    std::mutex lock_; ///< the scripting component runs one script at a time
};

} // namespace halvo
