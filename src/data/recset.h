#pragma once

#include "platform/engine/engine.h"
#include "platform/variant.h"

#include <QString>

#include <memory>

class RecSet;

// A column of the current row, read null-free (see RecSet::Cols) and written by assignment:
// rs.Cols("Name") = "Smith".
class ColumnRef {
public:
    ColumnRef(RecSet& recset, rt::Variant index) : recset_(recset), index_(std::move(index)) {}
    operator rt::Variant() const;
    ColumnRef& operator=(const rt::Variant& value);
    ColumnRef& operator=(const ColumnRef& other) { return *this = rt::Variant(other); }

private:
    RecSet& recset_;
    rt::Variant index_;
};

// The field collection of a cursor.
class Fields {
public:
    explicit Fields(engine::Recordset* recordset) : recordset_(recordset) {}
    int Count() const { return recordset_->fieldCount(); }
    engine::Field Item(const rt::Variant& index) const;

private:
    engine::Recordset* recordset_;
};

// The record cursor through which every read and write of a row runs. Beside the engine's own
// cursor it gives null-free reads (Cols), stamps of who and when on written rows (Edit, AddNew)
// and searches that answer found or not.
class RecSet {
public:
    void CloseRS();
    void CancelUpdate();
    void Delete();
    // The engine's end tests; spelled so because EOF is the C library's macro.
    bool Eof() const;
    bool Bof() const;
    void MoveFirst();
    void MoveNext();
    void MovePrevious();
    void MoveLast();
    // The row `lRows` after the first: an absolute position. `lBookMark` is not used.
    void Move(qint32 lRows, const rt::Variant& lBookMark = rt::Variant());
    qint32 AbsolutePosition() const;
    // The rows the cursor has seen so far: 0 for none, complete after MoveLast.
    qint32 RecordCount() const;
    // Stand in the interface for the suite's replicated variants; they do nothing here.
    void RecordChanges() {}
    void SyncRecordSet() {}
    bool FindFirst(const QString& sql);
    bool FindNext(const QString& sql);
    // Only the second condition is appended to `sql`, as " AND field = value" with the value
    // as it stands: the caller writes the first condition into `sql` itself.
    bool FindRecord(QString& sql, const QString& conditionfield1, const rt::Variant& value1,
                    const QString& conditionfield2, const rt::Variant& value2);
    void Edit();
    void AddNew();
    void ReQuery();
    void Update();
    engine::Recordset* locRecordset() const { return recordset_.get(); }
    void locRecordset(std::unique_ptr<engine::Recordset> recordset);
    // A column's value; a null comes back as "" for text, 0 for numbers, False for booleans,
    // and stays null for dates, binary and other types.
    ColumnRef Cols(const rt::Variant& index) { return ColumnRef(*this, index); }
    // Cols for a loop over many rows: the column's position is looked up once with
    // ColumnIndex (3265 for a name the cursor doesn't have) and read with ColsAt, under the
    // same null-free rule.
    int ColumnIndex(const QString& name) const;
    rt::Variant ColsAt(int index) const;
    // The value as it stands, Null included; Empty on any failure.
    rt::Variant ColsNoErr(const rt::Variant& index) const;
    rt::Variant ColsWithNull(const rt::Variant& index) const;
    Fields fields() const;
    bool BatchUpdate() const { return false; }
    void BatchUpdate(bool) {}
    bool NoMatch() const;
    qint32 FieldSize(const QString& fld) const;

    // Writes the long binary column of the current row to the file `FName`, replacing it:
    // whole when `FieldSize` is at most `Threshold`, else in blocks. `FieldSize` -1 stands for
    // a size the caller doesn't know, and only then does the result say anything: whether a
    // block was read. Failures are ignored.
    bool BlobToFile(const QString& fld, const QString& FName, qint32 FieldSize, qint32 Threshold);
    // Sets the long binary column of the row in the edit buffer from the file `FName`: whole
    // when the file is at most `Threshold` bytes long, else appended in blocks, so the column
    // should be empty before. Failures are ignored.
    void FileToBlob(const QString& FName, const QString& fld, qint32 Threshold);

private:
    friend class ColumnRef;
    rt::Variant readColumn(const rt::Variant& index) const;
    static rt::Variant nullFree(const engine::Field& f);
    void writeColumn(const rt::Variant& index, const rt::Variant& value);
    engine::Recordset& rs() const;
    engine::Field field(const rt::Variant& index) const;
    void stamp(const char* column, const rt::Variant& value);

    std::unique_ptr<engine::Recordset> recordset_;
};
