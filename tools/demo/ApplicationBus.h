#pragma once

#include <array>
#include <optional>
#include <string>

#include <QDBusConnection>

namespace halvo::demo {

/// What the running application offers on the session bus. Needs a QCoreApplication; one thread.
class ApplicationBus {
  public:
    /// `busSocket` is where the session bus listens.
    explicit ApplicationBus(const std::string& busSocket);
    ~ApplicationBus();
    ApplicationBus(const ApplicationBus&) = delete;
    ApplicationBus& operator=(const ApplicationBus&) = delete;

    /// Asks for a normal quit. Gives nothing when the application took the request, else what
    /// failed.
    std::optional<std::string> requestQuit() const;
    /// The active preset's name; empty when there is no answer.
    std::string activePreset() const;
    /// The level of each band now, 0 to 1; 0 when there is no answer.
    std::array<double, 10> bandLevels() const;

  private:
    QDBusConnection bus_;
};

} // namespace halvo::demo
