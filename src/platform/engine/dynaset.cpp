#include "platform/engine/dynaset.h"

#include "platform/engine/errors.h"
#include "platform/engine/field_types.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace engine {

namespace {

constexpr int kKeptRowsPerBlock = 1024;

}  // namespace

Dynaset::Dynaset(std::shared_ptr<ConnectionState> state, QString source, QString table)
    : state_(std::move(state)), source_(std::move(source)), table_(std::move(table)) {}

Dynaset::~Dynaset() {
    state_->forgetCursor(this);
}

int Dynaset::selectItemType(const std::vector<int>& itemTypes, int column, int columns) {
    // A * stands for any number of columns: the items before the first one count from the
    // front, those after the last one from the back.
    const int items = int(itemTypes.size());
    const auto star = std::find(itemTypes.begin(), itemTypes.end(), -1);
    const int before = int(star - itemTypes.begin());
    const int after = int(std::find(itemTypes.rbegin(), itemTypes.rend(), -1) - itemTypes.rbegin());
    if (column < before) {
        return itemTypes[column];
    }
    const int fromBack = columns - 1 - column;
    return fromBack < after ? itemTypes[items - 1 - fromBack] : 0;
}

void Dynaset::rememberBeforeChange() {
    Snapshot before{rows_, position_, bof_, eof_, highestVisited_, mode_, buffer_, dirty_};
    state_->rememberCursor(this, [this, before = std::move(before)] {
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

void Dynaset::checkOpen() const {
    // Closing the database closes every cursor on it.
    if (closed_ || !connectionOpen()) {
        throw error(ObjectInvalid);
    }
}

void Dynaset::load() {
    rows_.clear();
    readAtOpen_.clear();
    dropKeptValues();
    currentRead_ = -1;
    // Inside a transaction the values read now stay true until it ends or this connection
    // writes, so a walk through the rows needs no second look-up of each.
    const std::optional<ConnectionState::ReadMark> mark =
        keyed() ? state_->readMark() : std::nullopt;
    readRows([&](qint64 key, const ValueReader& readValues) {
        Row row;
        row.key = keyed() ? key : qint64(rows_.size());
        std::vector<rt::Variant>* values = nullptr;
        if (!keyed()) {
            values = &readAtOpen_.emplace_back();
            values->reserve(columns_.size());
        } else if (mark || rows_.empty()) {
            // Without a mark only the first row is kept: the cursor stands on it at once.
            if (rows_.size() % kKeptRowsPerBlock == 0) {
                keptFromOpen_.emplace_back().reserve(columns_.size() *
                                                     (mark ? kKeptRowsPerBlock : 1));
            }
            values = &keptFromOpen_.back();
        }
        if (values) {
            readValues(*values);
        }
        rows_.push_back(row);
    });
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

void Dynaset::close() {
    state_->forgetCursor(this);
    closed_ = true;
    rows_.clear();
    readAtOpen_.clear();
    dropKeptValues();
    current_.clear();
    currentRead_ = -1;
    release();
}

bool Dynaset::eof() const {
    checkOpen();
    return eof_;
}

bool Dynaset::bof() const {
    checkOpen();
    return bof_;
}

bool Dynaset::hasCurrent() const {
    return !bof_ && !eof_ && position_ >= 0 && position_ < int(rows_.size());
}

const Dynaset::Row& Dynaset::currentRow() const {
    if (!hasCurrent()) {
        throw error(NoCurrentRecord);
    }
    const Row& row = rows_[position_];
    if (row.deleted) {
        throw error(RecordDeleted);
    }
    return row;
}

const std::vector<rt::Variant>& Dynaset::currentValues() const {
    const Row& row = currentRow();
    if (!keyed()) {
        return readAtOpen_[position_];
    }
    if (currentRead_ != position_) {
        if (!takeKeptValues(position_, current_) && !fetchRow(row.key, current_)) {
            throw error(RecordDeleted);  // by another program since it was last read
        }
        currentRead_ = position_;
    }
    return current_;
}

bool Dynaset::takeKeptValues(int index, std::vector<rt::Variant>& values) const {
    if (keptLeft_ == 0) {
        return false;
    }
    if (!keptMark_ || !state_->unchangedSince(*keptMark_)) {
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

void Dynaset::moveKeptValues(int index, std::vector<rt::Variant>& values) const {
    const qsizetype width = qsizetype(columns_.size());
    const auto first =
        keptFromOpen_[index / kKeptRowsPerBlock].begin() + (index % kKeptRowsPerBlock) * width;
    values.assign(std::make_move_iterator(first), std::make_move_iterator(first + width));
    keptUnvisited_[index] = false;
    if (--keptLeft_ == 0) {
        dropKeptValues();
    }
}

void Dynaset::dropKeptValues() const {
    keptFromOpen_ = {};
    keptUnvisited_ = {};
    keptLeft_ = 0;
}

void Dynaset::visit(int index) {
    currentRead_ = -1;
    position_ = index;
    bof_ = eof_ = false;
    highestVisited_ = std::max(highestVisited_, index);
}

void Dynaset::leaveEdit() {
    // Moving away from an edit drops it, as the engine does.
    mode_ = Mode::Browse;
    buffer_.clear();
    dirty_.clear();
}

std::optional<int> Dynaset::nextLive(int from, int step) const {
    for (int i = from; i >= 0 && i < int(rows_.size()); i += step) {
        if (!rows_[i].deleted) {
            return i;
        }
    }
    return std::nullopt;
}

void Dynaset::moveFirst() {
    checkOpen();
    leaveEdit();
    const auto first = nextLive(0, 1);
    if (!first) {
        throw error(NoCurrentRecord);
    }
    visit(*first);
}

void Dynaset::moveLast() {
    checkOpen();
    leaveEdit();
    const auto last = nextLive(int(rows_.size()) - 1, -1);
    if (!last) {
        throw error(NoCurrentRecord);
    }
    visit(*last);
    highestVisited_ = int(rows_.size()) - 1;
}

void Dynaset::moveNext() {
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

void Dynaset::movePrevious() {
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

void Dynaset::move(qint32 rows) {
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

qint32 Dynaset::absolutePosition() const {
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

qint32 Dynaset::recordCount() const {
    checkOpen();
    qint32 count = 0;
    for (int i = 0; i < int(rows_.size()); ++i) {
        if (!rows_[i].deleted && (i <= highestVisited_ || rows_[i].appended)) {
            ++count;
        }
    }
    return count;
}

void Dynaset::find(const QString& criteria, int from) {
    checkOpen();
    leaveEdit();
    // Column names in the criteria read the row's values; text compares without regard to case.
    dialect::Tokens tokens = dialect::translated(criteria);
    std::vector<int> parameterColumns;
    std::vector<bool> textParameters;
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
        const int type = columns_[column].info.type;
        textParameters.push_back(type == dbText || type == dbMemo);
        token = {dialect::Token::Symbol, QStringLiteral("?%1").arg(parameterColumns.size())};
    }
    const std::unique_ptr<CriteriaTest> test = prepareCriteria(tokens, textParameters, criteria);
    std::vector<rt::Variant> fetched;
    std::vector<rt::Variant> parameters(parameterColumns.size());
    for (auto index = nextLive(from, 1); index; index = nextLive(*index + 1, 1)) {
        if (keyed() && !fetchRow(rows_[*index].key, fetched)) {
            continue;  // deleted by another program: nothing there to match
        }
        const std::vector<rt::Variant>& values = keyed() ? fetched : readAtOpen_[*index];
        for (size_t p = 0; p < parameterColumns.size(); ++p) {
            parameters[p] = values[parameterColumns[p]];
        }
        if (test->matches(parameters)) {
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

void Dynaset::findFirst(const QString& criteria) {
    find(criteria, 0);
}

void Dynaset::findNext(const QString& criteria) {
    checkOpen();
    find(criteria, bof_ ? 0 : eof_ ? int(rows_.size()) : position_ + 1);
}

bool Dynaset::noMatch() const {
    checkOpen();
    return noMatch_;
}

void Dynaset::requireUpdatable() const {
    checkOpen();
    if (!keyed()) {
        throw error(ReadOnly);
    }
}

void Dynaset::edit() {
    requireUpdatable();
    const qint64 key = currentRow().key;
    leaveEdit();
    // The row as it stands now, which another program may have changed since it was read.
    if (!fetchRow(key, buffer_)) {
        throw error(RecordDeleted);
    }
    current_ = buffer_;
    currentRead_ = position_;
    dirty_.assign(columns_.size(), false);
    mode_ = Mode::Editing;
}

std::vector<rt::Variant> Dynaset::newRowDefaults() {
    if (!defaults_) {
        std::vector<rt::Variant> values(columns_.size(), rt::Variant::null());
        for (const auto& [name, value] : columnDefaults()) {
            for (size_t c = 0; c < columns_.size(); ++c) {
                if (columns_[c].baseColumn.compare(name, Qt::CaseInsensitive) == 0) {
                    values[c] = value;
                }
            }
        }
        defaults_ = values;
    }
    return *defaults_;
}

void Dynaset::addNew() {
    requireUpdatable();
    leaveEdit();
    buffer_ = newRowDefaults();
    dirty_.assign(columns_.size(), false);
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (columns_[c].counter) {
            // The counter is taken at AddNew, as the engine does, so that the new row's id can be
            // read before Update; a cancelled row leaves its number unused.
            state_->writeMade();
            buffer_[c] = rt::Variant(int(reserveCounter(columns_[c].baseColumn)));
            dirty_[c] = true;
        }
    }
    mode_ = Mode::Adding;
}

void Dynaset::insertBuffer() {
    QStringList names;
    std::vector<rt::Variant> values;
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (!columns_[c].baseColumn.isEmpty() && (dirty_[c] || !buffer_[c].isNull())) {
            names << columns_[c].baseColumn;
            values.push_back(buffer_[c]);
        }
    }
    state_->writeMade();
    Row row;
    row.key = insertRow(names, values);
    row.appended = true;
    rows_.push_back(row);
    if (bof_ && eof_) {
        // The first row of an empty set becomes the current one.
        visit(int(rows_.size()) - 1);
    }
}

void Dynaset::updateBuffer() {
    QStringList names;
    std::vector<rt::Variant> values;
    for (size_t c = 0; c < columns_.size(); ++c) {
        if (dirty_[c]) {
            names << columns_[c].baseColumn;
            values.push_back(buffer_[c]);
        }
    }
    if (!names.isEmpty()) {
        state_->writeMade();
        if (!updateRow(rows_[position_].key, names, values)) {
            throw error(RecordDeleted);
        }
    }
    currentRead_ = -1;  // read again as the database now holds it
}

void Dynaset::update() {
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

void Dynaset::cancelUpdate() {
    checkOpen();
    if (mode_ == Mode::Browse) {
        throw error(UpdateWithoutEdit);
    }
    leaveEdit();
}

void Dynaset::deleteCurrent() {
    requireUpdatable();
    const qint64 key = currentRow().key;
    rememberBeforeChange();
    leaveEdit();
    state_->writeMade();
    deleteRow(key);
    rows_[position_].deleted = true;
}

void Dynaset::requery() {
    checkOpen();
    load();
}

int Dynaset::fieldCount() const {
    checkOpen();
    return int(columns_.size());
}

FieldInfo Dynaset::fieldInfo(int index) const {
    checkOpen();
    return columns_.at(index).info;
}

int Dynaset::fieldIndex(const QString& name) const {
    checkOpen();
    for (int c = 0; c < int(columns_.size()); ++c) {
        if (columns_[c].info.name.compare(name, Qt::CaseInsensitive) == 0) {
            return c;
        }
    }
    return -1;
}

rt::Variant Dynaset::fieldValue(int index) const {
    checkOpen();
    if (mode_ != Mode::Browse) {
        return buffer_.at(index);
    }
    return currentValues().at(index);
}

void Dynaset::setFieldValue(int index, const rt::Variant& value) {
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
