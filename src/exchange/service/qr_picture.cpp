#include "exchange/service/qr_picture.h"

#include <qrcodegen.hpp>

#include <png.h>

#include <stdexcept>
#include <vector>

namespace zvx {

namespace {

using qrcodegen::QrCode;

constexpr int quietZone = 4; ///< squares on each side, as the standard asks
constexpr int leastWidth = 400; ///< pixels

constexpr unsigned char black = 0;
constexpr unsigned char white = 255;

/// Grey pixels, row by row, `width` squared.
std::string pngOf(const std::vector<unsigned char> &pixels, int width)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(width);
    image.format = PNG_FORMAT_GRAY;
    png_alloc_size_t size = 0;
    std::string png;
    // Once to learn the size, and once to write.
    for (int round = 0; round < 2; ++round) {
        png.resize(size);
        if (!png_image_write_to_memory(&image, size == 0 ? nullptr : png.data(), &size, 0,
                                       pixels.data(), width, nullptr))
            throw std::runtime_error(std::string("a picture cannot be written: ") + image.message);
    }
    png.resize(size);
    return png;
}

QrCode codeOf(std::string_view text)
{
    try {
        return QrCode::encodeText(std::string(text).c_str(), QrCode::Ecc::MEDIUM);
    } catch (const std::length_error &) {
        throw std::runtime_error("a text is too long for a QR code");
    }
}

} // namespace

std::string qrPicture(std::string_view text)
{
    const QrCode code = codeOf(text);
    const int squares = code.getSize() + 2 * quietZone;
    const int scale = (leastWidth + squares - 1) / squares;
    const int width = squares * scale;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * width, white);
    for (int y = 0; y < width; ++y) {
        for (int x = 0; x < width; ++x) {
            if (code.getModule(x / scale - quietZone, y / scale - quietZone))
                pixels[static_cast<std::size_t>(y) * width + x] = black;
        }
    }
    return pngOf(pixels, width);
}

} // namespace zvx
