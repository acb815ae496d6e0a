#pragma once

#include "platform/engine/connection_state.h"
#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace engine {

// A dynaset as every backend shows it. Rows of one table are kept as their keys, read when the
// cursor stands on them and read again at each visit, so that what another program wrote since
// shows; what is written goes back to that table. Rows of any other query are read when it
// opens. A backend runs the statements; the positions, counts, edits and their undoing are here.
class Dynaset : public Recordset {
public:
    // Whether one row's values match a FindFirst's criteria, given for its parameters.
    class CriteriaTest {
    public:
        virtual ~CriteriaTest() = default;
        virtual bool matches(const std::vector<rt::Variant>& parameters) = 0;
    };

    ~Dynaset() override;

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

protected:
    struct Column {
        FieldInfo info;
        QString baseColumn;  // the table's column it shows, empty for a computed one
        bool counter = false;
    };
    using ValueReader = std::function<void(std::vector<rt::Variant>& values)>;

    // `table` is the one table whose rows can be written, empty when they can't.
    Dynaset(std::shared_ptr<ConnectionState> state, QString source, QString table);
    // Reads the rows: the backend's constructor calls it once it can run the query.
    void load();

    // The type of a column of the result by the select list's item types (see
    // dialect::Statement::itemTypes); 0 when the list doesn't say.
    static int selectItemType(const std::vector<int>& itemTypes, int column, int columns);

    const QString& source() const { return source_; }
    const QString& table() const { return table_; }
    bool keyed() const { return !table_.isEmpty(); }
    std::vector<Column>& columns() { return columns_; }
    const std::vector<Column>& columns() const { return columns_; }

    // What the backend does. Runs the query: describes the columns first when none are known
    // yet, then gives each row's key (its table's row key when keyed) with a reader of its
    // values in column order.
    virtual void readRows(
        const std::function<void(qint64 key, const ValueReader& values)>& row) = 0;
    // The row's values as the database holds them now; false when the row is no more.
    virtual bool fetchRow(qint64 key, std::vector<rt::Variant>& values) const = 0;
    // The criteria with ?1, ?2 ... standing for the row's values it names.
    // A parameter marked as text compares without regard to case.
    virtual std::unique_ptr<CriteriaTest> prepareCriteria(const dialect::Tokens& tokens,
                                                          const std::vector<bool>& textParameters,
                                                          const QString& criteria) = 0;
    // A new row of the table with those of its columns; gives its key.
    virtual qint64 insertRow(const QStringList& names, const std::vector<rt::Variant>& values) = 0;
    // False when the row is no more.
    virtual bool updateRow(qint64 key, const QStringList& names,
                           const std::vector<rt::Variant>& values) = 0;
    virtual void deleteRow(qint64 key) = 0;
    // The next number of the table's counter column, taken now and never given again.
    virtual qint64 reserveCounter(const QString& column) = 0;
    // The declared default of each of the table's columns that has one, by column name.
    virtual std::vector<std::pair<QString, rt::Variant>> columnDefaults() = 0;
    // Whether the database behind the cursor is still open.
    virtual bool connectionOpen() const = 0;
    // Lets go of what the backend holds for the cursor.
    virtual void release() {}

private:
    struct Row {
        qint64 key = 0;
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

    void checkOpen() const;
    bool hasCurrent() const;
    const Row& currentRow() const;
    const std::vector<rt::Variant>& currentValues() const;
    // The row's values as read at open, while they are still what the database holds; each is
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
    void insertBuffer();
    void updateBuffer();

    // Shared, so that it outlives the backend's own hold on it: the cursor leaves it last.
    std::shared_ptr<ConnectionState> state_;
    QString source_;  // as the caller wrote it
    QString table_;
    std::vector<Column> columns_;
    std::vector<Row> rows_;
    std::vector<std::vector<rt::Variant>> readAtOpen_;  // the values, for rows without a table
    // Values of rows with a table, read at open inside a transaction, for their first visit:
    // row after row, a value for each column, in blocks of many rows, as a fill reads thousands.
    mutable std::vector<std::vector<rt::Variant>> keptFromOpen_;
    mutable std::vector<bool> keptUnvisited_;
    mutable size_t keptLeft_ = 0;
    std::optional<ConnectionState::ReadMark> keptMark_;
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
