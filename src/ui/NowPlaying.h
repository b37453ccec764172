#pragma once

#include "base/Subscription.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace halvo {

class AppSettings;
class AutoGenreController;
class NowPlayingMonitor;

/// What is playing, the player's controls, and the choice of presets by genre.
class NowPlaying : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")
    Q_PROPERTY(bool hasTrack READ hasTrack NOTIFY trackChanged FINAL)
    Q_PROPERTY(QString title READ title NOTIFY trackChanged FINAL)
    Q_PROPERTY(QString artist READ artist NOTIFY trackChanged FINAL)
    Q_PROPERTY(bool playing READ playing NOTIFY playingChanged FINAL)
    Q_PROPERTY(bool hasArtwork READ hasArtwork NOTIFY artworkChanged FINAL)
    Q_PROPERTY(QVariant artwork READ artwork NOTIFY artworkChanged FINAL)
    Q_PROPERTY(bool automatic READ automatic WRITE setAutomatic NOTIFY automaticChanged FINAL)
    Q_PROPERTY(bool noticeDue READ noticeDue NOTIFY automaticChanged FINAL)
    Q_PROPERTY(bool lookingUp READ lookingUp NOTIFY lookingUpChanged FINAL)
    Q_PROPERTY(bool hasGenre READ hasGenre NOTIFY genreChanged FINAL)
    Q_PROPERTY(QString genre READ genre NOTIFY genreChanged FINAL)

  public:
    NowPlaying(NowPlayingMonitor& monitor, AutoGenreController& controller, AppSettings& settings,
               QObject* parent = nullptr);

    bool hasTrack() const;
    QString title() const;
    QString artist() const; ///< empty when unknown
    bool playing() const;
    bool hasArtwork() const;
    QVariant artwork() const; ///< a QImage, null when there is none

    bool automatic() const;
    void setAutomatic(bool automatic);
    /// Whether to show the notice that artists' names are sent: automatic mode is on and the notice
    /// is unread.
    bool noticeDue() const;
    Q_INVOKABLE void dismissNotice();
    bool lookingUp() const;
    bool hasGenre() const;
    QString genre() const;

    Q_INVOKABLE void previousTrack();
    Q_INVOKABLE void togglePlayPause();
    Q_INVOKABLE void nextTrack();

  Q_SIGNALS:
    void trackChanged();
    void playingChanged();
    void artworkChanged();
    void automaticChanged();
    void lookingUpChanged();
    void genreChanged();

  private:
    NowPlayingMonitor& monitor_;
    AutoGenreController& controller_;
    AppSettings& settings_;
    std::vector<Subscription> subscriptions_;
};

} // namespace halvo
