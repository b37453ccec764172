#pragma once

#include "platform/StatusPicture.h"

#include <QColor>
#include <QImage>
#include <QSize>

namespace halvo {

/// The colours of the desktop's bar, as far as they are known.
struct StatusTones {
    QColor label;  ///< text on the bar
    QColor accent; ///< the system's own accent

    bool operator==(const StatusTones&) const = default;
};

/// Draws the status item's pictures. Main thread only.
class StatusPainter {
  public:
    /// One colour on transparent: ARGB, not premultiplied; `size` points of `scale` pixels each.
    static QImage paint(const StatusPicture& picture, QSize size, qreal scale,
                        const StatusTones& tones);

  private:
    static QImage mask(const StatusPicture& picture, QSize size, qreal scale);
};

} // namespace halvo
