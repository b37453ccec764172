#include "driver/macos/ObjectTree.h"

#include "driver/macos/DeviceFormat.h"
#include "driver/macos/VirtualDevice.h"
#include "driver/macos/VolumeScale.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace halvo::driver;

struct ObjectTreeTests : testing::Test {
    VirtualDevice device{"/no/such/place", RingAccess::owner, {}};
    ObjectTree tree{device};

    PropertyValue value(ObjectID id, const PropertyAddress& address,
                        std::string_view qualifier = {}) {
        auto answer = tree.read(id, address, qualifier, {});
        if (!answer) ADD_FAILURE() << "no answer for " << address.selector;
        return answer ? *answer : PropertyValue::text("");
    }
    template <typename Record> Record record(ObjectID id, const PropertyAddress& address) {
        return recordOf<Record>(value(id, address).bytes()).value();
    }
    template <typename Record>
    std::expected<PropertyChange, PropertyError> set(ObjectID id, std::uint32_t selector,
                                                     const Record& record) {
        return tree.write(id, {selector}, std::as_bytes(std::span(&record, 1)));
    }
};

struct NamedTable {
    const char* name;
    ObjectID id;
    std::span<const Property> properties;
};

std::array<NamedTable, 5> tables() {
    return {{{"plug-in", object::kPlugIn, plugInProperties()},
             {"device", object::kDevice, deviceProperties()},
             {"stream", object::kStream, streamProperties()},
             {"volume", object::kVolume, volumeProperties()},
             {"mute", object::kMute, muteProperties()}}};
}

std::string spelled(std::uint32_t word) {
    std::string text;
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        text += static_cast<char>(word >> shift & 0xFFU);
    return text;
}

TEST_F(ObjectTreeTests, WhatIsClaimedAnswersWithItsSize) {
    for (const auto& [name, id, properties] : tables()) {
        for (const auto& property : properties) {
            for (const auto side : {scope::kGlobal, scope::kInput, scope::kOutput}) {
                SCOPED_TRACE(std::string(name) + " " + spelled(property.selector) + " " +
                             spelled(side));
                const PropertyAddress address{property.selector, side};
                const auto size = tree.size(id, address);
                ASSERT_EQ(tree.has(id, address), size.has_value());
                if (!size) continue;
                const PropertyValue answer = value(id, address);
                EXPECT_EQ(answer.size(), *size);
                if (answer.text()) continue;
                std::vector<std::byte> room(*size + 8);
                EXPECT_EQ(answer.copyTo(room), *size);
            }
        }
    }
}

TEST_F(ObjectTreeTests, EveryObjectSaysWhoItIsAndBelongsToOneThatOwnsIt) {
    for (const auto& [name, id, properties] : tables()) {
        SCOPED_TRACE(name);
        EXPECT_NE(record<std::uint32_t>(id, {selector::kClass}), 0U);
        EXPECT_NE(record<std::uint32_t>(id, {selector::kBaseClass}), 0U);
        if (id == object::kPlugIn) continue;
        const auto owner = record<ObjectID>(id, {selector::kOwner});
        const auto owned = value(owner, {selector::kOwnedObjects});
        bool isOwned = false;
        for (std::size_t i = 0; i + 4 <= owned.size(); i += 4)
            isOwned = isOwned || recordOf<ObjectID>(owned.bytes().subspan(i, 4)) == id;
        EXPECT_TRUE(isOwned);
    }
}

TEST_F(ObjectTreeTests, WhatIsSetToWhatItIsChangesNothing) {
    std::size_t settable = 0;
    for (const auto& [name, id, properties] : tables()) {
        for (const auto& property : properties) {
            SCOPED_TRACE(std::string(name) + " " + spelled(property.selector));
            const PropertyAddress address{property.selector};
            const PropertyValue present = value(id, address);
            const auto bytes = present.bytes();
            const auto change = tree.write(id, address, bytes);
            EXPECT_EQ(tree.isSettable(id, address), change.has_value());
            if (!change) {
                EXPECT_EQ(change.error(), PropertyError::notSettable);
                continue;
            }
            ++settable;
            EXPECT_TRUE(change->selectors.empty());
            EXPECT_FALSE(change->rate);
            const auto shorter = tree.write(id, address, bytes.first(bytes.size() - 1));
            ASSERT_FALSE(shorter);
            EXPECT_EQ(shorter.error(), PropertyError::wrongSize);
        }
    }
    EXPECT_EQ(settable, 7U);
}

TEST_F(ObjectTreeTests, WhatDoesNotExistIsSaid) {
    struct Case {
        const char* name;
        ObjectID id;
        PropertyAddress address;
        PropertyError error;
    };
    const Case cases[] = {
        {"an object", 6, {selector::kClass}, PropertyError::noObject},
        {"a property", object::kMute, {selector::kScalar}, PropertyError::noProperty},
        {"a channel",
         object::kDevice,
         {selector::kName, scope::kGlobal, 1},
         PropertyError::noProperty},
        {"a side", object::kDevice, {selector::kName, word("ptru")}, PropertyError::noProperty},
        {"the input's stereo",
         object::kDevice,
         {selector::kStereoChannels, scope::kInput},
         PropertyError::noProperty},
    };
    for (const auto& [name, id, address, error] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(tree.has(id, address));
        const auto size = tree.size(id, address);
        ASSERT_FALSE(size);
        EXPECT_EQ(size.error(), error);
    }
}

TEST_F(ObjectTreeTests, TheDeviceIsFoundByItsUIDAndIsAnOutput) {
    EXPECT_EQ(value(object::kDevice, {selector::kDeviceUID}).text(), "HalvoVirtualOutput_UID");
    EXPECT_EQ(value(object::kDevice, {selector::kName}).text(), "Halvo Virtual Output");
    const PropertyAddress translate{selector::kTranslateUIDToDevice};
    for (const auto& [uid, expected] : {std::pair{"HalvoVirtualOutput_UID", object::kDevice},
                                        std::pair{"halvovirtualoutput_uid", object::kUnknown}}) {
        const auto found = value(object::kPlugIn, translate, uid);
        EXPECT_EQ(recordOf<ObjectID>(found.bytes()), expected);
    }
    const auto id = object::kDevice;
    EXPECT_EQ(tree.size(id, {selector::kStreams, scope::kOutput}), 4U);
    EXPECT_EQ(tree.size(id, {selector::kStreams, scope::kInput}), 0U);
    EXPECT_EQ(record<std::uint32_t>(id, {selector::kCanBeDefault, scope::kOutput}), 1U);
    EXPECT_EQ(record<std::uint32_t>(id, {selector::kCanBeDefault, scope::kInput}), 0U);
}

TEST_F(ObjectTreeTests, ListsAreCutToWholeElements) {
    const auto rates = value(object::kDevice, {selector::kAvailableRates});
    ASSERT_EQ(rates.size(), 4 * sizeof(RangeRecord));
    std::array<std::byte, 2 * sizeof(RangeRecord) + 5> room{};
    EXPECT_EQ(rates.copyTo(room), 2 * sizeof(RangeRecord));
    const auto format = value(object::kStream, {selector::kVirtualFormat});
    EXPECT_EQ(format.copyTo(std::span(room).first(8)).error(), PropertyError::wrongSize);
}

TEST_F(ObjectTreeTests, ARateIsAskedForAndSetWhenTheHostSaysSo) {
    const auto asked = set(object::kDevice, selector::kNominalRate, 96000.0);
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->rate, 96000U);
    EXPECT_EQ(device.rate(), 48000U) << "not yet";
    ASSERT_TRUE(device.setRate(*asked->rate, 0));
    EXPECT_EQ(record<double>(object::kDevice, {selector::kNominalRate}), 96000.0);
    const auto format = record<StreamFormatRecord>(object::kStream, {selector::kPhysicalFormat});
    EXPECT_EQ(format, formatAt(96000.0));

    EXPECT_EQ(set(object::kStream, selector::kVirtualFormat, formatAt(44100.0))->rate, 44100U);
    auto other = formatAt(44100.0);
    other.bitsPerChannel = 16;
    EXPECT_EQ(set(object::kStream, selector::kVirtualFormat, other).error(),
              PropertyError::wrongFormat);
    for (const double rate : {0.0, 44100.5, 192000.0, std::nan("")}) {
        EXPECT_EQ(set(object::kDevice, selector::kNominalRate, rate).error(),
                  PropertyError::wrongValue);
    }
}

TEST_F(ObjectTreeTests, VolumeByEitherScale) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    struct Case {
        std::uint32_t selector;
        float given;
        float scalar;
        float decibels;
    };
    const Case cases[] = {
        {selector::kScalar, 0.5F, 0.5F, -6.0206F},
        {selector::kScalar, 1.0F, 1.0F, 0.0F},
        {selector::kScalar, 0.0F, 0.0F, -96.0F},
        {selector::kScalar, 7.0F, 1.0F, 0.0F},
        {selector::kScalar, -0.5F, 0.0F, -96.0F},
        {selector::kScalar, std::nanf(""), 0.0F, -96.0F},
        {selector::kScalar, kInfinity, 1.0F, 0.0F},
        {selector::kDecibels, -20.0F, 0.1F, -20.0F},
        {selector::kDecibels, -96.0F, 0.0F, -96.0F},
        {selector::kDecibels, -kInfinity, 0.0F, -96.0F},
        {selector::kDecibels, 12.0F, 1.0F, 0.0F},
        {selector::kDecibels, std::nanf(""), 0.0F, -96.0F},
    };
    for (const auto& [selector, given, scalar, decibels] : cases) {
        SCOPED_TRACE(given);
        ASSERT_TRUE(set(object::kVolume, selector, given));
        EXPECT_FLOAT_EQ(record<float>(object::kVolume, {selector::kScalar}), scalar);
        EXPECT_NEAR(record<float>(object::kVolume, {selector::kDecibels}), decibels, 1e-4);
    }
    for (int percent = 0; percent <= 100; ++percent) {
        const float scalar = static_cast<float>(percent) / 100.0F;
        EXPECT_NEAR(VolumeScale::scalar(VolumeScale::decibels(scalar)), scalar, 1e-6);
    }
}

TEST_F(ObjectTreeTests, AConversionTakesItsInputWhereTheAnswerGoes) {
    const float half = 0.5F;
    const auto answer = tree.read(object::kVolume, {selector::kScalarToDecibels}, {},
                                  std::as_bytes(std::span(&half, 1)));
    EXPECT_NEAR(recordOf<float>(answer->bytes()).value(), -6.0206F, 1e-4);
    const float lower = -20.0F;
    const auto back = tree.read(object::kVolume, {selector::kDecibelsToScalar}, {},
                                std::as_bytes(std::span(&lower, 1)));
    EXPECT_FLOAT_EQ(recordOf<float>(back->bytes()).value(), 0.1F);
}

TEST_F(ObjectTreeTests, AChangeNamesWhatOthersShouldReadAgain) {
    using Selectors = std::vector<std::uint32_t>;
    EXPECT_EQ(set(object::kVolume, selector::kDecibels, -3.0F)->selectors,
              (Selectors{selector::kScalar, selector::kDecibels}));
    EXPECT_EQ(set(object::kMute, selector::kSwitch, 7U)->selectors, Selectors{selector::kSwitch});
    EXPECT_EQ(record<std::uint32_t>(object::kMute, {selector::kSwitch}), 1U);
    EXPECT_EQ(set(object::kStream, selector::kIsActive, 0U)->selectors,
              Selectors{selector::kIsActive});
}

} // namespace
