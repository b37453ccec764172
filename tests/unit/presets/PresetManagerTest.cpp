#include "presets/PresetManager.h"
#include "base/NumberText.h"
#include "fake/FakePlatform.h"
#include "presets/FactoryPresets.h"
#include "presets/PresetCoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>

using namespace halvo;

namespace {

const std::filesystem::path kPresetsFile = "/support/Halvo/presets.json";

std::string record(const std::string& name,
                   const std::string& rest = R"("preamp":0,"bands":[0,0,0,0,0,0,0,0,0,0])") {
    return R"({"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","name":")" + name +
           R"(","isFactory":false,)" + rest + "}";
}

class Presets : public testing::Test {
  protected:
    FakePlatform fake;
    std::unique_ptr<PresetManager> manager;

    void open() {
        manager =
            std::make_unique<PresetManager>(fake.fileSystem, fake.userDefaults, fake.systemLog);
    }
    void openWith(const std::string& file) {
        fake.fileSystem.files = {{kPresetsFile, file}};
        open();
    }
    std::string file() { return fake.fileSystem.files[kPresetsFile]; }
    std::string names(std::size_t count) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += manager->presets.get()[i].name;
        return text;
    }
    bool wasSetAside() {
        return fake.fileSystem.files.contains("/support/Halvo/presets.json.unreadable");
    }
    const EQPreset& at(std::size_t index) { return manager->presets.get()[index]; }
};

} // namespace

TEST_F(Presets, AFirstLaunchHasTheFactoryListAndItsFile) {
    open();
    EXPECT_EQ(manager->presets.get().size(), 23U);
    EXPECT_EQ(at(0).name, "R&B");
    EXPECT_EQ(at(0).bands[0], 5.24F);
    EXPECT_EQ(at(22).name, "Clarity");
    EXPECT_EQ(decodePresets(file()), manager->presets.get());
    EXPECT_FALSE(wasSetAside());
    EXPECT_EQ(fake.fileSystem.writes, 1);
    EXPECT_EQ(manager->activePresetID.get(), std::nullopt);
    EXPECT_EQ(manager->outputVolume.get(), 1.0F);
    EXPECT_FALSE(fake.userDefaults.contains("halvo_outputVolume"));
    EXPECT_TRUE(file().starts_with("[{\"id\":\"")) << file().substr(0, 60);
    EXPECT_TRUE(file().contains("\"bands\":[5.24,13.84,11.3,2.66,-4.38,-3.0,4.64,5.3,6.0,7.5]"));
}

TEST(FactoryPresets, NoNameOrGainOfTheTableChangesUnnoticed) {
    std::string table;
    for (const auto& preset : defaultPresets()) {
        table += preset.name + " " + numberText(preset.preamp);
        for (const float gain : preset.bands)
            table += " " + numberText(gain);
        table += "\n";
        EXPECT_TRUE(preset.isFactory) << preset.name;
    }
    std::uint64_t checksum = 0xCBF29CE484222325; // FNV-1a
    for (const char character : table)
        checksum = (checksum ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    EXPECT_EQ(checksum, 0x71C07284CB3E9361) << table;
}

TEST_F(Presets, GoodAndOddFilesLoadAsTheyAre) {
    struct Row {
        const char* name;
        std::string file;
        std::size_t bands;
    };
    const Row rows[] = {
        {"plain", record("Mine"), 10},
        {"five bands", record("Mine", R"("preamp":1.5,"bands":[1,2,3,4,5])"), 5},
        {"twelve bands", record("Mine", R"("preamp":0,"bands":[1,2,3,4,5,6,7,8,9,10,11,12])"), 12},
        {"extra keys", record("Mine", R"("preamp":0,"bands":[],"colour":"red")"), 0},
        {"another encoder", record("Mine", R"("preamp":5.239999771118164,"bands":[5.24])"), 1},
    };
    for (const auto& [name, json, bands] : rows) {
        SCOPED_TRACE(name);
        openWith("[" + json + "]");
        EXPECT_EQ(manager->presets.get().size(), 24U);
        EXPECT_EQ(at(0).name, "Mine");
        EXPECT_EQ(at(0).bands.size(), bands);
        EXPECT_FALSE(wasSetAside());
        EXPECT_EQ(decodePresets(file()), manager->presets.get()) << "written back unchanged";
    }
    EXPECT_EQ(at(0).preamp, 5.24F);
    openWith("[" + record("Rock") + "]");
    EXPECT_EQ(manager->presets.get().size(), 23U) << "a custom Rock stands for the factory's";
}

TEST_F(Presets, AFileThatCannotBeReadIsSetAsideAndReplaced) {
    const std::string rows[] = {
        "",
        "nonsense",
        "{}",
        "[1]",
        "[" + record("A") + ",",
        "[" + record("A") + "]x",
        R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","name":"A","preamp":0,"bands":[]}])",
        "[" + record("A", R"("preamp":"0","bands":[])") + "]",
        "[" + record("A", R"("preamp":true,"bands":[])") + "]",
        "[" + record("A", R"("preamp":0,"bands":[null])") + "]",
        "[" + record("A", R"("preamp":1e39,"bands":[])") + "]",
        "[" + record("A", R"("preamp":0,"bands":[1e999])") + "]",
        R"([{"id":"{6F9619FF-8B86-D011-B42D-00C04FC964FF}","name":"A","preamp":0,"bands":[],"isFactory":false}])",
        R"([{"id":"6F9619FF8B86D011B42D00C04FC964FF","name":"A","preamp":0,"bands":[],"isFactory":false}])",
        R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","name":"A","preamp":0,"bands":[],"isFactory":1}])",
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row);
        openWith(row);
        EXPECT_EQ(manager->presets.get().size(), 23U);
        EXPECT_TRUE(wasSetAside());
        EXPECT_TRUE(decodePresets(file()));
    }
    openWith("[]");
    EXPECT_EQ(manager->presets.get().size(), 23U);
    EXPECT_FALSE(wasSetAside()) << "an empty list is nothing to keep";
}

TEST_F(Presets, AHundredThousandDamagedFilesNeverCrash) {
    open();
    const std::string good = file();
    const std::vector<std::string> hostile{"NaN",  "1e308", "-1e999", "[[[[[[", "{\"", "null",
                                           "\\u0", "\xFF",  "}",      "true",   ",",   "\"id\":"};
    std::mt19937 random(11);
    int readable = 0;
    for (int round = 0; round < 100'000; ++round) {
        std::string text = good.substr(0, 600);
        if (round % 3 != 0) text.resize(random() % text.size());
        for (unsigned edits = random() % 4; edits > 0 && !text.empty(); --edits) {
            const auto position = random() % text.size();
            if (random() % 2 == 0) {
                text[position] = static_cast<char>(random());
            } else {
                text.insert(position, hostile[random() % hostile.size()]);
            }
        }
        if (const auto presets = decodePresets(text)) ++readable;
    }
    EXPECT_LT(readable, 100'000);
    EXPECT_FALSE(decodePresets(std::string(1'000'000, '[')));
    const auto longName = decodePresets("[" + record(std::string(1'000'000, 'x')) + "]");
    ASSERT_TRUE(longName);
    EXPECT_EQ(longName->front().name.size(), 1'000'000U);
}

TEST_F(Presets, WhatCannotBeWrittenKeepsTheOldFile) {
    open();
    const auto before = file();
    manager->activate(at(0));
    manager->setBandGain(0, std::numeric_limits<float>::quiet_NaN());
    manager->createCustomPreset("Custom");
    EXPECT_EQ(file(), before);
}

TEST_F(Presets, MissingFactoryPresetsAreAppendedOnce) {
    openWith("[" + record("Mine") + "]");
    EXPECT_EQ(at(0).name, "Mine");
    EXPECT_EQ(at(1).name, "R&B");
    EXPECT_EQ(fake.systemLog.lines.size(), 23U);
    EXPECT_EQ(fake.systemLog.lines[0], "Halvo: Added missing factory preset 'R&B'");
    EXPECT_EQ(fake.fileSystem.writes, 1);
    manager->ensureFactoryPresets();
    EXPECT_EQ(fake.fileSystem.writes, 1);
}

TEST_F(Presets, AStoredVolumeIsHonouredEvenIfItIsZero) {
    fake.userDefaults.setFloat("halvo_outputVolume", 0);
    open();
    EXPECT_EQ(manager->outputVolume.get(), 0.0F);
    manager->setOutputVolume(0.5F);
    EXPECT_EQ(fake.userDefaults.floatForKey("halvo_outputVolume"), 0.5F);
}

TEST_F(Presets, DuplicatesStandBehindTheirSource) {
    open();
    const auto flat = *manager->presetNamed("Flat");
    const auto copy = manager->duplicatePreset(flat);
    EXPECT_EQ(at(6), copy);
    EXPECT_EQ(copy.name, "Flat Copy");
    EXPECT_FALSE(copy.isFactory);
    EXPECT_EQ(manager->duplicatePreset(copy).name, "Flat Copy Copy");
    auto unknown = flat;
    unknown.id = UUID::random();
    unknown.bands = {1};
    unknown.preamp = -3;
    EXPECT_EQ(manager->duplicatePreset(unknown).bands, std::vector<float>{1});
    EXPECT_EQ(manager->presets.get().back().preamp, -3);
    EXPECT_EQ(manager->presets.get().back().name, "Flat Copy") << "without its source at the end";
    EXPECT_FALSE(manager->presetNamed("flat"));
}

TEST_F(Presets, DeletingTheActiveOneTellsInOrderAndActivatesTheFirst) {
    open();
    manager->presets.modify([](auto& list) { list[0].preamp = -2; });
    const auto custom = manager->createCustomPreset("Custom");
    manager->activate(custom);
    manager->deviceBindings.set({{"x", custom.id}, {"y", custom.id}, {"z", at(3).id}});
    std::vector<std::string> order;
    const auto note = [&order](const char* what) {
        return [&order, what](const auto&) { order.emplace_back(what); };
    };
    const Subscription subscriptions[] = {manager->presets.subscribe(note("presets")),
                                          manager->activePresetID.subscribe(note("active")),
                                          manager->preamp.subscribe(note("preamp")),
                                          manager->deviceBindings.subscribe(note("bindings"))};
    order.clear();
    manager->deletePreset(custom);
    EXPECT_EQ(order, (std::vector<std::string>{"presets", "active", "preamp", "bindings"}));
    EXPECT_EQ(manager->activePresetID.get(), at(0).id);
    EXPECT_EQ(manager->preamp.get(), -2);
    EXPECT_EQ(manager->deviceBindings.get().size(), 1U);
    const auto before = file();
    order.clear();
    manager->deletePreset(at(2));
    EXPECT_TRUE(order.empty()) << "factory presets stay";
    EXPECT_EQ(file(), before);
}

TEST_F(Presets, DeletingTheLastOneLeavesThePreamp) {
    open();
    const auto custom = manager->createCustomPreset("Custom");
    manager->presets.set({custom});
    manager->activate(custom);
    manager->preamp.set(-4);
    manager->deletePreset(custom);
    EXPECT_EQ(manager->activePresetID.get(), std::nullopt);
    EXPECT_EQ(manager->preamp.get(), -4);
}

TEST_F(Presets, Moving) {
    struct Row {
        std::size_t from;
        std::size_t to;
        const char* expected;
    };
    for (const auto& [from, to, expected] :
         {Row{0, 2, "BCAD"}, Row{3, 1, "ADBC"}, Row{2, 2, "ABCD"}, Row{0, 4, "ABCD"},
          Row{4, 0, "ABCD"}}) {
        open();
        std::vector<EQPreset> list(4);
        for (std::size_t i = 0; i < 4; ++i)
            list[i].name = std::string(1, static_cast<char>('A' + i));
        manager->presets.set(list);
        const int writes = fake.fileSystem.writes;
        manager->movePreset(from, to);
        EXPECT_EQ(names(4), expected);
        EXPECT_EQ(fake.fileSystem.writes - writes, std::string(expected) == "ABCD" ? 0 : 1);
    }
}

TEST_F(Presets, EveryListOperationIsSavedAtOnce) {
    open();
    const auto isSaved = [&] { return decodePresets(file()) == manager->presets.get(); };
    const auto created = manager->createCustomPreset("Mine");
    EXPECT_EQ(at(23), (EQPreset{created.id, "Mine", 0, std::vector<float>(10, 0.0F), false}));
    EXPECT_TRUE(isSaved());
    (void)manager->duplicatePreset(at(0));
    EXPECT_TRUE(isSaved());
    manager->renamePreset(at(1), "Yours");
    EXPECT_TRUE(isSaved());
    manager->movePreset(1, 4);
    EXPECT_TRUE(isSaved());
    manager->deletePreset(created);
    EXPECT_EQ(manager->presets.get().size(), 24U);
    EXPECT_TRUE(isSaved());
}

TEST_F(Presets, EditsAreSavedWithTheNextListOperationOnly) {
    open();
    manager->activate(at(2));
    const auto before = file();
    auto plain = at(5);
    plain.name = "Plain";
    manager->setBandGain(0, 9.5F);
    EXPECT_EQ(manager->bandGain(0), 9.5F);
    EXPECT_EQ(file(), before);
    manager->renamePreset(at(5), "Plain");
    const auto saved = *decodePresets(file());
    EXPECT_EQ(saved[2].bands[0], 9.5F);
    EXPECT_TRUE(saved[2].isFactory);
    EXPECT_EQ(saved[5], plain);
    EXPECT_EQ(manager->bandGain(10), 0.0F);
    manager->setBandGain(10, 3);
    EXPECT_EQ(at(2).bands.size(), 10U);
    manager->activePresetID.set(UUID::random());
    EXPECT_EQ(manager->bandGain(0), 0.0F);
    open(); // what was renamed comes back under its factory name, at the end
    EXPECT_EQ(manager->presets.get().back().name, "Flat");
}

TEST_F(Presets, Bindings) {
    open();
    const int writes = fake.fileSystem.writes;
    manager->toggleBinding("x");
    EXPECT_EQ(fake.fileSystem.writes, writes) << "nothing is active";
    manager->activate(at(1));
    manager->toggleBinding("");
    manager->toggleBinding("x");
    EXPECT_EQ(manager->presetForDevice("x")->name, at(1).name);
    EXPECT_EQ(fake.fileSystem.writes, writes + 2);
    manager->activate(at(2));
    manager->toggleBinding("x");
    EXPECT_EQ(manager->presetForDevice("x")->name, at(2).name) << "replaced";
    manager->toggleBinding("x");
    EXPECT_FALSE(manager->presetForDevice("x"));
    manager->deviceBindings.set({{"x", UUID::random()}});
    EXPECT_FALSE(manager->presetForDevice("x")) << "a stale binding";
}

TEST_F(Presets, WithoutAPlaceForDataTheProcessEnds) {
    fake.fileSystem.support.reset();
    EXPECT_DEATH(open(), "");
}
