#pragma once

#include "posix/FileDescriptor.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <functional>

namespace halvo {

class Application;

/// The program on the session bus, as org.freedesktop.Application under the name org.halvo.Halvo.
/// The name, and a lock in the user's runtime directory that also works without a bus, keep a
/// second instance from starting. Main thread only.
class ApplicationService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    enum class Claim { first, alreadyRunning };

    explicit ApplicationService(Application& application) : application_(application) {}

    /// Makes this process the session's instance. When there is one already, asks that one to show
    /// itself. Without bus and runtime directory every process counts as the first.
    Claim claim();

    enum class Departure { nobody, gone, stays };
    /// Asks the session's instance to end in the normal way, or with SIGTERM where no bus leads to
    /// it, and waits for its end at most that long.
    static Departure quitOther(std::chrono::milliseconds longest);

    /// `activated` runs, from the main loop, whenever somebody starts or activates the program
    /// again; at once if that happened before.
    void onActivated(std::function<void()> activated);

  public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap& platform_data);
    /// There are no documents: comes to the front like `Activate`.
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platform_data);
    /// "quit" ends the program in the normal way; others are ignored.
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
