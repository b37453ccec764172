#include "platform/qt/PropertyList.h"

#include <QXmlStreamReader>

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

} // namespace

std::optional<std::string> propertyListString(const std::string& list, const std::string& key) {
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

} // namespace halvo
