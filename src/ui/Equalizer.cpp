#include "ui/Equalizer.h"

#include "presets/PresetManager.h"
#include "ui/DisplayRules.h"
#include "ui/QtValues.h"

namespace halvo {

Equalizer::Equalizer(PresetManager& manager, VolumeTaper taper, QObject* parent)
    : QObject(parent), manager_(manager), taper_(taper) {
    subscriptions_.push_back(
        manager_.eqEnabled.didChange([this](bool) { Q_EMIT enabledChanged(); }));
    subscriptions_.push_back(manager_.preamp.didChange([this](float) { Q_EMIT preampChanged(); }));
    subscriptions_.push_back(
        manager_.outputVolume.didChange([this](float) { Q_EMIT volumeChanged(); }));
}

bool Equalizer::enabled() const {
    return manager_.eqEnabled.get();
}

void Equalizer::setEnabled(bool enabled) {
    manager_.eqEnabled.set(enabled);
}

float Equalizer::preamp() const {
    return manager_.preamp.get();
}

void Equalizer::setPreamp(float preamp) {
    manager_.preamp.set(preamp);
}

QString Equalizer::preampText() const {
    return toQt(gainText(preamp()));
}

float Equalizer::volume() const {
    return taper_.position(manager_.outputVolume.get());
}

void Equalizer::setVolume(float position) {
    manager_.setOutputVolume(taper_.volume(position));
}

QString Equalizer::volumeText() const {
    return toQt(percentText(volume()));
}

bool Equalizer::muted() const {
    return showsMuted(volume());
}

} // namespace halvo
