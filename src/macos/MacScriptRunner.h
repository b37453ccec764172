#pragma once

#include "platform/ScriptRunner.h"

#include <mutex>

namespace halvo {

/// Scripts in the system's own scripting language, one after another. Background threads only.
class MacScriptRunner final : public ScriptRunner {
  public:
    std::expected<std::optional<std::string>, ScriptError> run(const std::string& source) override;

  private:
    std::mutex lock_; ///< the scripting component runs one script at a time
};

} // namespace halvo
