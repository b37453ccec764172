#include "linux/mpris/PlayerSurvey.h"

#include "linux/mpris/HelperService.h"
#include "linux/mpris/Player.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <utility>

namespace halvo::mpris {

namespace {

using std::chrono::microseconds;
using Clock = std::chrono::steady_clock;

constexpr microseconds kSurveyTime{500'000};
constexpr microseconds kCallTime{1'000'000};

/// A query to one player, and its reply if any.
struct Question {
    SurveyedPlayer player;
    std::size_t* open; ///< replies still to come
    bool answered = false;
    Slot slot = {}; ///< destroying it cancels the call
};

int takeAnswer(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
    auto& question = *static_cast<Question*>(data);
    --*question.open;
    PlayerProperties properties;
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
    if (!readProperties(reply, properties)) return 0;
    question.player.status = properties.status.value_or(PlaybackStatus::stopped);
    question.player.metadata = std::move(properties.metadata).value_or(Metadata{});
    question.answered = true;
    return 0;
}

} // namespace

std::optional<PlayerSurvey> PlayerSurvey::connect() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return std::nullopt;
    Bus bus(opened);
    (void)sd_bus_set_method_call_timeout(bus.get(), kCallTime.count()); // fails only without a bus
    return PlayerSurvey(std::move(bus));
}

std::vector<std::string> PlayerSurvey::playerNames() {
    sd_bus_message* reply = nullptr;
    (void)sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "ListNames", nullptr, &reply, nullptr);
    const Message message(reply);
    std::vector<std::string> names;
    if (!message || sd_bus_message_enter_container(reply, 'a', "s") <= 0) return names;
    const char* name = nullptr;
    while (sd_bus_message_read_basic(reply, 's', &name) > 0) {
        if (isPlayerName(name)) names.emplace_back(name);
    }
    std::ranges::sort(names);
    return names;
}

std::vector<SurveyedPlayer> PlayerSurvey::players() {
    std::vector<Question> questions;
    std::size_t open = 0;
    for (const auto& name : playerNames())
        questions.push_back({.player = {.busName = name, .name = playerName(name)}, .open = &open});
    for (auto& question : questions) { // in parallel: a hanging player delays no other
        sd_bus_slot* slot = nullptr;
        const int sent = sd_bus_call_method_async(
            bus_.get(), &slot, question.player.busName.c_str(), kPath, kProperties, "GetAll",
            takeAnswer, &question, "s", kPlayerInterface);
        question.slot.reset(slot);
        if (sent >= 0) ++open;
    }
    const auto end = Clock::now() + kSurveyTime;
    while (open > 0) {
        const int done = sd_bus_process(bus_.get(), nullptr);
        if (done < 0) break;
        if (done > 0) continue;
        const auto left = std::chrono::duration_cast<microseconds>(end - Clock::now());
        if (left.count() <= 0) break;
        if (sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count())) < 0) break;
    }
    std::vector<SurveyedPlayer> players;
    for (auto& question : questions) {
        if (question.answered) players.push_back(std::move(question.player));
    }
    std::ranges::stable_sort(players, std::ranges::greater{}, &SurveyedPlayer::status);
    return players;
}

std::string PlayerSurvey::shownPlayer() {
    char* text = nullptr;
    (void)sd_bus_get_property_string(bus_.get(), kHelperName, kHelperPath, kHelperInterface,
                                     kShownPlayer, nullptr, &text);
    std::string name = text != nullptr ? text : "";
    std::free(text); // NOLINT: the library's way of handing a text over
    return name;
}

std::optional<std::string> PlayerSurvey::call(const std::string& busName, const char* method) {
    BusError error;
    const int sent = sd_bus_call_method(bus_.get(), busName.c_str(), kPath, kPlayerInterface,
                                        method, error.get(), nullptr, nullptr);
    return sent < 0 ? std::optional(busName + ": " + error.text()) : std::nullopt;
}

} // namespace halvo::mpris
