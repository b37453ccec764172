#pragma once

#include "base/Color.h"
#include "base/UUID.h"

#include <QColor>
#include <QString>

#include <optional>
#include <string>

namespace halvo {

// Conversions between the core's values and Qt's.

inline QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

inline QString toQt(const UUID& id) {
    return QString::fromStdString(id.text());
}

inline QColor toQt(const Color& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

inline std::optional<UUID> toUUID(const QString& text) {
    return UUID::parse(text.toStdString());
}

/// In sRGB; lossless, because Qt keeps 16 bits per component. Nothing for an invalid colour.
inline std::optional<Color> fromQt(const QColor& color) {
    if (!color.isValid()) return std::nullopt;
    const QRgba64 parts = color.toRgb().rgba64();
    const auto part = [](quint16 value) { return static_cast<double>(value) / 65535.0; };
    return Color{part(parts.red()), part(parts.green()), part(parts.blue())};
}

} // namespace halvo
