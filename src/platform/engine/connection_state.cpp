#include "platform/engine/connection_state.h"

#include "platform/engine/errors.h"

#include <algorithm>

namespace engine {

void ConnectionState::beginLevel(const Statement& statement, const QString& begin) {
    statement(transactionDepth == 0 ? begin
                                    : QStringLiteral("SAVEPOINT level%1").arg(transactionDepth));
    if (transactionDepth == 0) {
        transactionBegun();
    }
    ++transactionDepth;
}

void ConnectionState::endLevel(bool keep, const Statement& statement,
                               const std::function<void()>& abandon) {
    int& depth = transactionDepth;
    if (depth == 0) {
        throw error(NoTransaction);
    }
    try {
        if (depth == 1) {
            statement(keep ? QStringLiteral("COMMIT") : QStringLiteral("ROLLBACK"));
        } else {
            const QString level = QStringLiteral("level%1").arg(depth - 1);
            if (!keep) {
                statement("ROLLBACK TO " + level);
            }
            statement("RELEASE " + level);
        }
    } catch (const rt::Error&) {
        if (depth == 1) {
            abandon();
            levelUndone(1);
            depth = 0;
        }
        throw;
    }
    if (keep) {
        levelKept(depth);
    } else {
        levelUndone(depth);
    }
    --depth;
}

void ConnectionState::rememberCursor(const void* cursor, std::function<void()> restore) {
    if (transactionDepth == 0) {
        return;
    }
    for (const CursorState& state : cursorStates_) {
        if (state.cursor == cursor && state.level == transactionDepth) {
            return;
        }
    }
    cursorStates_.push_back({transactionDepth, cursor, std::move(restore)});
}

void ConnectionState::forgetCursor(const void* cursor) {
    std::erase_if(cursorStates_,
                  [cursor](const CursorState& state) { return state.cursor == cursor; });
}

void ConnectionState::levelKept(int level) {
    std::vector<CursorState> kept;
    for (CursorState& state : cursorStates_) {
        if (state.level < level) {
            kept.push_back(std::move(state));
            continue;
        }
        const bool outer = std::any_of(kept.begin(), kept.end(), [&](const CursorState& k) {
            return k.cursor == state.cursor && k.level == level - 1;
        });
        if (level > 1 && !outer) {
            state.level = level - 1;
            kept.push_back(std::move(state));
        }
    }
    cursorStates_ = std::move(kept);
}

void ConnectionState::levelUndone(int level) {
    // The newest first, so that a cursor changed at several levels ends as it stood before the
    // outermost of them.
    while (!cursorStates_.empty() && cursorStates_.back().level >= level) {
        const std::function<void()> restore = std::move(cursorStates_.back().restore);
        cursorStates_.pop_back();
        restore();
    }
}

std::optional<ConnectionState::ReadMark> ConnectionState::readMark() const {
    if (!readsStandStill()) {
        return std::nullopt;
    }
    return ReadMark{transactionsBegun_, writes_};
}

bool ConnectionState::unchangedSince(const ReadMark& mark) const {
    const std::optional<ReadMark> now = readMark();
    return now && now->transaction == mark.transaction && now->writes == mark.writes;
}

}  // namespace engine
