#pragma once

#include "ui/SystemAppearance.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace halvo {

/// Light or dark, and the accent, as the desktop portal tells them (org.freedesktop.appearance);
/// without a portal as the toolkit's palette does. Main thread only.
class DesktopAppearance final : public QObject {
    Q_OBJECT

  public:
    /// `changed` runs once at the first answer and whenever it differs from then on.
    explicit DesktopAppearance(std::function<void()> changed);

    const SystemAppearance& appearance() const { return appearance_; }
    /// Nothing while the desktop has not said whether it is light or dark.
    std::optional<bool> isDark() const { return dark_; }

  private Q_SLOTS:
    void takeChange(const QDBusMessage& message);

  private:
    void takeSetting(const QString& group, const QString& key, const QDBusVariant& value);
    void ask(const QString& key);

    std::function<void()> changed_;
    std::optional<bool> dark_;
    SystemAppearance appearance_;
};

} // namespace halvo
