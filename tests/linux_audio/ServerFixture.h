#pragma once

#include "fake/FakeMainQueue.h"
#include "linux/pipewire/PipeWireAudioHardware.h"
#include "linux/pipewire/PipeWireConnection.h"
#include "session/PrivateSession.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace halvo {

/// A private sound server with two outputs, "acc.a" (the default) and "acc.b", and the hardware as
/// a program sees it. The test's thread is the main thread; its queue runs while it waits.
class ServerFixture : public testing::Test {
  protected:
    void SetUp() override;

    /// Runs the main queue until the condition holds; false when a generous deadline passed.
    bool waitFor(const std::function<bool()>& condition);
    AudioDeviceID device(const std::string& uid);

    std::unique_ptr<session::PrivateSession> session_;
    FakeMainQueue queue_;
    std::unique_ptr<PipeWireConnection> connection_;
    std::unique_ptr<PipeWireAudioHardware> hardware_;
};

} // namespace halvo
