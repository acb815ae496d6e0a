#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

// The baselines: SQLite's C interface alone, with the values copied into plain C++ types, as a
// program without any cursor layer would read them.
namespace bench::raw {

using Value = std::variant<std::monostate, std::int64_t, double, std::string>;

class Database {
public:
    explicit Database(const std::string& path) {
        if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
            const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close_v2(db_);
            throw std::runtime_error("cannot open " + path + ": " + message);
        }
    }
    ~Database() { sqlite3_close_v2(db_); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    sqlite3* get() const { return db_; }

    void exec(const std::string& sql) {
        char* message = nullptr;
        if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
            const std::string text = message ? message : "?";
            sqlite3_free(message);
            throw std::runtime_error(text + " in " + sql);
        }
    }

    // Every row of the query with every column, each value in the type SQLite holds it in.
    std::vector<std::vector<Value>> rows(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), int(sql.size()), &statement, nullptr) !=
            SQLITE_OK) {
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " in " + sql);
        }
        std::vector<std::vector<Value>> result;
        const int columns = sqlite3_column_count(statement);
        int code;
        while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
            std::vector<Value>& row = result.emplace_back();
            row.reserve(columns);
            for (int c = 0; c < columns; ++c) {
                switch (sqlite3_column_type(statement, c)) {
                    case SQLITE_INTEGER:
                        row.emplace_back(std::int64_t(sqlite3_column_int64(statement, c)));
                        break;
                    case SQLITE_FLOAT:
                        row.emplace_back(sqlite3_column_double(statement, c));
                        break;
                    case SQLITE_NULL:
                        row.emplace_back(std::monostate{});
                        break;
                    default: {
                        const auto* text =
                            reinterpret_cast<const char*>(sqlite3_column_text(statement, c));
                        row.emplace_back(
                            std::string(text, size_t(sqlite3_column_bytes(statement, c))));
                    }
                }
            }
        }
        sqlite3_finalize(statement);
        if (code != SQLITE_DONE) {
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " in " + sql);
        }
        return result;
    }

    std::int64_t count(const std::string& sql) {
        const auto result = rows(sql);
        if (result.empty() || result[0].empty()) {
            return 0;
        }
        if (const auto* number = std::get_if<std::int64_t>(&result[0][0])) {
            return *number;
        }
        return 0;
    }

private:
    sqlite3* db_ = nullptr;
};

inline std::int64_t integerOf(const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return *number;
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return std::int64_t(*real);
    }
    return 0;
}

}  // namespace bench::raw
