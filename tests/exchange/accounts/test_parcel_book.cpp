#include "exchange/accounts/parcel_book.h"

#include "exchange/service/temporary_folder.h"
#include "exchange/store/store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include <sys/stat.h>

namespace {

using namespace zvx;

const Recipient someone{"林晓月", "13900000001", "云京市和平路1号"};

TEST(ParcelBooks, KeepRecipientsAndTracking)
{
    const zvxtest::TemporaryFolder folder;
    {
        ParcelBook book(folder.path());
        book.put({1, 2}, "/lc/youbika/", someone);
        book.put({1, 3}, "/lc/youbika/", {"a'b", "1", "\"; DROP TABLE parcels; --"});
        book.put({1, 4}, "/lc/tea/", someone);
        book.putTracking({1, 2}, {"自营物流", "ZY1000000002"});
    }
    ParcelBook book(folder.path());
    const auto parcel = book.find({1, 2});
    ASSERT_TRUE(parcel);
    EXPECT_EQ(parcel->id, (ParcelId{1, 2}));
    EXPECT_EQ(parcel->recipient.person, someone.person);
    EXPECT_EQ(parcel->recipient.phone, someone.phone);
    EXPECT_EQ(parcel->recipient.address, someone.address);
    EXPECT_EQ(parcel->tracking.carrier, "自营物流");
    EXPECT_EQ(parcel->tracking.number, "ZY1000000002");
    EXPECT_EQ(book.find({1, 3})->recipient.address, "\"; DROP TABLE parcels; --");
    EXPECT_TRUE(book.find({1, 3})->tracking.carrier.empty());
    EXPECT_FALSE(book.find({2, 1}));
    EXPECT_EQ(book.parcelsOf("/lc/youbika/").size(), 2u);
    EXPECT_EQ(book.parcelsOf("/lc/tea/"), (std::vector<ParcelId>{{1, 4}}));
    EXPECT_TRUE(book.parcelsOf("/ch/").empty());
    book.drop({1, 2});
    book.drop({9, 9});
    EXPECT_FALSE(book.find({1, 2}));
    EXPECT_EQ(book.parcelsOf("/lc/youbika/"), (std::vector<ParcelId>{{1, 3}}));
    EXPECT_THROW(book.put({1, 3}, "/lc/tea/", someone), StoreError) << "one id, one parcel";
}

TEST(ParcelBooks, AreTheirOwnersAlone)
{
    const zvxtest::TemporaryFolder folder;
    const ParcelBook book(folder.path());
    struct stat facts {
    };
    ASSERT_EQ(::stat((folder.path() / ParcelBook::kFileName).c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);
}

TEST(ParcelBooks, RefuseOtherFiles)
{
    const zvxtest::TemporaryFolder folder;
    std::ofstream(folder.path() / ParcelBook::kFileName)
        << "no database, but long enough to be read";
    EXPECT_THROW(ParcelBook(folder.path()), StoreError);
}

} // namespace
