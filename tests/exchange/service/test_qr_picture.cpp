#include "exchange/service/qr_picture.h"

#include "exchange/service/qr_reader.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace zvx;
using zvxtest::GreyPicture;
using zvxtest::readPng;
using zvxtest::readQrCode;
using zvxtest::scaled;

const std::string token = "Zk3-_tVbS0qLw8xYc1Hd5RnA";

TEST(QrPicture, IsReadBackToItsText)
{
    for (const std::string &text :
         {std::string("a"), "http://127.0.0.1:43567/lc/card.html?s=" + token,
          "https://a-rather-long-name.of-an.exchange.example.org:65535/lc/card.html?s=" + token,
          std::string("开户绑卡"), std::string(500, 'x')}) {
        const GreyPicture picture = readPng(qrPicture(text));
        EXPECT_GE(picture.width, 400);
        EXPECT_LT(picture.width, 800);
        EXPECT_EQ(picture.width, picture.height);
        EXPECT_EQ(readQrCode(picture), text);
    }
}

TEST(QrPicture, IsReadInTheSizeInWhichClientsShowIt)
{
    const std::string text = "http://127.0.0.1:43567/lc/card.html?s=" + token;
    EXPECT_EQ(readQrCode(scaled(readPng(qrPicture(text)), 200)), text);
    EXPECT_EQ(readQrCode(scaled(readPng(qrPicture(text)), 191)), text);
}

TEST(QrPicture, HasAQuietZone)
{
    const GreyPicture picture = readPng(qrPicture("http://127.0.0.1:43567/lc/card.html"));
    int first = picture.width;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (picture.at(x, y) == 0)
                first = std::min({first, x, y, picture.width - 1 - x, picture.height - 1 - y});
            else
                ASSERT_EQ(picture.at(x, y), 255);
        }
    }
    // The corner of the finder pattern is seven squares wide.
    int side = 0;
    while (picture.at(first + side, first) == 0)
        ++side;
    EXPECT_EQ(first * 7, side * 4) << "four squares";
}

TEST(QrPicture, IsReadWithAStainOnIt)
{
    const std::string text = "http://127.0.0.1:43567/lc/card.html?s=" + token;
    GreyPicture picture = readPng(qrPicture(text));
    const int middle = picture.width / 2;
    const int stain = picture.width / 9;
    for (int y = middle; y < middle + stain; ++y) {
        for (int x = middle; x < middle + stain; ++x)
            picture.pixels[static_cast<std::size_t>(y * picture.width + x)] = 255;
    }
    EXPECT_EQ(readQrCode(picture), text);
}

TEST(QrPicture, RefusesWhatNoCodeCanHold)
{
    EXPECT_THROW(qrPicture(std::string(5'000, 'x')), std::runtime_error);
}

} // namespace
