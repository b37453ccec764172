#include "qt/QtImageReader.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <cstring>

namespace halvo {

namespace {

constexpr qint64 kMostPixels = 64'000'000;
constexpr int kMostMegabytes =
    320; ///< what a decoder may ask for; four bytes a pixel and a reserve

/// Drawings and containers are left out: they may name other files or grow without bound.
bool isCoverFormat(const QByteArray& format) {
    constexpr const char* kFormats[] = {"jpeg", "jpg", "png", "gif", "webp", "bmp"};
    return std::ranges::any_of(kFormats, [&](const char* name) { return format == name; });
}

Image imageOf(const QImage& picture) {
    const auto width = static_cast<std::size_t>(picture.width());
    const auto height = static_cast<std::size_t>(picture.height());
    auto pixels = std::make_shared<std::vector<std::uint32_t>>(width * height);
    for (std::size_t row = 0; row < height; ++row) {
        std::memcpy(pixels->data() + row * width, picture.constScanLine(static_cast<int>(row)),
                    width * sizeof(std::uint32_t));
    }
    return {picture.width(), picture.height(), std::move(pixels)};
}

} // namespace

std::optional<Image> QtImageReader::read(const std::string& bytes, int longestSide) {
    auto data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    (void)buffer.open(QIODevice::ReadOnly); // memory opens
    QImageReader::setAllocationLimit(kMostMegabytes);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead() || !isCoverFormat(reader.format())) return std::nullopt;

    const QSize size = reader.size();
    const QSize limit(longestSide, longestSide);
    const bool large = size.width() > longestSide || size.height() > longestSide;
    if (qint64{size.width()} * size.height() > kMostPixels) return std::nullopt;
    // A decoder that can stop at a smaller size saves most of the work.
    if (size.isValid() && large) reader.setScaledSize(size.scaled(limit, Qt::KeepAspectRatio));
    reader.setAutoTransform(true);
    QImage picture = reader.read();
    if (picture.isNull()) return std::nullopt;
    if (picture.width() > longestSide || picture.height() > longestSide) {
        picture = picture.scaled(limit, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    picture.convertTo(QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull()) return std::nullopt;
    return imageOf(picture);
}

} // namespace halvo
