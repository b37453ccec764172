#pragma once

#include "base/Subscription.h"
#include "ui/CustomColors.h"
#include "ui/SystemAppearance.h"

#include <QColor>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace halvo {

class AppSettings;

/// The display settings, for the panel.
class Settings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel")
    Q_PROPERTY(bool showNowPlaying READ showNowPlaying WRITE setShowNowPlaying NOTIFY
                   showNowPlayingChanged FINAL)
    Q_PROPERTY(bool showMenubarWaveform READ showMenubarWaveform WRITE setShowMenubarWaveform NOTIFY
                   showMenubarWaveformChanged FINAL)
    Q_PROPERTY(QString accentHex READ accentHex WRITE setAccentHex NOTIFY accentChanged FINAL)
    Q_PROPERTY(QColor accent READ accent NOTIFY accentChanged FINAL)
    Q_PROPERTY(bool dark READ dark NOTIFY appearanceChanged FINAL)
    Q_PROPERTY(bool hasPanelMaterial READ hasPanelMaterial NOTIFY appearanceChanged FINAL)
    Q_PROPERTY(QVariantList palette READ palette CONSTANT FINAL)
    Q_PROPERTY(halvo::CustomColors* customColors READ customColors CONSTANT FINAL)

  public:
    explicit Settings(AppSettings& settings, QObject* parent = nullptr);

    bool showNowPlaying() const;
    void setShowNowPlaying(bool show);
    bool showMenubarWaveform() const;
    void setShowMenubarWaveform(bool show);
    QString accentHex() const;
    void setAccentHex(const QString& hex);
    /// The colour to draw with.
    QColor accent() const;
    bool dark() const { return appearance_.dark; }
    /// Whether the desktop draws the panel's background.
    bool hasPanelMaterial() const { return appearance_.hasPanelMaterial; }
    /// The factory colours except the system's own, each with `name` and `hex`.
    static QVariantList palette();
    CustomColors* customColors() { return &customColors_; }

    void setSystemAppearance(const SystemAppearance& appearance);

    /// Adds the typed colour and makes it the accent; false when it is invalid.
    Q_INVOKABLE bool addColor(const QString& typed);

  Q_SIGNALS:
    void showNowPlayingChanged();
    void showMenubarWaveformChanged();
    void accentChanged();
    void appearanceChanged();

  private:
    AppSettings& settings_;
    SystemAppearance appearance_;
    CustomColors customColors_;
    std::vector<Subscription> subscriptions_;
};

} // namespace halvo
