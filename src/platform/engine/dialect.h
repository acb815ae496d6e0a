#pragma once

#include <QString>

#include <vector>

// The suite's SQL dialect, read into tokens and written out for the embedded engine.
namespace engine::dialect {

struct Token {
    enum Kind { Word, Name, String, Number, DateLiteral, Symbol, Space } kind;
    QString text;  // a Name or String without its brackets or quotes, a date between the #s

    bool isWord(const char* word) const;
    bool isSymbol(const char* symbol) const {
        return kind == Symbol && text == QLatin1String(symbol);
    }
};
using Tokens = std::vector<Token>;

// Raises 3075 for an unterminated string, name or date, and 3142 for anything but blanks after
// a semicolon. The semicolon and the blanks around the statement are dropped.
Tokens tokenize(const QString& sql);

// The tokens as the embedded engine reads them: strings in single quotes, names in double
// quotes, dates as day serials, True and False as -1 and 0, & as ||, and a blank between two
// tokens wherever the engine would otherwise read them as one or as a comment.
QString render(const Tokens& tokens, size_t first = 0, size_t last = size_t(-1));

// Indexes of the tokens outside any parentheses that are not blanks.
std::vector<size_t> topLevel(const Tokens& tokens);

struct Statement {
    enum Kind { Select, SelectInto, TableName, Action } kind = Action;
    Tokens tokens;
    // The one table a Select reads from when its rows can be updated; empty otherwise.
    QString updatableTable;
    // SelectInto: the new table, the database file it goes into (empty for this one), and the
    // statement that reads its rows (SELECT list FROM ...).
    QString intoTable;
    QString intoDatabase;
    Tokens intoSource;
    // SelectInto from a single table with *: that table, whose columns the new one copies.
    QString intoSourceTable;
};

Statement analyse(const QString& sql);

}  // namespace engine::dialect
