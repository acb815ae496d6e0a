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

// The same for a database server: names folded to lower case, as the server folds unquoted ones.
QString renderForServer(const Tokens& tokens, size_t first = 0, size_t last = size_t(-1));

// LIKE written as the engine function's call, pattern first, for an engine whose own LIKE reads
// other wildcards; NOT LIKE as NOT of it.
Tokens likeAsCalls(const Tokens& tokens);

// Indexes of the tokens outside any parentheses that are not blanks.
std::vector<size_t> topLevel(const Tokens& tokens);

// The tokens of one statement or criteria with the dialect's forms the embedded engine lacks
// written in its terms: DELETE * drops the *, DISTINCTROW over one table goes (each of its rows
// is distinct already), TOP n becomes LIMIT n, / divides reals, a MOD b is a call, and every
// function call goes to the engine's own function of that name. Raises 3075 for a function it
// doesn't know or a form it can't translate, rather than let the embedded engine read it with
// another meaning. Table definitions are the embedded engine's own and pass as they are.
Tokens translated(const QString& sql);

// The name under which the embedded engine knows the dialect's function `name`, kept apart from
// its built-in functions, whose meanings differ.
QString functionName(const char* name);

// Whether `text` matches the pattern of a LIKE, without regard to case: * any run of characters,
// ? one, # one digit, [a-c] one of a set or range, [!a] one not in it ([*] is a literal *). % and
// _ are plain characters. Raises 3075 for a [ without its ].
bool matchesPattern(const QString& text, const QString& pattern);

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
    // Select: the engine type of each item of the select list that is a call of a function with
    // a type of its own (0 for other items, -1 for a * that stands for any number of columns).
    std::vector<int> itemTypes;
};

Statement analyse(const QString& sql);

}  // namespace engine::dialect
