#include "base/TextValues.h"

#include <locale>
#include <sstream>

namespace halvo {

bool boolOfText(std::string text) {
    for (char& letter : text)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return text == "yes" || text == "true" || text == "1";
}

double numberOfText(const std::string& text) {
    // Without what follows: not every C++ library stops before a letter.
    std::istringstream stream(text.substr(0, text.find_first_not_of(" \t\n+-.0123456789Ee")));
    stream.imbue(std::locale::classic());
    double value = 0;
    stream >> value; // 0 when it fails
    return value;
}

} // namespace halvo
