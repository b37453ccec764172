#pragma once

#include <string>

namespace halvo {

// What texts in the user's settings stand for. As macOS reads them; they may have been written by
// hand or by a script. Any thread.

/// True for "YES", "true" and "1", in capitals or not, and for nothing else.
bool boolOfText(std::string text);

/// The decimal number that the text begins with, after white space; 0 when it begins with none.
/// Does not depend on the locale.
double numberOfText(const std::string& text);

} // namespace halvo
