#pragma once

#include <nlohmann/json.hpp>

#include <expected>
#include <string>

namespace halvo::bench {

/// Instructions per frame of every piece of the render path, as {name: number}, counted by
/// callgrind in a run of halvo-instructions, which lies beside this program: the same on a busy
/// machine and on an idle one. Else a sentence why not, for example without valgrind.
std::expected<nlohmann::json, std::string> countInstructions();

/// The child's side: runs every piece for a fixed number of frames and has callgrind, if it is
/// there, write down what each took.
void runPiecesForCounting();

/// What the figures depend on besides the sources: the compiler and the cascade's form.
std::string countedOn();

} // namespace halvo::bench
