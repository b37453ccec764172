#include "ui/SettingsWindow.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

namespace halvo {

SettingsWindow::SettingsWindow(QQmlEngine& engine) : engine_(engine) {}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::show() {
    if (!window_) {
        window_ = std::make_unique<QQuickView>(&engine_, nullptr);
        window_->setFlags(Qt::Dialog);
        window_->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Halvo/SettingsView.qml")));
        const QSize size = window_->initialSize();
        window_->setMinimumSize(size);
        window_->setMaximumSize(size);
        window_->resize(size);
    }
    if (!window_->isVisible()) window_->rootObject()->setProperty("currentIndex", 0);
    window_->setTitle(window_->rootObject()->property("title").toString());
    connect(window_->rootObject(), SIGNAL(titleChanged()), this, SLOT(takeTitle()),
            Qt::UniqueConnection);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

void SettingsWindow::takeTitle() {
    window_->setTitle(window_->rootObject()->property("title").toString());
}

} // namespace halvo
