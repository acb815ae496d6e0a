#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"
#include "platform/engine/sqlite_support.h"

#include <memory>
#include <optional>
#include <vector>

namespace engine {

// A dynaset over the embedded engine. Rows of one table are kept as their rowids, read when the
// cursor stands on them and read again at each visit, so that what another program wrote since
// shows; what is written goes back to that table. Rows of any other query are read when it opens.
class SqliteRecordset : public Recordset {
public:
    SqliteRecordset(std::shared_ptr<Connection> connection, const dialect::Statement& statement,
                    QString source);
    ~SqliteRecordset() override;

    void close() override;
    bool eof() const override;
    bool bof() const override;
    void moveFirst() override;
    void moveNext() override;
    void movePrevious() override;
    void moveLast() override;
    void move(qint32 rows) override;
    qint32 absolutePosition() const override;
    qint32 recordCount() const override;
    void findFirst(const QString& criteria) override;
    void findNext(const QString& criteria) override;
    bool noMatch() const override;
    void edit() override;
    void addNew() override;
    void update() override;
    void cancelUpdate() override;
    void deleteCurrent() override;
    void requery() override;

    int fieldCount() const override;
    FieldInfo fieldInfo(int index) const override;
    int fieldIndex(const QString& name) const override;
    rt::Variant fieldValue(int index) const override;
    void setFieldValue(int index, const rt::Variant& value) override;

private:
    struct Column {
        FieldInfo info;
        QString baseColumn;  // the table's column it shows, empty for a computed one
        bool counter = false;
    };
    struct Row {
        qint64 rowid = 0;
        bool deleted = false;
        bool appended = false;
    };
    enum class Mode { Browse, Editing, Adding };
    // What a change of rows may alter, to put back when the transaction it was made in is undone.
    struct Snapshot {
        std::vector<Row> rows;
        int position;
        bool bof;
        bool eof;
        int highestVisited;
        Mode mode;
        std::vector<rt::Variant> buffer;
        std::vector<bool> dirty;
    };
    void rememberBeforeChange();

    sqlite3* db() const;
    void checkOpen() const;
    void load();
    void describe(sqlite3_stmt* statement, int first);
    void settleType(Column& column, const rt::Variant& value);
    int itemType(int column, int columns) const;  // by the select list; 0 when it doesn't say
    bool keyed() const { return !table_.isEmpty(); }
    bool hasCurrent() const;
    const Row& currentRow() const;
    const std::vector<rt::Variant>& currentValues() const;
    // The row's values as the file holds them now; false when the row is no more.
    bool fetch(qint64 rowid, std::vector<rt::Variant>& values) const;
    // The row's values as read at open, while they are still what the file holds; each is
    // handed out once.
    bool takeKeptValues(int index, std::vector<rt::Variant>& values) const;
    void moveKeptValues(int index, std::vector<rt::Variant>& values) const;
    void dropKeptValues() const;
    void visit(int index);
    void leaveEdit();
    std::optional<int> nextLive(int from, int step) const;
    void find(const QString& criteria, int from);
    void requireUpdatable() const;
    std::vector<rt::Variant> newRowDefaults();
    qint64 reserveCounter(const Column& counter);
    void insertBuffer();
    void updateBuffer();

    std::shared_ptr<Connection> connection_;  // first, so that it outlives the statement below
    QString sql_;       // the embedded engine's text, with the rowid first where updatable
    QString source_;    // as the caller wrote it
    QString table_;     // empty when the rows can't be written
    QString fetchSql_;  // one row of table_ by its rowid, with the cursor's columns
    std::vector<int> itemTypes_;
    std::vector<Column> columns_;
    std::vector<Row> rows_;
    std::vector<std::vector<rt::Variant>> readAtOpen_;  // the values, for rows without a table
    // Values of rows with a table, read at open inside a transaction, for their first visit.
    // Row after row, a value for each column, in blocks of many rows: a fill reads thousands.
    mutable std::vector<std::vector<rt::Variant>> keptFromOpen_;
    mutable std::vector<bool> keptUnvisited_;
    mutable size_t keptLeft_ = 0;
    std::optional<Connection::ReadMark> keptMark_;
    mutable std::unique_ptr<Prepared> fetchStatement_;
    mutable std::vector<rt::Variant> current_;  // the values of row currentRead_, once read
    mutable int currentRead_ = -1;
    int position_ = -1;
    bool bof_ = true;
    bool eof_ = true;
    int highestVisited_ = -1;
    bool noMatch_ = false;
    bool closed_ = false;
    Mode mode_ = Mode::Browse;
    std::vector<rt::Variant> buffer_;
    std::vector<bool> dirty_;
    std::optional<std::vector<rt::Variant>> defaults_;
};

}  // namespace engine
