#include "linux_audio/ServerFixture.h"
#include "linux_audio/SimulatedCard.h"

namespace halvo {
namespace {

using Request = SimulatedCard::Request;

/// A sink that plays through a sound card: the card has the volume, not the sink.
class CardTest : public ServerFixture {
  protected:
    void SetUp() override {
        ServerFixture::SetUp();
        if (HasFatalFailure()) return;
        card_ = std::make_unique<SimulatedCard>(session_->serverSocket(), "card.sink", kFound);
        ASSERT_TRUE(waitFor([&] { return hardware_->deviceForUID("card.sink").has_value(); }));
    }

    inline static const DeviceLevel kFound{{0.25F, 0.125F}, true, SimulatedCard::kPort};
    std::unique_ptr<SimulatedCard> card_;
};

TEST_F(CardTest, IsWhereTheLevelIsReadAndWritten) {
    const auto id = device("card.sink");
    EXPECT_EQ(hardware_->level(id), kFound);
    for (int i = 1; i <= 10; ++i) {
        const float volume = static_cast<float>(i) / 16;
        ASSERT_TRUE(hardware_->setVolume(id, VolumeElement::main, volume));
        ASSERT_EQ(hardware_->volume(id, VolumeElement::main), volume) << i;
        ASSERT_TRUE(hardware_->setMute(id, i % 2 == 0));
        ASSERT_EQ(hardware_->mute(id), i % 2 == 0) << i;
    }
    EXPECT_EQ(card_->level(), (DeviceLevel{{0.625F, 0.625F}, true, SimulatedCard::kPort}));
    EXPECT_EQ(session_->volume("card.sink"), (std::vector<float>{1, 1})) << "the sink's own";
}

TEST_F(CardTest, IsToldWhetherToKeepTheLevel) {
    const auto id = device("card.sink");
    constexpr int kIndex = SimulatedCard::kRouteIndex;
    constexpr int kDevice = SimulatedCard::kProfileDevice;
    ASSERT_TRUE(hardware_->setVolume(id, VolumeElement::main, 1));
    ASSERT_TRUE(hardware_->setLevel(id, kFound, LevelPersistence::saved));
    ASSERT_TRUE(hardware_->setLevel(id, {{1, 1}, false}, LevelPersistence::temporary));
    EXPECT_EQ(card_->requests(),
              (std::vector<Request>{
                  {kIndex, kDevice, false}, {kIndex, kDevice, true}, {kIndex, kDevice, false}}));
}

TEST_F(CardTest, IsHeardWhenSomebodyTurnsItsKnob) {
    const auto id = device("card.sink");
    int volumes = 0;
    int mutes = 0;
    ASSERT_TRUE(hardware_->listenToVolume(id, VolumeElement::main, [&] { ++volumes; }));
    ASSERT_TRUE(hardware_->listenToMute(id, [&] { ++mutes; }));
    card_->turn({{0.5F, 0.75F}, true});
    EXPECT_TRUE(waitFor([&] { return volumes == 1; }));
    EXPECT_EQ(hardware_->level(id), (DeviceLevel{{0.5F, 0.75F}, true, SimulatedCard::kPort}));
    EXPECT_EQ(mutes, 0);
    card_->turn({{0.5F, 0.75F}, false});
    EXPECT_TRUE(waitFor([&] { return mutes == 1; }));
    EXPECT_EQ(volumes, 1);
}

TEST_F(CardTest, IsNeverBehindAfterManyTurns) {
    const auto id = device("card.sink");
    for (int i = 0; i <= 100; ++i) {
        const float volume = static_cast<float>(i) / 128;
        card_->turn({{volume, volume}, false});
    }
    ASSERT_TRUE(hardware_->setMute(id, true)); // a round trip to the card, after the changes
    EXPECT_EQ(hardware_->volume(id, VolumeElement::main), 100.0F / 128);
}

TEST_F(CardTest, IsProtected) {
    ASSERT_TRUE(
        hardware_->setLevel(device("card.sink"), {{1, 1}, false}, LevelPersistence::temporary));
    hardware_->protect("card.sink", kFound);
    ASSERT_TRUE(session_->setDefault("card.sink"));
    EXPECT_TRUE(waitFor([&] { return card_->level() == kFound; }));
    EXPECT_FALSE(card_->requests().back().saved);
}

} // namespace
} // namespace halvo
