#include "platform/engine/sqlite_recordset.h"

#include "platform/engine/errors.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace engine {

namespace {

constexpr int kKeptRowsPerBlock = 1024;

}  // namespace

SqliteRecordset::SqliteRecordset(std::shared_ptr<Connection> connection,
                                 const dialect::Statement& statement, QString source)
    : connection_(std::move(connection)),
      source_(std::move(source)),
      table_(statement.updatableTable),
      itemTypes_(statement.itemTypes) {
    if (statement.kind == dialect::Statement::TableName) {
        sql_ = "SELECT rowid, * FROM " + quoteName(table_);
        fetchSql_ = "SELECT * FROM " + quoteName(table_) + " WHERE rowid = ?1";
    } else if (!table_.isEmpty()) {
        // The rowid goes first, so that each row can be found again to read it or write it back.
        const std::vector<size_t> top = dialect::topLevel(statement.tokens);
        sql_ = "SELECT " + quoteName(table_) + ".rowid, " +
               dialect::render(statement.tokens, top[0] + 1);
        // A row read again shows even when it no longer meets the WHERE, as a dynaset's rows do.
        size_t from = 0;
        while (!statement.tokens[top[from]].isWord("from")) {
            ++from;
        }
        fetchSql_ = "SELECT " + dialect::render(statement.tokens, top[0] + 1, top[from + 1] + 1) +
                    " WHERE " + quoteName(table_) + ".rowid = ?1";
    } else {
        sql_ = dialect::render(statement.tokens);
    }
    load();
}

SqliteRecordset::~SqliteRecordset() {
    connection_->forgetCursor(this);
}

void SqliteRecordset::rememberBeforeChange() {
    Snapshot before{rows_, position_, bof_, eof_, highestVisited_, mode_, buffer_, dirty_};
    connection_->rememberCursor(this, [this, before = std::move(before)] {
        rows_ = before.rows;
        currentRead_ = -1;
        position_ = before.position;
        bof_ = before.bof;
        eof_ = before.eof;
        highestVisited_ = before.highestVisited;
        mode_ = before.mode;
        buffer_ = before.buffer;
        dirty_ = before.dirty;
    });
}

sqlite3* SqliteRecordset::db() const {
    checkOpen();
    return connection_->handle();
}

void SqliteRecordset::checkOpen() const {
    // Closing the database closes every cursor on it.
    if (closed_ || !connection_->db) {
        throw error(ObjectInvalid);
    }
}

int SqliteRecordset::itemType(int column, int columns) const {
    // A * stands for any number of columns: the items before the first one count from the
    // front, those after the last one from the back.
    const int items = int(itemTypes_.size());
    const auto star = std::find(itemTypes_.begin(), itemTypes_.end(), -1);
    const int before = int(star - itemTypes_.begin());
    const int after =
        int(std::find(itemTypes_.rbegin(), itemTypes_.rend(), -1) - itemTypes_.rbegin());
    if (column < before) {
        return itemTypes_[column];
    }
    const int fromBack = columns - 1 - column;
    return fromBack < after ? itemTypes_[items - 1 - fromBack] : 0;
}

void SqliteRecordset::describe(sqlite3_stmt* statement, int first) {
    const int count = sqlite3_column_count(statement);
    for (int c = first; c < count; ++c) {
        Column column;
        column.info.name = QString::fromUtf8(sqlite3_column_name(statement, c));
        const char* declared = sqlite3_column_decltype(statement, c);
        const QString declaredType = declared ? QString::fromUtf8(declared) : QString();
        column.info.type =
            declared ? fieldTypeOf(declaredType) : itemType(c - first, count - first);
        column.info.size = fieldSizeOf(column.info.type, declaredType);
        const char* origin = sqlite3_column_origin_name(statement, c);
        const char* originTable = sqlite3_column_table_name(statement, c);
        if (origin && originTable && !table_.isEmpty() &&
            QString::fromUtf8(originTable).compare(table_, Qt::CaseInsensitive) == 0) {
            column.baseColumn = QString::fromUtf8(origin);
            int autoIncrement = 0;
            sqlite3_table_column_metadata(db(), nullptr, originTable, origin, nullptr, nullptr,
                                          nullptr, nullptr, &autoIncrement);
            column.counter = autoIncrement != 0;
        }
        columns_.push_back(column);
    }
}

void SqliteRecordset::settleType(Column& column, const rt::Variant& value) {
    // A computed column takes its type from the first value it shows.
    if (column.info.type != 0 || value.isNull()) {
        return;
    }
    const rt::VarType kind = value.type();
    column.info.type = kind == rt::VarType::Long     ? dbLong
                       : kind == rt::VarType::Double ? dbDouble
                       : kind == rt::VarType::Bytes  ? dbLongBinary
                                                     : dbText;
    column.info.size = fieldSizeOf(column.info.type, QString());
}

void SqliteRecordset::load() {
    Prepared statement(*connection_, sql_, source_);
    const int first = keyed() ? 1 : 0;
    // Stepped before its columns are read: a statement kept from before a change of the table's
    // definition is prepared again by its first step.
    bool more = statement.step();
    if (columns_.empty()) {
        describe(statement.get(), first);
    }
    const int count = int(columns_.size());
    std::vector<int> unsettled;
    for (int c = 0; c < count; ++c) {
        if (columns_[c].info.type == 0) {
            unsettled.push_back(c);
        }
    }
    rows_.clear();
    readAtOpen_.clear();
    dropKeptValues();
    currentRead_ = -1;
    // Inside a transaction the values read now stay true until it ends or this connection
    // writes, so a walk through the rows needs no second look-up of each.
    const std::optional<Connection::ReadMark> mark =
        keyed() ? connection_->readMark() : std::nullopt;
    for (; more; more = statement.step()) {
        std::erase_if(unsettled, [&](int c) {
            if (sqlite3_column_type(statement.get(), c + first) == SQLITE_NULL) {
                return false;
            }
            settleType(columns_[c], readColumn(statement.get(), c + first, 0));
            return true;
        });
        Row row;
        if (keyed()) {
            row.rowid = sqlite3_column_int64(statement.get(), 0);
        } else {
            row.rowid = qint64(rows_.size());
        }
        std::vector<rt::Variant>* values = nullptr;
        if (!keyed()) {
            values = &readAtOpen_.emplace_back();
            values->reserve(count);
        } else if (mark || rows_.empty()) {
            // Without a mark only the first row is kept: the cursor stands on it at once.
            if (rows_.size() % kKeptRowsPerBlock == 0) {
                keptFromOpen_.emplace_back().reserve(size_t(count) *
                                                     (mark ? kKeptRowsPerBlock : 1));
            }
            values = &keptFromOpen_.back();
        }
        for (int c = 0; values && c < count; ++c) {
            values->push_back(readColumn(statement.get(), c + first, columns_[c].info.type));
        }
        rows_.push_back(row);
    }
    mode_ = Mode::Browse;
    noMatch_ = false;
    highestVisited_ = -1;
    if (rows_.empty()) {
        position_ = -1;
        bof_ = eof_ = true;
    } else {
        bof_ = eof_ = false;
        visit(0);
        if (keyed()) {
            keptLeft_ = mark ? rows_.size() : 1;
            keptUnvisited_.assign(keptLeft_, true);
            keptMark_ = mark;
            // The first row was read for the cursor to stand on, with or without a mark.
            moveKeptValues(0, current_);
            currentRead_ = 0;
        }
    }
}

void SqliteRecordset::close() {
    connection_->forgetCursor(this);
    closed_ = true;
    rows_.clear();
    readAtOpen_.clear();
    dropKeptValues();
    current_.clear();
    currentRead_ = -1;
    fetchStatement_.reset();
}

bool SqliteRecordset::eof() const {
    checkOpen();
    return eof_;
}

bool SqliteRecordset::bof() const {
    checkOpen();
    return bof_;
}

bool SqliteRecordset::hasCurrent() const {
    return !bof_ && !eof_ && position_ >= 0 && position_ < int(rows_.size());
}

const SqliteRecordset::Row& SqliteRecordset::currentRow() const {
    if (!hasCurrent()) {
        throw error(NoCurrentRecord);
    }
    const Row& row = rows_[position_];
    if (row.deleted) {
        throw error(RecordDeleted);
    }
    return row;
}

const std::vector<rt::Variant>& SqliteRecordset::currentValues() const {
    const Row& row = currentRow();
    if (!keyed()) {
        return readAtOpen_[position_];
    }
    if (currentRead_ != position_) {
        if (!takeKeptValues(position_, current_) && !fetch(row.rowid, current_)) {
            throw error(RecordDeleted);  // by another program since it was last read
        }
        currentRead_ = position_;
    }
    return current_;
}

bool SqliteRecordset::takeKeptValues(int index, std::vector<rt::Variant>& values) const {
    if (keptLeft_ == 0) {
        return false;
    }
    if (!connection_->unchangedSince(*keptMark_)) {
        dropKeptValues();
        return false;
    }
    // Rows are only ever added after those read at open, so an index still names the same row.
    if (index >= int(keptUnvisited_.size()) || !keptUnvisited_[index]) {
        return false;
    }
    moveKeptValues(index, values);
    return true;
}

void SqliteRecordset::moveKeptValues(int index, std::vector<rt::Variant>& values) const {
    const qsizetype width = qsizetype(columns_.size());
    const auto first =
        keptFromOpen_[index / kKeptRowsPerBlock].begin() + (index % kKeptRowsPerBlock) * width;
    values.assign(std::make_move_iterator(first), std::make_move_iterator(first + width));
    keptUnvisited_[index] = false;
    if (--keptLeft_ == 0) {
        dropKeptValues();
    }
}

void SqliteRecordset::dropKeptValues() const {
    keptFromOpen_ = {};
    keptUnvisited_ = {};
    keptLeft_ = 0;
}

bool SqliteRecordset::fetch(qint64 rowid, std::vector<rt::Variant>& values) const {
    sqlite3* handle = db();
    if (!fetchStatement_) {
        fetchStatement_ = std::make_unique<Prepared>(*connection_, fetchSql_, source_);
    }
    sqlite3_stmt* statement = fetchStatement_->get();
    sqlite3_bind_int64(statement, 1, rowid);
    // Reset however it ends: a statement left stepped would hold the file's read lock.
    struct Reset {
        sqlite3_stmt* statement;
        ~Reset() { sqlite3_reset(statement); }
    } reset{statement};
    const int code = sqlite3_step(statement);
    if (code == SQLITE_DONE) {
        return false;
    }
    if (code != SQLITE_ROW) {
        throw sqliteFailure(handle, code, source_);
    }
    const int count = int(columns_.size());
    values.resize(count);
    for (int c = 0; c < count; ++c) {
        values[c] = readColumn(statement, c, columns_[c].info.type);
    }
    return true;
}

void SqliteRecordset::visit(int index) {
    currentRead_ = -1;
    position_ = index;
    bof_ = eof_ = false;
    highestVisited_ = std::max(highestVisited_, index);
}

void SqliteRecordset::leaveEdit() {
    // Moving away from an edit drops it, as the engine does.
    mode_ = Mode::Browse;
    buffer_.clear();
    dirty_.clear();
}

std::optional<int> SqliteRecordset::nextLive(int from, int step) const {
    for (int i = from; i >= 0 && i < int(rows_.size()); i += step) {
        if (!rows_[i].deleted) {
            return i;
        }
    }
    return std::nullopt;
}

void SqliteRecordset::moveFirst() {
    checkOpen();
    leaveEdit();
    const auto first = nextLive(0, 1);
    if (!first) {
        throw error(NoCurrentRecord);
    }
    visit(*first);
}

void SqliteRecordset::moveLast() {
    checkOpen();
    leaveEdit();
    const auto last = nextLive(int(rows_.size()) - 1, -1);
    if (!last) {
        throw error(NoCurrentRecord);
    }
    visit(*last);
    highestVisited_ = int(rows_.size()) - 1;
}

void SqliteRecordset::moveNext() {
    checkOpen();
    if (eof_) {
        throw error(NoCurrentRecord);
    }
    leaveEdit();
    if (const auto next = nextLive(bof_ ? 0 : position_ + 1, 1)) {
        visit(*next);
    } else {
        position_ = int(rows_.size());
        eof_ = true;
        bof_ = nextLive(0, 1) == std::nullopt;
    }
}

void SqliteRecordset::movePrevious() {
    checkOpen();
    if (bof_) {
        throw error(NoCurrentRecord);
    }
    leaveEdit();
    if (const auto previous = nextLive(eof_ ? int(rows_.size()) - 1 : position_ - 1, -1)) {
        visit(*previous);
    } else {
        position_ = -1;
        bof_ = true;
        eof_ = nextLive(0, 1) == std::nullopt;
    }
}

void SqliteRecordset::move(qint32 rows) {
    checkOpen();
    if (!hasCurrent()) {
        throw error(NoCurrentRecord);
    }
    for (qint32 i = 0; i < rows && !eof_; ++i) {
        moveNext();
    }
    for (qint32 i = 0; i > rows && !bof_; --i) {
        movePrevious();
    }
}

qint32 SqliteRecordset::absolutePosition() const {
    checkOpen();
    if (!hasCurrent()) {
        return -1;
    }
    qint32 position = 0;
    for (int i = 0; i < position_; ++i) {
        position += rows_[i].deleted ? 0 : 1;
    }
    return position;
}

qint32 SqliteRecordset::recordCount() const {
    checkOpen();
    qint32 count = 0;
    for (int i = 0; i < int(rows_.size()); ++i) {
        if (!rows_[i].deleted && (i <= highestVisited_ || rows_[i].appended)) {
            ++count;
        }
    }
    return count;
}

void SqliteRecordset::find(const QString& criteria, int from) {
    checkOpen();
    leaveEdit();
    // Column names in the criteria read the row's values; text compares without regard to case.
    dialect::Tokens tokens = dialect::translated(criteria);
    std::vector<int> parameterColumns;
    for (size_t i = 0; i < tokens.size(); ++i) {
        dialect::Token& token = tokens[i];
        if (token.kind != dialect::Token::Word && token.kind != dialect::Token::Name) {
            continue;
        }
        size_t next = i + 1;
        while (next < tokens.size() && tokens[next].kind == dialect::Token::Space) {
            ++next;
        }
        const bool isCall = next < tokens.size() && tokens[next].isSymbol("(");
        const int column = fieldIndex(token.text);
        if (column < 0 || isCall) {
            continue;
        }
        parameterColumns.push_back(column);
        const QString parameter = QStringLiteral("?%1").arg(parameterColumns.size());
        const int type = columns_[column].info.type;
        token = {dialect::Token::Symbol, type == dbText || type == dbMemo
                                             ? "(" + parameter + " COLLATE NOCASE)"
                                             : parameter};
    }
    Prepared test(*connection_, "SELECT (" + dialect::render(tokens) + ")", criteria,
                  FailureContext::Criteria);
    std::vector<rt::Variant> fetched;
    for (auto index = nextLive(from, 1); index; index = nextLive(*index + 1, 1)) {
        if (keyed() && !fetch(rows_[*index].rowid, fetched)) {
            continue;  // deleted by another program: nothing there to match
        }
        const std::vector<rt::Variant>& values = keyed() ? fetched : readAtOpen_[*index];
        test.reset();
        for (size_t p = 0; p < parameterColumns.size(); ++p) {
            test.bind(int(p) + 1, values[parameterColumns[p]]);
        }
        if (test.step() && sqlite3_column_type(test.get(), 0) != SQLITE_NULL &&
            sqlite3_column_double(test.get(), 0) != 0) {
            test.reset();
            noMatch_ = false;
            visit(*index);
            if (keyed()) {
                current_ = std::move(fetched);
                currentRead_ = *index;
            }
            return;
        }
    }
    noMatch_ = true;
}

void SqliteRecordset::findFirst(const QString& criteria) {
    find(criteria, 0);
}

void SqliteRecordset::findNext(const QString& criteria) {
    checkOpen();
    find(criteria, bof_ ? 0 : eof_ ? int(rows_.size()) : position_ + 1);
}

bool SqliteRecordset::noMatch() const {
    checkOpen();
    return noMatch_;
}

void SqliteRecordset::requireUpdatable() const {
    checkOpen();
    if (table_.isEmpty()) {
        throw error(ReadOnly);
    }
}

void SqliteRecordset::edit() {
    requireUpdatable();
    const qint64 rowid = currentRow().rowid;
    leaveEdit();
    // The row as it stands now, which another program may have changed since it was read.
    if (!fetch(rowid, buffer_)) {
        throw error(RecordDeleted);
    }
    current_ = buffer_;
    currentRead_ = position_;
    dirty_.assign(columns_.size(), false);
    mode_ = Mode::Editing;
}

std::vector<rt::Variant> SqliteRecordset::newRowDefaults() {
    if (!defaults_) {
        std::vector<rt::Variant> values(columns_.size(), rt::Variant::null());
        Prepared info(db(), "PRAGMA table_info(" + quoteName(table_) + ")", source_);
        while (info.step()) {
            const QString name = QString::fromUtf8(
                reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1)));
            if (sqlite3_column_type(info.get(), 4) == SQLITE_NULL) {
                continue;
            }
            const QString expression = QString::fromUtf8(
                reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 4)));
            for (size_t c = 0; c < columns_.size(); ++c) {
                if (columns_[c].baseColumn.compare(name, Qt::CaseInsensitive) == 0) {
                    Prepared value(db(), "SELECT " + expression, source_);
                    value.step();
                    values[c] = readColumn(value.get(), 0, columns_[c].info.type);
                }
            }
        }
        defaults_ = values;
    }
    return *defaults_;
}

qint64 SqliteRecordset::reserveCounter(const Column& counter) {
    // The counter is taken at AddNew, as the engine does, so that the new row's id can be read
    // before Update; a cancelled row leaves its number unused.
    sqlite3* handle = db();
    OwnTransaction transaction(*connection_);
    Prepared highest(*connection_,
                     "SELECT max(COALESCE((SELECT seq FROM sqlite_sequence WHERE name = ?1), 0), "
                     "COALESCE((SELECT max(" +
                         quoteName(counter.baseColumn) + ") FROM " + quoteName(table_) + "), 0))",
                     source_);
    highest.bind(1, rt::Variant(table_));
    highest.step();
    const qint64 next = sqlite3_column_int64(highest.get(), 0) + 1;
    Prepared store(*connection_,
                   QStringLiteral("UPDATE sqlite_sequence SET seq = ?1 WHERE name = ?2"), source_);
    store.bind(1, rt::Variant(next));
    store.bind(2, rt::Variant(table_));
    store.step();
    if (sqlite3_changes(handle) == 0) {
        Prepared add(*connection_,
                     QStringLiteral("INSERT INTO sqlite_sequence (name, seq) VALUES (?2, ?1)"),
                     source_);
        add.bind(1, rt::Variant(next));
        add.bind(2, rt::Variant(table_));
        add.step();
    }
    transaction.commit();
    return next;
}

void SqliteRecordset::addNew() {
    requireUpdatable();
    leaveEdit();
    buffer_ = newRowDefaults();
    dirty_.assign(columns_.size(), false);
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (columns_[c].counter) {
            buffer_[c] = rt::Variant(int(reserveCounter(columns_[c])));
            dirty_[c] = true;
        }
    }
    mode_ = Mode::Adding;
}

void SqliteRecordset::insertBuffer() {
    QStringList names;
    QStringList places;
    std::vector<rt::Variant> values;
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (!columns_[c].baseColumn.isEmpty() && (dirty_[c] || !buffer_[c].isNull())) {
            names << quoteName(columns_[c].baseColumn);
            values.push_back(buffer_[c]);
            places << QStringLiteral("?%1").arg(values.size());
        }
    }
    const QString sql = names.isEmpty()
                            ? "INSERT INTO " + quoteName(table_) + " DEFAULT VALUES"
                            : "INSERT INTO " + quoteName(table_) + " (" + names.join(", ") +
                                  ") VALUES (" + places.join(", ") + ")";
    Prepared insert(*connection_, sql, source_);
    for (size_t v = 0; v < values.size(); ++v) {
        insert.bind(int(v) + 1, values[v]);
    }
    insert.step();
    Row row;
    row.rowid = sqlite3_last_insert_rowid(db());
    row.appended = true;
    rows_.push_back(row);
    if (bof_ && eof_) {
        // The first row of an empty set becomes the current one.
        visit(int(rows_.size()) - 1);
    }
}

void SqliteRecordset::updateBuffer() {
    QStringList assignments;
    std::vector<rt::Variant> values;
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (dirty_[c]) {
            values.push_back(buffer_[c]);
            assignments << quoteName(columns_[c].baseColumn) +
                               QStringLiteral(" = ?%1").arg(values.size());
        }
    }
    Row& row = rows_[position_];
    if (!assignments.isEmpty()) {
        Prepared update(*connection_,
                        "UPDATE " + quoteName(table_) + " SET " + assignments.join(", ") +
                            QStringLiteral(" WHERE rowid = ?%1").arg(values.size() + 1),
                        source_);
        for (size_t v = 0; v < values.size(); ++v) {
            update.bind(int(v) + 1, values[v]);
        }
        update.bind(int(values.size()) + 1, rt::Variant(row.rowid));
        update.step();
        if (sqlite3_changes(db()) == 0) {
            throw error(RecordDeleted);
        }
    }
    currentRead_ = -1;  // read again as the file now holds it
}

void SqliteRecordset::update() {
    checkOpen();
    if (mode_ == Mode::Browse) {
        throw error(UpdateWithoutEdit);
    }
    rememberBeforeChange();
    if (mode_ == Mode::Adding) {
        insertBuffer();
    } else {
        updateBuffer();
    }
    leaveEdit();
}

void SqliteRecordset::cancelUpdate() {
    checkOpen();
    if (mode_ == Mode::Browse) {
        throw error(UpdateWithoutEdit);
    }
    leaveEdit();
}

void SqliteRecordset::deleteCurrent() {
    requireUpdatable();
    const qint64 rowid = currentRow().rowid;
    rememberBeforeChange();
    leaveEdit();
    Prepared remove(*connection_, "DELETE FROM " + quoteName(table_) + " WHERE rowid = ?1",
                    source_);
    remove.bind(1, rt::Variant(rowid));
    remove.step();
    rows_[position_].deleted = true;
}

void SqliteRecordset::requery() {
    checkOpen();
    load();
}

int SqliteRecordset::fieldCount() const {
    checkOpen();
    return int(columns_.size());
}

FieldInfo SqliteRecordset::fieldInfo(int index) const {
    checkOpen();
    return columns_.at(index).info;
}

int SqliteRecordset::fieldIndex(const QString& name) const {
    checkOpen();
    for (int c = 0; c < int(columns_.size()); ++c) {
        if (columns_[c].info.name.compare(name, Qt::CaseInsensitive) == 0) {
            return c;
        }
    }
    return -1;
}

rt::Variant SqliteRecordset::fieldValue(int index) const {
    checkOpen();
    if (mode_ != Mode::Browse) {
        return buffer_.at(index);
    }
    return currentValues().at(index);
}

void SqliteRecordset::setFieldValue(int index, const rt::Variant& value) {
    checkOpen();
    if (mode_ == Mode::Browse) {
        throw error(UpdateWithoutEdit);
    }
    const Column& column = columns_.at(index);
    if (column.baseColumn.isEmpty() || column.counter) {
        throw error(FieldNotUpdatable);
    }
    buffer_[index] = coerce(value, column.info.type, column.info.size);
    dirty_[index] = true;
}

}  // namespace engine
