#include "nowplaying/GenrePresetMapper.h"
#include "presets/FactoryPresets.h"
#include "qt/QtUnicodeText.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace halvo;

TEST(GenrePresetMapper, TheTableDecides) {
    struct Row {
        std::vector<std::string> tags;
        const char* preset;
    };
    const Row rows[] = {{{}, "Flat"},
                        {{"pop", "rock"}, "Rock"},
                        {{"Hip-Hop"}, "Hip-Hop"},
                        {{"grapefruit"}, "Hip-Hop"},
                        {{"therapy"}, "Hip-Hop"},
                        {{"seen live", "Neo-Soul"}, "R&B"},
                        {{"country rock"}, "Rock"},
                        {{" jazz "}, "Jazz"},
                        {{"j a z z"}, "Flat"},
                        {{"bossa nova"}, "Jazz"},
                        {{"chamber pop"}, "Classic"},
                        {{"modern classical"}, "Classic"},
                        {{"dub techno"}, "Electronic"},
                        {{"electropop"}, "Electronic"},
                        {{"deep house"}, "Electronic"},
                        {{"Hi-NRG"}, "Dance"},
                        {{"indie"}, "Flat"},
                        {{"indie", "indie pop"}, "Pop"},
                        {{"reggaeton"}, "Latin"},
                        {{"NORTEÑO"}, "Latin"},
                        {{"NORTEN\u0303O"}, "Latin"},
                        {{"Unplugged"}, "Acoustic"},
                        {{"new age"}, "Piano"},
                        {{"trip-hop"}, "Lounge"},
                        {{"asmr"}, "Spoken Word"},
                        {{"nashville"}, "Vocal Booster"},
                        {{"roots reggae"}, "Deep"},
                        {{"seen live", "female vocalists"}, "Flat"}};
    const QtUnicodeText unicode;
    const GenrePresetMapper mapper(unicode);
    const auto factory = defaultPresets();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.tags.empty() ? "no tags" : row.tags.front());
        EXPECT_EQ(mapper.bestPreset(row.tags), row.preset);
        EXPECT_NE(std::ranges::find(factory, row.preset, &EQPreset::name), factory.end());
    }
}
