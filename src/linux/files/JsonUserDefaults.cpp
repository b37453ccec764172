#include "linux/files/JsonUserDefaults.h"

#include "base/NumberText.h"
#include "base/TextValues.h"
#include "linux/files/XdgDirectories.h"
#include "platform/SystemLog.h"
#include "posix/AtomicFile.h"

#include <QByteArray>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

namespace halvo {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr std::size_t kMaximumFileSize = std::size_t{16} << 20U; // bytes
/// Our file is two levels deep; writing recurses once per level.
constexpr int kMaximumDepth = 64;
constexpr const char* kDataMember = "data";
constexpr int kIndentation = 4;

enum class FileState { missing, unreadable, read };

std::optional<Json> parse(const std::string& text) {
    bool tooDeep = false;
    const auto limitDepth = [&tooDeep](int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
        tooDeep = tooDeep || depth > kMaximumDepth;
        return !tooDeep;
    };
    auto values = Json::parse(text, limitDepth, /*allow_exceptions=*/false);
    if (tooDeep || !values.is_object()) return std::nullopt;
    return values;
}

FileState load(const fs::path& path, Json& values) {
    const auto target = AtomicFile::resolve(path);
    std::error_code error;
    if (target && !fs::exists(*target, error)) return FileState::missing;
    const auto text = AtomicFile::read(path, kMaximumFileSize);
    auto parsed = text ? parse(*text) : std::nullopt;
    if (!parsed) return FileState::unreadable;
    values = std::move(*parsed);
    return FileState::read;
}

bool setAside(const fs::path& path, SystemLog& log) {
    const auto aside = AtomicFile::setAside(path);
    log.write(aside ? "Halvo: Settings could not be read, set aside as " + aside->string()
                    : "Halvo: Settings in " + path.string() +
                          " cannot be read; changes will not be saved: " + aside.error().message());
    return aside.has_value();
}

std::optional<std::string> decodeBase64(const std::string& text) {
    const auto encoded = QByteArray::fromStdString(text);
    const auto result =
        QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
    // Re-encoding catches what the decoder lets pass: missing padding and stray bits.
    if (!result || result.decoded.toBase64() != encoded) return std::nullopt;
    return result.decoded.toStdString();
}

} // namespace

fs::path JsonUserDefaults::standardPath() {
    return configDirectory() / "halvo" / "defaults.json";
}

JsonUserDefaults::JsonUserDefaults(fs::path path, Access access)
    : path_(std::move(path)), access_(access), values_(std::make_unique<Json>(Json::object())) {}

JsonUserDefaults::JsonUserDefaults(fs::path path, SystemLog& log)
    : JsonUserDefaults(std::move(path), Access::readWrite) {
    if (load(path_, *values_) != FileState::unreadable) return;
    // A file that could not be set aside must not be overwritten.
    if (!setAside(path_, log)) access_ = Access::readOnly;
}

JsonUserDefaults JsonUserDefaults::readOnly(const fs::path& path) {
    JsonUserDefaults defaults(path, Access::readOnly);
    (void)load(path, *defaults.values_); // without a readable file there are no values
    return defaults;
}

JsonUserDefaults::~JsonUserDefaults() = default;
JsonUserDefaults::JsonUserDefaults(JsonUserDefaults&&) noexcept = default;
JsonUserDefaults& JsonUserDefaults::operator=(JsonUserDefaults&&) noexcept = default;

const Json* JsonUserDefaults::find(const std::string& key) const {
    const auto entry = values_->find(key);
    return entry == values_->end() || entry->is_null() ? nullptr : &*entry;
}

bool JsonUserDefaults::contains(const std::string& key) const {
    return find(key) != nullptr;
}

bool JsonUserDefaults::boolForKey(const std::string& key) const {
    const auto* entry = find(key);
    if (entry && entry->is_boolean()) return entry->get<bool>();
    if (const auto text = stringForKey(key)) return boolOfText(*text);
    return doubleForKey(key).value_or(0) != 0;
}

std::optional<double> JsonUserDefaults::doubleForKey(const std::string& key) const {
    const auto* entry = find(key);
    if (!entry || !entry->is_number()) return std::nullopt;
    return entry->get<double>();
}

std::optional<std::string> JsonUserDefaults::stringForKey(const std::string& key) const {
    const auto* entry = find(key);
    if (!entry || !entry->is_string()) return std::nullopt;
    return entry->get<std::string>();
}

std::optional<std::string> JsonUserDefaults::dataForKey(const std::string& key) const {
    const auto* entry = find(key);
    if (!entry || !entry->is_object() || entry->size() != 1) return std::nullopt;
    const auto encoded = entry->find(kDataMember);
    if (encoded == entry->end() || !encoded->is_string()) return std::nullopt;
    return decodeBase64(encoded->get<std::string>());
}

void JsonUserDefaults::setBool(const std::string& key, bool value) {
    set(key, value);
}

void JsonUserDefaults::setFloat(const std::string& key, float value) {
    // Through the text: as a double, 0.4 would be written 0.4000000059604645.
    if (std::isfinite(value)) set(key, Json::parse(numberText(value)));
}

void JsonUserDefaults::setDouble(const std::string& key, double value) {
    if (std::isfinite(value)) set(key, value);
}

void JsonUserDefaults::setString(const std::string& key, const std::string& value) {
    set(key, value);
}

void JsonUserDefaults::setData(const std::string& key, const std::string& bytes) {
    set(key,
        Json::object({{kDataMember, QByteArray::fromStdString(bytes).toBase64().toStdString()}}));
}

void JsonUserDefaults::remove(const std::string& key) {
    if (values_->erase(key) > 0) save();
}

void JsonUserDefaults::set(const std::string& key, Json value) {
    (*values_)[key] = std::move(value);
    save();
}

void JsonUserDefaults::save() const {
    if (access_ == Access::readOnly) return;
    std::error_code ignored; // the write then fails, silently by design
    if (fs::create_directories(path_.parent_path(), ignored)) {
        fs::permissions(path_.parent_path(), fs::perms::owner_all, ignored);
    }
    const auto text = values_->dump(kIndentation, ' ', false, Json::error_handler_t::replace);
    (void)AtomicFile::write(path_, text + "\n"); // by design silent, the value stays in memory
}

} // namespace halvo
