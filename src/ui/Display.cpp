#include "ui/Display.h"

#include "ui/DisplayRules.h"
#include "ui/QtValues.h"

#include <QAccessible>
#include <QQuickItem>

namespace halvo {

bool Display::isLight(const QColor& color) {
    const auto plain = fromQt(color);
    return plain && halvo::isLight(*plain);
}

QString Display::hexDigits(const QColor& color) {
    const auto plain = fromQt(color);
    return plain ? toQt(halvo::hexDigits(*plain)) : QString();
}

QString Display::gainText(float gain) {
    return toQt(halvo::gainText(gain));
}

float Display::gainAt(float y, float height, float maxGain) {
    return halvo::gainAt(y, height, maxGain);
}

void Display::announceFocus(QQuickItem* item) {
    QAccessibleEvent focus(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&focus);
}

} // namespace halvo
