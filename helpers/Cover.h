#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace halvo::helper {

inline constexpr std::size_t kLargestCover = 4U * 1024 * 1024; ///< bytes, before base64

/// Standard base64 with padding.
std::string base64Of(std::string_view bytes);

/// Whether a cover's address points into the network.
bool isRemoteCover(std::string_view url);

/// The cover of a file: or data: address as base64; empty when there is none, when it is larger
/// than `kLargestCover`, or for any other address. Does not wait for what is no regular file.
std::string localCover(const std::string& url);

} // namespace halvo::helper
