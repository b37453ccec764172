#include "media/ScriptedPlayer.h"

#include "linux/mpris/Player.h"

#include <poll.h>
#include <string_view>
#include <sys/eventfd.h>
#include <type_traits>
#include <unistd.h>

namespace halvo::media {

namespace {

constexpr int kLookWhileHanging = 20; ///< milliseconds

void appendValue(sd_bus_message* message, const ScriptedPlayer::Value& value) {
    const auto basic = [&](char type, const char* signature, const void* content) {
        sd_bus_message_open_container(message, 'v', signature);
        sd_bus_message_append_basic(message, type, content);
        sd_bus_message_close_container(message);
    };
    std::visit(
        [&](const auto& content) {
            using Type = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Type, std::string>) {
                basic('s', "s", content.c_str());
            } else if constexpr (std::is_same_v<Type, std::vector<std::string>>) {
                sd_bus_message_open_container(message, 'v', "as");
                sd_bus_message_open_container(message, 'a', "s");
                for (const auto& text : content)
                    sd_bus_message_append_basic(message, 's', text.c_str());
                sd_bus_message_close_container(message);
                sd_bus_message_close_container(message);
            } else if constexpr (std::is_same_v<Type, std::int64_t>) {
                basic('x', "x", &content);
            } else if constexpr (std::is_same_v<Type, std::uint64_t>) {
                basic('t', "t", &content);
            } else if constexpr (std::is_same_v<Type, std::int32_t>) {
                basic('i', "i", &content);
            } else {
                basic('d', "d", &content);
            }
        },
        value);
}

} // namespace

int ScriptedPlayer::answer(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                           const char* property, sd_bus_message* reply, void* data,
                           sd_bus_error* /*error*/) {
    const auto& self = *static_cast<ScriptedPlayer*>(data);
    if (std::string_view(property) == "PlaybackStatus") {
        return sd_bus_message_append_basic(reply, 's', self.status_.c_str());
    }
    sd_bus_message_open_container(reply, 'a', "{sv}");
    for (const auto& [key, value] : self.metadata_) {
        sd_bus_message_open_container(reply, 'e', "sv");
        sd_bus_message_append_basic(reply, 's', key.c_str());
        appendValue(reply, value);
        sd_bus_message_close_container(reply);
    }
    return sd_bus_message_close_container(reply);
}

int ScriptedPlayer::obey(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
    auto& self = *static_cast<ScriptedPlayer*>(data);
    self.commands_.emplace_back(sd_bus_message_get_member(call));
    return sd_bus_reply_method_return(call, nullptr);
}

std::unique_ptr<ScriptedPlayer> ScriptedPlayer::start(const std::string& busAddress,
                                                      const std::string& name) {
    sd_bus* made = nullptr;
    if (sd_bus_new(&made) < 0) return nullptr;
    mpris::Bus bus(made);
    if (sd_bus_set_address(made, busAddress.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 ||
        sd_bus_start(made) < 0) {
        return nullptr;
    }
    const int wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::unique_ptr<ScriptedPlayer> player(new ScriptedPlayer(std::move(bus), wake));
    if (!player->publish(name)) return nullptr;
    player->thread_ = std::thread([raw = player.get()] { raw->serve(); });
    return player;
}

bool ScriptedPlayer::publish(const std::string& name) {
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("PlaybackStatus", "s", &ScriptedPlayer::answer, 0,
                        SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_PROPERTY("Metadata", "a{sv}", &ScriptedPlayer::answer, 0,
                        SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_METHOD("Play", "", "", &ScriptedPlayer::obey, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Pause", "", "", &ScriptedPlayer::obey, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("PlayPause", "", "", &ScriptedPlayer::obey, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Next", "", "", &ScriptedPlayer::obey, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Previous", "", "", &ScriptedPlayer::obey, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    const auto busName = std::string(mpris::kNamespace) + '.' + name;
    return sd_bus_add_object_vtable(bus_.get(), nullptr, mpris::kPath, mpris::kPlayerInterface,
                                    kTable, this) >= 0 &&
           sd_bus_request_name(bus_.get(), busName.c_str(), 0) >= 0;
}

ScriptedPlayer::~ScriptedPlayer() {
    ends_ = true;
    (void)::eventfd_write(wake_, 1); // the counter is far from full
    if (thread_.joinable()) thread_.join();
    (void)::close(wake_);
}

void ScriptedPlayer::serve() {
    while (!ends_) {
        pollfd sources[] = {{wake_, POLLIN, 0}, {sd_bus_get_fd(bus_.get()), POLLIN, 0}};
        const bool hangs = hangs_;
        (void)::poll(sources, hangs ? 1 : 2, hangs ? kLookWhileHanging : -1);
        if (hangs_ || ends_) continue;
        eventfd_t count = 0;
        (void)::eventfd_read(wake_, &count); // may be empty
        const std::lock_guard lock(mutex_);
        while (sd_bus_process(bus_.get(), nullptr) > 0) {
        }
        (void)sd_bus_flush(bus_.get()); // the reader notices a bus that has ended
    }
}

void ScriptedPlayer::tell(const char* property) {
    (void)sd_bus_emit_properties_changed(bus_.get(), mpris::kPath, mpris::kPlayerInterface,
                                         property, nullptr);
    (void)sd_bus_flush(bus_.get());
    (void)::eventfd_write(wake_, 1); // a message may lie in the library's queue
}

void ScriptedPlayer::setStatus(const std::string& status) {
    const std::lock_guard lock(mutex_);
    status_ = status;
    tell("PlaybackStatus");
}

void ScriptedPlayer::setMetadata(Metadata metadata) {
    const std::lock_guard lock(mutex_);
    metadata_ = std::move(metadata);
    tell("Metadata");
}

std::vector<std::string> ScriptedPlayer::commands() const {
    const std::lock_guard lock(mutex_);
    return commands_;
}

} // namespace halvo::media
