#include "linux_audio/ServerFixture.h"

namespace halvo {

void ServerFixture::SetUp() {
    auto session = session::PrivateSession::create();
    ASSERT_TRUE(session) << session.error();
    session_ = std::move(*session);
    connection_ = PipeWireConnection::create(session_->serverSocket());
    ASSERT_TRUE(connection_);
    ASSERT_TRUE(connection_->waitUntilReady(session::PrivateSession::kPatience));
    hardware_ = std::make_unique<PipeWireAudioHardware>(*connection_, queue_);
}

bool ServerFixture::waitFor(const std::function<bool()>& condition) {
    return session::PrivateSession::waitFor([&] {
        queue_.flush();
        return condition();
    });
}

AudioDeviceID ServerFixture::device(const std::string& uid) {
    const auto found = hardware_->deviceForUID(uid);
    EXPECT_TRUE(found) << uid;
    return found.value_or(0);
}

} // namespace halvo
