#pragma once

#include "fake/CallLog.h"
#include "platform/OutputUnit.h"

#include <optional>
#include <string>
#include <vector>

namespace halvo {

class FakeOutputUnitFactory;

/// A unit whose render cycles the test runs by hand through its factory. Nothing is set any more
/// once it is initialized, and only then it starts.
class FakeOutputUnit final : public OutputUnit {
  public:
    FakeOutputUnit(FakeOutputUnitFactory& factory, CallLog& log);
    ~FakeOutputUnit() override;

    bool setDevice(AudioDeviceID device) override;
    bool setStreamFormat(const StreamFormat& format) override;
    bool setRenderCallback(RenderCallback callback, void* refCon) override;
    bool initialize() override;
    bool start() override;
    bool stop() override;

    std::optional<AudioDeviceID> device;
    StreamFormat format;
    bool isStarted = false;

    /// Runs one cycle; the buffer starts as `fill`, as stale memory would. Empty when not started.
    std::vector<float> render(std::uint32_t frames, float fill = 9.0F);

  private:
    FakeOutputUnitFactory& factory_;
    CallLog& log_;
    bool isInitialized_ = false;
    RenderCallback callback_ = nullptr;
    void* refCon_ = nullptr;
};

class FakeOutputUnitFactory final : public OutputUnitFactory {
  public:
    explicit FakeOutputUnitFactory(CallLog& log) : log_(log) {}

    std::unique_ptr<OutputUnit> makeOutputUnit() override;

    bool hasNone = false;              ///< makeOutputUnit returns null
    bool setupFails = false;           ///< every step of a unit's set-up returns false
    FakeOutputUnit* current = nullptr; ///< the existing unit, if any
    int made = 0;

  private:
    CallLog& log_;
};

} // namespace halvo
