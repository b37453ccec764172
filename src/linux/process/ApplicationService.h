#pragma once

#include "posix/FileDescriptor.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <functional>

namespace halvo {

class Application;

/// The program's org.freedesktop.Application interface, under the bus name org.halvo.Halvo. The bus
/// name, and a lock file in the runtime directory that also works without a bus, prevent a second
/// instance. Main thread only.
class ApplicationService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    enum class Claim { first, alreadyRunning };

    explicit ApplicationService(Application& application) : application_(application) {}

    /// Makes this process the session's instance. If there is one already, asks it to open its
    /// panel. Without bus and runtime directory every process counts as the first.
    Claim claim();

    enum class Departure { nobody, gone, stays };
    /// Asks the session's instance to quit, over the bus or else with SIGTERM, and waits for its
    /// end for at most `longest`.
    static Departure quitOther(std::chrono::milliseconds longest);

    /// `activated` runs, from the main loop, whenever the program is started or activated again; at
    /// once if that has happened already.
    void onActivated(std::function<void()> activated);

  public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap& platform_data);
    /// Same as `Activate`, because there are no documents.
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platform_data);
    /// "quit" quits the program; other actions are ignored.
    Q_SCRIPTABLE void ActivateAction(const QString& action_name, const QVariantList& parameter,
                                     const QVariantMap& platform_data);

  private:
    Claim claimLock();

    Application& application_;
    std::function<void()> activated_;
    bool activationPending_ = false;
    FileDescriptor lock_;
};

} // namespace halvo
