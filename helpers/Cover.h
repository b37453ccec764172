#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace halvo::helper {

inline constexpr std::size_t kLargestCover = 4U * 1024 * 1024; ///< bytes, before base64

/// Standard base64 with padding.
std::string base64Of(std::string_view bytes);

/// Whether a cover's URL has to be fetched over the network.
bool isRemoteCover(std::string_view url);

/// The cover at a file: or data: URL as base64; empty when there is none, when it is larger than
/// `kLargestCover`, or for any other URL. Reads regular files only, so that it never blocks.
std::string localCover(const std::string& url);

} // namespace halvo::helper
