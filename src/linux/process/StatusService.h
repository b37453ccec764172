#pragma once

#include "platform/StatusPublisher.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace halvo {

/// The program's status on the session bus: interface org.halvo.Status of the application's object.
/// Replies to calls only; sends no signals. Main thread only.
class StatusService final : public QObject, public StatusPublisher {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.halvo.Status")

  public:
    /// Does nothing without a session bus. `asked` is called for each request of the levels.
    explicit StatusService(std::function<void()> asked);

    void setActivePreset(const std::string& name) override;
    void setBandLevels(std::span<const float> levels) override;

  public Q_SLOTS:
    Q_SCRIPTABLE QString ActivePreset() const { return activePreset_; }
    /// Ten levels from 0 to 1, lowest band first. They are updated while clients keep asking; the
    /// first reply after a pause may be outdated.
    Q_SCRIPTABLE QList<double> BandLevels() const;

  private:
    std::function<void()> asked_;
    QString activePreset_;
    QList<double> bandLevels_;
};

} // namespace halvo
