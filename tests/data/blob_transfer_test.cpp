// Moving long binary and text columns to files and back, whole or in blocks.

#include "data/blob_transfer.h"
#include "fixtures.h"

#include <QFile>

using rt::Variant;

namespace {

constexpr qint32 kBlock = blob_chunks::kBlockSize;

// Bytes in which every block differs from the others, so a repeated block shows.
QByteArray sample(qint32 size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qint32 i = 0; i < size; ++i) {
        bytes[i] = char((i * 7 + i / kBlock * 13) % 251);
    }
    return bytes;
}

class BlobTransferTest : public testing_support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        execute("CREATE TABLE pictures (id INTEGER, photo LONGBLOB, note LONGTEXT)");
        execute("INSERT INTO pictures (id) VALUES (1)");
        rs = open("SELECT * FROM pictures");
    }

    void store(const Variant& value, const char* column = "photo") {
        rs->Edit();
        rs->Cols(column) = value;
        rs->Update();
    }
    // The column's value after a file went into it with that threshold.
    QByteArray readBack(const QString& file, qint32 threshold) {
        rs->Edit();
        rs->FileToBlob(file, "photo", threshold);
        rs->Update();
        return rs->ColsWithNull("photo").bytes();
    }
    QByteArray fileBytes() const {
        QFile file(target);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<no file>");
    }

    std::unique_ptr<RecSet> rs;
    QString target = path("photo.bin");
};

// A known size goes whole up to the threshold and above it in blocks, as the suite's files have
// it: every block is read from the start of the value, and the last read is size - one block long,
// which a value under one block can't give, so its file stays empty. An unknown size is read to
// the end. Back from a file, blocks add to what the column held.
TEST_F(BlobTransferTest, EachSizeGoesToAFileAndBackWholeOrInBlocks) {
    const struct {
        qint32 size;
        int repeatedFirstBlocks;  // what the block route writes: the first block so many times,
        qint32 tail;              // then this many bytes from the start of the value
    } cases[] = {
        {0, 0, 0}, {1, 0, 0}, {32767, 0, 0}, {32768, 1, 0}, {32769, 1, 1}, {100000, 3, 67232},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        const QByteArray value = sample(c.size);
        store(value);
        QFile::remove(target);
        EXPECT_TRUE(rs->BlobToFile("photo", target, c.size, c.size));
        EXPECT_EQ(fileBytes(), value);
        EXPECT_TRUE(rs->BlobToFile("photo", target, -1, 0));
        EXPECT_EQ(fileBytes(), value);

        store(QByteArray("old"));
        EXPECT_EQ(readBack(target, c.size), value);
        store(QByteArray("old"));
        EXPECT_EQ(readBack(target, c.size - 1), "old" + value);

        store(value);
        QFile(target).open(QIODevice::WriteOnly | QIODevice::Append);  // replaced, not added to
        EXPECT_TRUE(rs->BlobToFile("photo", target, c.size, c.size - 1));
        EXPECT_EQ(fileBytes(),
                  value.left(kBlock).repeated(c.repeatedFirstBlocks) + value.left(c.tail));
    }
}

TEST_F(BlobTransferTest, ANullOrAnUnreadableFileLeavesNothingToMove) {
    store(Variant::null());
    EXPECT_FALSE(rs->BlobToFile("photo", target, -1, 0));
    EXPECT_EQ(fileBytes(), QByteArray());
    EXPECT_TRUE(rs->BlobToFile("photo", target, 0, 0));  // a known size speaks for nothing

    store(QByteArray("kept"));
    EXPECT_EQ(readBack(path("missing.bin"), 100), "kept");
    EXPECT_FALSE(QFile::exists(path("missing.bin")));
}

TEST_F(BlobTransferTest, TextGoesOutInBlocksAsUtf8AndComesBackWithCharactersSplitBetweenBlocks) {
    // After one ASCII character, two-byte characters put a block boundary of the file in the
    // middle of one.
    const QString text = "a" + QString(kBlock + 5000, QChar(0x00e9)) + "end";
    store(text, "note");
    for (const bool sized : {true, false}) {
        QFile out(target);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        if (sized) {
            blob_chunks::WriteSizedText(out, *rs, "note", qint32(text.size()));
        } else {
            blob_chunks::WriteUnsizedText(out, *rs, "note");
        }
        out.close();
        EXPECT_EQ(fileBytes(), text.toUtf8()) << sized;

        QFile in(target);
        ASSERT_TRUE(in.open(QIODevice::ReadOnly));
        rs->Edit();
        rs->Cols("note") = QString();
        blob_chunks::ReadTextChunks(in, *rs, "note", qint32(in.size()));
        rs->Update();
        EXPECT_EQ(rs->ColsWithNull("note").text(), text) << sized;
    }
}

}  // namespace
