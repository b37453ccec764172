#include "nowplaying/GenrePresetMapper.h"

#include "platform/UnicodeText.h"

#include <algorithm>
#include <string_view>

namespace halvo {

namespace {

struct Row {
    std::string presetName;
    std::vector<std::string_view> keywords; ///< lower case, composed
};

/// A keyword matches as part of a tag, and the first row with a match wins. By design some keywords
/// can never win, and country and reggae map to presets of other names.
const std::vector<Row>& mapping() {
    static const std::vector<Row> rows = {
        {"Hip-Hop", {"hip hop", "hip-hop", "rap", "trap", "drill", "grime", "crunk", "bounce"}},
        {"R&B", {"r&b", "rnb", "r and b", "soul", "neo soul", "neo-soul", "motown"}},
        {"Rock",
         {"rock", "metal", "punk", "grunge", "alternative", "hard rock", "indie rock", "post-punk",
          "emo", "hardcore", "screamo", "nu metal", "prog rock"}},
        {"Jazz",
         {"jazz", "bebop", "swing", "bossa nova", "blues", "smooth jazz", "acid jazz", "big band",
          "cool jazz", "free jazz", "fusion"}},
        {"Classic",
         {"classical", "orchestra", "symphony", "chamber", "opera", "baroque", "romantic era",
          "contemporary classical", "minimalism", "art music"}},
        {"Electronic",
         {"electronic", "edm", "techno", "house", "trance", "dubstep", "drum and bass", "dnb",
          "ambient", "idm", "synthwave", "electro", "breakbeat", "jungle", "hardstyle", "gabber"}},
        {"Dance", {"dance", "disco", "eurodance", "dancehall", "dance pop", "hi-nrg"}},
        {"Pop",
         {"pop", "indie pop", "synth-pop", "synthpop", "k-pop", "j-pop", "art pop", "dream pop",
          "electropop", "teen pop", "bubblegum"}},
        {"Latin",
         {"latin", "reggaeton", "salsa", "bachata", "cumbia", "latin pop", "tropical", "merengue",
          "mariachi", "norteño", "samba", "bossa"}},
        {"Acoustic",
         {"acoustic", "folk", "singer-songwriter", "unplugged", "americana", "indie folk",
          "freak folk", "new acoustic"}},
        {"Piano", {"piano", "new age", "solo piano", "modern classical", "neoclassical"}},
        {"Lounge",
         {"lounge", "chillout", "chill", "downtempo", "lo-fi", "lofi", "trip hop", "trip-hop",
          "easy listening", "bossa nova"}},
        {"Spoken Word",
         {"podcast", "spoken", "audiobook", "comedy", "talk", "spoken word", "stand-up",
          "storytelling", "asmr"}},
        {"Vocal Booster",
         {"country", "bluegrass", "outlaw country", "country rock", "nashville", "honky-tonk",
          "western"}},
        {"Deep", {"reggae", "ska", "dub", "roots reggae", "lovers rock"}}};
    return rows;
}

} // namespace

std::string GenrePresetMapper::bestPreset(const std::vector<std::string>& tags) const {
    std::vector<std::string> lowered;
    for (const auto& tag : tags)
        lowered.push_back(unicode_.composed(unicode_.lowerCased(tag)));
    for (const auto& row : mapping()) {
        for (const auto& tag : lowered) {
            const auto isPart = [&](std::string_view keyword) { return tag.contains(keyword); };
            if (std::ranges::any_of(row.keywords, isPart)) return row.presetName;
        }
    }
    return "Flat";
}

} // namespace halvo
