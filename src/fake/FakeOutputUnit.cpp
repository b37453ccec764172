#include "fake/FakeOutputUnit.h"

namespace halvo {

FakeOutputUnit::FakeOutputUnit(FakeOutputUnitFactory& factory, CallLog& log)
    : factory_(factory), log_(log) {}

FakeOutputUnit::~FakeOutputUnit() {
    log_.add("unit dispose");
    if (factory_.current == this) factory_.current = nullptr;
}

bool FakeOutputUnit::setDevice(AudioDeviceID id) {
    log_.add("unit setDevice " + std::to_string(id));
    if (isInitialized_) return false;
    device = id;
    return !factory_.setupFails;
}

bool FakeOutputUnit::setStreamFormat(const StreamFormat& wanted) {
    if (isInitialized_) return false;
    format = wanted;
    return !factory_.setupFails;
}

bool FakeOutputUnit::setRenderCallback(RenderCallback callback, void* refCon) {
    if (isInitialized_) return false;
    callback_ = callback;
    refCon_ = refCon;
    return !factory_.setupFails;
}

bool FakeOutputUnit::initialize() {
    isInitialized_ = !factory_.setupFails;
    return isInitialized_;
}

bool FakeOutputUnit::start() {
    log_.add("unit start");
    isStarted = isInitialized_;
    return isStarted;
}

bool FakeOutputUnit::stop() {
    log_.add("unit stop");
    isStarted = false;
    return true;
}

std::vector<float> FakeOutputUnit::render(std::uint32_t frames, float fill) {
    if (!isStarted || !callback_) return {};
    std::vector<float> samples(std::size_t{frames} * format.channels, fill);
    RenderBuffer buffer{format.channels, frames * format.bytesPerFrame(), samples.data()};
    RenderBufferList list{1, &buffer};
    std::uint32_t flags = 0;
    const RenderTimestamp timestamp;
    callback_(refCon_, &flags, &timestamp, 0, frames, &list);
    return samples;
}

std::unique_ptr<OutputUnit> FakeOutputUnitFactory::makeOutputUnit() {
    if (hasNone) return nullptr;
    ++made;
    auto unit = std::make_unique<FakeOutputUnit>(*this, log_);
    current = unit.get();
    return unit;
}

} // namespace halvo
