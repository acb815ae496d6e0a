#pragma once

#include "data/recset.h"

#include <QFile>
#include <QString>

// The block routines behind RecSet::BlobToFile and RecSet::FileToBlob, each on an open file and
// a column of the cursor's current row. The text routines serve the suite's programs that keep
// long text in files; BlobToFile and FileToBlob use only the binary ones.
namespace blob_chunks {

// What one GetChunk or AppendChunk moves at most.
inline constexpr qint32 kBlockSize = 32768;

// Writes `size` bytes of the column in blocks. Every block is read from the start of the value,
// and the last one is `size` - kBlockSize long: the suite's files were written so, and a value
// under one block fails here.
void WriteSizedBinary(QFile& file, RecSet& rs, const QString& fld, qint32 size);
// Writes the column block by block until a short block; gives the bytes asked for, which counts
// in whole blocks, or 0 for a Null.
qint32 WriteUnsizedBinary(QFile& file, RecSet& rs, const QString& fld);
// As WriteSizedBinary, but the read goes forward block by block; the text goes out as UTF-8.
void WriteSizedText(QFile& file, RecSet& rs, const QString& fld, qint32 size);
// As WriteUnsizedBinary, counting characters, for a text column.
void WriteUnsizedText(QFile& file, RecSet& rs, const QString& fld);
// Appends `length` bytes of the file to the column in blocks; what the file lacks is zeros.
void ReadBinaryChunks(QFile& file, RecSet& rs, const QString& fld, qint32 length);
// Appends `length` bytes of the UTF-8 file to the text column in blocks.
void ReadTextChunks(QFile& file, RecSet& rs, const QString& fld, qint32 length);

}  // namespace blob_chunks
