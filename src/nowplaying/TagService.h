#pragma once

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// The tag service's URL for an artist's top tags; the artist is percent-encoded.
std::string tagServiceAddress(const std::string& artist);

/// Whether this build has an API key.
bool hasTagServiceKey();

/// The User-Agent of Halvo's requests.
std::string userAgent();

/// The names of the tags with a count of at least 30 in the service's answer, in its order; nothing
/// for an unexpected answer.
std::optional<std::vector<std::string>> parseTags(const std::string& body);

} // namespace halvo
