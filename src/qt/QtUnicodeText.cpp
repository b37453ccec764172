#include "qt/QtUnicodeText.h"

#include <QString>

namespace halvo {

std::string QtUnicodeText::lowerCased(const std::string& text) const {
    return QString::fromStdString(text).toLower().toStdString();
}

std::string QtUnicodeText::composed(const std::string& text) const {
    return QString::fromStdString(text).normalized(QString::NormalizationForm_C).toStdString();
}

} // namespace halvo
