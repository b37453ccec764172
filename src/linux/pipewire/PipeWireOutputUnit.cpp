#include "linux/pipewire/PipeWireOutputUnit.h"

#include "linux/pipewire/PipeWireConnection.h"
#include "linux/pipewire/PipeWireGraph.h"
#include "platform/VirtualOutput.h"

#include <algorithm>

namespace halvo {

namespace {

using std::chrono::milliseconds;

/// Playing into it would be a feedback loop.
constexpr std::uint32_t kMostChannels = 64;
constexpr milliseconds kFirstStreamRetry{50};
constexpr milliseconds kLastStreamRetry{2000};

} // namespace

PipeWireOutputUnit::PipeWireOutputUnit(PipeWireConnection& connection, const OutputGate& gate,
                                       Flow flow)
    : connection_(connection), flow_(std::move(flow)), renderer_(gate) {
    const PipeWireConnection::Lock lock(connection_);
    connection_.add(*this);
    retry_ = pw_loop_add_timer(
        connection_.loop(),
        [](void* self, std::uint64_t) { static_cast<PipeWireOutputUnit*>(self)->retry(); }, this);
}

PipeWireOutputUnit::~PipeWireOutputUnit() {
    (void)stop();
    const PipeWireConnection::Lock lock(connection_);
    connection_.remove(*this);
    if (retry_) pw_loop_destroy_source(connection_.loop(), retry_);
}

bool PipeWireOutputUnit::setDevice(AudioDeviceID device) {
    const PipeWireConnection::Lock lock(connection_);
    const auto* sink = connection_.isReady() ? connection_.graph().sink(device) : nullptr;
    if (!sink) return false;
    deviceUID_ = sink->name();
    return true;
}

bool PipeWireOutputUnit::setStreamFormat(const StreamFormat& format) {
    if (format.channels < 1 || format.channels > kMostChannels) return false;
    if (!(format.sampleRate >= 1 && format.sampleRate <= 10'000'000)) return false;
    const PipeWireConnection::Lock lock(connection_);
    format_ = format;
    return true;
}

bool PipeWireOutputUnit::setRenderCallback(RenderCallback callback, void* refCon) {
    if (!callback) return false;
    const PipeWireConnection::Lock lock(connection_);
    callback_ = callback;
    refCon_ = refCon;
    return true;
}

bool PipeWireOutputUnit::initialize() {
    const PipeWireConnection::Lock lock(connection_);
    initialized_ = callback_ && format_.channels > 0;
    return initialized_;
}

bool PipeWireOutputUnit::start() {
    const PipeWireConnection::Lock lock(connection_);
    if (!initialized_) return false;
    started_ = true;
    retryDelay_ = kFirstStreamRetry;
    update();
    return stream_ != nullptr;
}

bool PipeWireOutputUnit::stop() {
    const PipeWireConnection::Lock lock(connection_);
    started_ = false;
    close();
    return true;
}

std::optional<std::string> PipeWireOutputUnit::target() const {
    if (deviceUID_) return deviceUID_;
    const auto* defaults = connection_.graph().defaults();
    auto name = defaults ? defaults->current() : std::nullopt;
    return name == kVirtualDeviceUID ? std::nullopt : name;
}

void PipeWireOutputUnit::update() {
    if (!started_ || !connection_.isReady()) return;
    const auto name = target();
    const auto* sink = name ? connection_.graph().sinkNamed(*name) : nullptr;
    if (stream_) {
        // Without a device it stays on the sink it started with, until that is removed.
        if (connection_.graph().sink(openDevice_)) return;
        close();
    }
    if (!sink) return;
    renderer_.prepare(format_, callback_, refCon_);
    stream_ = PipeWireStream::create(connection_, *this, renderer_, *name, format_);
    openDevice_ = sink->deviceID();
    if (!stream_) tryAgainLater();
}

void PipeWireOutputUnit::close() {
    stream_.reset();
    openDevice_ = 0;
}

void PipeWireOutputUnit::tryAgainLater() {
    timespec delay{};
    delay.tv_sec = retryDelay_.count() / 1000;
    delay.tv_nsec = retryDelay_.count() % 1000 * 1'000'000;
    pw_loop_update_timer(connection_.loop(), retry_, &delay, nullptr, false);
    retryDelay_ = std::min(retryDelay_ * 2, kLastStreamRetry);
}

void PipeWireOutputUnit::retry() {
    close();
    update();
}

void PipeWireOutputUnit::streamFailed() {
    // Also when the session manager does not know the sink yet, or removed it just before the
    // server reports that.
    if (started_) tryAgainLater();
}

void PipeWireOutputUnit::flowChanged(bool flows) {
    if (flow_) flow_(flows);
}

void PipeWireOutputUnit::serverConnected() {
    retryDelay_ = kFirstStreamRetry;
    update();
}

void PipeWireOutputUnit::serverDisconnected() {
    close();
}

void PipeWireOutputUnit::devicesChanged() {
    update();
}

void PipeWireOutputUnit::defaultsChanged() {
    update();
}

std::unique_ptr<OutputUnit> PipeWireOutputUnitFactory::makeOutputUnit() {
    return std::make_unique<PipeWireOutputUnit>(connection_, gate_, flow_);
}

} // namespace halvo
