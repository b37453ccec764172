#pragma once

#include <string>
#include <vector>

namespace halvo::bench {

/// Another program's command to filter a file with ten peaking filters, and the same without them.
struct Peer {
    using Words = std::vector<std::string>;
    /// Placeholders for the two files.
    static constexpr const char* kInput = "<in>";
    static constexpr const char* kOutput = "<out>";

    std::string name;
    std::string package; ///< of the distribution, that the version is asked of; empty: ours
    std::string form;    ///< which of its ways this is, for the report
    Words filter;
    Words null;
};

/// The words with the two files in their places.
Peer::Words commandFor(const Peer::Words& words, const std::string& input,
                       const std::string& output);

/// The offline renderer, on the engine's own stage. `build` is the build's folder.
Peer halvoRenderer(const std::string& build);

/// The programs of the distribution that can do this, set to the preset's curve, each in its
/// cheapest form.
std::vector<Peer> peers(const std::string& build);

} // namespace halvo::bench
