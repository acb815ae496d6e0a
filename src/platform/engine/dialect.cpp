#include "platform/engine/dialect.h"

#include "platform/dates.h"
#include "platform/engine/errors.h"

#include <QLocale>

namespace engine::dialect {

namespace {

rt::Error syntaxError(const QString& what, const QString& sql) {
    return error(SyntaxError, what, sql);
}

// Reads a quoted run that starts at `i`, with a doubled quote standing for one.
QString quoted(const QString& sql, int& i, QChar quote) {
    QString text;
    ++i;
    while (i < sql.size()) {
        if (sql[i] == quote) {
            if (i + 1 < sql.size() && sql[i + 1] == quote) {
                text += quote;
                i += 2;
                continue;
            }
            ++i;
            return text;
        }
        text += sql[i++];
    }
    throw syntaxError(QStringLiteral("Syntax error in string"), sql);
}

QString enclosed(const QString& sql, int& i, QChar close, const char* what) {
    const int end = sql.indexOf(close, i + 1);
    if (end < 0) {
        throw syntaxError(QLatin1String(what), sql);
    }
    const QString text = sql.mid(i + 1, end - i - 1);
    i = end + 1;
    return text;
}

bool isWordChar(QChar c) {
    return c.isLetterOrNumber() || c == '_' || c == '$';
}

QString quoteString(const QString& text) {
    return "'" + QString(text).replace(QLatin1String("'"), QLatin1String("''")) + "'";
}

QString quoteName(const QString& text) {
    return "\"" + QString(text).replace(QLatin1String("\""), QLatin1String("\"\"")) + "\"";
}

QString nameOf(const Token& token) {
    return token.text;
}

bool isNameToken(const Token& token) {
    return token.kind == Token::Word || token.kind == Token::Name;
}

}  // namespace

bool Token::isWord(const char* word) const {
    return kind == Word && text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

Tokens tokenize(const QString& sql) {
    Tokens tokens;
    int i = 0;
    while (i < sql.size()) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            while (i < sql.size() && sql[i].isSpace()) {
                ++i;
            }
            tokens.push_back({Token::Space, QStringLiteral(" ")});
        } else if (c == '\'' || c == '"') {
            tokens.push_back({Token::String, quoted(sql, i, c)});
        } else if (c == '[') {
            tokens.push_back({Token::Name, enclosed(sql, i, ']', "Invalid bracketing of name")});
        } else if (c == '#') {
            tokens.push_back({Token::DateLiteral, enclosed(sql, i, '#', "Syntax error in date")});
        } else if (c.isDigit() || (c == '.' && i + 1 < sql.size() && sql[i + 1].isDigit())) {
            int j = i;
            while (j < sql.size() && (sql[j].isDigit() || sql[j] == '.')) {
                ++j;
            }
            if (j < sql.size() && (sql[j] == 'e' || sql[j] == 'E')) {
                int k = j + 1;
                if (k < sql.size() && (sql[k] == '+' || sql[k] == '-')) {
                    ++k;
                }
                if (k < sql.size() && sql[k].isDigit()) {
                    j = k;
                    while (j < sql.size() && sql[j].isDigit()) {
                        ++j;
                    }
                }
            }
            tokens.push_back({Token::Number, sql.mid(i, j - i)});
            i = j;
        } else if (isWordChar(c)) {
            int j = i;
            while (j < sql.size() && isWordChar(sql[j])) {
                ++j;
            }
            tokens.push_back({Token::Word, sql.mid(i, j - i)});
            i = j;
        } else {
            static const QStringList pairs = {"<>", "<=", ">=", "!=", "||"};
            const QString two = sql.mid(i, 2);
            const QString symbol = pairs.contains(two) ? two : QString(c);
            tokens.push_back({Token::Symbol, symbol});
            i += static_cast<int>(symbol.size());
        }
    }
    // One statement per call: a semicolon may end it, but nothing may follow.
    for (size_t t = 0; t < tokens.size(); ++t) {
        if (tokens[t].isSymbol(";")) {
            for (size_t rest = t + 1; rest < tokens.size(); ++rest) {
                if (tokens[rest].kind != Token::Space) {
                    throw error(CharactersAfterEnd);
                }
            }
            tokens.resize(t);
            break;
        }
    }
    while (!tokens.empty() && tokens.back().kind == Token::Space) {
        tokens.pop_back();
    }
    while (!tokens.empty() && tokens.front().kind == Token::Space) {
        tokens.erase(tokens.begin());
    }
    return tokens;
}

namespace {

// One token as the embedded engine reads it.
QString rendered(const Token& t) {
    switch (t.kind) {
        case Token::String:
            return quoteString(t.text);
        case Token::Name:
            return quoteName(t.text);
        case Token::DateLiteral: {
            // Date literals are in US order whatever the machine's locale.
            const auto serial =
                rt::parseDateText(t.text, QLocale(QLocale::English, QLocale::UnitedStates));
            if (!serial) {
                throw error(SyntaxError, QStringLiteral("Syntax error in date"),
                            "#" + t.text + "#");
            }
            return QString::number(*serial, 'g', 17);
        }
        case Token::Word:
            if (t.isWord("true")) {
                return QStringLiteral("-1");
            }
            return t.isWord("false") ? QStringLiteral("0") : t.text;
        case Token::Symbol:
            return t.text == "&" ? QStringLiteral("||") : t.text;
        default:
            return t.text;
    }
}

// What the embedded engine takes for part of a word or a number: any character past ASCII too.
bool isEngineWordChar(QChar c) {
    return isWordChar(c) || c.unicode() >= 0x80;
}

// Whether the embedded engine would read two tokens written with nothing between them as other
// tokens than these two. The dialect has no comments and no parameter markers, so where the
// engine would join them only a blank keeps the meaning.
bool runTogether(const QString& before, const QString& after) {
    static const QStringList operatorsAndComments = {
        "--", "/*", "->", "<<", ">>", "<=", ">=", "<>", "==", "!=", "||"};
    const QChar last = before.back();
    const QChar next = after.front();
    bool number = false;
    before.toDouble(&number);
    const bool wordGoesOn =
        isEngineWordChar(next) && (isEngineWordChar(last) || last == ':' || last == '@');
    const bool blob = isEngineWordChar(last) && next == '\'';  // x'41'
    const bool numberGoesOn = number && next == '.';           // 36526 .5
    const bool quoteDoubled = last == next && (last == '\'' || last == '"');
    return wordGoesOn || blob || numberGoesOn || quoteDoubled ||
           operatorsAndComments.contains(QString(last) + next);
}

}  // namespace

QString render(const Tokens& tokens, size_t first, size_t last) {
    QString out;
    QString previous;
    last = std::min(last, tokens.size());
    for (size_t i = first; i < last; ++i) {
        const QString text = rendered(tokens[i]);
        if (!previous.isEmpty() && runTogether(previous, text)) {
            out += ' ';
        }
        out += text;
        previous = text;
    }
    return out;
}

std::vector<size_t> topLevel(const Tokens& tokens) {
    std::vector<size_t> result;
    int depth = 0;
    for (size_t i = 0; i < tokens.size(); ++i) {
        const Token& t = tokens[i];
        if (t.isSymbol("(")) {
            ++depth;
        } else if (t.isSymbol(")")) {
            --depth;
        } else if (depth == 0 && t.kind != Token::Space) {
            result.push_back(i);
        }
    }
    return result;
}

namespace {

// The table of "SELECT ... FROM table [WHERE ...] [ORDER BY ...]" when the rows can be written
// back: one table, no DISTINCT, UNION, grouping or join.
QString updatableTableOf(const Tokens& tokens, const std::vector<size_t>& top) {
    static const char* const blockers[] = {"distinct", "distinctrow", "union", "group",
                                           "having",   "join",        "into",  "top"};
    for (size_t index : top) {
        for (const char* word : blockers) {
            if (tokens[index].isWord(word)) {
                return {};
            }
        }
    }
    for (size_t k = 0; k + 1 < top.size(); ++k) {
        if (!tokens[top[k]].isWord("from")) {
            continue;
        }
        const Token& table = tokens[top[k + 1]];
        if (!isNameToken(table)) {
            return {};
        }
        if (k + 2 < top.size()) {
            const Token& next = tokens[top[k + 2]];
            if (!next.isWord("where") && !next.isWord("order")) {
                return {};
            }
        }
        return nameOf(table);
    }
    return {};
}

void analyseSelectInto(Statement& statement, const std::vector<size_t>& top, size_t intoAt) {
    const Tokens& tokens = statement.tokens;
    statement.kind = Statement::SelectInto;
    size_t target = intoAt + 1;
    if (target < top.size() && tokens[top[target]].kind == Token::Name &&
        tokens[top[target]].text.startsWith(QLatin1String(";database="), Qt::CaseInsensitive)) {
        statement.intoDatabase = tokens[top[target]].text.mid(10);
        if (target + 2 >= top.size() || !tokens[top[target + 1]].isSymbol(".")) {
            throw error(SyntaxError, QStringLiteral("Syntax error"), render(tokens));
        }
        target += 2;
    }
    if (target >= top.size() || !isNameToken(tokens[top[target]]) || target + 1 >= top.size() ||
        !tokens[top[target + 1]].isWord("from")) {
        throw error(SyntaxError, QStringLiteral("Syntax error"), render(tokens));
    }
    statement.intoTable = nameOf(tokens[top[target]]);
    Tokens source(tokens.begin(), tokens.begin() + top[intoAt]);
    source.insert(source.end(), tokens.begin() + top[target + 1], tokens.end());
    statement.intoSource = source;
    const std::vector<size_t> sourceTop = topLevel(source);
    if (sourceTop.size() >= 2 && source[sourceTop[1]].isSymbol("*")) {
        const QString table = updatableTableOf(source, sourceTop);
        if (!table.isEmpty() && sourceTop.size() == 4) {
            statement.intoSourceTable = table;
        }
    }
}

}  // namespace

Statement analyse(const QString& sql) {
    Statement statement;
    statement.tokens = tokenize(sql);
    const Tokens& tokens = statement.tokens;
    const std::vector<size_t> top = topLevel(tokens);
    if (top.empty()) {
        throw error(SyntaxError, QStringLiteral("Syntax error"), sql);
    }
    if (top.size() == 1 && isNameToken(tokens[top[0]]) && !tokens[top[0]].isWord("select")) {
        statement.kind = Statement::TableName;
        statement.updatableTable = nameOf(tokens[top[0]]);
        return statement;
    }
    if (!tokens[top[0]].isWord("select")) {
        statement.kind = Statement::Action;
        return statement;
    }
    for (size_t k = 0; k < top.size(); ++k) {
        if (tokens[top[k]].isWord("into")) {
            analyseSelectInto(statement, top, k);
            return statement;
        }
    }
    statement.kind = Statement::Select;
    statement.updatableTable = updatableTableOf(tokens, top);
    return statement;
}

}  // namespace engine::dialect
