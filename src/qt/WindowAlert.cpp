#include "qt/WindowAlert.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <vector>

namespace halvo {

std::size_t WindowAlert::runModal(AlertStyle style, const std::string& message,
                                  const std::string& informativeText,
                                  const std::vector<std::string>& buttons) {
    QMessageBox box;
    box.setWindowTitle(QStringLiteral("Halvo"));
    box.setTextFormat(Qt::PlainText);
    box.setIcon(style == AlertStyle::critical ? QMessageBox::Critical : QMessageBox::Information);
    box.setText(QString::fromStdString(message));
    box.setInformativeText(QString::fromStdString(informativeText));
    std::vector<QAbstractButton*> added;
    for (const auto& text : buttons.empty() ? std::vector<std::string>{"OK"} : buttons) {
        // Qt puts the buttons in the order of the desktop.
        const auto role = added.empty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole;
        added.push_back(box.addButton(QString::fromStdString(text), role));
    }
    box.setDefaultButton(qobject_cast<QPushButton*>(added.front()));
    box.setEscapeButton(added.back());
    box.exec();
    const auto chosen = std::ranges::find(added, box.clickedButton());
    return static_cast<std::size_t>(
        std::min(chosen - added.begin(), std::ssize(added) - 1)); // closed: the last one
}

} // namespace halvo
