#pragma once

#include <optional>
#include <string>
#include <vector>

namespace halvo {

/// The tag service's address for an artist's top tags; the artist stays one value of the query.
std::string tagServiceAddress(const std::string& artist);

/// Whether this build was given a key to the service.
bool hasTagServiceKey();

/// How Halvo introduces itself to other people's servers.
std::string userAgent();

/// The names of the tags with a count above 29 in the service's answer, in its order; nothing when
/// the answer has another shape.
std::optional<std::vector<std::string>> parseTags(const std::string& body);

} // namespace halvo
