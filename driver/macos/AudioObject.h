#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace halvo::driver {

/// The host's four-character words, as numbers.
constexpr std::uint32_t word(const char (&text)[5]) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8U | static_cast<unsigned char>(text[i]);
    return value;
}

/// The objects that the plug-in shows to the host.
using ObjectID = std::uint32_t;
namespace object {
inline constexpr ObjectID kUnknown = 0;
inline constexpr ObjectID kPlugIn = 1; ///< the host's choice
inline constexpr ObjectID kDevice = 2;
inline constexpr ObjectID kStream = 3;
inline constexpr ObjectID kVolume = 4;
inline constexpr ObjectID kMute = 5;
} // namespace object

/// Which side of an object a property is asked for.
namespace scope {
inline constexpr std::uint32_t kGlobal = word("glob");
inline constexpr std::uint32_t kInput = word("inpt");
inline constexpr std::uint32_t kOutput = word("outp");
} // namespace scope

/// Names of properties.
namespace selector {
// Every object.
inline constexpr std::uint32_t kBaseClass = word("bcls");
inline constexpr std::uint32_t kClass = word("clas");
inline constexpr std::uint32_t kOwner = word("stdv");
inline constexpr std::uint32_t kName = word("lnam");
inline constexpr std::uint32_t kManufacturer = word("lmak");
inline constexpr std::uint32_t kOwnedObjects = word("ownd");
// The plug-in.
inline constexpr std::uint32_t kDeviceList = word("dev#");
inline constexpr std::uint32_t kTranslateUIDToDevice = word("uidd");
inline constexpr std::uint32_t kBoxList = word("box#");
inline constexpr std::uint32_t kTranslateUIDToBox = word("uidb");
inline constexpr std::uint32_t kResourceBundle = word("rsrc");
// The device.
inline constexpr std::uint32_t kDeviceUID = word("uid ");
inline constexpr std::uint32_t kModelUID = word("muid");
inline constexpr std::uint32_t kTransportType = word("tran");
inline constexpr std::uint32_t kRelatedDevices = word("akin");
inline constexpr std::uint32_t kClockDomain = word("clkd");
inline constexpr std::uint32_t kIsAlive = word("livn");
inline constexpr std::uint32_t kIsRunning = word("goin");
inline constexpr std::uint32_t kCanBeDefault = word("dflt");
inline constexpr std::uint32_t kCanBeSystemDefault = word("sflt");
inline constexpr std::uint32_t kLatency = word("ltnc"); ///< the stream's, too
inline constexpr std::uint32_t kStreams = word("stm#");
inline constexpr std::uint32_t kControlList = word("ctrl");
inline constexpr std::uint32_t kSafetyOffset = word("saft");
inline constexpr std::uint32_t kNominalRate = word("nsrt");
inline constexpr std::uint32_t kAvailableRates = word("nsr#");
inline constexpr std::uint32_t kIsHidden = word("hidn");
inline constexpr std::uint32_t kStereoChannels = word("dch2");
inline constexpr std::uint32_t kChannelLayout = word("srnd");
inline constexpr std::uint32_t kZeroTimeStampPeriod = word("ring");
inline constexpr std::uint32_t kClockAlgorithm = word("clok");
inline constexpr std::uint32_t kClockIsStable = word("cstb");
// The stream.
inline constexpr std::uint32_t kIsActive = word("sact");
inline constexpr std::uint32_t kDirection = word("sdir");
inline constexpr std::uint32_t kTerminalType = word("term");
inline constexpr std::uint32_t kStartingChannel = word("schn");
inline constexpr std::uint32_t kVirtualFormat = word("sfmt");
inline constexpr std::uint32_t kVirtualFormats = word("sfma");
inline constexpr std::uint32_t kPhysicalFormat = word("pft ");
inline constexpr std::uint32_t kPhysicalFormats = word("pfta");
// The controls.
inline constexpr std::uint32_t kControlScope = word("cscp");
inline constexpr std::uint32_t kControlElement = word("celm");
inline constexpr std::uint32_t kScalar = word("lcsv");
inline constexpr std::uint32_t kDecibels = word("lcdv");
inline constexpr std::uint32_t kDecibelRange = word("lcdr");
inline constexpr std::uint32_t kScalarToDecibels = word("lcsd");
inline constexpr std::uint32_t kDecibelsToScalar = word("lcds");
inline constexpr std::uint32_t kSwitch = word("bcvl");
} // namespace selector

/// Classes of objects, and what some properties may say.
namespace kind {
inline constexpr std::uint32_t kObject = word("aobj");
inline constexpr std::uint32_t kPlugIn = word("aplg");
inline constexpr std::uint32_t kDevice = word("adev");
inline constexpr std::uint32_t kStream = word("astr");
inline constexpr std::uint32_t kLevelControl = word("levl");
inline constexpr std::uint32_t kVolumeControl = word("vlme");
inline constexpr std::uint32_t kBooleanControl = word("togl");
inline constexpr std::uint32_t kMuteControl = word("mute");
inline constexpr std::uint32_t kVirtualTransport = word("virt");
inline constexpr std::uint32_t kSpeaker = word("spkr");
inline constexpr std::uint32_t kRawClock = word("raww");
inline constexpr std::uint32_t kLinearPCM = word("lpcm");
} // namespace kind

struct PropertyAddress {
    std::uint32_t selector = 0;
    std::uint32_t scope = scope::kGlobal;
    std::uint32_t element = 0;
};

// The host's records, to the byte.

struct StreamFormatRecord {
    double sampleRate;
    std::uint32_t formatID;
    std::uint32_t formatFlags;
    std::uint32_t bytesPerPacket;
    std::uint32_t framesPerPacket;
    std::uint32_t bytesPerFrame;
    std::uint32_t channelsPerFrame;
    std::uint32_t bitsPerChannel;
    std::uint32_t reserved;

    bool operator==(const StreamFormatRecord&) const = default;
};

struct RangeRecord {
    double minimum;
    double maximum;
};

struct RangedFormatRecord {
    StreamFormatRecord format;
    RangeRecord sampleRates;
};

struct ChannelRecord {
    std::uint32_t label;
    std::uint32_t flags;
    std::array<float, 3> coordinates;
};

struct StereoLayoutRecord {
    std::uint32_t tag;
    std::uint32_t bitmap;
    std::uint32_t count;
    std::array<ChannelRecord, 2> channels;
};

} // namespace halvo::driver
