#pragma once

#include "base/Color.h"

#include <QColor>

namespace halvo {

/// The system's accent colour, as sRGB. Main thread only.
Color systemAccent();

inline QColor toQColor(const Color& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

} // namespace halvo
