#pragma once

#include "base/Subscription.h"
#include "ui/VolumeTaper.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace halvo {

class PresetManager;

/// The equalizer's switch, preamp and volume. The volume is a position on the desktop's own scale.
class Equalizer : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged FINAL)
    Q_PROPERTY(float preamp READ preamp WRITE setPreamp NOTIFY preampChanged FINAL)
    Q_PROPERTY(QString preampText READ preampText NOTIFY preampChanged FINAL)
    Q_PROPERTY(float volume READ volume WRITE setVolume NOTIFY volumeChanged FINAL)
    Q_PROPERTY(QString volumeText READ volumeText NOTIFY volumeChanged FINAL)
    Q_PROPERTY(bool muted READ muted NOTIFY volumeChanged FINAL)

  public:
    Equalizer(PresetManager& manager, VolumeTaper taper, QObject* parent = nullptr);

    bool enabled() const;
    void setEnabled(bool enabled);
    float preamp() const; ///< dB
    void setPreamp(float preamp);
    QString preampText() const;
    float volume() const; ///< from 0 to 1
    void setVolume(float position);
    QString volumeText() const;
    bool muted() const;

  Q_SIGNALS:
    void enabledChanged();
    void preampChanged();
    void volumeChanged();

  private:
    PresetManager& manager_;
    VolumeTaper taper_;
    std::vector<Subscription> subscriptions_;
};

} // namespace halvo
