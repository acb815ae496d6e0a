#include "data/blob_transfer.h"

#include "platform/rt_error.h"

#include <QStringDecoder>

#include <algorithm>
#include <limits>

namespace blob_chunks {

namespace {

constexpr int kBadFileNumber = 52;
constexpr int kDeviceIoError = 57;

void put(QFile& file, const QByteArray& bytes) {
    if (!file.isOpen()) {
        throw rt::Error::standard(kBadFileNumber);
    }
    if (file.write(bytes) != bytes.size()) {
        throw rt::Error::standard(kDeviceIoError);
    }
}

QByteArray bytesOf(const rt::Variant& piece) {
    if (piece.isNull()) {
        throw rt::Error::standard(rt::InvalidUseOfNull);
    }
    return piece.type() == rt::VarType::Bytes ? piece.bytes() : piece.text().toUtf8();
}

qint32 nextOffset(qint32 offset) {
    if (offset > std::numeric_limits<qint32>::max() - kBlockSize) {
        throw rt::Error::standard(rt::Overflow);
    }
    return offset + kBlockSize;
}

engine::Field columnOf(RecSet& rs, const QString& fld) {
    return rs.fields().Item(rt::Variant(fld));
}

// Sized writes differ only in whether the read goes forward; the length of the last read is the
// same in both.
void writeSized(QFile& file, RecSet& rs, const QString& fld, qint32 size, bool advance) {
    const engine::Field field = columnOf(rs, fld);
    qint32 done = 0;
    qint32 offset = 0;
    while (done != size) {
        if (size - done < kBlockSize) {
            put(file, bytesOf(field.getChunk(offset, qint64(size) - kBlockSize)));
            done = size;
        } else {
            put(file, bytesOf(field.getChunk(offset, kBlockSize)));
            done += kBlockSize;
        }
        if (advance) {
            offset = nextOffset(offset);
        }
    }
}

qint32 writeUnsized(QFile& file, RecSet& rs, const QString& fld) {
    const engine::Field field = columnOf(rs, fld);
    qint32 offset = 0;
    qint64 pieceLength = 0;
    do {
        const rt::Variant piece = field.getChunk(offset, kBlockSize);
        if (piece.isNull()) {
            break;
        }
        put(file, bytesOf(piece));
        offset = nextOffset(offset);
        pieceLength =
            piece.type() == rt::VarType::Bytes ? piece.bytes().size() : piece.text().size();
    } while (pieceLength == kBlockSize);
    return offset;
}

}  // namespace

void WriteSizedBinary(QFile& file, RecSet& rs, const QString& fld, qint32 size) {
    writeSized(file, rs, fld, size, false);
}

qint32 WriteUnsizedBinary(QFile& file, RecSet& rs, const QString& fld) {
    return writeUnsized(file, rs, fld);
}

void WriteSizedText(QFile& file, RecSet& rs, const QString& fld, qint32 size) {
    writeSized(file, rs, fld, size, true);
}

void WriteUnsizedText(QFile& file, RecSet& rs, const QString& fld) {
    writeUnsized(file, rs, fld);
}

void ReadBinaryChunks(QFile& file, RecSet& rs, const QString& fld, qint32 length) {
    engine::Field field = columnOf(rs, fld);
    qint32 done = 0;
    while (done != length) {
        const qint32 wanted = std::min(kBlockSize, length - done);
        QByteArray piece = file.read(wanted);
        // A file that shrank since its length was taken gives zeros, as a read past its end does.
        piece.resize(wanted, '\0');
        done += wanted;
        field.appendChunk(rt::Variant(piece));
    }
}

void ReadTextChunks(QFile& file, RecSet& rs, const QString& fld, qint32 length) {
    engine::Field field = columnOf(rs, fld);
    // One decoder for the whole file, so that a character split between two blocks stays whole.
    QStringDecoder utf8(QStringDecoder::Utf8);
    qint32 done = 0;
    while (done != length) {
        const qint32 wanted = std::min(kBlockSize, length - done);
        done += wanted;
        field.appendChunk(rt::Variant(QString(utf8.decode(file.read(wanted)))));
    }
}

}  // namespace blob_chunks

using namespace blob_chunks;

bool RecSet::BlobToFile(const QString& fld, const QString& FName, qint32 FieldSize,
                        qint32 Threshold) {
    QFile::remove(FName);
    QFile file(FName);
    rt::resumeNext([&] {
        if (!file.open(QIODevice::WriteOnly)) {
            throw rt::Error::standard(rt::PathNotFound);
        }
    });
    bool written = false;
    if (FieldSize == -1) {
        qint32 total = 0;
        rt::resumeNext([&] { total = WriteUnsizedBinary(file, *this, fld); });
        written = total >= 1;
    } else {
        written = true;
        if (FieldSize <= Threshold) {
            rt::resumeNext([&] { put(file, bytesOf(ColsWithNull(fld))); });
        } else {
            rt::resumeNext([&] { WriteSizedBinary(file, *this, fld, FieldSize); });
        }
    }
    file.close();
    return written;
}

void RecSet::FileToBlob(const QString& FName, const QString& fld, qint32 Threshold) {
    QFile file(FName);
    // A file that can't be read leaves the column as it was: a mistyped name must not empty it.
    if (!file.open(QIODevice::ReadOnly) || file.size() > std::numeric_limits<qint32>::max()) {
        return;
    }
    const auto length = qint32(file.size());
    rt::resumeNext([&] {
        if (length <= Threshold) {
            Cols(fld) = rt::Variant(file.read(length));
        } else {
            ReadBinaryChunks(file, *this, fld, length);
        }
    });
    file.close();
}
