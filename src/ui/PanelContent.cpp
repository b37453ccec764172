#include "ui/PanelContent.h"

#include "platform/MainQueue.h"
#include "ui/Bands.h"
#include "ui/Devices.h"
#include "ui/Equalizer.h"
#include "ui/NowPlaying.h"
#include "ui/Presets.h"
#include "ui/Settings.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <utility>

// Written by Qt's tools; the linker drops it from a static library unless somebody asks for it.
void qml_register_types_Halvo();

namespace halvo {

namespace {

/// Lays out what waits for the next frame, the innermost first.
void polish(QQuickItem& item) {
    for (auto* child : item.childItems())
        polish(*child);
    item.ensurePolished();
}

} // namespace

struct PanelContent::Parts {
    Parts(const PopoverServices& services, PanelHost given)
        : host(std::move(given)), devices(services.deviceManager),
          presets(services.presetManager, services.deviceManager, services.autoGenreController),
          equalizer(services.presetManager, host.volumeTaper),
          bands(services.presetManager, services.spectrumData), settings(services.appSettings),
          nowPlaying(services.nowPlayingMonitor, services.autoGenreController,
                     services.appSettings) {}

    PanelHost host;
    Devices devices;
    Presets presets;
    Equalizer equalizer;
    Bands bands;
    Settings settings;
    NowPlaying nowPlaying;
    QQmlEngine engine;
    std::unique_ptr<QQuickItem> view;
    std::shared_ptr<bool> announced; ///< set while an announcement of the size is under way
};

PanelContent::PanelContent(const PopoverServices& services, PanelHost host)
    : parts_(std::make_unique<Parts>(services, std::move(host))) {
    qml_register_types_Halvo();
    parts_->engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    makeViews();
}

PanelContent::~PanelContent() = default;

void PanelContent::prepareRenderer() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickWindow::setDefaultAlphaBuffer(true); // rounded corners show what is behind them
}

void PanelContent::makeViews() {
    QQmlComponent component(&parts_->engine,
                            QUrl(QStringLiteral("qrc:/qt/qml/Halvo/PopoverContentView.qml")));
    const auto model = [](auto& object) { return QVariant::fromValue(&object); };
    auto* view = component.createWithInitialProperties(
        {{QStringLiteral("devices"), model(parts_->devices)},
         {QStringLiteral("presets"), model(parts_->presets)},
         {QStringLiteral("equalizer"), model(parts_->equalizer)},
         {QStringLiteral("bands"), model(parts_->bands)},
         {QStringLiteral("settings"), model(parts_->settings)},
         {QStringLiteral("nowPlaying"), model(parts_->nowPlaying)}});
    if (!view) qFatal("%s", qPrintable(component.errorString())); // the views are part of the build
    parts_->view.reset(qobject_cast<QQuickItem*>(view));
    // By name: the signals are QML's own.
    connect(view, SIGNAL(sizeMayChange()), this, SLOT(announceSize()));
    connect(view, SIGNAL(quitRequested()), this, SLOT(quit()));
    connect(view, SIGNAL(closeRequested()), this, SIGNAL(closeRequested()));
    connect(view, SIGNAL(settingsWindowRequested()), this, SIGNAL(settingsWindowRequested()));
    connect(view, SIGNAL(bandsVisibleChanged()), this, SLOT(followBands()));
    connect(parts_->view.get(), &QQuickItem::implicitHeightChanged, this,
            &PanelContent::announceSize);
}

void PanelContent::attach(QQuickWindow& window) {
    window.setColor(Qt::transparent);
    parts_->view->setParentItem(window.contentItem());
    parts_->view->setFocus(true);
}

QSize PanelContent::fittingSize() const {
    polish(*parts_->view);
    return QSizeF(parts_->view->implicitWidth(), parts_->view->implicitHeight()).toSize();
}

bool PanelContent::isMoving() const {
    return parts_->view->property("moving").toBool();
}

int PanelContent::animationDuration() const {
    return parts_->view->property("animationDuration").toInt();
}

void PanelContent::setShown(bool shown) {
    if (!shown) closeMenus();
    parts_->view->setProperty("shown", shown);
}

void PanelContent::setFramed(bool framed) {
    parts_->view->setProperty("framed", framed);
}

void PanelContent::followBands() {
    parts_->bands.setFollowed(parts_->view->property("bandsVisible").toBool());
}

void PanelContent::setSystemAppearance(const SystemAppearance& appearance) {
    parts_->settings.setSystemAppearance(appearance);
}

bool PanelContent::menuContains(QPoint globalPosition) const {
    const auto windows = QGuiApplication::allWindows();
    for (const auto* window : windows) {
        if (window->type() == Qt::Popup && window->isVisible() &&
            window->geometry().contains(globalPosition))
            return true;
    }
    return false;
}

bool PanelContent::closeMenus() {
    bool closed = false;
    const auto windows = QGuiApplication::allWindows();
    for (auto* window : windows) {
        if (window->type() != Qt::Popup || !window->isVisible()) continue;
        window->hide();
        closed = true;
    }
    return closed;
}

QQmlEngine& PanelContent::engine() {
    return parts_->engine;
}

void PanelContent::announceSize() {
    if (parts_->announced) return; // one is under way
    parts_->announced = std::make_shared<bool>(true);
    parts_->host.mainQueue.async([this, weak = std::weak_ptr(parts_->announced)] {
        if (weak.expired()) return;
        parts_->announced.reset();
        Q_EMIT sizeChanged();
    });
}

void PanelContent::quit() {
    if (parts_->host.quit) parts_->host.quit();
}

} // namespace halvo
