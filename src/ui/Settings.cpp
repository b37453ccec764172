#include "ui/Settings.h"

#include "settings/AppSettings.h"
#include "ui/DisplayRules.h"
#include "ui/QtValues.h"

namespace halvo {

namespace {

/// For desktops without an accent colour.
constexpr Color kLightBlue{0x00 / 255.0, 0x7A / 255.0, 0xFF / 255.0};
constexpr Color kDarkBlue{0x0A / 255.0, 0x84 / 255.0, 0xFF / 255.0};

} // namespace

Settings::Settings(AppSettings& settings, QObject* parent)
    : QObject(parent), settings_(settings), customColors_(settings) {
    subscriptions_.push_back(
        settings_.showNowPlaying.didChange([this](bool) { Q_EMIT showNowPlayingChanged(); }));
    subscriptions_.push_back(settings_.showMenubarWaveform.didChange(
        [this](bool) { Q_EMIT showMenubarWaveformChanged(); }));
    subscriptions_.push_back(
        settings_.accentColorHex.didChange([this](const auto&) { Q_EMIT accentChanged(); }));
}

bool Settings::showNowPlaying() const {
    return settings_.showNowPlaying.get();
}

void Settings::setShowNowPlaying(bool show) {
    settings_.setShowNowPlaying(show);
}

bool Settings::showMenubarWaveform() const {
    return settings_.showMenubarWaveform.get();
}

void Settings::setShowMenubarWaveform(bool show) {
    settings_.setShowMenubarWaveform(show);
}

QString Settings::accentHex() const {
    return toQt(settings_.accentColorHex.get());
}

void Settings::setAccentHex(const QString& hex) {
    settings_.setAccentColorHex(hex.toStdString());
}

QColor Settings::accent() const {
    const auto fallback = appearance_.accent.value_or(appearance_.dark ? kDarkBlue : kLightBlue);
    return toQt(settings_.accentColor().value_or(fallback));
}

QVariantList Settings::palette() {
    QVariantList list;
    for (const auto& [name, hex] : AppSettings::factoryColors) {
        if (hex == std::string_view(AppSettings::kNativeAccent)) continue;
        list.push_back(QVariantMap{{QStringLiteral("name"), QString::fromLatin1(name)},
                                   {QStringLiteral("hex"), QString::fromLatin1(hex)}});
    }
    return list;
}

void Settings::setSystemAppearance(const SystemAppearance& appearance) {
    appearance_ = appearance;
    Q_EMIT appearanceChanged();
    Q_EMIT accentChanged();
}

bool Settings::addColor(const QString& typed) {
    const auto hex = hexFromTypedText(typed.toStdString());
    if (!Color::parse(hex)) return false;
    settings_.addCustomColor(hex, "Custom");
    settings_.setAccentColorHex(hex);
    return true;
}

} // namespace halvo
