#pragma once

#include "linux/pipewire/PipeWireObserver.h"
#include "linux/pipewire/PipeWireRenderer.h"
#include "linux/pipewire/PipeWireStream.h"
#include "loudness/OutputGate.h"
#include "platform/OutputUnit.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

struct spa_source;

namespace halvo {

class PipeWireConnection;

/// Plays a render callback to one sink, by name. While started, it reconnects by itself when the
/// server or the sink returns. Main thread, unless said otherwise.
class PipeWireOutputUnit final : public OutputUnit,
                                 private PipeWireObserver,
                                 private PipeWireStream::Owner {
  public:
    /// Called on the connection's thread when sound starts to flow or the graph goes idle.
    using Flow = std::function<void(bool flows)>;

    /// Both must outlive the unit.
    PipeWireOutputUnit(PipeWireConnection& connection, const OutputGate& gate, Flow flow = {});
    ~PipeWireOutputUnit() override;

    /// Takes effect at the next `start`. False, and nothing changes, for an unknown device. Without
    /// a device it plays to the default, or nothing while that is the virtual device.
    bool setDevice(AudioDeviceID device) override;
    /// 1 to 64 channels, a positive rate; false otherwise. Takes effect at the next `start`.
    bool setStreamFormat(const StreamFormat& format) override;
    bool setRenderCallback(RenderCallback callback, void* refCon) override;
    /// False until format and callback are set.
    bool initialize() override;
    /// False while it cannot play yet: the unit stays started and plays once its sink exists.
    bool start() override;
    bool stop() override;

    /// Frames that the callback has rendered. Any thread.
    std::uint64_t framesPlayed() const { return renderer_.framesPlayed(); }
    /// Cycles of the server that this unit missed. Any thread.
    std::uint64_t underruns() const { return renderer_.underruns(); }

  private:
    void serverConnected() override;
    void serverDisconnected() override;
    void devicesChanged() override;
    void defaultsChanged() override;
    void streamFailed() override;
    void flowChanged(bool flows) override;

    /// The name of the sink to play to; nothing without one.
    std::optional<std::string> target() const;
    /// Opens or closes the stream, depending on server and sink.
    void update();
    void close();
    void tryAgainLater();
    void retry();

    PipeWireConnection& connection_;
    const Flow flow_;
    // With the connection's lock.
    std::optional<std::string> deviceUID_;
    StreamFormat format_;
    RenderCallback callback_ = nullptr;
    void* refCon_ = nullptr;
    bool initialized_ = false;
    bool started_ = false;
    AudioDeviceID openDevice_ = 0;
    spa_source* retry_ = nullptr;
    std::chrono::milliseconds retryDelay_{};
    // The render thread's while a stream exists.
    PipeWireRenderer renderer_;
    std::unique_ptr<PipeWireStream> stream_;
};

/// Creates units that share one connection and one gate; both must outlive every unit.
class PipeWireOutputUnitFactory final : public OutputUnitFactory {
  public:
    PipeWireOutputUnitFactory(PipeWireConnection& connection, const OutputGate& gate,
                              PipeWireOutputUnit::Flow flow = {})
        : connection_(connection), gate_(gate), flow_(std::move(flow)) {}

    std::unique_ptr<OutputUnit> makeOutputUnit() override;

  private:
    PipeWireConnection& connection_;
    const OutputGate& gate_;
    const PipeWireOutputUnit::Flow flow_;
};

} // namespace halvo
