#include "PanelFixture.h"

#include <QAccessible>

#include <functional>

namespace halvo {

namespace {

using Interfaces = QList<QAccessibleInterface*>;

/// All visible descendants except texts and groups.
Interfaces shownControls(QAccessibleInterface* root) {
    Interfaces list;
    for (int index = 0; index < root->childCount(); ++index) {
        auto* const child = root->child(index);
        const auto role = child->role();
        if (role != QAccessible::StaticText && role != QAccessible::Grouping &&
            !child->state().invisible)
            list.push_back(child);
        list += shownControls(child);
    }
    return list;
}

/// What a screen reader finds and does, without mouse or keyboard.
class AccessibilityTest : public PanelTest {
  protected:
    AccessibilityTest() { QAccessible::setActive(true); }

    Interfaces controls() {
        return shownControls(QAccessible::queryAccessibleInterface(&panel.window()));
    }
    QAccessibleInterface* control(const char* name) {
        for (auto* one : controls())
            if (one->text(QAccessible::Name) == name) return one;
        return nullptr;
    }
    void act(const char* name, const QString& action) {
        auto* const found = control(name);
        ASSERT_TRUE(found) << name;
        ASSERT_TRUE(found->actionInterface()->actionNames().contains(action)) << name;
        found->actionInterface()->doAction(action);
        panel.settle();
    }
    void press(const char* name) { act(name, QAccessibleActionInterface::pressAction()); }
};

TEST_F(AccessibilityTest, EveryControlHasItsRoleAndANameOfItsOwn) {
    machine.playTrack("Northern Lights", "The Fjord Quartet");
    for (const char* unfolded : {"Show EQ", "Settings", "Add custom color"})
        press(unfolded);
    const struct {
        const char* name;
        QAccessible::Role role;
    } cases[] = {{"Output", QAccessible::ComboBox},    {"Equalizer", QAccessible::CheckBox},
                 {"R&B", QAccessible::RadioButton},    {"Pause", QAccessible::Button},
                 {"Preamp", QAccessible::Slider},      {"Volume", QAccessible::Slider},
                 {"125 Hz", QAccessible::Slider},      {"16 kHz", QAccessible::Slider},
                 {"Purple", QAccessible::RadioButton}, {"Hue", QAccessible::Slider},
                 {"Quit Halvo", QAccessible::Button}};
    for (const auto& [name, role] : cases) {
        auto* const found = control(name);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->role(), role) << name;
    }
    QStringList names;
    for (auto* one : controls())
        names.push_back(one->text(QAccessible::Name));
    EXPECT_FALSE(names.contains(QString())) << names.join(u'|').toStdString();
    EXPECT_EQ(names.removeDuplicates(), 0) << names.join(u'|').toStdString();
}

TEST_F(AccessibilityTest, ActionsReachTheServices) {
    act("Equalizer", QAccessibleActionInterface::toggleAction());
    EXPECT_FALSE(presets().eqEnabled.get());
    press("Equalizer");
    EXPECT_TRUE(presets().eqEnabled.get());
    press("Rock");
    EXPECT_EQ(presets().activePreset()->name, "Rock");
    EXPECT_TRUE(control("Rock")->state().checked);
    EXPECT_FALSE(control("R&B")->state().checked);
    press("Bind preset to this output device");
    EXPECT_EQ(presets().deviceBindings.get().size(), 1U);
    press("Settings");
    press("Green");
    EXPECT_EQ(settings().accentColorHex.get(), "#34C759");
    EXPECT_FALSE(control("Native (system accent)")->state().checked);
    EXPECT_EQ(control("Output")->text(QAccessible::Description), "Built-in Speakers");
    press("Output");
    choose("Studio Headphones");
    EXPECT_EQ(control("Output")->text(QAccessible::Description), "Studio Headphones");
}

TEST_F(AccessibilityTest, SlidersTellAndTakeTheirValues) {
    press("Show EQ");
    const struct {
        const char* name;
        double least;
        double most;
        double step;
        std::function<float()> service;
    } cases[] = {{"64 Hz", -20, 20, 0.5, [this] { return presets().bandGain(1); }},
                 {"Preamp", -20, 20, 0.5, [this] { return presets().preamp.get(); }},
                 {"Volume", 0, 1, 0.01, [this] { return presets().outputVolume.get(); }}};
    for (const auto& [name, least, most, step, service] : cases) {
        auto* const value = control(name)->valueInterface();
        ASSERT_TRUE(value) << name;
        EXPECT_EQ(value->minimumValue().toDouble(), least) << name;
        EXPECT_EQ(value->maximumValue().toDouble(), most) << name;
        value->setCurrentValue(0.25);
        EXPECT_FLOAT_EQ(service(), 0.25F) << name;
        act(name, QAccessibleActionInterface::increaseAction());
        EXPECT_FLOAT_EQ(service(), static_cast<float>(0.25 + step)) << name;
        EXPECT_FLOAT_EQ(value->currentValue().toFloat(), service()) << name;
    }
    presets().activePresetID.set(std::nullopt);
    auto* const value = control("64 Hz")->valueInterface();
    value->setCurrentValue(3);
    EXPECT_EQ(value->currentValue().toDouble(), 0) << "nothing to set without a preset";
}

TEST_F(AccessibilityTest, WhatPlaysIsRead) {
    machine.playTrack("Northern Lights", "The Fjord Quartet");
    panel.settle();
    auto* const bar = QAccessible::queryAccessibleInterface(item("NowPlayingBar"));
    QStringList texts;
    for (int index = 0; index < bar->childCount(); ++index)
        if (bar->child(index)->role() == QAccessible::StaticText)
            texts.push_back(bar->child(index)->text(QAccessible::Name));
    EXPECT_TRUE(texts.contains("Northern Lights"));
    EXPECT_TRUE(texts.contains("The Fjord Quartet"));
}

} // namespace

} // namespace halvo
