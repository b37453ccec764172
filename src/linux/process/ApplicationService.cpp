#include "linux/process/ApplicationService.h"

#include "linux/files/XdgDirectories.h"
#include "platform/Application.h"
#include "posix/AtomicFile.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace halvo {

namespace {

const QString kBusName = QStringLiteral("org.halvo.Halvo");
const QString kObjectPath = QStringLiteral("/org/halvo/Halvo");
const QString kInterface = QStringLiteral("org.freedesktop.Application");
constexpr int kActivationTimeout = 2000; // milliseconds

/// Without this check, the bus library would start a bus if none is running.
bool hasSessionBus() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    std::error_code error;
    return std::filesystem::exists(runtimeDirectory() / "bus", error);
}

/// Null without a session bus that answers.
QDBusConnectionInterface* busNames() {
    if (!hasSessionBus() || !QDBusConnection::sessionBus().isConnected()) return nullptr;
    return QDBusConnection::sessionBus().interface();
}

void activateOther(const QDBusConnection& bus) {
    auto call = QDBusMessage::createMethodCall(kBusName, kObjectPath, kInterface,
                                               QStringLiteral("Activate"));
    call.setArguments({QVariantMap()});
    (void)bus.call(call, QDBus::Block, kActivationTimeout); // a busy instance reacts later
}

std::filesystem::path lockPath() {
    const auto directory = runtimeDirectory();
    return directory.empty() ? directory : directory / "halvo.lock";
}

FileDescriptor openProcess(uint number) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, number, 0U)));
}

bool hasEnded(const FileDescriptor& process, std::chrono::milliseconds longest) {
    pollfd waiting{process.get(), POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(longest.count())) > 0;
}

/// The PID that the lock's holder wrote into the file; 0 without a holder.
uint lockHolder() {
    const auto path = lockPath();
    const FileDescriptor lock(path.empty() ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!lock || ::flock(lock.get(), LOCK_SH | LOCK_NB) == 0) return 0;
    constexpr std::size_t kLongestNumber = 32;
    const auto text = AtomicFile::read(path, kLongestNumber).value_or("");
    return static_cast<uint>(std::strtoul(text.c_str(), nullptr, 10));
}

/// Asks the instance on the bus to quit; its process, if there is one.
FileDescriptor askOnBus() {
    auto* names = busNames();
    if (names == nullptr) return {};
    const auto owner = names->servicePid(kBusName);
    if (!owner.isValid()) return {};
    auto process = openProcess(owner.value());
    auto call = QDBusMessage::createMethodCall(kBusName, kObjectPath, kInterface,
                                               QStringLiteral("ActivateAction"));
    call.setArguments({QStringLiteral("quit"), QVariantList(), QVariantMap()});
    // Only its end counts, not its reply.
    (void)QDBusConnection::sessionBus().call(call, QDBus::Block, kActivationTimeout);
    return process;
}

} // namespace

ApplicationService::Departure ApplicationService::quitOther(std::chrono::milliseconds longest) {
    if (const auto process = askOnBus()) {
        return hasEnded(process, longest) ? Departure::gone : Departure::stays;
    }
    const auto holder = lockHolder();
    if (holder == 0) return Departure::nobody;
    const auto process = openProcess(holder);
    // Checked again, because the PID may have been reused before the process was opened.
    if (!process || lockHolder() != holder) return Departure::nobody;
    (void)::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0U);
    return hasEnded(process, longest) ? Departure::gone : Departure::stays;
}

ApplicationService::Claim ApplicationService::claim() {
    auto* names = busNames();
    if (names == nullptr) {
        (void)std::fputs("Halvo: No session bus; a second start cannot open the panel\n", stderr);
        return claimLock();
    }
    auto bus = QDBusConnection::sessionBus();
    // The object first: clients that see the name expect it.
    bus.registerObject(kObjectPath, this, QDBusConnection::ExportScriptableSlots);
    const auto reply = names->registerService(kBusName);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceNotRegistered) {
        activateOther(bus);
        return Claim::alreadyRunning;
    }
    return claimLock();
}

ApplicationService::Claim ApplicationService::claimLock() {
    const auto path = lockPath();
    if (path.empty()) return Claim::first;
    FileDescriptor lock(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                               S_IRUSR | S_IWUSR));
    if (lock && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return Claim::alreadyRunning;
    }
    lock_ = std::move(lock);
    if (lock_ && ::ftruncate(lock_.get(), 0) == 0) {
        (void)writeAll(lock_.get(), std::to_string(::getpid()) + "\n"); // for `quitOther`
    }
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
