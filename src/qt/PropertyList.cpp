#include "qt/PropertyList.h"

#include <QXmlStreamReader>

#include <limits>
#include <memory>
#include <plist/plist.h>

namespace halvo {

namespace {

/// Reads "<dict>": pairs of "<key>" and a value.
std::optional<std::string> readDictionary(QXmlStreamReader& reader, const QString& wanted) {
    std::optional<std::string> found;
    QString key;
    while (reader.readNextStartElement()) {
        if (reader.name() == u"key") {
            key = reader.readElementText();
        } else if (reader.name() == u"string" && key == wanted) {
            found = reader.readElementText().toStdString();
        } else {
            reader.skipCurrentElement();
        }
    }
    return found;
}

std::optional<std::string> textOfXML(const std::string& list, const std::string& key) {
    QXmlStreamReader reader(QByteArray::fromRawData(list.data(), qsizetype(list.size())));
    if (!reader.readNextStartElement() || reader.name() != u"plist") return std::nullopt;
    if (!reader.readNextStartElement() || reader.name() != u"dict") return std::nullopt;
    auto found = readDictionary(reader, QString::fromStdString(key));
    // To the end: a list that is broken further down was not read at all.
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError()) return std::nullopt;
    return found;
}

std::optional<std::string> textOfBinary(const std::string& list, const std::string& key) {
    if (list.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    plist_t root = nullptr;
    plist_from_bin(list.data(), static_cast<std::uint32_t>(list.size()), &root);
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, &plist_free);
    if (plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
    plist_t const value = plist_dict_get_item(root, key.c_str());
    if (plist_get_node_type(value) != PLIST_STRING) return std::nullopt;
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(value, &length);
    return text != nullptr ? std::optional(std::string(text, length)) : std::nullopt;
}

} // namespace

std::optional<std::string> propertyListString(const std::string& list, const std::string& key) {
    return list.starts_with("bplist00") ? textOfBinary(list, key) : textOfXML(list, key);
}

} // namespace halvo
