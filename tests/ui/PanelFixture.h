#pragma once

#include "nowplaying/AutoGenreController.h"
#include "nowplaying/NowPlayingMonitor.h"
#include "offline/OfflinePanel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace halvo {

/// The whole application in memory with its panel open.
class PanelTest : public testing::Test {
  protected:
    OfflineMachine machine;
    OfflinePanel panel{machine};

    void SetUp() override { panel.show(); }

    AppDelegate& delegate() { return machine.delegate(); }
    PresetManager& presets() { return delegate().presetManager(); }
    AppSettings& settings() { return delegate().appSettings(); }
    AutoGenreController& controller() { return delegate().autoGenreController(); }

    void open(const char* name) {
        auto* control = panel.named(QString::fromUtf8(name));
        ASSERT_TRUE(control) << name;
        panel.click(control);
        panel.settle();
    }
    QQuickItem* item(const char* view, int index = 0) {
        return panel.find(QString::fromUtf8(view), index);
    }
    /// Chooses an entry of the open menu.
    void choose(const QString& entry) {
        panel.settle(50); // until it is laid out
        auto* menu = panel.menu();
        ASSERT_TRUE(menu);
        for (int index = 0;; ++index) {
            auto* found = panel.find(QStringLiteral("MenuEntry"), index, menu);
            ASSERT_TRUE(found) << entry.toStdString();
            if (found->property("text").toString() != entry) continue;
            panel.click(found);
            panel.settle();
            return;
        }
    }
    QStringList menuEntries() {
        QStringList texts;
        auto* menu = panel.menu();
        for (int index = 0; menu; ++index) {
            auto* found = panel.find(QStringLiteral("MenuEntry"), index, menu);
            if (!found) break;
            texts.push_back(found->property("text").toString());
        }
        return texts;
    }
    std::vector<std::string> names(std::size_t count) {
        std::vector<std::string> result;
        for (std::size_t index = 0; index < count; ++index)
            result.push_back(presets().presets.get()[index].name);
        return result;
    }
};

} // namespace halvo
