#include "ui/NowPlaying.h"

#include "nowplaying/AutoGenreController.h"
#include "nowplaying/NowPlayingMonitor.h"
#include "settings/AppSettings.h"
#include "ui/QtValues.h"

#include <QImage>

namespace halvo {

NowPlaying::NowPlaying(NowPlayingMonitor& monitor, AutoGenreController& controller,
                       AppSettings& settings, QObject* parent)
    : QObject(parent), monitor_(monitor), controller_(controller), settings_(settings) {
    const auto follow = [this](auto& published, void (NowPlaying::*changed)()) {
        subscriptions_.push_back(
            published.didChange([this, changed](const auto&) { Q_EMIT(this->*changed)(); }));
    };
    follow(monitor_.currentTrack, &NowPlaying::trackChanged);
    follow(monitor_.isPlaying, &NowPlaying::playingChanged);
    follow(monitor_.artworkImage, &NowPlaying::artworkChanged);
    follow(controller_.isEnabled, &NowPlaying::automaticChanged);
    follow(controller_.isLookingUp, &NowPlaying::lookingUpChanged);
    follow(controller_.currentGenre, &NowPlaying::genreChanged);
    follow(settings_.tagNoticeRead, &NowPlaying::automaticChanged);
}

bool NowPlaying::hasTrack() const {
    return monitor_.currentTrack.get().has_value();
}

QString NowPlaying::title() const {
    const auto& track = monitor_.currentTrack.get();
    return track ? toQt(track->title) : QString();
}

QString NowPlaying::artist() const {
    const auto& track = monitor_.currentTrack.get();
    return track ? toQt(track->artist) : QString();
}

bool NowPlaying::playing() const {
    return monitor_.isPlaying.get();
}

bool NowPlaying::hasArtwork() const {
    const auto& image = monitor_.artworkImage.get();
    return image && image->pixels && image->width > 0 && image->height > 0;
}

QVariant NowPlaying::artwork() const {
    if (!hasArtwork()) return QImage();
    const auto& image = monitor_.artworkImage.get();
    const QImage shared(reinterpret_cast<const uchar*>(image->pixels->data()), image->width,
                        image->height, image->width * 4, QImage::Format_ARGB32_Premultiplied);
    return shared.copy();
}

bool NowPlaying::automatic() const {
    return controller_.isEnabled.get();
}

void NowPlaying::setAutomatic(bool automatic) {
    controller_.isEnabled.set(automatic);
}

bool NowPlaying::noticeDue() const {
    return automatic() && !settings_.tagNoticeRead.get();
}

void NowPlaying::dismissNotice() {
    if (noticeDue()) settings_.setTagNoticeRead(true);
}

bool NowPlaying::lookingUp() const {
    return controller_.isLookingUp.get();
}

bool NowPlaying::hasGenre() const {
    return controller_.currentGenre.get().has_value();
}

QString NowPlaying::genre() const {
    return toQt(controller_.currentGenre.get().value_or(std::string()));
}

void NowPlaying::previousTrack() {
    monitor_.send(MediaCommand::previousTrack);
}

void NowPlaying::togglePlayPause() {
    monitor_.send(MediaCommand::togglePlayPause);
}

void NowPlaying::nextTrack() {
    monitor_.send(MediaCommand::nextTrack);
}

} // namespace halvo
