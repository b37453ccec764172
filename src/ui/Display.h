#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

class QQuickItem;

namespace halvo {

/// The display rules, for QML. Stateless.
class Display : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

  public:
    using QObject::QObject;

    Q_INVOKABLE static bool isLight(const QColor& color);
    /// Six digits; empty for an invalid colour.
    Q_INVOKABLE static QString hexDigits(const QColor& color);
    Q_INVOKABLE static QString gainText(float gain);
    Q_INVOKABLE static float gainAt(float y, float height, float maxGain);
    /// Tells screen readers that the item is current, although the keyboard focus is elsewhere.
    Q_INVOKABLE static void announceFocus(QQuickItem* item);
};

} // namespace halvo
