#pragma once

#include "platform/variant.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

// The database engine: databases opened by path, dynaset cursors over them, and the SQL
// dialect the suite writes (double-quoted strings, bracketed names, CDATE, DATEADD,
// SELECT ... INTO [;database=path].table). Failures are rt::Error with the engine's numbers.
namespace engine {

// Field types, numbered as the suite's data-access library numbers them.
enum FieldType : int {
    dbBoolean = 1,
    dbByte = 2,
    dbInteger = 3,
    dbLong = 4,
    dbCurrency = 5,
    dbSingle = 6,
    dbDouble = 7,
    dbDate = 8,
    dbBinary = 9,
    dbText = 10,
    dbLongBinary = 11,
    dbMemo = 12,
    dbGUID = 15,
    dbBigInt = 16,
    dbDecimal = 20,
};

struct FieldInfo {
    QString name;
    int type = dbText;
    qint32 size = 0;
};

class Recordset;

// One column of a cursor, read and written on the cursor's current row (or its edit buffer).
class Field {
public:
    Field(Recordset* recordset, int index) : recordset_(recordset), index_(index) {}
    QString name() const;
    int type() const;
    qint32 size() const;
    rt::Variant value() const;
    void setValue(const rt::Variant& value);
    // Part of a long value from `offset`: bytes of a binary value, characters of a text; shorter
    // or empty past its end, Null when the value is Null. A negative offset or length is 3001.
    rt::Variant getChunk(qint64 offset, qint64 length) const;
    // Adds a piece, bytes or text as the column holds, to the end of the value in the edit
    // buffer.
    void appendChunk(const rt::Variant& piece);

private:
    Recordset* recordset_;
    int index_;
};

// A dynaset: the rows of a query, updatable where they come from one table. RecordCount is the
// count of rows visited so far until MoveLast; a new row's counter is readable right after
// AddNew, and after its Update the row stands last. A row of one table is read as it stands
// each time the cursor comes to it: one another program deleted since can be moved over, and
// reading it is 3167.
class Recordset {
public:
    virtual ~Recordset() = default;

    virtual void close() = 0;
    virtual bool eof() const = 0;
    virtual bool bof() const = 0;
    virtual void moveFirst() = 0;
    virtual void moveNext() = 0;
    virtual void movePrevious() = 0;
    virtual void moveLast() = 0;
    virtual void move(qint32 rows) = 0;  // relative to the current row
    virtual qint32 absolutePosition() const = 0;
    virtual qint32 recordCount() const = 0;
    virtual void findFirst(const QString& criteria) = 0;
    virtual void findNext(const QString& criteria) = 0;
    virtual bool noMatch() const = 0;
    virtual void edit() = 0;
    virtual void addNew() = 0;
    virtual void update() = 0;
    virtual void cancelUpdate() = 0;
    virtual void deleteCurrent() = 0;
    virtual void requery() = 0;

    virtual int fieldCount() const = 0;
    virtual FieldInfo fieldInfo(int index) const = 0;
    // -1 for a name the cursor doesn't have; names match without regard to case.
    virtual int fieldIndex(const QString& name) const = 0;
    virtual rt::Variant fieldValue(int index) const = 0;
    virtual void setFieldValue(int index, const rt::Variant& value) = 0;

    // By position or by name; raises 3265 for one that isn't there.
    Field field(int index);
    Field field(const QString& name);
};

// A table's column as the suite declared it ("VARCHAR(50)", "DATETIME" ...), for making the
// same table in another database.
struct ColumnDeclaration {
    QString name;
    QString type;
    bool counter = false;
};

// The suite's definition of a table with these columns, which every backend reads.
QString tableDefinition(const QString& table, const std::vector<ColumnDeclaration>& columns);

class Database {
public:
    virtual ~Database() = default;

    // The tables in the order they were made, and a table's columns (3078 for no such table).
    virtual QStringList tableNames() = 0;
    virtual std::vector<ColumnDeclaration> columnsOf(const QString& table) = 0;
    // Adds the rows with their values exactly, a counter's among them, all or none.
    virtual void insertRows(const QString& table, const QStringList& columns,
                            const std::vector<std::vector<rt::Variant>>& rows) = 0;
    // The last number the table's counter gave, which may lie beyond its highest row; 0 when
    // it gave none or the table has no counter.
    virtual qint64 counterPosition(const QString& table) = 0;
    virtual void setCounterPosition(const QString& table, qint64 position) = 0;

    // A dynaset on a SELECT statement or on a bare table name.
    virtual std::unique_ptr<Recordset> openRecordset(const QString& source) = 0;
    // Runs one action query.
    virtual void execute(const QString& sql) = 0;
    virtual void close() = 0;
    virtual void deleteTable(const QString& name) = 0;
    // A named property of the database; 3270 when it has none of that name.
    virtual rt::Variant property(const QString& name) const = 0;
    virtual void setProperty(const QString& name, const rt::Variant& value) = 0;
    // The names of the properties set on the database, in no set order.
    virtual QStringList propertyNames() const = 0;

    // Holds one read lock for a run of reads until endRead, where no transaction is open;
    // false when one is, and the reads then belong to it.
    virtual bool beginRead() = 0;
    virtual void endRead() = 0;

    // Makes the statements up to commitTrans one unit; transactions nest.
    virtual void beginTrans() = 0;
    virtual void commitTrans() = 0;
    virtual void rollback() = 0;

    virtual QString name() const = 0;
};

// Opens an existing database, shared and writable: a file path opens the embedded engine, a
// postgresql:// URI a database on a server.
// A missing file or one that is no database is refused; nothing is ever created here.
std::unique_ptr<Database> openDatabase(const QString& path);
// Makes a new, empty database file; 3204 when the file exists already.
std::unique_ptr<Database> createDatabase(const QString& path);

// Removes a database createDatabase made, when making it up could not be finished.
void removeDatabase(const QString& path);

// How long a write waits for another process's lock before it fails with 3218.
void setLockWait(int milliseconds);
int lockWait();

// Reads many rows under one read lock: they all come from one moment, and the lock isn't taken
// and dropped for each row. Another program's writes wait for the end of the scope, within the
// lock wait; nothing may be written or begun as a transaction inside it.
class ReadScope {
public:
    explicit ReadScope(Database& database) : database_(database), open_(database.beginRead()) {}
    ~ReadScope() {
        if (open_) {
            database_.endRead();
        }
    }
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

private:
    Database& database_;
    bool open_;
};

// Makes a command's statements one unit: what the scope did not commit is rolled back when it
// ends, also when a failure leaves it.
class Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Database& database_;
    bool open_ = true;
};

}  // namespace engine
