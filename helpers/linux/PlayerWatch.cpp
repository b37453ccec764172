#include "PlayerWatch.h"

#include "linux/mpris/HelperService.h"
#include "linux/mpris/Player.h"

#include <optional>
#include <string_view>
#include <utility>

namespace halvo::helper {

namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

constexpr const char* kOwnerRule =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0namespace='org.mpris.MediaPlayer2'";
constexpr const char* kPropertiesRule =
    "type='signal',path='/org/mpris/MediaPlayer2',"
    "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
    "arg0='org.mpris.MediaPlayer2.Player'";
constexpr const char* kDisconnectedRule =
    "type='signal',sender='org.freedesktop.DBus.Local',path='/org/freedesktop/DBus/Local',"
    "interface='org.freedesktop.DBus.Local',member='Disconnected'";

/// A call whose reply `handler` takes.
mpris::Slot call(sd_bus* bus, const char* destination, const char* path, const char* interface,
                 const char* member, sd_bus_message_handler_t handler, void* data,
                 const char* argument) {
    sd_bus_slot* slot = nullptr;
    const char* types = argument != nullptr ? "s" : nullptr;
    (void)sd_bus_call_method_async(bus, &slot, destination, path, interface, member, handler, data,
                                   types,
                                   argument); // no slot: the bus has ended, which is reported
    return mpris::Slot(slot);
}

/// Whether the signal invalidates a property without its new value.
bool invalidates(sd_bus_message* signal) {
    if (sd_bus_message_enter_container(signal, 'a', "s") <= 0) return false;
    const char* name = nullptr;
    bool found = false;
    while (sd_bus_message_read_basic(signal, 's', &name) > 0) {
        const std::string_view property = name;
        found = found || property == "Metadata" || property == "PlaybackStatus";
    }
    return found;
}

} // namespace

/// A player on the bus, with the calls that it has not answered.
struct PlayerWatch::Entry {
    PlayerWatch& watch;
    std::string busName;
    std::string owner; ///< its unique bus name, the sender of its signals
    bool hasAnswered = false;
    bool askAgain = false;
    mpris::Slot ownerAsked = {};
    mpris::Slot playerAsked = {};
    mpris::Slot rootAsked = {};
};

PlayerWatch::PlayerWatch(mpris::Bus bus, Handlers handlers)
    : bus_(std::move(bus)), handlers_(std::move(handlers)) {}

PlayerWatch::~PlayerWatch() {
    (void)sd_bus_detach_event(bus_.get()); // it is attached
}

std::unique_ptr<PlayerWatch> PlayerWatch::connect(sd_event* event, Handlers handlers) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return nullptr;
    std::unique_ptr<PlayerWatch> watch(new PlayerWatch(mpris::Bus(opened), std::move(handlers)));
    return watch->start(event) ? std::move(watch) : nullptr;
}

bool PlayerWatch::start(sd_event* event) {
    sd_bus* bus = bus_.get();
    if (sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL) < 0) return false;
    const auto match = [&](mpris::Slot& into, const char* rule, sd_bus_message_handler_t handler) {
        sd_bus_slot* slot = nullptr;
        const int added = sd_bus_add_match_async(bus, &slot, rule, handler, nullptr, this);
        into.reset(slot);
        return added >= 0;
    };
    const bool listens =
        match(disconnected_, kDisconnectedRule, &PlayerWatch::onDisconnected) &&
        match(ownerChanged_, kOwnerRule, &PlayerWatch::onOwnerChanged) &&
        match(propertiesChanged_, kPropertiesRule, &PlayerWatch::onPropertiesChanged);
    if (!listens) return false;
    names_ = call(bus, kBus, kBusPath, kBus, "ListNames", &PlayerWatch::onNames, this, nullptr);
    startService();
    return true;
}

void PlayerWatch::startService() {
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY(mpris::kShownPlayer, "s", &PlayerWatch::answerShownPlayer, 0, 0),
        SD_BUS_VTABLE_END,
    };
    sd_bus_slot* slot = nullptr;
    (void)sd_bus_add_object_vtable(bus_.get(), &slot, mpris::kHelperPath, mpris::kHelperInterface,
                                   kTable, this); // without it, commands go to the best player
    service_.reset(slot);
    slot = nullptr;
    const auto ignore = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
    // A second helper gets the name when the first one ends.
    (void)sd_bus_request_name_async(bus_.get(), &slot, mpris::kHelperName, SD_BUS_NAME_QUEUE,
                                    ignore, nullptr);
    serviceName_.reset(slot);
}

int PlayerWatch::answerShownPlayer(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                                   const char* /*property*/, sd_bus_message* reply, void* data,
                                   sd_bus_error* /*error*/) {
    const auto name = static_cast<PlayerWatch*>(data)->handlers_.shownPlayer();
    return sd_bus_message_append_basic(reply, 's', name.c_str());
}

int PlayerWatch::onNames(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    auto& self = *static_cast<PlayerWatch*>(data);
    if (sd_bus_message_enter_container(reply, 'a', "s") <= 0) return 0;
    const char* name = nullptr;
    while (sd_bus_message_read_basic(reply, 's', &name) > 0) {
        if (mpris::isPlayerName(name) && !self.players_.contains(name)) self.appeared(name, "");
    }
    return 0;
}

int PlayerWatch::onOwnerChanged(sd_bus_message* signal, void* data, sd_bus_error* /*error*/) {
    auto& self = *static_cast<PlayerWatch*>(data);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) <= 0) return 0;
    if (!mpris::isPlayerName(name)) return 0;
    self.gone(name);
    if (*after != '\0') self.appeared(name, after);
    return 0;
}

void PlayerWatch::gone(const std::string& busName) {
    if (players_.erase(busName) > 0) handlers_.onGone(busName);
}

void PlayerWatch::appeared(const std::string& busName, const std::string& owner) {
    auto& entry = *(players_[busName] = std::make_unique<Entry>(Entry{*this, busName, owner}));
    handlers_.onAppeared(busName);
    if (owner.empty()) {
        entry.ownerAsked = call(bus_.get(), kBus, kBusPath, kBus, "GetNameOwner",
                                &PlayerWatch::onOwner, &entry, busName.c_str());
    }
    ask(entry);
    entry.rootAsked = call(
        bus_.get(), busName.c_str(), mpris::kPath, mpris::kProperties, "GetAll",
        [](sd_bus_message* reply, void* asked, sd_bus_error*) {
            auto& from = *static_cast<Entry*>(asked);
            mpris::PlayerProperties properties;
            if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
            if (!mpris::readProperties(reply, properties)) return 0;
            from.watch.handlers_.onTold(from.busName, {{}, {}, properties.desktopEntry});
            return 0;
        },
        &entry, mpris::kRootInterface);
}

int PlayerWatch::onOwner(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    const char* owner = nullptr;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0; // it has just left the bus
    if (sd_bus_message_read_basic(reply, 's', &owner) > 0) static_cast<Entry*>(data)->owner = owner;
    return 0;
}

/// One call at a time; a change meanwhile causes one more.
void PlayerWatch::ask(Entry& entry) {
    entry.askAgain = entry.playerAsked != nullptr;
    if (entry.askAgain) return;
    entry.playerAsked = call(bus_.get(), entry.busName.c_str(), mpris::kPath, mpris::kProperties,
                             "GetAll", &PlayerWatch::onProperties, &entry, mpris::kPlayerInterface);
}

int PlayerWatch::onProperties(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    auto& entry = *static_cast<Entry*>(data);
    entry.playerAsked.reset();
    mpris::PlayerProperties properties;
    const bool failed = sd_bus_message_is_method_error(reply, nullptr) > 0;
    if (!failed && mpris::readProperties(reply, properties)) {
        entry.hasAnswered = true;
        entry.watch.handlers_.onTold(entry.busName, std::move(properties));
    }
    if (std::exchange(entry.askAgain, false)) entry.watch.ask(entry);
    return 0;
}

int PlayerWatch::onPropertiesChanged(sd_bus_message* signal, void* data, sd_bus_error* /*error*/) {
    static_cast<PlayerWatch*>(data)->takeSignal(signal);
    return 0;
}

void PlayerWatch::takeSignal(sd_bus_message* signal) {
    const char* sender = sd_bus_message_get_sender(signal);
    if (sender == nullptr) return;
    const char* interface = nullptr;
    mpris::PlayerProperties properties;
    if (sd_bus_message_read_basic(signal, 's', &interface) <= 0) return;
    if (!mpris::readProperties(signal, properties)) return;
    const bool mustAsk = invalidates(signal);
    for (const auto& [name, entry] :
         players_) { // one connection may own the names of several players
        if (entry->owner != sender) continue;
        handlers_.onTold(name, properties);
        if (mustAsk || (!entry->hasAnswered && !entry->playerAsked)) ask(*entry);
    }
}

int PlayerWatch::onDisconnected(sd_bus_message* /*signal*/, void* data, sd_bus_error* /*error*/) {
    static_cast<PlayerWatch*>(data)->handlers_.onDisconnected();
    return 0;
}

} // namespace halvo::helper
