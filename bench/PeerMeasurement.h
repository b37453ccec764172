#pragma once

#include "Peers.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace halvo::bench {

/// Halvo's offline renderer against its peers on the same file: processor time per minute of sound,
/// reading and writing taken off. Runs alternate; medians count.
class PeerMeasurement {
  public:
    /// `folder`: for the files, of which there are 500 MB; `build`: where our own programs lie.
    PeerMeasurement(std::string folder, std::string build);

    /// "halvo", an object, and "peers", a list; also "missing", sentences about who could not be
    /// measured. Some minutes.
    nlohmann::ordered_json run();

  private:
    struct Runner {
        Peer peer;
        double deviationDb = 0;
        std::vector<double> filterSeconds;
        std::vector<double> nullSeconds;

        double cpuSecondsPerMinute() const;
    };

    bool prepare(Runner& runner);
    bool measureOnce(Runner& runner);
    bool leaveOut(const Runner& runner, const std::string& sentence);
    nlohmann::ordered_json json(const Runner& runner) const;
    std::string version(const Peer& peer) const;

    std::string folder_;
    std::string build_;
    std::vector<std::string> missing_;
};

} // namespace halvo::bench
