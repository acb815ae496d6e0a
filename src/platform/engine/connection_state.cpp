#include "platform/engine/connection_state.h"

#include <algorithm>

namespace engine {

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
    if (!inTransaction()) {
        return std::nullopt;
    }
    return ReadMark{transactionsBegun_, writes_};
}

bool ConnectionState::unchangedSince(const ReadMark& mark) const {
    const std::optional<ReadMark> now = readMark();
    return now && now->transaction == mark.transaction && now->writes == mark.writes;
}

}  // namespace engine
