#pragma once

#include "ui/SystemAppearance.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace halvo {

/// Light or dark mode and the accent, from the desktop portal (org.freedesktop.appearance), or from
/// Qt's palette without a portal. Main thread only.
class DesktopAppearance final : public QObject {
    Q_OBJECT

  public:
    /// `changed` runs after the first reply and on every change.
    explicit DesktopAppearance(std::function<void()> changed);

    const SystemAppearance& appearance() const { return appearance_; }
    /// Nothing while it is unknown.
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
