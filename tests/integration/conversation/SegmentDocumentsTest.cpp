#include "ui/conversation/SegmentDocuments.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

class SegmentDocumentsTest : public testing::Test {
protected:
    static SegmentKey key(qsizetype message) { return {.item = {.index = message}}; }

    /// A segment that is dear to draw, with a picture of four million bytes.
    void addDear(qsizetype message)
    {
        SegmentDocuments::Entry &entry = documents.insert(key(message), std::make_unique<QTextDocument>(), 1);
        entry.isDear = true;
        entry.picture.pixmap = QPixmap(1000, 1000);
    }

    SegmentDocuments documents;
};

TEST_F(SegmentDocumentsTest, PicturesThatAreOutOfSightGoWhereTheyTakeMuchMemory)
{
    for (qsizetype message = 0; message < 12; ++message) {
        documents.beginPass();
        addDear(message);
        EXPECT_LE(documents.pictureBytes(), 20'000'000) << message;
    }
    // The documents themselves stay, so that a small scroll back lays nothing out.
    EXPECT_EQ(documents.count(), 12);
    ASSERT_TRUE(documents.picture(key(11)));
    EXPECT_FALSE(documents.picture(key(11))->pixmap.isNull());
    ASSERT_TRUE(documents.picture(key(0)));
    EXPECT_TRUE(documents.picture(key(0))->pixmap.isNull());
}

TEST_F(SegmentDocumentsTest, PicturesInSightStayHoweverMuchTheyTake)
{
    for (qsizetype message = 0; message < 12; ++message)
        addDear(message);
    for (int pass = 0; pass < 3; ++pass) {
        documents.beginPass();
        for (qsizetype message = 0; message < 12; ++message)
            ASSERT_TRUE(documents.find(key(message)));
    }
    EXPECT_EQ(documents.pictureBytes(), 48'000'000);
}

TEST_F(SegmentDocumentsTest, OnlyWhatIsDearToDrawHasAPicture)
{
    documents.insert(key(0), std::make_unique<QTextDocument>(), 1);
    EXPECT_FALSE(documents.picture(key(0)));
    EXPECT_FALSE(documents.picture(key(1)));
}

TEST_F(SegmentDocumentsTest, WhatWasNotUsedForManyPassesGoes)
{
    documents.insert(key(0), std::make_unique<QTextDocument>(), 1);
    documents.insert(key(1), std::make_unique<QTextDocument>(), 1);
    for (int pass = 0; pass < 30; ++pass) {
        documents.beginPass();
        documents.find(key(1));
    }
    EXPECT_FALSE(documents.peek(key(0)));
    EXPECT_TRUE(documents.peek(key(1)));
}

} // namespace
} // namespace morvane
