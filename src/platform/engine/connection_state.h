#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>
#include <vector>

namespace engine {

// What a backend's connection keeps for the cursors on it, whatever the backend: the levels of
// transaction open, the cursors to put back when one is undone, and when reads stay true.
class ConnectionState {
public:
    virtual ~ConnectionState() = default;

    int transactionDepth = 0;

    // Levels of transaction, counted here and begun and ended by the backend's `statement`: the
    // outermost with `begin`, COMMIT and ROLLBACK, the others as savepoints. A unit whose commit
    // fails is undone whole through `abandon`, as it would otherwise take in every later
    // statement only to lose them at close; a nested level that couldn't be ended stays open for
    // the caller to roll back.
    using Statement = std::function<void(const QString& sql)>;
    void beginLevel(const Statement& statement, const QString& begin);
    void endLevel(bool keep, const Statement& statement, const std::function<void()>& abandon);

    // A cursor's rows cached before its first change inside an open transaction level: when the
    // level is undone, the cursor is put back as it stood, so that it shows what the database
    // holds and an interrupted AddNew or Edit can be tried again.
    void rememberCursor(const void* cursor, std::function<void()> restore);
    void forgetCursor(const void* cursor);
    // The level ended. Kept, its cursors' states belong to the level around it (the older one
    // wins); undone, its cursors and those of every level inside it are put back.
    void levelKept(int level);
    void levelUndone(int level);

    // While reads stand still and this connection changes nothing, what was read meanwhile is
    // still what the database holds. A mark says when a read was made; none is given while reads
    // don't stand still.
    struct ReadMark {
        quint64 transaction;
        quint64 writes;
    };
    std::optional<ReadMark> readMark() const;
    bool unchangedSince(const ReadMark& mark) const;
    void transactionBegun() { ++transactionsBegun_; }
    // Any statement that may change rows or definitions, run by the engine or through a cursor.
    void writeMade() { ++writes_; }

protected:
    // Whether nothing another program commits can change what this connection reads, until its
    // transaction ends: on a file, any transaction, which keeps other writers out; on a server,
    // a read scope's snapshot.
    virtual bool readsStandStill() const = 0;

private:
    quint64 transactionsBegun_ = 0;
    quint64 writes_ = 0;
    struct CursorState {
        int level;
        const void* cursor;
        std::function<void()> restore;
    };
    std::vector<CursorState> cursorStates_;
};

}  // namespace engine
