#pragma once

#include <string>
#include <vector>

namespace halvo {

/// The calls to all fakes, in order.
class CallLog {
  public:
    void add(std::string call) { calls_.push_back(std::move(call)); }
    const std::vector<std::string>& calls() const { return calls_; }
    void clear() { calls_.clear(); }

  private:
    std::vector<std::string> calls_;
};

} // namespace halvo
