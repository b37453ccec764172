#include "PanelFixture.h"

namespace halvo {

namespace {

using Names = std::vector<std::string>;

TEST_F(PanelTest, DraggedPresetTakesThePlaceOfEachThatItEnters) {
    auto* const dragged = item("PresetPill", 0);
    const auto start = OfflinePanel::middle(dragged);
    panel.press(start);
    panel.move(start + QPointF(12, 0));
    EXPECT_FLOAT_EQ(static_cast<float>(dragged->opacity()), 0.4F);
    EXPECT_EQ(names(3), (Names{"R&B", "Hip-Hop", "Rock"})); // over itself

    Names seen;
    for (int x = 12; x < 220; x += 4) {
        panel.move(start + QPointF(x, 3));
        if (const auto second = names(4)[static_cast<std::size_t>(0)];
            seen.empty() || seen.back() != second)
            seen.push_back(second);
    }
    EXPECT_EQ(seen, (Names{"R&B", "Hip-Hop"})); // each step once, no way back
    EXPECT_EQ(names(3), (Names{"Hip-Hop", "Rock", "Jazz"}));

    seen.clear();
    for (int x = 216; x >= 0; x -= 4) {
        panel.move(start + QPointF(x, 3));
        if (const auto first = names(1)[0]; seen.empty() || seen.back() != first)
            seen.push_back(first);
    }
    EXPECT_EQ(seen, (Names{"Hip-Hop", "R&B"})); // and back
    for (int x = 0; x <= 216; x += 4)
        panel.move(start + QPointF(x, 3));
    EXPECT_EQ(names(3), (Names{"Hip-Hop", "Rock", "Jazz"}));
    panel.release(start + QPointF(216, 3));
    panel.settle(50);
    EXPECT_FLOAT_EQ(static_cast<float>(dragged->opacity()), 1);
    EXPECT_EQ(presets().activePreset()->name, "R&B");
}

TEST_F(PanelTest, DragThatEndsElsewhereLeavesNoPillBehind) {
    auto* const dragged = item("PresetPill", 0);
    const auto start = OfflinePanel::middle(dragged);
    const QPointF gap(dragged->width() / 2 + 4, 0); // between two pills
    for (const auto& place : {QPointF(12, 150), gap}) {
        panel.press(start);
        panel.move(start + QPointF(12, 0));
        panel.move(start + place);
        panel.release(start + place);
        panel.settle();
        EXPECT_FLOAT_EQ(static_cast<float>(dragged->opacity()), 1);
    }
    EXPECT_EQ(names(2), (Names{"R&B", "Hip-Hop"}));
}

TEST_F(PanelTest, MenusOfFactoryAndCustomPresets) {
    const auto openMenu = [this](int index) {
        panel.settle(300); // until the pills have moved
        panel.click(item("PresetPill", index), Qt::RightButton);
    };
    openMenu(0);
    EXPECT_EQ(menuEntries(), QStringList{"Duplicate"});
    choose("Duplicate");
    EXPECT_EQ(names(2), (Names{"R&B", "R&B Copy"}));
    EXPECT_EQ(presets().activePreset()->name, "R&B Copy");

    openMenu(1);
    EXPECT_EQ(menuEntries(), (QStringList{"Duplicate", "Rename", "Delete"}));
    choose("Rename");
    panel.type(Qt::Key_X, "x");
    panel.type(Qt::Key_Return);
    EXPECT_EQ(names(2), (Names{"R&B", "x"}));

    openMenu(1);
    choose("Rename");
    panel.type(Qt::Key_Y, "y");
    panel.type(Qt::Key_Escape);
    EXPECT_EQ(names(2), (Names{"R&B", "x"}));

    openMenu(1);
    choose("Rename");
    ASSERT_TRUE(item("RenameField"));
    EXPECT_EQ(item("RenameField")->width(), 90);
    panel.type(Qt::Key_Z, "z");
    panel.click(item("SectionDivider")); // beside it
    panel.settle();
    EXPECT_EQ(names(2), (Names{"R&B", "z"}));
    EXPECT_FALSE(item("RenameField"));
}

TEST_F(PanelTest, MenuByTheKeyboardDeletes) {
    const auto first = presets().presets.get().front();
    presets().activate(presets().duplicatePreset(first));
    panel.settle();
    EXPECT_EQ(names(2), (Names{"R&B", "R&B Copy"}));
    item("PresetPill", 1)->forceActiveFocus(Qt::TabFocusReason);
    panel.settle(50);
    for (const auto key : {Qt::Key_Menu, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}) {
        panel.type(key);
        panel.settle(50);
    }
    EXPECT_EQ(names(2), (Names{"R&B", "Hip-Hop"}));
    EXPECT_EQ(presets().activePreset()->name, "R&B");
}

TEST_F(PanelTest, NewPresetBecomesActive) {
    panel.named("Create custom preset")->forceActiveFocus(Qt::TabFocusReason);
    panel.type(Qt::Key_Space, " ");
    EXPECT_EQ(presets().presets.get().back().name, "Custom");
    EXPECT_EQ(presets().activePresetID.get(), presets().presets.get().back().id);
    panel.settle(500); // until it is in sight
    auto* const pill = item("PresetPill", static_cast<int>(presets().presets.get().size()) - 1);
    const auto left = pill->mapToScene(QPointF()).x();
    EXPECT_GE(left, 0);
    EXPECT_LE(left + pill->width(), panel.window().width());
}

} // namespace

} // namespace halvo
