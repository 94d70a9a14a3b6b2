#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zvxtest {

/// Grey pixels, row by row.
struct GreyPicture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;

    unsigned char at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)
                      + static_cast<std::size_t>(x)];
    }
};

/// An empty picture where the bytes are no PNG.
GreyPicture readPng(std::string_view png);

/// The same picture in another size, each pixel the average of what it stands for.
GreyPicture scaled(const GreyPicture &picture, int width);

/// What a QR code in the picture says, "" where a reader finds none.
std::string readQrCode(const GreyPicture &picture);

} // namespace zvxtest
