#include "exchange/service/qr_reader.h"

#include <ZXing/ReadBarcode.h>

#include <png.h>

namespace zvxtest {

GreyPicture readPng(std::string_view png)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    GreyPicture picture;
    if (!png_image_begin_read_from_memory(&image, png.data(), png.size()))
        return picture;
    image.format = PNG_FORMAT_GRAY;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.pixels.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr))
        return {};
    return picture;
}

GreyPicture scaled(const GreyPicture &picture, int width)
{
    GreyPicture small;
    small.width = width;
    small.height = picture.height * width / picture.width;
    for (int y = 0; y < small.height; ++y) {
        for (int x = 0; x < small.width; ++x) {
            const int left = x * picture.width / small.width;
            const int right = (x + 1) * picture.width / small.width;
            const int top = y * picture.height / small.height;
            const int bottom = (y + 1) * picture.height / small.height;
            int sum = 0;
            for (int row = top; row < bottom; ++row) {
                for (int column = left; column < right; ++column)
                    sum += picture.at(column, row);
            }
            small.pixels.push_back(
                static_cast<unsigned char>(sum / ((right - left) * (bottom - top))));
        }
    }
    return small;
}

std::string readQrCode(const GreyPicture &picture)
{
    if (picture.pixels.empty())
        return {};
    ZXing::DecodeHints hints;
    hints.setFormats(ZXing::BarcodeFormat::QRCode);
    const ZXing::ImageView view(picture.pixels.data(), picture.width, picture.height,
                                ZXing::ImageFormat::Lum);
    return ZXing::ReadBarcode(view, hints).text();
}

} // namespace zvxtest
