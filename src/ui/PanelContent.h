#pragma once

#include "platform/PanelWindow.h"
#include "ui/SystemAppearance.h"
#include "ui/VolumeTaper.h"

#include <QObject>
#include <QPoint>
#include <QSize>

#include <functional>
#include <memory>

class QQmlEngine;
class QQuickItem;
class QQuickWindow;

namespace halvo {

class MainQueue;

/// What the content needs from the desktop. The queue outlives the content.
struct PanelHost {
    MainQueue& mainQueue;
    VolumeTaper volumeTaper = VolumeTaper::identity;
    std::function<void()> quit; ///< the application's own shutdown path
};

/// The popover's content: view models over the services, and the views in the caller's window. Main
/// thread only.
///
/// The views fill the window from its top left corner, 320 points wide, with rounded corners of 10
/// points on a clear background; the window should be transparent where the desktop supports it.
/// Menus and the list of outputs are popup windows (`Qt::Popup`), children of that window.
class PanelContent final : public QObject {
    Q_OBJECT

  public:
    PanelContent(const PopoverServices& services, PanelHost host);
    ~PanelContent() override;

    /// Selects the software renderer; call before the process's first window.
    static void prepareRenderer();

    /// Creates the views inside `window`, which outlives them. Once.
    void attach(QQuickWindow& window);

    /// The content's current size, after a pending layout; also before `attach`.
    QSize fittingSize() const;

    /// Whether the fitting size is on its way to another by itself, step by step.
    bool isMoving() const;
    /// How long a default animation takes, in milliseconds.
    int animationDuration() const;

    /// Tells whether anybody can see the panel: while nobody can, the spectrum is not followed.
    void setShown(bool shown);

    /// Square corners and no border, for a window with a frame of the desktop's.
    void setFramed(bool framed);

    void setSystemAppearance(const SystemAppearance& appearance);

    /// Whether a place on the screen is in an open menu, which does not count as outside the panel.
    bool menuContains(QPoint globalPosition) const;
    /// Closes open menus; true when there were any.
    bool closeMenus();

    /// Shared with the settings window.
    QQmlEngine& engine();

  Q_SIGNALS:
    /// `fittingSize` has changed; called later on the main queue, before the next frame.
    void sizeChanged();
    /// Escape was pressed with no menu open.
    void closeRequested();
    /// The settings window was requested (Ctrl+,).
    void settingsWindowRequested();

  private Q_SLOTS:
    void announceSize();
    void followBands();
    void quit();

  private:
    struct Parts;

    void makeViews();

    std::unique_ptr<Parts> parts_;
};

} // namespace halvo
