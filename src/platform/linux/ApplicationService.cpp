#include "platform/linux/ApplicationService.h"

#include "platform/Application.h"
#include "platform/linux/XdgDirectories.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace halvo {

namespace {

const QString kBusName = QStringLiteral("org.halvo.Halvo");
const QString kObjectPath = QStringLiteral("/org/halvo/Halvo");
const QString kInterface = QStringLiteral("org.freedesktop.Application");
constexpr int kActivationTimeout = 2000; // milliseconds

/// Without this look, the bus library would start a bus of its own where none is running.
bool hasSessionBus() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    std::error_code error;
    return std::filesystem::exists(runtimeDirectory() / "bus", error);
}

void activateOther(const QDBusConnection& bus) {
    auto call = QDBusMessage::createMethodCall(kBusName, kObjectPath, kInterface,
                                               QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    (void)bus.call(call, QDBus::Block, kActivationTimeout); // a busy instance answers later
}

} // namespace

ApplicationService::Claim ApplicationService::claim() {
    if (hasSessionBus()) {
        auto bus = QDBusConnection::sessionBus();
        // The object first: who finds the name expects it.
        bus.registerObject(kObjectPath, this, QDBusConnection::ExportScriptableSlots);
        if (auto* names = bus.interface()) {
            const auto reply = names->registerService(kBusName);
            if (reply.isValid() &&
                reply.value() == QDBusConnectionInterface::ServiceNotRegistered) {
                activateOther(bus);
                return Claim::alreadyRunning;
            }
        }
    }
    return claimLock();
}

ApplicationService::Claim ApplicationService::claimLock() {
    const auto directory = runtimeDirectory();
    if (directory.empty()) return Claim::first;
    FileDescriptor lock(::open((directory / "halvo.lock").c_str(),
                               O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                               S_IRUSR | S_IWUSR));
    if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return Claim::alreadyRunning;
    }
    lock_ = std::move(lock);
    return Claim::first;
}

void ApplicationService::onActivated(std::function<void()> activated) {
    activated_ = std::move(activated);
    if (std::exchange(activationPending_, false) && activated_) activated_();
}

void ApplicationService::Activate(const QVariantMap& /*platform_data*/) {
    if (activated_) {
        activated_();
    } else {
        activationPending_ = true;
    }
}

void ApplicationService::Open(const QStringList& /*uris*/, const QVariantMap& platform_data) {
    Activate(platform_data);
}

void ApplicationService::ActivateAction(const QString& action_name,
                                        const QVariantList& /*parameter*/,
                                        const QVariantMap& /*platform_data*/) {
    if (action_name == QStringLiteral("quit")) application_.terminate();
}

} // namespace halvo
