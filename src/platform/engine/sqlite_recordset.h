#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"
#include "platform/engine/sqlite_support.h"

#include <memory>
#include <optional>
#include <vector>

namespace engine {

// A dynaset over the embedded engine. The rows are read when it opens and kept with their
// rowid; what is written goes back to the one table they come from.
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
        std::vector<rt::Variant> values;
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
    int itemType(int column, int columns) const;  // by the select list; 0 when it doesn't say
    bool hasCurrent() const;
    const Row& currentRow() const;
    void visit(int index);
    void leaveEdit();
    std::optional<int> nextLive(int from, int step) const;
    void find(const QString& criteria, int from);
    void requireUpdatable() const;
    std::vector<rt::Variant> readBaseRow(qint64 rowid) const;
    std::vector<rt::Variant> newRowDefaults();
    qint64 reserveCounter(const Column& counter);
    void insertBuffer();
    void updateBuffer();

    std::shared_ptr<Connection> connection_;
    QString sql_;     // the embedded engine's text, with the rowid first where updatable
    QString source_;  // as the caller wrote it
    QString table_;   // empty when the rows can't be written
    std::vector<int> itemTypes_;
    std::vector<Column> columns_;
    std::vector<Row> rows_;
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
