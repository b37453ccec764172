#pragma once

#include <expected>
#include <string>

namespace halvo::demo {

/// Where the programs lie that the demo shows.
struct Programs {
    std::string application;
    std::string driver;
    std::string driverBundle; ///< the folder that the application takes for the installed driver

    /// The ones of the same build as this program; else a sentence that says what is missing and
    /// how to get it.
    static std::expected<Programs, std::string> find();
};

} // namespace halvo::demo
